#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# picture_memory.sh BIN-DIR: tall pictures pass through every reader and writer within a limit on the address space that
# would not hold a third of them. Turning one, which needs all of it, shows that the limit is one.
set -u
here=$(realpath "$(dirname "$0")")
. "$here/support/checks.bash"
need tiffcp tiffset cmp yes

limit=98304 # KiB: the program and its libraries take about half of it
(ulimit -v $limit && "$zmx" --version >/dev/null 2>&1) || { echo "this build takes more by itself"; exit 77; }
flat() { check bash -c 'ulimit -v "$1"; shift; exec "$@"' flat $limit "$zmx" "$@"; }
# tall WIDTH HEIGHT: lines that repeat, as RGB
tall() {
    printf 'P6\n%d %d\n255\n' "$1" "$2"
    yes 'The quick brown fox jumps over the lazy dog, and again.' | head -c $((3 * $1 * $2))
}
same_bytes() { check cmp "$1" "$2"; }

tall 1000 100000 >a.ppm # 300 MB
for ending in pam bmp tif png; do
    flat image convert a.ppm b.$ending
    flat image convert b.$ending c.ppm
    same_bytes a.ppm c.ppm
    [ $ending = png ] && flat image compare a.ppm b.png
    [ $ending = tif ] || rm b.$ending
done
flat image convert a.ppm c.png --crop 10,90000,500,500
flat image convert a.ppm c.pgm --gray --depth 16
flat image convert c.pgm d.tif
flat tiff encode c.pgm e.tif --split16
flat tiff decode e.tif d.pgm
same_bytes c.pgm d.pgm
flat hdp energy c.pgm
rm c.pgm d.pgm d.tif e.tif
flat tiff encode a.ppm packed.tif
flat tiff decode packed.tif c.ppm
same_bytes a.ppm c.ppm
# Files of other shapes: one strip, tiles, planes.
for layout in "-c none -r 100000" "-c packbits -r 100000" "-c lzw -t -w 256 -l 256" "-c zip -p separate"; do
    # shellcheck disable=SC2086
    check tiffcp -m 2000 $layout packed.tif b.tif
    case $layout in
    *packbits*) flat tiff decode b.tif c.ppm ;; # libtiff would hold the whole strip
    *) flat image convert b.tif c.ppm ;;
    esac
    same_bytes a.ppm c.ppm
    rm b.tif c.ppm
done
rm -f b.tif packed.tif c.ppm
tall 1000 32000 >a.ppm
for format in dxt1 dxt5; do
    flat dds encode a.ppm a.dds --format $format
    flat dds decode a.dds b.pam
    flat dds encode a.ppm a.dds --format $format --mips
    flat dds decode a.dds b.pam --level 1
done

# The limit is one: this needs the whole picture.
tall 1000 100000 >a.ppm
flat image convert a.ppm a.tif
if tiffset -s 274 6 a.tif; then
    checks=$((checks + 1))
    (ulimit -v $limit; "$zmx" image convert a.tif b.ppm --upright) 2>err && bad "a picture of 300 MB was turned within $limit KiB"
    grep -q 'not enough memory' err || bad "out of memory says: $(cat err)"
fi
finish 45
