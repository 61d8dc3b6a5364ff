#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# Colour profile, EXIF, XMP and resolution between JPEG files, PNG and TIFF, and --strip and --upright, as Pillow reads and
# writes them.
#
#   jpeg_metadata.sh BIN-DIR
set -u
here=$(realpath "$(dirname "$0")")
. "$here/support/checks.bash"
need_pillow
need cjpeg jpegtran cmp

cat >meta.py <<'P'
import sys
import numpy as np
from PIL import Image, ImageCms, ImageOps

# Of three segments. A profile begins with its length, and libpng looks at it; bytes 24 to 35 say when it was made.
PROFILE = ImageCms.ImageCmsProfile(ImageCms.createProfile("sRGB")).tobytes() + bytes(range(256)) * 600
PROFILE = len(PROFILE).to_bytes(4, "big") + PROFILE[4:24] + bytes(12) + PROFILE[36:]
XMP = b'<?xpacket begin=""?><x:xmpmeta xmlns:x="adobe:ns:meta/"/><?xpacket end="w"?>'

def exif(orientation):
    e = Image.Exif()
    e[274] = orientation
    e[271] = "a maker"
    return e.tobytes()
def profile(path):
    with Image.open(path) as im: return im.info.get("icc_profile")
def orientation(path):
    with Image.open(path) as im: return im.getexif().get(274)
def maker(path):
    with Image.open(path) as im: return im.getexif().get(271)
def xmp(path): # where the format has it; not every Pillow knows
    head = b"http://ns.adobe.com/xap/1.0/\0"
    with Image.open(path) as im:
        if im.format == "JPEG": return next((body[len(head):] for name, body in im.applist if body.startswith(head)), None)
        found = im.tag_v2.get(700) if im.format == "TIFF" else im.info.get("XML:com.adobe.xmp")
        return found.encode() if isinstance(found, str) else found
def with_xmp(path):
    data, body = open(path, "rb").read(), b"http://ns.adobe.com/xap/1.0/\0" + XMP
    open(path, "wb").write(data[:2] + b"\xff\xe1" + (len(body) + 2).to_bytes(2, "big") + body + data[2:])
def dpi(path):
    with Image.open(path) as im: return tuple(round(v) for v in im.info.get("dpi", (0, 0)))
def pixels(path):
    with Image.open(path) as im: return np.asarray(im).astype(int)
P
cat >make.py <<'P'
from meta import *
y, x = np.mgrid[0:64, 0:96]
a = np.dstack([x * 2, y * 3, x + y]).astype(np.uint8)
for orientation in range(1, 9):
    Image.fromarray(a).save(f"in{orientation}.jpg", quality=92, subsampling=0, icc_profile=PROFILE, exif=exif(orientation), dpi=(300, 150))
    with_xmp(f"in{orientation}.jpg")
Image.fromarray(a).save("in.png", icc_profile=PROFILE, exif=exif(6), dpi=(300, 300))
Image.fromarray(a[..., 0]).save("grey.jpg", dpi=(72, 72), icc_profile=PROFILE)
P
check "$python" make.py

# what FILE: all is there, by Pillow
cat >all.py <<'P'
from meta import *
path, turn, resolution = sys.argv[1], int(sys.argv[2]), tuple(int(v) for v in sys.argv[3].split("x"))
assert profile(path) == PROFILE, (path, "profile")
assert orientation(path) == turn, (path, orientation(path))
assert maker(path) == "a maker", (path, maker(path))
assert dpi(path) == resolution, (path, dpi(path))
if len(sys.argv) > 4: assert xmp(path) == XMP, (path, xmp(path))
P
cat >none.py <<'P'
from meta import *
for path in sys.argv[1:]:
    assert not profile(path) and not orientation(path) and not maker(path) and not xmp(path) and dpi(path) in ((0, 0), (1, 1)), path
P
# From JPEG, and back into it by each road.
for ending in png tif; do
    check "$zmx" jpeg decode in6.jpg a.$ending --strict
    check "$python" all.py a.$ending 6 300x150 xmp
    for options in "" --progressive "--optimize --sampling 444" "--precision 12"; do
        # shellcheck disable=SC2086
        check "$zmx" jpeg encode a.$ending b.jpg $options --strict
        [ "$options" = "--precision 12" ] || check "$python" all.py b.jpg 6 300x150 xmp
        check "$zmx" jpeg decode b.jpg c.$ending --strict
        check "$python" all.py c.$ending 6 300x150 xmp
    done
