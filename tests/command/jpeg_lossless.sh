#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# Lossless files, both ways and pixel for pixel: with DCMTK (grey of 8 to 16 bits and 8-bit RGB, all predictors, a point
# transform) and with FFmpeg (decodes all of ours of 8 and 16 bits; writes predictors 1, 2 and 4, and subsampled planes).
#
#   jpeg_lossless.sh BIN-DIR
set -u
here=$(realpath "$(dirname "$0")")
. "$here/support/checks.bash"
. "$here/support/dicom.bash"
need dcmcjpeg dcmdjpeg dump2dcm dcmdump awk dd python3
lossless=JPEGLossless:Non-hierarchical:Process14

for bits in 8 12 16; do waves 61 47 $(((1 << bits) - 1)) 1 >g.pnm && "$zmx" image convert g.pnm g$bits.pgm || exit 1; done
waves 61 47 255 3 >c.pnm && "$zmx" image convert c.pnm c.ppm || exit 1
# All 16 bits at random: every predictor wraps.
{ printf 'P5 61 47 65535\n'; awk 'BEGIN { for (i = 0; i < 5734; ++i) { s = (s * 69069 + 12345) % 4294967296; printf "%c", 1 + int(s / 65536) % 127 } }'; } >n.pnm
head -c $((15 + 5734)) n.pnm >noise.pgm

# The values of two pictures, whatever their depths are called.
equal_values() { python3 -c 'import sys
def read(path):
    data = open(path, "rb").read()
    kind, width, height, top, rest = data.split(None, 4) if data.split(None, 4)[0] else None
    n = int(width) * int(height) * (3 if kind == b"P6" else 1) * (2 if int(top) > 255 else 1)
    samples = data[-n:]
    return samples if int(top) < 256 else [samples[i] << 8 | samples[i + 1] for i in range(0, n, 2)]
sys.exit(list(read(sys.argv[1])) != list(read(sys.argv[2])))' "$1" "$2"; }

dcmtk() { # dcmtk PNM CHANNELS BITS
    local name=$1 channels=$2 bits=$3 predictor
    dicom_of_pnm "$name" plain.dcm 61 47 "$channels" "$bits" || bad "no DICOM file of $name"
    for predictor in 1 2 3 4 5 6 7; do
        # Theirs.
        check dcmcjpeg -q +el +sv $predictor plain.dcm coded.dcm
        pixels coded.dcm >theirs.jpg
        check "$zmx" jpeg decode theirs.jpg ours.pnm --strict
        check equal_values ours.pnm "$name"
        # Ours.
        for options in "" "--restart $((61 * predictor))"; do
            # shellcheck disable=SC2086
            check "$zmx" jpeg encode "$name" ours.jpg --lossless $predictor $options
            dicom_of_jpeg ours.jpg coded.dcm 61 47 "$channels" "$bits" $lossless
            check dcmdjpeg -q +cn coded.dcm decoded.dcm
            pnm_of_dicom decoded.dcm theirs.pnm 61 47 "$channels" "$bits"
            check equal_values theirs.pnm "$name"
        done
    done
}
for bits in 8 12 16; do dcmtk g$bits.pgm 1 $bits; done
dcmtk noise.pgm 1 16
dcmtk c.ppm 3 8

# A point transform, in grey of 16 bits: what is left is the same for both.
dicom_of_pnm g16.pgm plain.dcm 61 47 1 16
for shift in 1 4; do
    check dcmcjpeg -q +el +sv 6 +pt $shift plain.dcm coded.dcm
    pixels coded.dcm >theirs.jpg
    check "$zmx" jpeg decode theirs.jpg theirs.pgm --strict
    check "$zmx" jpeg encode g16.pgm ours.jpg --lossless 6 --point-transform $shift
    check "$zmx" jpeg decode ours.jpg ours.pgm --strict
    check same_pixels ours.pgm theirs.pgm
    dicom_of_jpeg ours.jpg coded.dcm 61 47 1 16 $lossless
    check dcmdjpeg -q coded.dcm decoded.dcm
    pnm_of_dicom decoded.dcm dcmtk.pgm 61 47 1 16
    check equal_values dcmtk.pgm ours.pgm
done

if command -v ffmpeg >/dev/null; then
    quietly() { ffmpeg -hide_banner -loglevel error -y "$@" </dev/null; }
    for name in c.ppm g8.pgm g16.pgm noise.pgm; do
        for predictor in 1 2 3 4 5 6 7; do
            check "$zmx" jpeg encode $name o.jpg --lossless $predictor
            check quietly -i o.jpg theirs.${name##*.}
            check same_pixels theirs.${name##*.} $name
        done
    done
    # Theirs, in planes of Y, Cb, Cr, which lossless files of ours would hold as they are.
    for predictor in 1 2 3; do
        for format in yuvj444p yuvj422p yuv420p; do
            check quietly -i c.ppm -c:v ljpeg -strict -1 -pix_fmt $format -pred $predictor -f image2 theirs.jpg
            check quietly -i theirs.jpg -f rawvideo -pix_fmt $format planes.raw
            check "$zmx" jpeg decode theirs.jpg ours.ppm --strict
            check python3 - $format <<'P'
import sys
format, w, h = sys.argv[1], 61, 47
across, down = 1 if format == "yuvj444p" else 2, 2 if format == "yuv420p" else 1
planes, ours = open("planes.raw", "rb").read(), open("ours.ppm", "rb").read()[-w * h * 3:]
cw, ch = -(-w // across), -(-h // down)
size = [w * h, cw * ch, cw * ch]
assert len(planes) == sum(size)
for y in range(h):
    for x in range(w):
        at = y // down * cw + x // across
        want = planes[y * w + x], planes[size[0] + at], planes[size[0] + size[1] + at]
        assert tuple(ours[3 * (y * w + x):][:3]) == want, (x, y)
P
        done
    done
fi
finish 280
