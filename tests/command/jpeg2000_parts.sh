#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# jpeg2000_parts.sh BIN-DIR: parts of JPEG2000 files (windows, components, regions of interest), PGX files, metadata and
# wrong command lines, with OpenJPEG's programs, ffmpeg and Pillow as judges.
set -eu
. "$(dirname "$0")/support/checks.bash" "$1"
need opj_compress opj_decompress ffmpeg pamcut
need_pillow
[ -x "$zmx" ] || { echo "no $zmx"; exit 77; }
psnr() { "$zmx" image compare "$1" "$2" | awk '$1 == "psnr" { print $2 }'; }

awk 'BEGIN { srand(5); print "P3\n301 233\n255"
    for (y = 0; y < 233; y++) for (x = 0; x < 301; x++) for (c = 0; c < 3; c++) {
        v = (2 * x + 3 * y + 50 * c) % 256 + (rand() - 0.5) * 30; print int(v < 0 ? 0 : v > 255 ? 255 : v) } }' >ascii.ppm
"$zmx" image convert ascii.ppm colour.ppm

# ---- windows: those of opj_decompress are on the reference grid, whose origin is that of the picture here
for extra in "" "--tile 100,90" "--order RPCL --precincts 64,64" "--lossy --rate 3 --tile 128,128"; do
    # shellcheck disable=SC2086
    "$zmx" j2k encode colour.ppm a.j2k $extra
    for window in 10,20,100,50 0,0,301,233 299,231,2,2 97,88,7,5 150,0,1,233; do
        IFS=, read -r x y w h <<<"$window"
        for reduce in 0 1 3; do
            opj_decompress -i a.j2k -o ref.ppm -d "$x,$y,$((x + w)),$((y + h))" -r $reduce >log 2>&1 || { rm -f ref.ppm; }
            "$zmx" j2k decode a.j2k own.ppm --strict --window $window --reduce $reduce 2>log || rm -f own.ppm
            # A window that holds no sample of the reduced picture is refused by both.
            [ -f ref.ppm ] || [ -f own.ppm ] || continue
            if [ "${extra#--lossy}" = "$extra" ]; then
                same_pixels ref.ppm own.ppm || bad "window $window, reduced by $reduce: $extra"
            else
                "$zmx" image compare ref.ppm own.ppm --within 1 | awk '$1 == "within" { exit !($2 >= 0.995) }' ||
                    bad "window $window, reduced by $reduce: $extra"
            fi
            rm -f ref.ppm own.ppm
        done
    done
done

# ---- components, and PGX files
opj_compress -i colour.ppm -o b.j2k -mct 0 -t 90,90 >log
for c in 0 1 2; do
    opj_decompress -i b.j2k -o ref.pgm -c $c >log 2>&1
    "$zmx" j2k decode b.j2k own.pgm --component $c && same_pixels ref.pgm own.pgm || bad "component $c"
done
# Three components of which two are subsampled are taken for YCbCr by opj_decompress, two are not.
"$zmx" j2k encode colour.ppm a.j2k --sampling 2,2 --no-colour-transform && "$zmx" j2k decode a.j2k own.pgx --strict
"$zmx" j2k encode own.0.pgx two.j2k --with own.1.pgx --tile 64,64
opj_decompress -i two.j2k -o ref.pgx >log 2>&1
for c in 0 1; do cmp ref_$c.pgx own.$c.pgx || bad "PGX file of component $c"; done
"$zmx" j2k encode own.0.pgx again.j2k --with own.1.pgx,own.2.pgx && "$zmx" j2k decode again.j2k again.pgx
for c in 0 1 2; do cmp own.$c.pgx again.$c.pgx || bad "PGX file of component $c there and back"; done
opj_compress -i ref_0.pgx -o b.j2k >log && "$zmx" j2k decode b.j2k back.pgx && cmp own.0.pgx back.pgx || bad "PGX through opj_compress"
"$zmx" j2k decode a.j2k own.pgm --separate || bad "components into files of their own"
[ "$(head -c 11 own.1.pgm | tr '\n' ' ')" = "P5 151 117 " ] || bad "the size of a subsampled component"

