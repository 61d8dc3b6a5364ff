#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# 12-bit files, extended sequential and progressive, both ways with DCMTK: the two decoders differ by a level at most.
#
#   jpeg_12bit.sh BIN-DIR
set -u
here=$(realpath "$(dirname "$0")")
. "$here/support/checks.bash"
. "$here/support/dicom.bash"
need dcmcjpeg dcmdjpeg dump2dcm dcmdump awk dd

waves 101 67 4095 1 >g.pnm && "$zmx" image convert g.pnm g.pgm || exit 1
waves 101 67 4095 3 >c.pnm && "$zmx" image convert c.pnm c.ppm || exit 1
near() { "$zmx" image compare "$1" "$2" | awk -v limit="$3" '$1 == "max" { m = $2; seen = 1 } END { exit !(seen && m <= limit) }'; }
psnr() { "$zmx" image compare "$1" "$2" | awk '$1 == "psnr" { print $2 }'; }

dicom_of_pnm g.pgm plain.dcm 101 67 1 12 || exit 1
for mode in +ee +es +ep; do
    for quality in 50 90 100; do
        check dcmcjpeg -q $mode +bt +q $quality plain.dcm coded.dcm
        pixels coded.dcm >theirs.jpg
        "$zmx" jpeg info theirs.jpg | grep -qx "bits: 12" || bad "dcmcjpeg $mode writes no 12 bits"
        check "$zmx" jpeg decode theirs.jpg ours.pgm --strict
        check dcmdjpeg -q coded.dcm decoded.dcm
        pnm_of_dicom decoded.dcm theirs.pgm 101 67 1 12
        check near ours.pgm theirs.pgm 1
        check "$zmx" jpeg transcode theirs.jpg t.jpg --digest --progressive
        mv out digests
        check awk '$1 == "before" { b = $2 } $1 == "after" { a = $2 } END { exit !(a && a == b) }' digests
    done
done

syntax_of() { case "$*" in *--progressive*) echo JPEGFullProgression:Non-hierarchical:Process10+12 ;; *) echo JPEGExtended:Process2+4 ;; esac; }
for options in "" "--restart 3" "--progressive" "--progressive --restart 5"; do
    for quality in 50 90 100; do
        # shellcheck disable=SC2086
        check "$zmx" jpeg encode g.pgm ours.jpg --precision 12 --quality $quality $options
        check "$zmx" jpeg decode ours.jpg ours.pgm --strict
        # shellcheck disable=SC2086
        dicom_of_jpeg ours.jpg coded.dcm 101 67 1 12 "$(syntax_of $options)"
        check dcmdjpeg -q coded.dcm decoded.dcm
        pnm_of_dicom decoded.dcm theirs.pgm 101 67 1 12
        check near ours.pgm theirs.pgm 1
        floor=30
        [ $quality = 90 ] && floor=38
        [ $quality = 100 ] && floor=70
        check awk -v p="$(psnr g.pgm ours.pgm)" -v f=$floor 'BEGIN { exit !(p >= f) }'
    done
done
# Colour, whose conversion DCMTK leaves to us with +cn: the planes, here of RGB stored as it is.
for options in "--rgb" "--rgb --progressive"; do
    # shellcheck disable=SC2086
    check "$zmx" jpeg encode c.ppm ours.jpg --precision 12 --quality 95 $options
    check "$zmx" jpeg decode ours.jpg ours.ppm --strict
    # shellcheck disable=SC2086
    dicom_of_jpeg ours.jpg coded.dcm 101 67 3 12 "$(syntax_of $options)"
    check dcmdjpeg -q +cn coded.dcm decoded.dcm
    pnm_of_dicom decoded.dcm theirs.ppm 101 67 3 12
    check near ours.ppm theirs.ppm 1
done
# Chroma of a lower rate: brought to the rate of the picture by the same filter, converted by the same factors.
for sampling in 444 422 420 1x2,1x1,1x1; do
    for quality in 75 95; do
        upsampling=fancy
        [ $sampling = 1x2,1x1,1x1 ] && upsampling=plain # DCMTK repeats rows
        check "$zmx" jpeg encode c.ppm ours.jpg --precision 12 --quality $quality --sampling $sampling
        check "$zmx" jpeg decode ours.jpg ours.ppm --strict --upsampling $upsampling
        dicom_of_jpeg ours.jpg coded.dcm 101 67 3 12 "$(syntax_of)"
        sed 's/\[RGB\]/[YBR_FULL_422]/' coded.dcm.txt >ycc.txt && check dump2dcm -q ycc.txt coded.dcm
        check dcmdjpeg -q coded.dcm decoded.dcm
        pnm_of_dicom decoded.dcm theirs.ppm 101 67 3 12
        check near ours.ppm theirs.ppm 4
    done
done
# 16-bit PNG files in and out.
check "$zmx" image convert g.pgm g.png
check "$zmx" jpeg encode g.png ours.jpg --precision 12 --quality 100
check "$zmx" jpeg decode ours.jpg ours.png
check awk -v p="$(psnr g.png ours.png)" 'BEGIN { exit !(p >= 70) }'
finish 160
