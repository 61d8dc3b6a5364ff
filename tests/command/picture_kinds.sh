#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# picture_kinds.sh BIN-DIR: what is in one kind of file and has no place, or another one, in the next: samples that do not
# fill their bits, inks in JPEG2000, and colour profile, EXIF, XMP and resolution between JPEG and JP2. netpbm, OpenJPEG's
# programs, exiftool and ImageMagick judge.
set -u
. "$(dirname "$0")/support/checks.bash" "$1"
need pamdepth pnmtopng pngtopnm opj_compress opj_decompress
need_pillow
# warned WORDS COMMAND...: it succeeds with a warning of these words; and with --strict it fails, and writes nothing
warned() {
    local words=$1
    shift
    check "$@"
    grep -q "warning: .*$words" err || bad "$*: no warning of '$words': $(cat err)"
    local last=${*: -1}
    rm -f "$last"
    checks=$((checks + 1))
    "$@" --strict 2>err && bad "$* --strict succeeds"
    [ ! -e "$last" ] || bad "$* --strict leaves $last"
}

# ---- samples up to a number that is not 2^n - 1: scaled to what the file has, as netpbm scales them
for maxval in 1000 100 5 40000; do
    waves 61 47 $maxval 3 >plain.ppm
    check "$zmx" image convert plain.ppm in.ppm --strict
    bits=1
    while (((1 << bits) - 1 < maxval)); do bits=$((bits + 1)); done
    most=$(((1 << bits) - 1)) bytes=$((maxval > 255 ? 65535 : 255))
    pamdepth $most in.ppm >want.ppm 2>log
    for file in a.jp2 a.j2k; do
        warned "up to $maxval .*up to $most" "$zmx" j2k encode in.ppm $file
        check "$zmx" j2k encode in.ppm $file -q
        check "$zmx" j2k decode --strict $file own.ppm
        check cmp want.ppm own.ppm
    done
    check opj_decompress -i a.j2k -o theirs.ppm
    same_pixels want.ppm theirs.ppm || bad "samples up to $maxval, by opj_decompress"
    # Scaled back they are what they were.
    pamdepth $maxval own.ppm >back.ppm 2>log
    check cmp in.ppm back.ppm
    warned "up to $maxval .*up to $most" "$zmx" jpeg encode --lossless 1 in.ppm a.jpg
    check "$zmx" jpeg encode in.ppm a.jpg --lossless 1 -q
    check "$zmx" jpeg decode --strict a.jpg own.ppm
    check cmp want.ppm own.ppm
    # A depth that is asked for, and modes that keep no single levels.
    check "$zmx" jpeg encode in.ppm a.jpg --lossless 1 --precision 16 --strict
    check "$zmx" jpeg encode in.ppm a.jpg --strict
    check "$zmx" image convert in.ppm a.png --depth 16 --strict
    pamdepth $bytes in.ppm >want.ppm 2>log
    for file in a.png a.tif; do
        warned "up to $maxval .*up to $bytes" "$zmx" image convert in.ppm $file
        check "$zmx" image convert -q in.ppm $file
        check "$zmx" image convert $file own.ppm
        check cmp want.ppm own.ppm
    done
    warned "up to $maxval .*up to $bytes" "$zmx" tiff encode in.ppm b.tif
    pngtopnm a.png >theirs.ppm
    check cmp want.ppm theirs.ppm
    pamdepth 255 in.ppm >want.ppm 2>log
    warned "up to $maxval .*up to 255" "$zmx" image convert in.ppm a.bmp
    check "$zmx" image convert -q in.ppm a.bmp
    check "$zmx" image convert a.bmp own.ppm
    check cmp want.ppm own.ppm
done
# More bits for 2^n - 1 are no loss, fewer are one.
waves 61 47 4095 1 >plain.pgm
for file in a.png a.tif a.jp2; do
    [ $file = a.jp2 ] && check "$zmx" j2k encode plain.pgm $file --strict || check "$zmx" image convert plain.pgm $file --strict
done
warned "up to 4095 .*up to 255" "$zmx" image convert plain.pgm a.bmp

