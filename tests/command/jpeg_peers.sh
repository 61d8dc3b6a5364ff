#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# JPEG files between the zmx command and libjpeg-turbo's cjpeg and djpeg: ours are opened by djpeg without a warning; ours
# and theirs come out of our decoder as they come out of djpeg, grey within 1, colour within 3, which is what two inverse
# transforms differ by. With --fast colours are not rounded: there it is the quality that is compared.
#
#   jpeg_peers.sh BIN-DIR
set -u
. "$(dirname "$0")/support/checks.bash"
need cjpeg djpeg jpegtran awk

# A picture of waves, edges and fine texture.
awk 'BEGIN {
    w = 517; h = 389; s = 1
    print "P3", w, h, 255
    for (y = 0; y < h; ++y) for (x = 0; x < w; ++x) {
        s = (s * 1103515245 + 12345) % 2147483648; t = int(s / 65536) % 17 - 8
        e = (int(x / 37) + int(y / 29)) % 2 * 30
        printf "%d %d %d\n", 110 + 70 * sin(x * 0.031) + e + t, 120 + 60 * cos(y * 0.043) + t, 90 + 50 * sin((x + y) * 0.019) + e + t
    }
}' >big.pnm
"$zmx" image convert big.pnm big.ppm || exit 1
for size in 1 7 8 9 16 17 33 100; do "$zmx" image convert big.ppm $size.ppm --crop 40,30,$size,$(((size * 3 + 1) / 2)) || exit 1; done

psnr() { "$zmx" image compare "$1" "$2" | awk '$1 == "psnr" { print $2 }'; }
# near OURS: no sample is further from theirs.pnm than two inverse transforms may be
near() {
    local most=3
    [ "${1##*.}" = pgm ] && most=1
    "$zmx" image compare theirs.pnm "$1" >compared && awk -v most=$most '$1 == "max" { exit !($2 <= most) }' compared
}

# ours NAME OPTIONS...: a file of ours in djpeg
ours() {
    local name=$1 ours theirs out=ours.${original##*.}
    shift
    checks=$((checks + 1))
    "$zmx" jpeg encode "$name" o.jpg "$@" || { bad "encode $name $*"; return; }
    djpeg -outfile theirs.pnm o.jpg 2>djpeg.log || bad "djpeg refuses $name $*: $(cat djpeg.log)"
    [ ! -s djpeg.log ] || bad "djpeg warns of $name $*: $(cat djpeg.log)"
    "$zmx" jpeg decode o.jpg "$out" --strict && near "$out" || bad "decode $name $*: $(tr '\n' ' ' <compared)"
    djpeg -nosmooth -outfile theirs.pnm o.jpg && "$zmx" jpeg decode o.jpg "$out" --strict --fast || { bad "fast $name $*"; return; }
    ours=$(psnr "$original" "$out") theirs=$(psnr "$original" theirs.pnm)
    awk -v a="$ours" -v b="$theirs" 'BEGIN { exit !(a == b || (a - b <= 2 && b - a <= 2)) }' && return
    # A ratio of three samples says little.
    [ "$name" = 1.ppm ] && "$zmx" image compare theirs.pnm ours.ppm | awk '$1 == "max" { exit $2 > 2 }' && return
    bad "$name $*, fast: $ours dB decoded by us, $theirs dB by djpeg"
}
for sampling in 444 422 420; do
    for quality in 10 50 75 90 100; do
        for options in "" "--optimize" "--restart 1" "--optimize --restart 7"; do
            # shellcheck disable=SC2086
            original=big.ppm ours big.ppm --sampling $sampling --quality $quality $options
        done
    done
    for size in 1 7 8 9 16 17 33 100; do
        original=$size.ppm ours $size.ppm --sampling $sampling --quality 85
        original=$size.ppm ours $size.ppm --sampling $sampling --quality 30 --optimize --restart 2
    done
done
original=big.ppm ours big.ppm --rgb --quality 80
# The luma alone, against the luma of the original as a file of quality 100 would have it.
"$zmx" jpeg encode big.ppm grey.jpg --gray --quality 100 && "$zmx" jpeg decode grey.jpg grey.pgm
for quality in 10 50 90; do original=grey.pgm ours grey.pgm --quality $quality --optimize; done
original=grey.pgm ours big.ppm --gray --quality 75 --restart 5

# theirs FILE WHAT...: a file of theirs in our decoder
theirs() {
    local file=$1 what=${*:2}
    checks=$((checks + 1))
    djpeg -outfile theirs.pnm "$file" || bad "djpeg $what"
    local out=ours.ppm
    head -c 2 theirs.pnm | grep -q P5 && out=ours.pgm
    "$zmx" jpeg decode "$file" $out --strict && near $out || bad "$what: $(tr '\n' ' ' <compared)"
}
for sample in 1x1 2x1 2x2 1x2 4x1 4x2; do
    for quality in 10 25 60 90 100; do
        for options in "" "-optimize" "-restart 1" "-restart 3B"; do
            # shellcheck disable=SC2086
            cjpeg -sample $sample -quality $quality $options -outfile t.jpg big.ppm 2>/dev/null && theirs t.jpg cjpeg -sample $sample -quality $quality $options
        done
    done
    for size in 1 7 8 9 16 17 33 100; do
        cjpeg -sample $sample -quality 80 -outfile t.jpg $size.ppm && theirs t.jpg cjpeg -sample $sample, $size.ppm
    done
done
for quality in 10 75 95; do
    cjpeg -grayscale -quality $quality -outfile t.jpg big.ppm 2>/dev/null && theirs t.jpg cjpeg -grayscale -quality $quality
    cjpeg -rgb -quality $quality -outfile t.jpg big.ppm 2>/dev/null && theirs t.jpg cjpeg -rgb -quality $quality
done
# Components in scans of their own.
printf '0;\n1;\n2;\n' >scans
for sample in 1x1 2x1 2x2; do
    cjpeg -sample $sample -quality 85 -outfile i.jpg big.ppm && jpegtran -scans scans -outfile t.jpg i.jpg && theirs t.jpg three scans, $sample
    jpegtran -scans scans -restart 2 -optimize -outfile t.jpg i.jpg && theirs t.jpg three scans with restarts, $sample
done
# What is not supported says so.
cjpeg -arithmetic -outfile t.jpg 33.ppm && "$zmx" jpeg decode t.jpg ours.ppm 2>log && bad "arithmetic coding is decoded"
grep -q "arithmetic" log || bad "arithmetic coding is not named: $(cat log)"

finish 201
