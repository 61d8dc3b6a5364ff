#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# jpeg2000_peers.sh BIN-DIR: what else OpenJPEG's programs can do: every option of opj_compress whose files are of Part 1,
# read here, and every option of opj_decompress that chooses what comes out, on files written here. Kinds of pictures, too:
# opacity, 16 bits, bitmaps, inks. exiftool and ImageMagick judge what stands in the boxes.
set -u
. "$(dirname "$0")/support/checks.bash" "$1"
need opj_compress opj_decompress pamstack pamdepth pgmtopbm ppmtopgm pamcut
need_pillow
waves 301 233 255 3 >plain.ppm
check "$zmx" image convert plain.ppm colour.ppm
waves 512 270 255 3 >plain.ppm
check "$zmx" image convert plain.ppm film.ppm

# close A B: within one level, as far as 9/7 numbers agree
close() { "$zmx" image compare "$1" "$2" --within 1 | awk '$1 == "within" { exit !($2 >= 0.999) }'; }

# ---- theirs to ours: theirs FILE PICTURE OPTIONS... ; what opj_decompress makes of it is the measure
theirs() {
    local file=$1 in=$2
    shift 2
    rm -f ref.ppm own.ppm
    opj_compress -i "$in" -o "$file" "$@" >log 2>&1 && opj_decompress -i "$file" -o ref.ppm >log 2>&1 || { bad "opj: $* $(tail -2 log)"; return; }
    check "$zmx" j2k decode --strict "$file" own.ppm
    close ref.ppm own.ppm || bad "theirs to ours: $*"
}
theirs a.j2k colour.ppm -q 30,40,50
theirs a.j2k colour.ppm -q 30,40,0
theirs a.j2k colour.ppm -q 30,40 -I
for sampling in 2,2 1,2 2,1; do
    theirs a.j2k colour.ppm -s $sampling
    theirs a.j2k colour.ppm -s $sampling -mct 0 -d 3,5 -t 100,90
done
theirs a.j2k colour.ppm -t 128,128 -n 4 -POC T1=0,0,1,3,3,CPRL/T1=3,0,1,4,3,LRCP
for rate in 24 48; do theirs a.j2k film.ppm -cinema2K $rate; done
theirs a.j2k film.ppm -cinema4K
for profile in 2K 4K 8K 2K_R 4K_R 8K_R 4K,mainlevel=4; do theirs a.j2k film.ppm -IMF $profile; done
theirs a.jp2 colour.ppm -jpip -p RPCL
theirs a.jp2 colour.ppm -C "a comment of ours"
for cut in R L C; do
    for order in LRCP RLCP RPCL PCRL CPRL; do theirs a.j2k colour.ppm -TP $cut -p $order -r 20,10,1 -t 150,150; done
done
theirs a.j2k colour.ppm -TLM -PLT -t 100,100 -TP R -p RLCP
for guard in 1 7; do theirs a.j2k colour.ppm -GuardBits $guard -I; done
for style in 1 2 4 8 16 32 5 63; do theirs a.j2k colour.ppm -M $style -b 16,32 -threads 2; done
for shift in 1 7 12; do theirs a.j2k colour.ppm -ROI c=1,U=$shift; done
theirs a.j2k colour.ppm -c "[128,128],[64,32]" -p PCRL -SOP -EPH -n 3
# opj_compress leaves packets out here; what is there is decoded, and the loss is told.
opj_compress -i colour.ppm -o a.j2k -n 6 -r 20,10,1 -POC T1=0,0,1,5,3,CPRL/T1=0,0,3,6,3,RLCP >log 2>&1
opj_decompress -i a.j2k -o ref.ppm >log 2>&1
check "$zmx" j2k decode a.j2k own.ppm
grep -q 'packets are missing' err && same_pixels ref.ppm own.ppm || bad "packets that are left out"
# Raw segments, each of which ends as this encoder pads it, with and without predictable termination.
for style in 1 17 5 21 33; do
    opj_compress -i colour.ppm -o a.j2k -M $style -n 1 -b 32,32 >log 2>&1
    check "$zmx" j2k decode --strict a.j2k own.ppm
    same_pixels colour.ppm own.ppm || bad "raw segments of style $style"
