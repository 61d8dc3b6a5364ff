#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# samples.sh ZMX SOURCE FOLDER: small files of each kind in FOLDER/CODEC, by the zmx command, by other programs where they are
# there, and from the corpora of the fuzz targets.
set -eu
zmx=$1 corpus=$2/fuzz/corpus to=$3
mkdir -p "$to"/{jpeg,jpeg2000,dds,tiff,picture,pgx}
cp "$corpus"/jpeg_decode/* "$to/jpeg"
cp "$corpus"/jpeg2000_decode/* "$to/jpeg2000"
cp "$corpus"/dds/*.dds "$to/dds"
cp "$corpus"/picture/* "$to/picture"
cp "$corpus"/picture/*.tif "$to/tiff"
cp "$corpus"/pgx/* "$to/pgx"
# A picture with some of everything: 40 by 24.
awk 'BEGIN { print "P3 40 24 255"; for (i = 0; i < 40 * 24; ++i) print i * 7 % 256, i * i % 251, int(i / 40) * 10 }' >"$to/plain.ppm"
"$zmx" image convert -q "$to/plain.ppm" "$to/a.ppm"
awk 'BEGIN { print "P2 40 24 255"; for (i = 0; i < 40 * 24; ++i) print i * i % 251 }' >"$to/plain.pgm"
"$zmx" image convert -q "$to/plain.pgm" "$to/a.pgm"
for kind in "plain" "progressive --progressive" "lossless --lossless 4" "fast --fast --restart 3" "rgb --rgb"; do
    # shellcheck disable=SC2086
    "$zmx" jpeg encode -q "$to/a.ppm" "$to/jpeg/zmx-${kind%% *}.jpg" ${kind#"${kind%% *}"}
done
for kind in "plain" "lossy --lossy --rate 2" "tiles --tile 16,16 --order RPCL" "layers --lossy --ratio 20,5,1"; do
    # shellcheck disable=SC2086
    "$zmx" j2k encode -q "$to/a.ppm" "$to/jpeg2000/zmx-${kind%% *}.jp2" ${kind#"${kind%% *}"}
done
for format in dxt1 dxt3 dxt5; do "$zmx" dds encode -q "$to/a.ppm" "$to/dds/zmx-$format.dds" --format $format --mips; done
"$zmx" tiff encode -q "$to/a.ppm" "$to/tiff/zmx.tif"
# Other programs' files are laid out in other ways.
have() { command -v "$1" >/dev/null; }
if have cjpeg; then
    cjpeg -progressive "$to/a.ppm" >"$to/jpeg/peer-progressive.jpg"
    cjpeg -arithmetic "$to/a.ppm" >"$to/jpeg/peer-arithmetic.jpg" || rm -f "$to/jpeg/peer-arithmetic.jpg"
    cjpeg -sample 1x2 -restart 1 "$to/a.ppm" >"$to/jpeg/peer-1x2.jpg"
fi
if have opj_compress; then
    opj_compress -i "$to/a.ppm" -o "$to/jpeg2000/peer.jp2" -n 3 -t 20,20 -p RLCP -SOP -EPH >/dev/null
    opj_compress -i "$to/a.pgm" -o "$to/jpeg2000/peer.j2k" -n 3 -I -r 10,4 -M 63 >/dev/null
fi
if have tiffcp; then
    for layout in "lzw" "zip" "packbits -t -w 16 -l 16" "none -p separate"; do
        # shellcheck disable=SC2086
        tiffcp -c $layout "$to/tiff/zmx.tif" "$to/picture/peer-${layout%% *}.tif"
        case $layout in packbits* | none*) cp "$to/picture/peer-${layout%% *}.tif" "$to/tiff/" ;; esac
    done
fi
rm "$to"/a.p?m "$to"/plain.p?m
