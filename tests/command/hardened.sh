#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# hardened.sh BIN-DIR: what the ELF files of a hardened build say of themselves: the command is position-independent, what the
# loader has filled in cannot be written any more, no stack is executable, and the compiler's checks are there.
set -u
here=$(realpath "$(dirname "$0")")
bin=$(realpath "$1")
. "$here/support/checks.bash"
need readelf
build=$("$zmx" --version --verbose | sed -n 's/^build *//p')
[ -n "$build" ] || bad "no line on the build"
case $build in *hardened*) ;; *) echo "this build is not hardened: $build"; exit 77 ;; esac

# says WORDS FILE READELF-OPTION...
says() {
    local words=$1 file=$2
    shift 2
    checks=$((checks + 1))
    readelf -W "$@" "$file" 2>&1 | grep -qE -- "$words" || bad "$file: readelf $* does not say '$words'"
}
silent() {
    local words=$1 file=$2
    shift 2
    checks=$((checks + 1))
    readelf -W "$@" "$file" 2>&1 | grep -qE -- "$words" && bad "$file: readelf $* says '$words'"
}
files=("$bin/zmx" "$bin"/../lib/libzmxjpx.so "$bin"/../lib/libzmxcore.so)
# Those for newer processors, where they were built.
for level in "$bin"/../lib/glibc-hwcaps/*/libzmxjpx.so.6.1; do [ ! -e "$level" ] || files+=("$level"); done
for file in "${files[@]}"; do
    says 'Type: +DYN' "$file" -h
    says 'GNU_RELRO' "$file" -l
    says 'BIND_NOW|FLAGS_1.*NOW' "$file" -d      # with RELRO: full
    says 'GNU_STACK.* RW +0x' "$file" -l         # and not RWE
    silent 'TEXTREL' "$file" -d
    # The table that calls go through lies within what becomes read-only: with lazy binding it has a section of its own.
    silent ' \.got\.plt .* WA ' "$file" -S
done
says 'FLAGS_1.*PIE' "$bin/zmx" -d
for file in "$bin/zmx" "$bin"/../lib/libzmxcore.so; do says '__stack_chk_fail' "$file" --dyn-syms; done
says '__(fprintf|printf|snprintf|memcpy|vsnprintf|fread|read)_chk' "$bin/zmx" --dyn-syms
finish 22
