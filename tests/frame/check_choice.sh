#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# check_choice.sh BUILD-DIR: from the build folder the loader takes the library of the best level that the processor has, and
# the one below when it is told that an instruction set is missing.
set -u
bin=$1/bin
loader=$(ldd "$bin/zmx_digests" | grep -o '/[^ ]*ld-linux[^ ]*')
best=$("$loader" --help | grep -oE '^  x86-64-v[234] \(supported' | head -n 1 | grep -o 'v[234]')
[ -n "$best" ] || { echo "this processor has no level above the baseline"; exit 77; }
taken() { "$loader" "$@" --list "$bin/zmx_digests" | grep -oE '/[^ ]*libzmxjpx\.so[^ ]*'; }
failed=0
expect() { # expect WHAT WANTED GOT
    [[ $3 == $2 ]] && return
    echo "$1: the loader takes $3"
    failed=1
}
expect "as it comes" "*/glibc-hwcaps/x86-64-$best/libzmxjpx.so.6.1" "$(taken)"
expect "with no level allowed" "*/lib/libzmxjpx.so.6.1" "$(taken --glibc-hwcaps-mask none)"
expect "with x86-64-v2 alone" "*/glibc-hwcaps/x86-64-v2/*" "$(taken --glibc-hwcaps-mask x86-64-v2)"
expect "without SSSE3 and AVX2" "*/lib/libzmxjpx.so.6.1" "$(GLIBC_TUNABLES=glibc.cpu.hwcaps=-AVX2,-SSSE3 taken)"
exit $failed
