#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# The zmx jpeg commands: exit codes and messages, truncated files, reduced sizes, CMYK through PAM files, and headerless
# files.
#
#   jpeg_command.sh BIN-DIR
set -u
zmx=$(realpath "$1")/zmx
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
cd "$dir" || exit 1
checks=0 failures=0
bad() { echo "FAILED: $*"; failures=$((failures + 1)); }
succeeds() { checks=$((checks + 1)); "$@" >out 2>err || bad "$*: exit $?, $(cat err)"; }
fails() { # fails WORDS COMMAND...: with one line on stderr that holds the words
    local words=$1
    shift
    checks=$((checks + 1))
    "$@" >out 2>err && bad "$* succeeds"
    grep -q -- "$words" err || bad "$*: says '$(cat err)', not '$words'"
    [ "$(wc -l <err)" -eq 1 ] || bad "$*: more than one line: $(cat err)"
}

samples() { # samples EXPRESSION...: of each pixel (x, y), 48 x 40 of them, as bytes
    # shellcheck disable=SC2059
    printf "$(awk "BEGIN { for (y = 0; y < 40; ++y) for (x = 0; x < 48; ++x) { $(printf 'printf "\\%%03o", %s;' "$@") } }")"
}
{ printf 'P6 48 40 255\n'; samples x*5 y*6 '(x+y)*2'; } >in.ppm

succeeds "$zmx" jpeg encode in.ppm a.jpg --quality 85
succeeds "$zmx" jpeg decode a.jpg a.ppm
succeeds "$zmx" jpeg info a.jpg
grep -q "size: 48 by 40" out || bad "info: $(cat out)"
for scale in 1/2 1/4 1/8; do
    succeeds "$zmx" jpeg decode a.jpg s.pgm.ppm --scale $scale
    head -n 2 s.pgm.ppm | grep -q "^$((48 / ${scale#1/})) $((40 / ${scale#1/}))" || bad "scale $scale: $(head -c 12 s.pgm.ppm)"
done

# A truncated file: the rows so far and a warning; an error only when asked for.
size=$(wc -c <a.jpg)
head -c $((size - 120)) a.jpg >cut.jpg
succeeds "$zmx" jpeg decode cut.jpg cut.ppm
grep -q "cut.jpg: warning: byte [0-9]*: .*rows from" err || bad "no warning: $(cat err)"
succeeds "$zmx" image compare a.ppm cut.ppm
"$zmx" jpeg decode cut.jpg cut.ppm --strict 2>err && bad "--strict succeeds"
head -c 100 a.jpg >short.jpg
fails "short.jpg: byte " "$zmx" jpeg decode short.jpg b.ppm
: >empty.jpg
fails "empty.jpg: byte 0: not a JPEG file" "$zmx" jpeg decode empty.jpg b.ppm
fails "nowhere.jpg: No such file" "$zmx" jpeg decode nowhere.jpg b.ppm
fails "more pixels than the limit" "$zmx" jpeg decode a.jpg b.ppm --max-pixels 1000
fails "ends in .png" "$zmx" jpeg decode a.jpg b.gif
fails "not a PNG, PNM, PAM, TIFF or BMP file" "$zmx" jpeg encode a.jpg b.jpg
"$zmx" jpeg encode in.ppm b.jpg --quality 101 2>err && bad "quality 101 is taken"
"$zmx" jpeg encode in.ppm b.jpg --sampling 411 2>err && bad "sampling 411 is taken"
for command in encode decode info; do
    succeeds "$zmx" jpeg $command --help
    grep -q "zmx jpeg $command" out || bad "no example in the help of $command"
done

# CMYK: ink amounts in a PAM file; the file stores them inverted, with an Adobe marker.
{ printf 'P7\nWIDTH 48\nHEIGHT 40\nDEPTH 4\nMAXVAL 255\nTUPLTYPE CMYK\nENDHDR\n'; samples x*5 y*6 x+y x; } >in.pam
for options in "" --ycck "--ycck --sampling 444 --restart 3"; do
    # shellcheck disable=SC2086
    succeeds "$zmx" jpeg encode in.pam c.jpg --quality 95 $options
    succeeds "$zmx" jpeg decode c.jpg c.pam --strict
    grep -aq "TUPLTYPE CMYK" c.pam || bad "not CMYK"
    succeeds "$zmx" image compare in.pam c.pam
    awk '$1 == "psnr" { exit !($2 > 36) }' out || bad "CMYK $options: $(cat out)"
done
fails "written to a .tif or .pam" "$zmx" jpeg decode c.jpg c.png

