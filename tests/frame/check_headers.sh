#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# check_headers.sh INCLUDE-DIR CC CXX: every public header compiles alone, as C99 and as C++, without a warning.
set -u
include=$1 cc=$2 cxx=$3
flags="-Wall -Wextra -Wpedantic -Werror -fsyntax-only -I $include"
bad=0 n=0
for header in "$include"/*.h "$include"/zmxj/*.h; do
    # By way of a program that has it first: a header of macros alone would be an empty one.
    program=$(printf '#include "%s"\nextern int something;\n' "$header")
    "$cc" -std=c99 $flags -x c - <<<"$program" || { echo "not clean as C: $header"; bad=1; }
    "$cxx" -std=c++98 -Wno-long-long $flags -x c++ - <<<"$program" || { echo "not clean as C++98: $header"; bad=1; }
    "$cxx" -std=c++20 $flags -x c++ - <<<"$program" || { echo "not clean as C++20: $header"; bad=1; }
    n=$((n + 1))
done
# Without any header at all the loop above proves nothing.
[ "$n" -ge 3 ] || { echo "only $n headers found in $include"; exit 1; }
echo "$n headers compiled as C99, C++98 and C++20"
exit $bad
