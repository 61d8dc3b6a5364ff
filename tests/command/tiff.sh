#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# TIFF files between the zmx command and libtiff: ours are decoded by tiffcp to the pixels that went in, and what
# tiffcp packs comes out of our decoder.
#
#   tiff.sh BIN-DIR
set -u
zmx=$(realpath "$1")/zmx
for program in tiffcp tiffcmp tiffinfo pamcut pamstack pbmtext pgmnoise pgmramp pnmtopnm pnmtotiff tifftopnm awk cmp; do
    command -v $program >/dev/null || { echo "no $program"; exit 77; }
done
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
cd "$dir" || exit 1
checks=0 failures=0
bad() { echo "FAILED: $*"; failures=$((failures + 1)); }

# ours PICTURE ENCODE-OPTIONS...: libtiff reads our file, and so do we.
ours() {
    local picture=$1 what="$*" back=back.${1##*.}
    shift
    checks=$((checks + 1))
    "$zmx" tiff encode "$picture" ours.tif "$@" || { bad "encode $what"; return; }
    [[ $back == *.pbm ]] && back=back.pgm
    "$zmx" tiff decode ours.tif $back || { bad "decode $what"; return; }
    same "$picture" $back || bad "$what comes back changed"
    tiffinfo ours.tif 2>&1 | grep -q 'Compression Scheme: PackBits' || bad "$what is not PackBits"
    # libtiff's decoder, without a word; then our own rows against libtiff's of the uncompressed copy.
    tiffcp -c none ours.tif plain.tif >log 2>&1 || bad "tiffcp refuses $what: $(cat log)"
    [ ! -s log ] || bad "tiffcp warns of $what: $(cat log)"
    tiffcmp ours.tif plain.tif >log 2>&1 || bad "tiffcmp of $what: $(cat log)"
    raw "$picture" ours.tif || bad "$what is not the same pixels in libtiff"
}

# same A B: two pictures of the same samples, whatever their kind of file
same() { "$zmx" tiff encode "$1" a.tif && "$zmx" tiff encode "$2" b.tif && cmp -s a.tif b.tif; }

# raw PICTURE TIFF: the bytes that libtiff unpacks, in one strip of the byte order of PNM, are the samples of PICTURE
raw() {
    local offset bytes
    [[ $1 == *.pbm ]] && { tifftopnm "$2" 2>/dev/null | cmp -s - "$1"; return; }
    tiffcp -B -c none -r 100000 "$2" strip.tif
    read -r offset bytes < <(tiffinfo -s strip.tif | sed -n 's/.*0: \[ *\([0-9]*\), *\([0-9]*\)\].*/\1 \2/p')
    [ "${bytes:-0}" -gt 0 ] && cmp -s <(tail -c +$((offset + 1)) strip.tif | head -c "$bytes") <(tail -c "$bytes" "$1")
}

# theirs PICTURE: what libtiff packs, decoded by us. tiffcp makes the file out of an uncompressed copy of ours.
theirs() {
    local picture=$1 back=back.${1##*.} rows
    [[ $back == *.pbm ]] && back=back.pgm
    "$zmx" tiff encode "$picture" ours.tif && tiffcp -c none ours.tif plain.tif || { bad "a plain copy of $picture"; return; }
    for rows in 1 7 64 10000; do
        for order in "" -B -L; do
            for fill in "" "-f lsb2msb"; do
                checks=$((checks + 1))
                # shellcheck disable=SC2086
                tiffcp $order $fill -c packbits -r $rows plain.tif theirs.tif || { bad "tiffcp $order $fill -r $rows $picture"; continue; }
                "$zmx" tiff decode theirs.tif $back || { bad "decode tiffcp $order $fill -r $rows $picture"; continue; }
                same "$picture" $back || bad "tiffcp $order $fill -r $rows $picture comes back changed"
            done
        done
    done
}

# rgb WIDTH HEIGHT MAXVAL: stripes, ramps and some noise
rgb() {
    awk -v w="$1" -v h="$2" -v m="$3" 'BEGIN {
        s = 1
        print "P3", w, h, m
        for (y = 0; y < h; ++y) for (x = 0; x < w; ++x) {
            s = (s * 1103515245 + 12345) % 2147483648
            print int(x / 5) % 2 * m, int(m * x / w), (y % 3 ? 0 : int(s / 65536) % (m + 1))
        }
    }' | pnmtopnm
}
# Pictures of every kind, of odd widths: text, ramps, stripes, noise.
echo "The quick brown fox jumps over the lazy dog, and pairs too: aabbccddee." | pbmtext >text.pbm
for width in 1 7 8 9 15 16 17 100 131; do
    pamcut -quiet -pad -width $width -height 37 text.pbm >bits$width.pbm
    rgb $width 37 255 >rgb$width.ppm
    rgb $width 37 65535 >deeprgb$width.ppm
    pgmramp -quiet -lr $width 37 >ramp$width.pgm
    pgmramp -quiet -tb -maxval=65535 $width 37 >slope$width.pgm
    pgmnoise -randomseed=5 -maxval=65535 $width 37 >deep$width.pgm
    pamstack -quiet -tupletype=RGB_ALPHA rgb$width.ppm ramp$width.pgm >rgba$width.pam
    pamstack -quiet -tupletype=RGB_ALPHA deeprgb$width.ppm slope$width.pgm >deeprgba$width.pam
done
for picture in bits*.pbm rgb*.p?m ramp*.pgm deep*.p?m slope*.pgm; do
    ours "$picture"
    for rows in 1 5 37 1000; do ours "$picture" --rows-per-strip $rows; done
done
for picture in {bits,ramp,deep,slope}{1,7,17,131}.p[bg]m {rgb,deeprgb}{1,9,100}.ppm {rgba,deeprgba}{1,9,100}.pam; do theirs "$picture"; done

# Split rows: ours alone, smaller where the high bytes are smooth, and nobody else takes them for PackBits.
for picture in deep17.pgm slope131.pgm deeprgb9.ppm deeprgba100.pam; do
    for rows in 1 5 1000; do
        checks=$((checks + 1))
        "$zmx" tiff encode $picture split.tif --split16 --rows-per-strip $rows && "$zmx" tiff decode split.tif back.${picture##*.} || bad "split $picture"
        same $picture back.${picture##*.} || bad "split $picture comes back changed"
        tiffcp -c none split.tif plain.tif >log 2>&1 && bad "tiffcp reads split rows"
    done
done
# Bits where 0 is white, as scanners write them.
pnmtotiff -quiet -packbits -miniswhite text.pbm >white.tif 2>/dev/null && "$zmx" tiff decode white.tif back.pgm && same text.pbm back.pgm || bad "0 is white"
checks=$((checks + 1))
# What is not supported says so.
for scheme in lzw zip none; do
    checks=$((checks + 1))
    "$zmx" tiff encode ramp17.pgm ours.tif && tiffcp -c $scheme ours.tif other.tif && "$zmx" tiff decode other.tif back.pgm 2>log && bad "$scheme is decoded"
    grep -q 'other.tif: TIFF: Compression .* is not supported' log || bad "$scheme is not named: $(cat log)"
done
# The coefficients of a picture, and every sample back from them.
for picture in ramp17.pgm rgb131.ppm deeprgb9.ppm deeprgba100.pam bits9.pbm; do
    checks=$((checks + 1))
    "$zmx" hdp energy $picture >log && grep -q 'every sample came back' log || bad "hdp energy $picture: $(cat log)"
done

echo "$checks checks, $failures failures"
[ $failures -eq 0 ] && [ $checks -gt 500 ]
