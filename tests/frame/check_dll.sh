#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# check_dll.sh SOURCE-DIR BUILD-DIR CC OBJDUMP [EMULATOR...]: the DLLs of Windows export what the headers declare and
# want nothing but the system; a C program is linked with their import libraries by the C compiler, needs no runtime
# library of C++, and works.
set -u
source=$1 build=$2 cc=$3 objdump=$4
shift 4
failed=0
complain() { echo "FAILED: $*"; failed=1; }
# The DLLs that a file names, in lower case: ours, and those of every Windows.
system='^(libzmx(jpx|core)-6\.1|kernel32|msvcrt)\.dll$'
imports() { "$objdump" -p "$1" | sed -n 's/^[[:space:]]*DLL Name: //p' | tr '[:upper:]' '[:lower:]' | tr -d '\r'; }
exports() { "$objdump" -p "$1" | sed -n '/^\[Ordinal\/Name Pointer\] Table/,/^$/p' | sed -n 's/^[[:space:]]*\[ *[0-9]*\].* //p' | sort -u; }
declared() { # declared HEADER PATTERN
    printf '#include "%s"\n' "$1" | "$cc" -E -P -I "$source/include" -x c - | grep -oE "\b($2) *\(" | tr -d ' (' | sort -u
}
same() { # same DLL HEADER PATTERN
    local there want
    there=$(exports "$build/bin/$1") want=$(declared "$2" "$3")
    [ -n "$want" ] && [ "$there" = "$want" ] || complain "$1 exports other names than $2 declares: $(diff <(echo "$there") <(echo "$want") | head -n 5)"
    echo "$1: $(echo "$there" | wc -l) functions exported"
}
same libzmxjpx-6.1.dll zmxj.h 'zmx[ij][A-Za-z0-9_]+'
same libzmxcore-6.1.dll zmxcore.h 'zmxMalloc|zmxFree|ownGetNumThreads'

# Beside the DLLs, where Windows looks for them.
program=$build/bin/consumer.exe
"$cc" -O2 -I "$source/include" "$source/examples/consumers/consumer.c" -L "$build/lib" -lzmxjpx -lzmxcore -o "$program" || complain "consumer.c cannot be linked"
for file in "$build/bin/libzmxjpx-6.1.dll" "$build/bin/libzmxcore-6.1.dll" "$program"; do
    names=$(imports "$file")
    [ -n "$names" ] || complain "$file imports nothing"
    others=$(echo "$names" | grep -vE "$system")
    [ -z "$others" ] || complain "$file wants $others"
done
"$@" "$program" || complain "the program does not work"
[ $failed -eq 0 ]
