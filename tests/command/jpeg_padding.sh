#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# Small pictures whose sides are no multiples of a unit: blocks that only fill up units cost next to nothing. With its
# transform in floating point cjpeg has our coefficients, and so our files are its files, byte for byte; progressive ones
# have the same size, as their segments stand in another order.
#
#   jpeg_padding.sh BIN-DIR
set -u
here=$(realpath "$(dirname "$0")")
. "$here/support/checks.bash"
need cjpeg jpegtran awk cmp

waves 150 140 255 3 >c.pnm && "$zmx" image convert c.pnm c.ppm || exit 1
for size in 1x1 2x5 5x2 8x8 9x7 16x16 17x15 24x40 33x21 40x24 65x50 100x100 129x97; do
    "$zmx" image convert c.ppm s.ppm --crop 11,13,${size%x*},${size#*x} || bad "crop $size"
    for sampling in 444,1x1 422,2x1 420,2x2; do
        for quality in 30 75 90; do
            for options in ", " "--optimize,-optimize" "--restart 2,-restart 2B" "--progressive,-progressive"; do
                # shellcheck disable=SC2086
                check "$zmx" jpeg encode s.ppm o.jpg --quality $quality --sampling ${sampling%,*} ${options%,*}
                # shellcheck disable=SC2086
                check cjpeg -dct float -quality $quality -sample ${sampling#*,} ${options#*,} -outfile t.jpg s.ppm
                if [ "$options" = "--progressive,-progressive" ] && [ "$(wc -c <o.jpg)" = "$(wc -c <t.jpg)" ]; then
                    jpegtran -outfile o1.jpg o.jpg && jpegtran -outfile t1.jpg t.jpg && mv o1.jpg o.jpg && mv t1.jpg t.jpg
                fi
                cmp -s o.jpg t.jpg || bad "$size, sampling ${sampling%,*}, quality $quality ${options%,*}: $(wc -c <o.jpg) bytes, cjpeg $(wc -c <t.jpg)"
            done
        done
    done
done
finish 900
