#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# check_format.sh SOURCE-DIR: every C and C++ file of the tree is as clang-format leaves it. Exit 77: no clang-format of the
# version that the tree is formatted by; others break lines elsewhere.
set -u
cd "$1" || exit 1
version=14
format=$(command -v clang-format-$version || command -v clang-format) || { echo "no clang-format"; exit 77; }
"$format" --version | grep -q "version $version\." || { echo "$("$format" --version) is not version $version"; exit 77; }

# The check itself: what is not formatted must be noticed.
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
cp .clang-format "$dir"
printf 'int  main( ){return 0;}\n' >"$dir/bad.cpp"
printf 'int main() { return 0; }\n' >"$dir/good.cpp"
if "$format" --dry-run -Werror "$dir/bad.cpp" 2>/dev/null; then echo "the check notices nothing"; exit 1; fi
"$format" --dry-run -Werror "$dir/good.cpp" || { echo "the check minds what is well"; exit 1; }

mapfile -t files < <(find include core src codecs zmx tests bench fuzz examples -name '*.h' -o -name '*.cpp' -o -name '*.c' | sort)
[ ${#files[@]} -ge 100 ] || { echo "only ${#files[@]} files found"; exit 1; }
printf '%s\0' "${files[@]}" | xargs -0 -n 40 "$format" --dry-run -Werror || exit 1
echo "${#files[@]} files"
