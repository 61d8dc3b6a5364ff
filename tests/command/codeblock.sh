#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# codeblock.sh BIN-DIR: code blocks of fresh codestreams, written by opj_compress (OpenJPEG) in all 64 code-block styles
# for pictures of several sizes, decode to the pictures.
set -eu
bin=$1
command -v opj_compress >/dev/null || { echo "no opj_compress"; exit 77; }
[ -x "$bin/test_codeblock_streams" ] || { echo "no test_codeblock_streams in $bin"; exit 77; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# WIDTH HEIGHT: a ramp with an edge, and noise of two strengths
picture() {
    local x y v seed=$((1000 * $1 + $2))
    printf 'P5\n%d %d\n255\n' "$1" "$2"
    for ((y = 0; y < $2; ++y)); do
        for ((x = 0; x < $1; ++x)); do
            seed=$(((seed * 1103515245 + 12345) & 0x7fffffff))
            v=$((y % 20 < 10 ? 5 * x + 3 * y : x % 30 < 15 ? 20 : 235))
            v=$((v % 256 + ((seed >> 16) % 256 - 128) / (x % 40 < 20 ? 16 : 2)))
            v=$((v < 0 ? 0 : v > 255 ? 255 : v))
            printf "\\x$(printf %02x $v)"
        done
    done
}

for size in "64 64" "3 5" "1 1" "101 33" "6 140"; do
    read -r width height <<<"$size"
    folder=$work/${width}x$height
    mkdir "$folder"
    picture "$width" "$height" >"$folder/picture.pgm"
    for mode in {0..63}; do
        for levels in 0 1; do
            [ "$levels" = 1 ] && [ $((width < 2 || height < 2)) = 1 ] && continue
            block=$((mode % 3)) # 64 by 64, 32 by 32, 16 by 8
            opj_compress -i "$folder/picture.pgm" -o "$folder/m$mode-l$levels.j2k" -n $((levels + 1)) -M "$mode" \
                -b "$((block == 2 ? 16 : 64 >> block)),$((block == 2 ? 8 : 64 >> block))" >/dev/null 2>&1
        done
    done
    ZMX_CODEBLOCK_STREAMS=$folder "$bin/test_codeblock_streams" --gtest_brief=1 --gtest_filter='-*CoverTheStyles'
done
