#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# check_readme.sh SOURCE-DIR LIB-DIR CC [FLAGS...]: the C example of the README compiles without a warning, runs, and succeeds.
# ZMX_EMULATOR="PROGRAM ARGUMENTS" runs it where the compiler makes programs of another processor.
set -eu
source=$1 lib=$2 cc=$3
shift 3
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
sed -n '/^```c$/,/^```$/p' "$source/README.md" | sed '1d;$d' >"$dir/example.c"
grep -q zmxj.h "$dir/example.c" || { echo "no example found in the README"; exit 1; }
"$cc" -std=c99 -Wall -Wextra -Wpedantic -Werror "$@" -I "$source/include" "$dir/example.c" -L "$lib" -lzmxjpx -Wl,-rpath,"$lib" -o "$dir/example"
read -ra emulator <<<"${ZMX_EMULATOR:-}"
"${emulator[@]}" "$dir/example" | tee "$dir/output"
grep -qE '^status 0, DC coefficient -?[0-9]+, first sample (1[4-8]) was 16$' "$dir/output"
