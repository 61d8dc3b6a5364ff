#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# The memory that the zmx jpeg commands take, whatever the height: a picture of 108 megapixels goes through pipes and files
# both ways with 16 MB of data for the whole process, which ulimit sees to; and files that need their coefficients stay at
# two bytes each. A sanitizer takes more by itself: such builds are passed over.
#
#   jpeg_memory.sh BIN-DIR
set -u
here=$(realpath "$(dirname "$0")")
. "$here/support/checks.bash"
need awk tr mkfifo
[ -x /usr/bin/time ] || { echo "no /usr/bin/time"; exit 77; }
(ulimit -d 16384 && "$zmx" --version >/dev/null 2>&1) || { echo "this build takes more by itself"; exit 77; }

# limited KILOBYTES COMMAND...: with so much memory for data
limited() { (ulimit -d "$1" && shift && /usr/bin/time -f "%M KB at the most" "$@"); }
# waves of bytes, the same on each run
picture() { # picture WIDTH HEIGHT CHANNELS
    printf 'P%d %d %d 255\n' $(($3 == 1 ? 5 : 6)) "$1" "$2"
    awk -v n=$(($1 * $3)) 'BEGIN { for (i = 0; i < 40 * n; ++i) printf "%c", 33 + int(40 + 39 * sin(i * 0.013) * cos(i * 0.0007)) }' >stripe
    stripe=$(wc -c <stripe)
    local left=$(($1 * $2 * $3))
    for ((; left > 0; left -= stripe)); do head -c $left stripe; done
}
mkfifo sink.ppm sink.pgm
# decodes FILE NAME OPTIONS...: into a pipe that nobody keeps
decodes() {
    local kilobytes=$1 file=$2 name=$3
    shift 3
    tail -c 64 "$name" >last &
    check limited "$kilobytes" "$zmx" jpeg decode "$file" "$name" "$@"
    cat err
    wait
    [ -s last ] || bad "$file: nothing came out"
}

width=1650 height=65454
picture $width $height 3 | limited 16384 "$zmx" jpeg encode - tall.jpg || bad "encoding from a pipe"
decodes 16384 tall.jpg sink.ppm --strict
decodes 16384 tall.jpg sink.ppm --fast
decodes 16384 tall.jpg sink.ppm --scale 1/2
decodes 16384 tall.jpg sink.ppm --upsampling plain
# Through files, which are mapped, and wide: a row of units of 12,000 pixels.
picture 12000 300 3 >wide.ppm
for options in "" "--sampling 444" "--restart 100" "--fast" "--sampling 1x2,1x1,1x1"; do
    # shellcheck disable=SC2086
    check limited 16384 "$zmx" jpeg encode wide.ppm wide.jpg $options
    cat err
    decodes 16384 wide.jpg sink.ppm --strict
done
# Lossless files are decoded row by row.
picture 4000 1500 1 >g.pgm
check "$zmx" jpeg encode g.pgm g.jpg --lossless 1
decodes 12288 g.jpg sink.pgm --strict
# Two bytes a coefficient, at 4:2:0 three bytes a pixel, and what the process takes anyhow.
picture 4000 3000 3 >twelve.ppm
for options in --progressive --optimize; do
    check limited $((36000 + 16384)) "$zmx" jpeg encode twelve.ppm twelve.jpg $options
    cat err
    decodes $((36000 + 16384)) twelve.jpg sink.ppm --strict
done
finish 20
