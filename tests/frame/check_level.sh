#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# check_level.sh LEVEL LIBRARY BIN-DIR: runs every test program that uses the shared library, and the digests, with this
# file of it. A level that the processor has not is run by an emulator that has it; where there is none, the test is skipped.
set -u
level=$1 library=$2 bin=$3
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
# A folder of its own, so that the loader finds no better one beside it.
ln -s "$library" "$folder/$(basename "$(readlink -f "$library")")"
core=$(ldd "$bin/zmx_digests" | grep -o '/[^ ]*libzmxcore[^ ]*')
ln -s "$core" "$folder/$(basename "$core")"
export LD_LIBRARY_PATH=$folder

run=()
loader=$(ldd "$bin/zmx_digests" | grep -o '/[^ ]*ld-linux[^ ]*')
if [ "$level" != baseline ] && ! "$loader" --help | grep -q "^  $level (supported"; then
    run=(qemu-x86_64 -cpu max)
    [ "$level" != x86-64-v4 ] && command -v "${run[0]}" >/dev/null && "${run[@]}" /bin/true 2>/dev/null ||
        { echo "neither this processor nor an emulator has $level"; exit 77; }
fi

if ! ldd "$bin/zmx_digests" | grep -qF "$folder/"; then
    echo "the loader does not take $library"
    exit 1
fi
programs=0 failed=0
for program in "$bin"/zmx_digests "$bin"/test_*; do
    case ${program##*/} in test_own_* | test_codec_*) continue ;; esac
    ldd "$program" | grep -qF "$folder/" || continue
    programs=$((programs + 1))
    arguments=(--gtest_brief=1)
    [ "${program##*/}" = zmx_digests ] && arguments=("$(dirname "$0")/../digests/digests.txt")
    if ! output=$("${run[@]}" "$program" "${arguments[@]}" 2>&1); then
        printf '%s\n' "$output" | tail -n 40
        echo "FAILED at $level: ${program##*/}"
        failed=$((failed + 1))
    fi
done
echo "$level: $programs programs, $failed failed"
[ "$programs" -gt 20 ] && [ "$failed" -eq 0 ]
