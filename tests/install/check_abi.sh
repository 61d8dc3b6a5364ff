#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# check_abi.sh SOURCE-DIR: the interface is the one on record in abi/ (docs/abi.md says what that promises). Exits with 77, skipped,
# where libabigail is not installed.
set -eu
source=$1
command -v abidiff >/dev/null || { echo "abidiff is not installed"; exit 77; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
"$source/scripts/abi-record" "$work"
for name in zmxjpx zmxcore; do
    grep -q "elf-function-symbols" "$work/lib$name.abi" || { echo "an empty record of lib$name"; exit 1; }
    abidiff --no-added-syms "$source/abi/lib$name.abi" "$work/lib$name.abi" || { echo "lib$name changed its interface"; exit 1; }
done
# The check notices a change: zmxMalloc with another parameter, and a function that is gone.
sed "s/<parameter type-id='type-id-1' name='len'/<parameter type-id='type-id-3' name='len'/" "$work/libzmxcore.abi" >"$work/other.abi"
sed "/<elf-symbol name='zmxFree'/d" "$work/libzmxcore.abi" >"$work/gone.abi"
for changed in other gone; do
    ! cmp -s "$work/libzmxcore.abi" "$work/$changed.abi" || { echo "nothing was changed for $changed"; exit 1; }
    if abidiff "$source/abi/libzmxcore.abi" "$work/$changed.abi" >/dev/null; then echo "goes unnoticed: $changed"; exit 1; fi
done
echo "the interface is the one on record"