done
# A window by way of their TLM segments.
opj_compress -i colour.ppm -o a.j2k -t 64,64 -TLM >log 2>&1
check "$zmx" j2k decode --strict a.j2k own.ppm --window 130,70,100,99
pamcut -left 130 -top 70 -width 100 -height 99 colour.ppm >ref.ppm
same_pixels ref.ppm own.ppm || bad "a window of a file with their TLM segments"

# ---- ours to theirs
ours() { # FILE-OPTIONS -- options of opj_decompress -- options of ours that ask for the same
    local -a file=() their=() own=()
    while [ "$1" != -- ]; do file+=("$1"); shift; done; shift
    while [ "$1" != -- ]; do their+=("$1"); shift; done; shift
    own=("$@")
    rm -f ref.* own.*
    check "$zmx" j2k encode colour.ppm a.j2k "${file[@]}"
    opj_decompress -i a.j2k -o ref.ppm "${their[@]}" >log 2>&1 || bad "opj_decompress ${their[*]}: $(tail -1 log)"
    check "$zmx" j2k decode --strict a.j2k own.ppm "${own[@]}"
    close ref.ppm own.ppm || bad "ours to theirs: ${file[*]} -- ${their[*]}"
}
for options in "" "--tile 100,90" "--lossy --tile 77,300 --order PCRL" "--region 20,20,90,80"; do
    # shellcheck disable=SC2086
    {
        ours $options -- -r 2 -- --reduce 2
        ours $options -- -d 33,44,200,190 -- --window 33,44,167,146
        ours $options -- -d 33,44,200,190 -r 1 -threads 2 -- --window 33,44,167,146 --reduce 1
        ours $options --rate 0.5,2,8 -- -l 2 -- --layers 2
    }
done
ours --tile 100,90 -- -t 5 -- --window 100,90,100,90
ours --tile 100,90 --no-tile-lengths --tile-parts --order RLCP -- -t 3 -- --window 300,0,1,90
check "$zmx" j2k encode colour.ppm a.j2k --no-colour-transform
check "$zmx" j2k decode a.j2k own.pgm --separate
opj_decompress -i a.j2k -o ref.ppm -split-pnm >log 2>&1
for c in 0 1 2; do same_pixels ref_$c.pgm own.$c.pgm || bad "component $c in a file of its own"; done