# What a JPEG file does not hold is refused, with the way out.
{ printf 'P7\nWIDTH 48\nHEIGHT 40\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\n'; samples x*5 y*6 x+y 200; } >rgba.pam
{ printf 'P7\nWIDTH 48\nHEIGHT 40\nDEPTH 2\nMAXVAL 255\nTUPLTYPE GRAYSCALE_ALPHA\nENDHDR\n'; samples x*5 200; } >ga.pam
{ printf 'P5 48 40 255\n'; samples x*5; } >g.pgm
{ printf 'P6 48 40 255\n'; samples x*5 y*6 x+y; } >rgb.ppm
for mode in "" --progressive "--lossless 1"; do
    for picture in rgba.pam ga.pam; do
        # shellcheck disable=SC2086
        fails "with alpha, which a JPEG file does not hold; --no-alpha leaves it out" "$zmx" jpeg encode $picture b.jpg $mode
    done
    # shellcheck disable=SC2086
    succeeds "$zmx" jpeg encode rgba.pam b.jpg $mode --no-alpha
    # shellcheck disable=SC2086
    succeeds "$zmx" jpeg encode rgb.ppm want.jpg $mode
    cmp -s b.jpg want.jpg || bad "without alpha another picture: $mode"
    # shellcheck disable=SC2086
    succeeds "$zmx" jpeg encode ga.pam b.jpg $mode --no-alpha
    # shellcheck disable=SC2086
    succeeds "$zmx" jpeg encode g.pgm want.jpg $mode
    cmp -s b.jpg want.jpg || bad "grey without alpha another picture: $mode"
done
{ printf 'P7\nWIDTH 48\nHEIGHT 40\nDEPTH 5\nMAXVAL 255\nTUPLTYPE ANY\nENDHDR\n'; samples x*5 y*6 x+y x y; } >five.pam
fails "channels" "$zmx" jpeg encode five.pam b.jpg
fails "channels" "$zmx" jpeg encode five.pam b.jpg --lossless 1
fails "ycck is for CMYK" "$zmx" jpeg encode in.ppm b.jpg --ycck
fails "rgb is for RGB" "$zmx" jpeg encode in.pam b.jpg --rgb

# Headerless files: the size is printed, and wanted back.
for format in rgb bgr gray; do
    succeeds "$zmx" jpeg decode a.jpg a.raw --format $format
    [ "$(cat out)" = 48x40 ] || bad "$format: the size is '$(cat out)'"
    succeeds "$zmx" jpeg encode a.raw $format.jpg --raw-size 48x40 --format $format --quality 95
    succeeds "$zmx" jpeg decode $format.jpg r.ppm --strict
done
cmp -s rgb.jpg bgr.jpg || bad "the order of the channels changes the picture"
succeeds "$zmx" jpeg decode a.jpg a.rgb --format rgb
tail -c $((48 * 40 * 3)) a.ppm | cmp -s - a.rgb || bad "raw bytes are not those of the picture"
succeeds "$zmx" jpeg decode c.jpg c.raw --format cmyk
tail -c $((48 * 40 * 4)) c.pam | cmp -s - c.raw || bad "raw inks are not those of the picture"
succeeds "$zmx" jpeg encode c.raw d.jpg --raw-size 48x40 --cmyk
succeeds "$zmx" jpeg encode c.pam e.jpg
cmp -s d.jpg e.jpg || bad "raw inks are coded in another way"
for format in rgb565 bgr555; do
    succeeds "$zmx" jpeg decode a.jpg a.raw --format $format --scale 1/2
    [ "$(cat out) $(wc -c <a.raw)" = "24x20 960" ] || bad "$format: $(cat out), $(wc -c <a.raw) bytes"
    fails "a CMYK picture has no packed pixels" "$zmx" jpeg decode c.jpg c.raw --format $format
done
fails "cmyk is for CMYK pictures" "$zmx" jpeg decode a.jpg a.raw --format cmyk
fails "cmyk is for CMYK pictures" "$zmx" jpeg decode c.jpg c.raw --format rgb
fails "7680 bytes, but the picture has 7488" "$zmx" jpeg encode c.raw d.jpg --raw-size 48x39 --cmyk
fails "wants a picture of 4 channels" "$zmx" jpeg encode a.rgb d.jpg --raw-size 48x40 --format rgb --cmyk
for size in 48 48x 0x40 48x-1 48x40x1 x 999999x1; do
    checks=$((checks + 1))
    "$zmx" jpeg encode a.rgb d.jpg --raw-size $size 2>err && bad "the size $size is taken"
done
checks=$((checks + 2))
"$zmx" jpeg encode a.rgb d.jpg --format rgb 2>err && bad "--format without --raw-size is taken"
"$zmx" jpeg decode a.jpg a.raw --format yuv 2>err && bad "--format yuv is taken"

echo "$checks checks, $failures failures"
[ $failures -eq 0 ] && [ $checks -gt 75 ]