# ---- regions of interest, and components that are coded in their own way
"$zmx" j2k encode colour.ppm a.j2k --region 100,60,80,90
opj_decompress -i a.j2k -o ref.ppm >log 2>&1 && same_pixels ref.ppm colour.ppm || bad "a region of interest, decoded by opj_decompress"
"$zmx" j2k decode a.j2k own.ppm --strict && same_pixels own.ppm colour.ppm || bad "a region of interest"
"$zmx" j2k encode colour.ppm a.j2k --region 100,60,80,90 --rate 2
pamcut -left 100 -top 60 -width 80 -height 90 colour.ppm >want.ppm
for decoder in ours theirs; do
    if [ $decoder = ours ]; then "$zmx" j2k decode a.j2k out.ppm; else opj_decompress -i a.j2k -o out.ppm >log 2>&1; fi
    pamcut -left 100 -top 60 -width 80 -height 90 out.ppm >got.ppm
    awk -v region="$(psnr got.ppm want.ppm)" -v all="$(psnr out.ppm colour.ppm)" 'BEGIN { exit !(region == "inf" || region > all + 10) }' ||
        bad "a region of interest at 2 bits a pixel, $decoder"
done
"$zmx" j2k encode colour.ppm a.j2k --lossy --rate 4 --own 1:lossless,levels=2,block=16x32 --own 2:levels=7
opj_decompress -i a.j2k -o ref.ppm >log 2>&1 && "$zmx" j2k decode a.j2k own.ppm --strict &&
    "$zmx" image compare ref.ppm own.ppm --within 1 | awk '$1 == "within" { exit !($2 >= 0.999) }' || bad "components with options of their own"

# ---- ratios, as opj_compress has them
for ratio in 5 20; do
    "$zmx" j2k encode colour.ppm a.j2k --lossy --ratio $ratio
    awk -v s="$(stat -c %s a.j2k)" -v r=$ratio 'BEGIN { t = 301 * 233 * 3 / r; exit !(s <= t && s > 0.93 * t) }' || bad "ratio $ratio"
done
"$zmx" j2k encode colour.ppm a.j2k --ratio 40,10,1 && "$zmx" j2k decode a.j2k own.ppm && same_pixels own.ppm colour.ppm || bad "ratios down to 1"

# ---- metadata: Pillow finds what we write, and we find what travels
cat >meta.py <<'PY'
import sys
from PIL import Image, ImageCms
mode, path = sys.argv[1:3]
if mode == "make":
    im = Image.open("colour.ppm")
    exif = Image.Exif()
    exif[0x010F] = "a maker"
    im.save(path, dpi=(300, 300), exif=exif.tobytes(), icc_profile=ImageCms.ImageCmsProfile(ImageCms.createProfile("sRGB")).tobytes())
else:
    a, b = Image.open(path), Image.open(sys.argv[3])
    if mode == "all":
        assert a.info["icc_profile"] == b.info["icc_profile"], "colour profile"
    else:  # Pillow does not read the profile of a JP2 file: a COLR box by method 2
        assert b"colr\x02\0\0" + a.info["icc_profile"] in open(sys.argv[3], "rb").read(), "colour profile"
    assert [round(float(v)) for v in b.info["dpi"]] == [300, 300], b.info["dpi"]
    if mode == "all":
        assert b.getexif()[0x010F] == "a maker", "EXIF"
PY
"$python" meta.py make photo.png
"$zmx" j2k encode photo.png photo.jp2 && "$python" meta.py jp2 photo.png photo.jp2 || bad "metadata in a JP2 file"
"$zmx" j2k decode photo.jp2 back.png && "$python" meta.py all photo.png back.png || bad "metadata out of a JP2 file"
"$zmx" j2k encode photo.png plain.jp2 --strip && ! "$python" meta.py jp2 photo.png plain.jp2 2>/dev/null || bad "--strip"
"$zmx" j2k encode photo.png photo.j2k 2>&1 | grep -q 'no place for' || bad "a loss that is not told"