# ---- kinds of pictures, there and back and through both of their programs by way of PNG and TIFF
pamcut -left 10 -top 10 -width 90 -height 70 colour.ppm >kind.ppm
ppmtopgm kind.ppm >kind.pgm
pamstack -tupletype RGB_ALPHA kind.ppm kind.pgm >rgba.pam 2>log
pamstack -tupletype GRAYSCALE_ALPHA kind.pgm kind.pgm >greya.pam 2>log
pamdepth 65535 kind.ppm >deep.ppm 2>log
pamdepth 65535 rgba.pam >deep.pam 2>log
pgmtopbm kind.pgm >bits.pbm
check "$zmx" j2k encode greya.pam a.jp2 --sampling 2,2
opj_decompress -i a.jp2 -o ref.png -upsample >log 2>&1
check "$zmx" j2k decode --strict a.jp2 own.png
same_pixels ref.png own.png || bad "a component that is upsampled"
check "$zmx" j2k encode kind.ppm a.jp2
opj_decompress -i a.jp2 -o ref.ppm -force-rgb >log 2>&1 && same_pixels kind.ppm ref.ppm || bad "a picture that is RGB anyhow"
for in in kind.ppm kind.pgm rgba.pam greya.pam deep.ppm deep.pam bits.pbm; do
    ending=${in#*.}
    check "$zmx" j2k encode $in a.jp2
    check "$zmx" j2k decode --strict a.jp2 "own.$ending"
    same_pixels $in "own.$ending" || bad "$in there and back"
    for by in png tif; do
        opj_decompress -i a.jp2 -o ref.$by >log 2>&1 && check "$zmx" image convert ref.$by "ref.$ending" && same_pixels $in "ref.$ending" ||
            bad "$in to theirs by $by"
        check "$zmx" image convert $in in.$by
        opj_compress -i in.$by -o b.jp2 >log 2>&1 && check "$zmx" j2k decode --strict b.jp2 "own.$ending" && same_pixels $in "own.$ending" ||
            bad "$in from theirs by $by"
    done
done

# ---- what stands beside the samples: into a JP2 file, where others find it, and on into files of other kinds
if command -v exiftool >/dev/null; then
    "$python" -c 'from PIL import ImageCms as c; open("rgb.icc", "wb").write(c.ImageCmsProfile(c.createProfile("sRGB")).tobytes())'
    check "$zmx" image convert kind.ppm meta.png
    check exiftool -q -overwrite_original "-icc_profile<=rgb.icc" -XResolution=300 -YResolution=150 -ResolutionUnit=inches \
        -EXIF:Make=maker -EXIF:Orientation#=6 -XMP-dc:Creator=writer -PNG:PixelsPerUnitX=11811 -PNG:PixelsPerUnitY=5906 \
        -PNG:PixelUnits=meters meta.png
    tags() { exiftool -s -s -s -EXIF:Make -EXIF:Orientation -XMP-dc:Creator -ICC_Profile:ProfileDescription "$1"; }
    tags meta.png >want
    [ "$(wc -l <want)" = 4 ] || bad "exiftool wrote: $(cat want)"
    for kind in png tif; do
        check "$zmx" image convert meta.png in.$kind
        check "$zmx" j2k encode in.$kind a.jp2
        [ -s err ] && bad "a loss on the way from $kind to JP2: $(cat err)"
        tags a.jp2 | cmp -s - want || bad "from $kind to JP2: $(tags a.jp2)"
        exiftool -s -s -s -Jpeg2000:CaptureXResolution -Jpeg2000:CaptureYResolution -Jpeg2000:CaptureXResolutionUnit a.jp2 |
            tr '\n' ' ' | grep -qx '11811 5906 m ' || bad "the resolution of a JP2 file from $kind"
        check "$zmx" j2k decode a.jp2 own.png
        tags own.png | cmp -s - want || bad "from JP2 to PNG: $(tags own.png)"
        exiftool -s -s -s -PixelsPerUnitX -PixelsPerUnitY own.png | tr '\n' ' ' | grep -qx '11811 5906 ' || bad "the resolution from JP2 to PNG"
        check "$zmx" j2k decode a.jp2 own.tif
        tags own.tif | cmp -s - want || bad "from JP2 to TIFF: $(tags own.tif)"
    done
    check "$zmx" j2k decode a.jp2 own.ppm
    grep -q 'no place for' err || bad "a loss from JP2 to PPM that is not told"
    "$zmx" j2k decode a.jp2 own.ppm --strict 2>err && bad "a loss that is no error by --strict"
    check "$zmx" j2k decode a.jp2 own.ppm --strict --strip
    check "$zmx" j2k decode a.jp2 own.png --strip
    [ -z "$(tags own.png)" ] || bad "--strip from JP2 to PNG"
    check "$zmx" j2k encode meta.png b.jp2 --strip
    [ -z "$(tags b.jp2)" ] || bad "--strip into a JP2 file"
    # A profile and XMP that exiftool has put into a file of opj_compress.
    opj_compress -i kind.ppm -o b.jp2 >log 2>&1
    check exiftool -q -overwrite_original -EXIF:Make=maker -EXIF:Orientation#=6 -XMP-dc:Creator=writer b.jp2
    check "$zmx" j2k decode b.jp2 own.png --strict
    head -3 want | cmp -s - <(tags own.png) || bad "from a JP2 file of others: $(tags own.png)"
fi
finish 150
