#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# Smooth upsampling of chroma, at full and at reduced sizes, against djpeg's default, which is by the same triangle filter:
# the pictures differ by no more than what the two inverse transforms differ by. At 1/8 djpeg repeats chroma of half the
# rate in one direction only; we do not, and come closer to the picture (jpeg_photo.sh).
#
#   jpeg_upsampling.sh BIN-DIR
set -u
. "$(dirname "$0")/support/checks.bash"
need cjpeg djpeg awk

# Waves of all colours, hard edges and a little texture.
awk 'BEGIN {
    w = 211; h = 157; s = 1
    print "P3", w, h, 255
    for (y = 0; y < h; ++y) for (x = 0; x < w; ++x) {
        s = (s * 1103515245 + 12345) % 2147483648; t = int(s / 65536) % 17 - 8
        e = (int(x / 37) + int(y / 29)) % 2 * 40
        printf "%d %d %d\n", 100 + 80 * sin(x * 0.031) + e + t, 120 + 60 * cos(y * 0.043) + 30 * sin(x * 0.3) + t, 90 + 50 * sin((x + y) * 0.019) + e + t
    }
}' >big.pnm
"$zmx" image convert big.pnm big.ppm || exit 1
for size in 1x1 1x2 2x3 3x4 4x9 5x5 6x6 7x1 17x33 208x144; do
    "$zmx" image convert big.ppm $size.ppm --crop 2,3,${size%x*},${size#*x} || exit 1
done

# largest NAME SCALE OPTIONS...: the largest difference between djpeg's picture of the file and ours
largest() {
    local name=$1 scale=$2
    shift 2
    cjpeg "$@" -outfile a.jpg "$name" && djpeg -scale $scale -outfile theirs.ppm a.jpg &&
        "$zmx" jpeg decode a.jpg ours.ppm --scale $scale --strict || return
    "$zmx" image compare theirs.ppm ours.ppm | awk '$1 == "max" { print $2 }'
}
for name in big 1x1 1x2 2x3 3x4 4x9 5x5 6x6 7x1 17x33 208x144; do
    for sampling in 1x1 2x1 1x2 2x2; do
        for options in "-quality 30" "-quality 75" "-quality 95" "-quality 75 -progressive" "-quality 90 -restart 1"; do
            for scale in 1/1 1/2 1/4 1/8; do
                case $scale,$sampling,$options in 1/8,2x1,* | 1/8,1x2,* | 1/[24],*,*75) continue ;; esac
                checks=$((checks + 1))
                # shellcheck disable=SC2086
                max=$(largest $name.ppm $scale -sample $sampling $options)
                echo "$name $scale $sampling $options: $max"
                [ -n "$max" ] && [ "$max" -le 3 ] || bad "$name, $scale, sampling $sampling, $options: they differ by ${max:-?}"
            done
        done
    done
done

# Without colour there is the transform alone.
for quality in 30 75 95; do
    cjpeg -grayscale -quality $quality -outfile a.jpg big.ppm
    for scale in 1/1 1/2 1/4 1/8; do
        checks=$((checks + 1))
        djpeg -scale $scale -outfile theirs.pgm a.jpg && "$zmx" jpeg decode a.jpg ours.pgm --scale $scale --strict &&
            "$zmx" image compare theirs.pgm ours.pgm | awk '$1 == "max" { found = $2 <= 1 } END { exit !found }' ||
            bad "grey, quality $quality, $scale"
    done
done

# The filter is at work: repetition is much further from djpeg's picture.
cjpeg -sample 2x2 -quality 90 -outfile a.jpg big.ppm && djpeg -outfile theirs.ppm a.jpg && "$zmx" jpeg decode a.jpg plain.ppm --upsampling plain
checks=$((checks + 1))
"$zmx" image compare theirs.ppm plain.ppm | awk '$1 == "max" { exit $2 <= 10 }' || bad "repetition comes as close"

finish 500
