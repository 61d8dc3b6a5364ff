#!/usr/bin/env bash
# A photograph through cjpeg, decoded by us and by djpeg: how close both come to the original, with chroma repeated and
# smoothed. Colours are converted with rounding, as djpeg does, but for coarser pictures of repeated chroma at 2x2: those
# are converted MCU by MCU without, which costs 0.3 and 0.6 dB here.
#
#   jpeg_photo.sh BIN-DIR
set -u
here=$(realpath "$(dirname "$0")")
. "$here/support/checks.bash"
need cjpeg djpeg awk
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
            case $sampling,$upsampling in 2x2,plain) apart=1.0 ;; *) apart=0.1 ;; esac
            djpeg -dct int "${repeat[@]}" -outfile theirs.ppm a.jpg && "$zmx" jpeg decode a.jpg ours.ppm --upsampling $upsampling --strict ||
                { bad "decoding, $sampling, quality $quality"; continue; }
            ours=$(decibels ours.ppm) theirs=$(decibels theirs.ppm)
            echo "$sampling, quality $quality, $upsampling: $ours dB, djpeg $theirs dB"
            awk -v a="$ours" -v b="$theirs" -v most=$apart 'BEGIN { exit !(a > 40 && b > 40 && a - b <= most && b - a <= most) }' ||
                bad "$sampling, quality $quality, $upsampling: they differ"
        done
    done
done
finish 25