done
check "$zmx" jpeg encode in.png b.jpg --strict
check "$python" all.py b.jpg 6 300x300
check "$zmx" jpeg transcode in6.jpg b.jpg --progressive --strict
check "$python" all.py b.jpg 6 300x150 xmp
check "$zmx" jpeg decode grey.jpg g.tif --strict
check "$zmx" jpeg encode g.tif g.jpg --lossless 1 --strict
check "$zmx" jpeg decode g.jpg g2.tif --strict
check "$python" -c 'from meta import *; assert profile("g2.tif") == PROFILE and dpi("g2.tif") == (72, 72)'
# PNG files (ISO/IEC 15948, 11.3.3.3) have no grey pictures with profiles of RGB.
check "$zmx" jpeg decode grey.jpg g.png
grep -q "g.png: warning: PNG has no place for this colour profile" err || bad "no warning: $(cat err)"

# Without it.
check "$zmx" jpeg decode in6.jpg a.png --strip
check "$zmx" jpeg encode in.png b.jpg --strip
check "$zmx" jpeg transcode in6.jpg c.jpg --strip
check "$python" none.py a.png b.jpg c.jpg

# What a file cannot hold is a warning, and an error when asked for.
check "$zmx" jpeg encode in.png rgb.jpg --rgb
grep -q "in.png: warning: the resolution is left out" err || bad "no warning: $(cat err)"
checks=$((checks + 1))
"$zmx" jpeg encode in.png strict.jpg --rgb --strict 2>err && bad "--strict takes it"
[ ! -e strict.jpg ] || bad "--strict leaves a file"
check "$zmx" jpeg decode in6.jpg a.ppm
grep -q "a.ppm: warning" err || bad "a PNM file holds no metadata, and nobody says so"

# The pixels as the orientation means them, from files and into files; and the coefficients.
cat >upright.py <<'P'
from meta import *
with Image.open(sys.argv[1]) as im: want = np.asarray(ImageOps.exif_transpose(im)).astype(int)
for path in sys.argv[2:]:
    got = pixels(path)
    assert got.shape == want.shape, (path, got.shape, want.shape)
    assert abs(got - want).max() <= 3, (path, abs(got - want).max())
    assert orientation(path) in (None, 1), (path, orientation(path))
    assert profile(path) == PROFILE
P
for n in 1 2 3 4 5 6 7 8; do
    check "$zmx" jpeg decode in$n.jpg up.png --upright --strict
    check "$zmx" jpeg transcode in$n.jpg up.jpg --orient --strict
    check "$python" upright.py in$n.jpg up.png up.jpg
    check "$zmx" jpeg decode in$n.jpg kept.png --strict
    check "$zmx" jpeg encode kept.png up2.jpg --upright --quality 100 --sampling 444 --strict
    check "$python" upright.py in$n.jpg up2.jpg
    [ "$n" -lt 5 ] && size=96x64 || size=64x96
    check "$zmx" jpeg decode in$n.jpg up.raw --upright --format bgr565
    [ "$(cat out)" = $size ] || bad "orientation $n: packed pixels of $(cat out)"
    check "$zmx" jpeg decode in$n.jpg up.raw --upright --format rgb
    [ "$(cat out)" = $size ] || bad "orientation $n: raw pixels of $(cat out)"
done
# A camera's files tell their resolution in the EXIF alone.
cat >camera.py <<'P'
from meta import *
e = Image.Exif()
e[282], e[283], e[296] = 240.0, 120.0, 2
Image.new("RGB", (96, 64)).save("camera.jpg", exif=e.tobytes())
data = open("camera.jpg", "rb").read()
assert data[2:4] == b"\xff\xe0"
open("camera.jpg", "wb").write(data[:2] + data[4 + (data[4] << 8 | data[5]):]) # without JFIF
P
check "$python" camera.py
check "$zmx" jpeg decode camera.jpg camera.png --strict
check "$python" -c 'from meta import *; assert dpi("camera.png") == (240, 120), dpi("camera.png")'

