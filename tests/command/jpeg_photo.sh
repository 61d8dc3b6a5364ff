#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# A photograph through cjpeg, decoded by us and by djpeg: how close both come to the original, with chroma smoothed, which
# is the default of both, and repeated. And at reduced sizes, how close to the means of the original.
#
#   jpeg_photo.sh BIN-DIR
set -u
here=$(realpath "$(dirname "$0")")
. "$here/support/checks.bash"
need cjpeg djpeg awk
need_pillow
cat >means.py <<'P'
import sys
import numpy as np
from PIL import Image

n = int(sys.argv[3])
a = np.asarray(Image.open(sys.argv[1])).astype(int)
h, w = a.shape[:2]
means = a.reshape(h // n, n, w // n, n, 3).sum((1, 3))
Image.fromarray(((means + n * n // 2) // (n * n)).astype(np.uint8)).save(sys.argv[2])
P
photo=/usr/share/backgrounds/mate/nature/Storm.jpg
[ -r $photo ] || { echo "no photograph"; exit 77; }

# At a quarter of the size, what its own encoder left behind is averaged out.
check "$zmx" jpeg decode $photo original.ppm --scale 1/4
decibels() { "$zmx" image compare original.ppm "$1" | awk '$1 == "psnr" { print $2 }'; }
for sampling in 1x1 2x1 1x2 2x2; do
    for quality in 75 90; do
        check cjpeg -sample $sampling -quality $quality -outfile a.jpg original.ppm
        for upsampling in plain fancy; do
            checks=$((checks + 1))
            if [ $upsampling = plain ]; then repeat=(-nosmooth); else repeat=(); fi
            djpeg "${repeat[@]}" -outfile theirs.ppm a.jpg && "$zmx" jpeg decode a.jpg ours.ppm --upsampling $upsampling --strict ||
                { bad "decoding, $sampling, quality $quality"; continue; }
            ours=$(decibels ours.ppm) theirs=$(decibels theirs.ppm)
            echo "$sampling, quality $quality, $upsampling: $ours dB, djpeg $theirs dB"
            awk -v a="$ours" -v b="$theirs" 'BEGIN { exit !(a > 40 && b > 40 && a - b <= 0.02 && b - a <= 0.02) }' ||
                bad "$sampling, quality $quality, $upsampling: they differ"
        done
    done
done

# Reduced sizes against the means of the original; its sides are multiples of 8. djpeg repeats chroma at 1/8, we do not.
"$zmx" image convert original.ppm whole.ppm --crop 0,0,480,320
for scale in 2 4 8; do
    "$python" means.py whole.ppm means.ppm $scale
    for sampling in 1x1 2x1 1x2 2x2; do
        check cjpeg -sample $sampling -quality 90 -outfile a.jpg whole.ppm
        check djpeg -scale 1/$scale -outfile theirs.ppm a.jpg
        check "$zmx" jpeg decode a.jpg ours.ppm --scale 1/$scale --strict
        ours=$("$zmx" image compare means.ppm ours.ppm | awk '$1 == "psnr" { print $2 }')
        theirs=$("$zmx" image compare means.ppm theirs.ppm | awk '$1 == "psnr" { print $2 }')
        echo "$sampling, 1/$scale: $ours dB, djpeg $theirs dB"
        check awk -v a="$ours" -v b="$theirs" 'BEGIN { exit !(a > 40 && b - a <= 0.02) }'
    done
done
finish 60
