#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# CMYK between JPEG and TIFF: our TIFF files and our CMYK and YCCK JPEG files in Pillow and djpeg, Pillow's JPEG files
# here, and TIFF files of every layout from Pillow and tiffcp, which are the same picture to our encoder.
#
#   jpeg_cmyk.sh BIN-DIR
set -u
here=$(realpath "$(dirname "$0")")
. "$here/support/checks.bash"
need tiffcp tiffinfo djpeg
need_pillow

# Smooth inks of all amounts, without a symmetry in which inverse inks or exchanged channels would go unnoticed.
cat >inks.py <<'P'
import numpy as np
from PIL import Image

def read(path):
    with Image.open(path) as im:
        assert im.mode in ("CMYK", "RGB", "L"), im.mode
        return np.asarray(im).astype(int)
def psnr(a, b): return 10 * np.log10(255.0 ** 2 / max(1e-9, np.mean((a - b) ** 2)))
def close(a, b, most, psnr_least):
    assert a.shape == b.shape, (a.shape, b.shape)
    assert abs(a - b).max() <= most and psnr(a, b) >= psnr_least, (abs(a - b).max(), psnr(a, b))
P
cat >make.py <<'P'
from inks import *
y, x = np.mgrid[0:77, 0:101]
waves = [90 + 80 * np.sin(x * 0.05), 60 + 50 * np.cos(y * 0.06), 40 + (x + y) * 0.5, 20 + 15 * np.sin((x - y) * 0.04)]
Image.fromarray(np.dstack(waves).round().astype(np.uint8), "CMYK").save("in.tif")
open("in.raw", "wb").write(np.dstack(waves).round().astype(np.uint8).tobytes())
P
check "$python" make.py
check "$zmx" image convert in.tif in.pam

# Ours: TIFF and JPEG as Pillow reads them.
cat >ours.py <<'P'
from inks import *
source, tiff, jpeg = read("in.tif"), read("o.tif"), read("o.jpg")
raw = np.fromfile("o.raw", np.uint8).reshape(77, 101, 4)
assert (tiff == raw).all()
close(source, tiff, 24, 36)
close(tiff, jpeg, 4, 46)
# djpeg has no CMYK files: it multiplies what is left of the light.
light = (255 - jpeg[..., :3]) * (255 - jpeg[..., 3:]) / 255
close(light.round(), read("o.ppm"), 5, 46)
P
for options in "" "--ycck" "--ycck --sampling 444" "--ycck --sampling 422 --optimize" "--progressive" "--ycck --restart 3 --progressive"; do
    # shellcheck disable=SC2086
    check "$zmx" jpeg encode in.tif o.jpg --quality 95 $options
    check "$zmx" jpeg decode o.jpg o.tif --strict
    check "$zmx" jpeg decode o.jpg o.raw --strict --format cmyk
    check djpeg -dct int -outfile o.ppm o.jpg
    check "$python" ours.py
done
check tiffinfo o.tif
grep -q "Photometric Interpretation: separated" out && grep -q "InkSet: 1" out && grep -q "Compression Scheme: AdobeDeflate" out ||
    bad "tiffinfo: $(cat out)"
check tiffcp -c none o.tif plain.tif
[ ! -s err ] || bad "tiffcp warns: $(cat err)"

# Pillow's JPEG here.
cat >theirs.py <<'P'
from inks import *
close(read("t.jpg"), read("o.tif"), 2, 50)
P
for quality in 50 75 95; do
    check "$python" -c "from inks import *; Image.open('in.tif').save('t.jpg', quality=$quality, subsampling=0)"
    check "$zmx" jpeg decode t.jpg o.tif --strict
    check "$python" theirs.py
done

# same PICTURE WHAT...: the encoder makes the same file of PICTURE as of the original
same() {
    check "$zmx" jpeg encode "$1" s.jpg "${options[@]}"
    cmp -s want.jpg s.jpg || bad "${*:2}: another picture"
}
# every_layout TIFF: through tiffcp, which separates planes of 8 bits only
every_layout() {
    local layout
    for layout in "-c none" "-c lzw" "-c lzw:2" "-c zip:2" "-c packbits -r 5" "-p separate -c lzw" "-p separate -c zip -r 7" \
        "-t -w 16 -l 16 -c none" "-t -w 32 -l 48 -c lzw:2" "-t -w 128 -l 128 -c zip" "-p separate -t -w 16 -l 32 -c zip:2" \
        "-B -c none" "-L -c lzw" "-8 -c zip" "-c none -f lsb2msb"; do
        [[ $1 == deep* && $layout == "-p separate"* ]] && continue
        # shellcheck disable=SC2086
        check tiffcp $layout "$1" t.tif
        same t.tif "tiffcp $layout of $1"
    done
}
options=(--quality 90 --ycck)
check "$zmx" jpeg encode in.pam want.jpg "${options[@]}"
same in.tif Pillow
for compression in raw tiff_lzw tiff_adobe_deflate packbits; do
    check "$python" -c "from inks import *; Image.open('in.tif').save('t.tif', compression='$compression')"
    same t.tif "Pillow, $compression"
done
check "$zmx" jpeg encode in.raw s.jpg --raw-size 101x77 --cmyk "${options[@]}"
cmp -s want.jpg s.jpg || bad "raw inks: another picture"
every_layout in.tif

# 16 bits a sample, and the other kinds of picture.
check "$zmx" jpeg encode in.tif deep.jpg --precision 12 --quality 95
check "$zmx" jpeg decode deep.jpg deep.tif --strict
check "$zmx" jpeg decode deep.jpg deep.pam --strict
check tiffinfo deep.tif
grep -q "Bits/Sample: 16" out || bad "12 bits: $(cat out)"
options=(--precision 12)
check "$zmx" jpeg encode deep.pam want.jpg "${options[@]}"
every_layout deep.tif
waves 101 77 255 3 >c.pnm && waves 61 47 65535 1 >g.pnm && "$zmx" image convert c.pnm colour.tif && "$zmx" image convert g.pnm deepgrey.tif || bad "grey and colour"
options=(--quality 85)
check "$zmx" jpeg encode c.pnm want.jpg "${options[@]}"
every_layout colour.tif
options=(--lossless 1)
check "$zmx" jpeg encode g.pnm want.jpg "${options[@]}"
every_layout deepgrey.tif
check "$python" -c "from inks import *; assert (read('colour.tif').reshape(-1) == np.loadtxt('c.pnm', skiprows=1).reshape(-1)).all()"

# What cannot be read says so, in a line.
head -c 2000 in.tif >cut.tif
checks=$((checks + 1))
"$zmx" jpeg encode cut.tif s.jpg 2>err && bad "cut.tif is encoded"
grep -q "^zmx: cut.tif: TIFF: " err && [ "$(wc -l <err)" -eq 1 ] || bad "cut.tif: $(cat err)"

# YCbCr in strips of JPEG is read as the RGB that it was.
check tiffcp -c jpeg -r 16 colour.tif coded.tif
check "$zmx" jpeg encode coded.tif s.jpg
checks=$((checks + 1))
"$zmx" image compare coded.tif colour.tif | awk '/^psnr/ { good = $2 > 25 } END { exit !good }' || bad "coded.tif is another picture"
finish 150