# As two other programs see it. exiftool finds every tag of EXIF, GPS and XMP again in a PNG file and in the JPEG file that
# is made of it; a TIFF file has no second resolution, nor place for the tags that say where the samples are.
if command -v exiftool >/dev/null; then
    tags() { exiftool -a -G1 -s -n -EXIF:all -GPS:all -XMP:all --XMPToolkit "$@"; }
    check exiftool -q -overwrite_original -Make="a maker" -Model="a camera" -Artist=somebody -Copyright=none \
        -DateTimeOriginal="2024:01:02 03:04:05" -ExposureTime=1/250 -FNumber=5.6 -GPSLatitude=48.5 -GPSLatitudeRef=N \
        -GPSLongitude=11.25 -GPSLongitudeRef=E -XMP-dc:Title="a title" -XMP-dc:Subject=one -XMP-dc:Subject=two in6.jpg
    tags in6.jpg >want.txt
    checks=$((checks + 1))
    [ "$(wc -l <want.txt)" -ge 20 ] || bad "exiftool has written $(wc -l <want.txt) tags"
    check "$zmx" jpeg decode in6.jpg a.png --strict
    check "$zmx" jpeg encode a.png b.jpg --strict
    check "$zmx" jpeg transcode in6.jpg c.jpg --progressive --strict
    for file in a.png b.jpg c.jpg; do
        tags $file >got.txt
        check diff want.txt got.txt
    done
    check "$zmx" jpeg decode in6.jpg a.tif --strict
    check "$zmx" jpeg encode a.tif d.jpg --strict
    tags d.jpg >got.txt
    grep -v -E 'IFD0\].* (XResolution|YResolution|ResolutionUnit|YCbCrPositioning) ' want.txt >kept.txt
    check diff kept.txt got.txt
    # Upright: one tag is another one, and nothing else.
    check "$zmx" jpeg transcode in6.jpg up.jpg --orient --strict
    tags up.jpg >got.txt
    checks=$((checks + 1))
    [ "$(diff want.txt got.txt | grep -c '^>')" = 1 ] && grep -q 'Orientation *: 1$' got.txt || bad "upright: $(diff want.txt got.txt)"
    # The size that the EXIF tells. jpegtran looks for it where nothing stands ahead.
    check exiftool -q -overwrite_original -Orientation#=3 -ExifImageWidth=96 -ExifImageHeight=64 camera.jpg
    for turn in "--rotate 90|-rotate 90" "--flip vertical|-flip vertical" "--crop 32,16,40,20|-crop 40x20+32+16"; do
        # shellcheck disable=SC2086
        check "$zmx" jpeg transcode camera.jpg a.jpg ${turn%|*} --strict
        # shellcheck disable=SC2086
        check jpegtran -copy all ${turn#*|} -outfile b.jpg camera.jpg
        tags a.jpg >want.txt
        tags b.jpg >got.txt
        check diff want.txt got.txt
    done
    check "$zmx" jpeg transcode in6.jpg bare.jpg --strip
    checks=$((checks + 1))
    [ -z "$(tags bare.jpg)" ] || bad "--strip leaves $(tags bare.jpg)"
else
    echo "no exiftool"
fi
if command -v convert-im6.q16 >/dev/null; then
    seen() { identify-im6.q16 -format '%x %y %U %[orientation] %wx%h' "$1" 2>/dev/null; }
    profile() { convert-im6.q16 "$1" icc:- 2>/dev/null | cksum; }
    check "$zmx" jpeg decode in6.jpg a.png --strict
    check "$zmx" jpeg decode in6.jpg a.tif --strict
    check "$zmx" jpeg encode a.tif b.jpg --strict
    for file in a.png a.tif b.jpg; do
        checks=$((checks + 1))
        [ "$(profile $file)" = "$(profile in6.jpg)" ] || bad "$file: ImageMagick sees another profile"
    done
    checks=$((checks + 1))
    [ "$(seen a.tif)" = "300 150 PixelsPerInch RightTop 96x64" ] || bad "ImageMagick sees $(seen a.tif)"
    for n in 2 5 6 8; do
        check "$zmx" jpeg decode in$n.jpg up.ppm --upright
        check convert-im6.q16 in$n.jpg -auto-orient theirs.ppm
        check "$zmx" image compare up.ppm theirs.ppm
        awk '$1 == "max" { exit $2 > 3 }' out || bad "orientation $n: ImageMagick turns to another picture"
    done
else
    echo "no ImageMagick"
fi
# EXIF that is cut or empty harms nothing.
"$python" - <<'P'
data = bytearray(open("in6.jpg", "rb").read())
at = data.index(b"Exif\0\0")
for i, n in enumerate((6, 8, 12, 14, 16, 20)):
    cut = bytearray(data)
    cut[at + n:at + n + 2] = b"\xff\xff"
    open(f"bad{i}.jpg", "wb").write(cut)
P
for n in 0 1 2 3 4 5; do
    check "$zmx" jpeg decode bad$n.jpg up.png --upright
    check "$zmx" jpeg transcode bad$n.jpg up.jpg --orient --trim
done
finish 110