# ---- ffmpeg decodes what we write
for extra in "" "--tile 100,90 --order PCRL" "--bypass --levels 3" "--rate 1,2,0 --sop --eph"; do
    # shellcheck disable=SC2086
    "$zmx" j2k encode colour.ppm a.jp2 $extra && ffmpeg -v error -y -i a.jp2 -pix_fmt rgb24 out.ppm 2>log && same_pixels colour.ppm out.ppm ||
        bad "ffmpeg: $extra"
done

# ---- raw segments: wherever a bit makes no difference to opj_decompress, it makes none here
awk 'BEGIN { srand(9); print "P2\n24 24\n255"; for (i = 0; i < 576; i++) print int(rand() * 256) }' >ascii.pgm
"$zmx" image convert ascii.pgm noise.pgm
"$zmx" j2k encode noise.pgm raw.j2k --bypass --levels 0
size=$(stat -c %s raw.j2k) changed=0
for ((at = size - 420; at < size - 2; at += 1)); do
    byte=$(od -An -tu1 -j $at -N 1 raw.j2k)
    cp raw.j2k flip.j2k
    printf "\\x$(printf %02x $((byte ^ 1)))" | dd of=flip.j2k bs=1 seek=$at conv=notrunc status=none
    opj_decompress -i flip.j2k -o ref.pgm >log 2>&1 || continue
    same_pixels ref.pgm noise.pgm || continue
    changed=$((changed + 1))
    "$zmx" j2k decode flip.j2k own.pgm --strict && same_pixels own.pgm noise.pgm || bad "a bit of padding in byte $at"
done
[ $changed -ge 3 ] || bad "only $changed bits of padding"

# ---- nonsense is refused by name, with 2; a bad file with 1
nonsense() { # a word of the message, then the command line
    local word=$1 code=0
    shift
    "$zmx" j2k "$@" >log 2>&1 || code=$?
    [ $code = 2 ] && grep -qi -e "$word" log || bad "exit code $code for: $* ($(tail -1 log))"
}
nonsense rate encode colour.ppm a.j2k --rate -1
nonsense rate encode colour.ppm a.j2k --rate nan
nonsense rate encode colour.ppm a.j2k --rate 2,1
nonsense psnr encode colour.ppm a.j2k --psnr 40,30
nonsense psnr encode colour.ppm a.j2k --psnr -3
nonsense ratio encode colour.ppm a.j2k --ratio 5,10
nonsense ratio encode colour.ppm a.j2k --ratio 0.5
nonsense tile encode colour.ppm a.j2k --tile -5,10
nonsense origin encode colour.ppm a.j2k --origin -5,10
nonsense block encode colour.ppm a.j2k --block 48,48
nonsense precinct encode colour.ppm a.j2k --precincts 3,3
nonsense precincts encode colour.ppm a.j2k --precincts 32
nonsense step encode colour.ppm a.j2k --step 0.001
nonsense own encode colour.ppm a.j2k --own 1:fast
nonsense changes encode colour.ppm a.j2k --changes 0,0,1
nonsense region encode colour.ppm a.j2k --region 1,2,3
nonsense window decode a.j2k own.ppm --window 1,-2,3,4
nonsense reduce decode a.j2k own.ppm --reduce -1
code=0
"$zmx" j2k decode colour.ppm own.ppm 2>log || code=$?
[ $code = 1 ] && grep -q 'colour.ppm' log || bad "exit code $code for a file that is no JPEG2000 file"
code=0
"$zmx" j2k decode raw.j2k own.pgm --window 20,20,5,5 2>log || code=$?
[ $code = 1 ] && grep -q window log || bad "exit code $code for a window beside the picture"

echo "$changed bits of padding"
finish 0
