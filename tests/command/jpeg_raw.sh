#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# Packed pixels against a plain packing of the 8-bit picture: both are converted with rounding, in every sampling, so the
# fields are equal. What --fast converts MCU by MCU, without rounding, differs by one at the most.
#
#   jpeg_raw.sh BIN-DIR
set -u
here=$(realpath "$(dirname "$0")")
. "$here/support/checks.bash"
need cjpeg
need_pillow

cat >packed.py <<'P'
import sys
import numpy as np

name, most = sys.argv[1], int(sys.argv[2])
rgb = np.fromfile("o.rgb", np.uint8).reshape(-1, 3).astype(int)
green = int(name[4])
low, high = (0, 2) if name[:3] == "rgb" else (2, 0)
want = [rgb[:, low] >> 3, rgb[:, 1] >> 8 - green, rgb[:, high] >> 3]
words = np.fromfile("o.packed", "<u2").astype(int)
got = [words & 31, words >> 5 & (1 << green) - 1, words >> 5 + green]
assert len(words) == len(rgb)
worst = max(abs(a - b).max() for a, b in zip(want, got))
assert worst <= most, worst
P
waves 99 75 255 3 >c.pnm
for sampling in grey 1x1 2x1 1x2 2x2; do
    if [ $sampling = grey ]; then file=(-grayscale); else file=(-sample $sampling); fi
    for quality in 40 90; do
        check cjpeg -quality $quality "${file[@]}" -outfile a.jpg c.pnm
        for upsampling in plain fancy; do
            check "$zmx" jpeg decode a.jpg o.rgb --format rgb --upsampling $upsampling
            for format in rgb565 bgr565 rgb555 bgr555; do
                check "$zmx" jpeg decode a.jpg o.packed --format $format --upsampling $upsampling
                [ "$(cat out)" = 99x75 ] || bad "$format: the size is '$(cat out)'"
                check "$python" packed.py $format 0
            done
        done
        check "$zmx" jpeg decode a.jpg o.rgb --format rgb --fast
        check "$zmx" jpeg decode a.jpg o.packed --format bgr565 --upsampling plain
        check "$python" packed.py bgr565 1
    done
done
finish 150