# ---- inks
"$python" - <<'P'
import numpy as np
y, x = np.mgrid[0:90, 0:120]
a = np.dstack([2 * x % 256, 2 * y % 256, (x + y) % 256, x * y // 50 % 200]).astype(np.uint8)
open("planes.raw", "wb").write(a.transpose(2, 0, 1).tobytes())
for kind in "CMYK", "RGB_ALPHA":
    head = f"P7\nWIDTH 120\nHEIGHT 90\nDEPTH 4\nMAXVAL 255\nTUPLTYPE {kind}\nENDHDR\n"
    open(kind + ".pam", "wb").write(head.encode() + a.tobytes())
P
is_kind() { grep -aq "^TUPLTYPE $2\$" "$1" || bad "$1 is no $2"; }
check "$zmx" image convert CMYK.pam want.ppm --rgb
for options in "" "--lossy --rate 12" "--tile 50,40 --sampling 1,1"; do
    # shellcheck disable=SC2086
    check "$zmx" j2k encode CMYK.pam a.jp2 --strict $options
    check "$zmx" j2k decode --strict a.jp2 own.pam
    is_kind own.pam CMYK
    # opj_decompress knows CMYK by the box, and makes light of it.
    check opj_decompress -i a.jp2 -o theirs.ppm
    "$zmx" image convert own.pam own.ppm --rgb
    "$zmx" image compare own.ppm theirs.ppm --within 2 | awk '$1 == "within" { exit !($2 >= 0.999) }' || bad "inks, by opj_decompress: $options"
    [ "$options" = "--lossy --rate 12" ] || same_pixels CMYK.pam own.pam || bad "inks there and back: $options"
done
check "$zmx" j2k encode CMYK.pam a.jp2
check "$zmx" j2k decode --strict a.jp2 own.tif
check "$zmx" image convert own.tif own.pam --strict
check cmp CMYK.pam own.pam
checks=$((checks + 1))
"$zmx" j2k decode a.jp2 own.png 2>err && bad "inks in a PNG file"
grep -q 'written to a .tif or .pam' err || bad "inks into a PNG file: $(cat err)"
# Without boxes nothing says what the components are: the samples are there, and --cmyk says it.
warned "components are inks" "$zmx" j2k encode CMYK.pam a.j2k
check "$zmx" j2k encode CMYK.pam a.j2k -q
check opj_decompress -i a.j2k -o theirs.raw
check cmp planes.raw theirs.raw
check opj_compress -i planes.raw -o theirs.j2k -F 120,90,4,8,u -mct 0
for file in a.j2k theirs.j2k; do
    check "$zmx" j2k decode --strict $file own.pam --cmyk
    check cmp CMYK.pam own.pam
    check "$zmx" j2k decode --strict $file own.png
    check "$zmx" image convert own.png own.pam
    check cmp RGB_ALPHA.pam own.pam
done
check "$zmx" j2k decode a.jp2 own.pam --component 0 --strict
checks=$((checks + 1))
"$zmx" j2k decode a.jp2 own.pam --component 0 --cmyk 2>err && bad "one component is four inks"

# More channels than a picture has: what is left out is told, and all of them come in files of their own.
"$python" -c 'open("five.pam", "wb").write(b"P7\nWIDTH 12\nHEIGHT 9\nDEPTH 5\nMAXVAL 255\nENDHDR\n" + bytes(range(180)) * 3)'
check "$zmx" j2k encode five.pam five.jp2 --strict
warned '5 channels, of which a picture has the first four; --separate' "$zmx" j2k decode five.jp2 own.pam
check "$zmx" j2k decode five.jp2 own.pgm --separate --strict
check "$zmx" j2k encode own.4.pgm a.j2k
check "$zmx" j2k decode five.jp2 own.pgm --component 4 --strict
same_pixels own.4.pgm own.pgm || bad "the fifth component"
for command in "jpeg encode" "jpeg encode --progressive" "dds encode --format dxt5" "tiff encode"; do
    checks=$((checks + 1))
    # shellcheck disable=SC2086
    "$zmx" $command five.pam own.any 2>err && bad "$command takes five channels"
    [ ! -e own.any ] || bad "$command leaves a file"
done

# ---- what stands beside the samples, between JPEG and JP2 both ways
if command -v exiftool >/dev/null; then
    "$python" -c 'from PIL import ImageCms as c; open("rgb.icc", "wb").write(c.ImageCmsProfile(c.createProfile("sRGB")).tobytes())'
    waves 96 64 255 3 >plain.ppm
    check "$zmx" jpeg encode plain.ppm meta.jpg
    check exiftool -q -overwrite_original "-icc_profile<=rgb.icc" -JFIF:XResolution=300 -JFIF:YResolution=150 -JFIF:ResolutionUnit=inches \
        -EXIF:Make=maker -EXIF:Orientation#=6 -EXIF:ExposureTime=1/250 -GPSLatitude=48.5 -GPSLatitudeRef=N -XMP-dc:Title="a title" meta.jpg
    tags() { exiftool -a -s -s -s -EXIF:Make -EXIF:Orientation -EXIF:ExposureTime -GPS:GPSLatitude -XMP-dc:Title -ICC_Profile:ProfileDescription "$1"; }
    tags meta.jpg >want
    [ "$(wc -l <want)" = 6 ] || bad "exiftool wrote: $(cat want)"
    check "$zmx" jpeg decode meta.jpg way.png --strict
    check "$zmx" j2k encode way.png a.jp2 --strict
    tags a.jp2 | cmp -s - want || bad "from JPEG to JP2: $(tags a.jp2)"
    for way in png tif; do
        check "$zmx" j2k decode --strict a.jp2 back.$way
        check "$zmx" jpeg encode back.$way back.jpg --strict
        tags back.jpg | cmp -s - want || bad "from JP2 to JPEG by $way: $(tags back.jpg)"
        exiftool -s -s -s -JFIF:XResolution -JFIF:YResolution -JFIF:ResolutionUnit back.jpg | tr '\n' ' ' |
            grep -qx '300 150 inches ' || bad "the resolution from JP2 to JPEG by $way"
        exiftool -b -icc_profile back.jpg >back.icc
        check cmp rgb.icc back.icc
        check "$zmx" j2k decode --strict a.jp2 bare.$way --strip
        check "$zmx" jpeg encode bare.$way bare.jpg --strict
        [ -z "$(tags bare.jpg)" ] || bad "--strip out of a JP2 file by $way: $(tags bare.jpg)"
        check "$zmx" jpeg encode back.$way bare.jpg --strip --strict
        [ -z "$(tags bare.jpg)" ] || bad "--strip into a JPEG file by $way: $(tags bare.jpg)"
    done
    check "$zmx" j2k encode way.png bare.jp2 --strip --strict
    [ -z "$(tags bare.jp2)" ] || bad "--strip into a JP2 file: $(tags bare.jp2)"
    # A loss on either side is told, and an error when asked for.
    warned 'no place for: colour profile, EXIF, XMP, resolution' "$zmx" j2k encode way.png a.j2k
    check "$zmx" j2k encode way.png a.j2k --strict --strip
    warned 'no place for: colour profile, EXIF, XMP, resolution' "$zmx" j2k decode a.jp2 own.ppm
    warned 'no place for: colour profile, EXIF, XMP' "$zmx" j2k decode a.jp2 own.bmp
    # Upright by the orientation that the JP2 file holds, as ImageMagick turns the JPEG file.
    check "$zmx" j2k decode --strict a.jp2 up.png --upright
    exiftool -s -s -s -Orientation -n up.png | grep -qx 1 || bad "an upright picture out of a JP2 file says it is not"
    if command -v convert-im6.q16 >/dev/null; then
        check convert-im6.q16 meta.jpg -auto-orient -strip theirs.ppm
        check "$zmx" image convert up.png own.ppm --strip
        check "$zmx" image compare own.ppm theirs.ppm
        awk '$1 == "max" { exit $2 > 3 }' out || bad "upright out of a JP2 file: $(cat out)"
    fi
else
    echo "no exiftool"
fi

# ---- every command that writes takes --strict
for command in "image convert" "jpeg encode" "jpeg decode" "jpeg transcode" "j2k encode" "j2k decode" "dds encode" "dds decode" \
    "tiff encode" "tiff decode"; do
    checks=$((checks + 1))
    # shellcheck disable=SC2086
    "$zmx" $command --help | grep -q -- '--strict' || bad "$command knows no --strict"
done
finish 170
