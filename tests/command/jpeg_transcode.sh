#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# Turns, mirrors and cuts without loss, against jpegtran: both files brought to one form have the same bytes. And what else
# goes into a file by its options: quantisation tables from a text, against cjpeg; the exit codes of nonsense.
#
#   jpeg_transcode.sh BIN-DIR
set -u
here=$(realpath "$(dirname "$0")")
. "$here/support/checks.bash"
need cjpeg djpeg jpegtran awk cmp

waves 160 96 255 3 >c.pnm && "$zmx" image convert c.pnm c.ppm || exit 1
waves 93 70 255 3 >odd.pnm && "$zmx" image convert odd.pnm odd.ppm || exit 1
waves 61 47 255 1 >g.pnm && "$zmx" image convert g.pnm g.pgm || exit 1

# same OURS JPEGTRAN-OPTIONS...: our file is the one that jpegtran makes of in.jpg
same() {
    local ours=$1
    shift
    jpegtran -copy none -optimize "$@" -outfile want.jpg in.jpg 2>log || { bad "jpegtran $*: $(cat log)"; return; }
    jpegtran -copy none -optimize -outfile got.jpg "$ours" 2>log || { bad "jpegtran refuses ours, $*: $(cat log)"; return; }
    checks=$((checks + 1))
    cmp -s want.jpg got.jpg || bad "not what jpegtran $* makes"
}
turns=("--rotate 90|-rotate 90" "--rotate 180|-rotate 180" "--rotate 270|-rotate 270" "--flip horizontal|-flip horizontal"
    "--flip vertical|-flip vertical" "--rotate 90 --flip horizontal|-transpose" "--rotate 270 --flip horizontal|-transverse"
    "--rotate 90 --flip vertical|-transverse" "--rotate 180 --flip vertical|-flip horizontal")
for file in c.ppm odd.ppm g.pgm; do
    for sampling in 1x1 2x1 1x2 2x2; do
        for form in "" -progressive; do
            # shellcheck disable=SC2086
            check cjpeg -quality 80 -sample $sampling $form -outfile in.jpg $file
            for turn in "${turns[@]}"; do
                # shellcheck disable=SC2086
                check "$zmx" jpeg transcode in.jpg o.jpg ${turn%|*} --trim --strict
                # shellcheck disable=SC2086
                same o.jpg ${turn#*|} -trim
            done
            parts="0,0,40,30 16,16,33,21 32,8,29,17 19,21,22,20"
            [ $file != g.pgm ] || parts="0,0,40,30 16,16,21,21 24,8,16,17 19,21,20,20" # inside of it turned, too
            for part in $parts; do
                IFS=, read -r x y w h <<<"$part"
                check "$zmx" jpeg transcode in.jpg o.jpg --crop $part
                same o.jpg -crop ${w}x$h+$x+$y
                check "$zmx" jpeg transcode in.jpg o.jpg --crop $part --rotate 90 --trim --progressive
                same o.jpg -crop ${w}x$h+$x+$y -rotate 90 -trim
            done
        done
        [ $file = g.pgm ] && break
    done
done
# The luma alone, whose units are 8 by 8.
check cjpeg -quality 80 -sample 2x2 -outfile in.jpg odd.ppm
for turn in "|" "${turns[@]}"; do
    # shellcheck disable=SC2086
    check "$zmx" jpeg transcode in.jpg o.jpg --gray ${turn%|*} --trim --strict
    # shellcheck disable=SC2086
    same o.jpg -grayscale ${turn#*|} -trim
done
check "$zmx" jpeg transcode in.jpg o.jpg --gray --crop 8,24,30,11 --strict
same o.jpg -grayscale -crop 30x11+8+24
check cjpeg -rgb -outfile rgb.jpg c.ppm
checks=$((checks + 1))
"$zmx" jpeg transcode rgb.jpg refused.jpg --gray 2>err && bad "RGB has a luma"
grep -q "no luma to keep" err || bad "RGB: $(cat err)"
# Scans and intervals of one's own.
cat >script.txt <<'S'
0,1,2: 0-0, 0, 1;
0: 1-9, 0, 2; 0: 10-63, 0, 2;
0: 1-63, 2, 1; 0: 1-63, 1, 0;
2: 1-63, 0, 0; 1: 1-63, 0, 0;
0,1,2: 0-0, 1, 0;
S
check cjpeg -quality 80 -sample 2x2 -outfile in.jpg c.ppm
for options in "--scans script.txt|-scans script.txt" "--progressive --restart 5|-progressive -restart 5B" "--restart 0|-restart 0"; do
    # shellcheck disable=SC2086
    check "$zmx" jpeg transcode in.jpg o.jpg ${options%|*} --strict
    # shellcheck disable=SC2086
    jpegtran -copy none ${options#*|} -outfile want.jpg in.jpg && "$zmx" jpeg info want.jpg >want.txt && "$zmx" jpeg info o.jpg >got.txt
    checks=$((checks + 1))
    diff <(grep -E "^scans|^restart|SOS" want.txt | sed 's/.*: //') <(grep -E "^scans|^restart|SOS" got.txt | sed 's/.*: //') >log ||
        bad "$options: other scans: $(cat log)"
    same o.jpg
done
# Without --trim a side is turned whole or not at all.
check cjpeg -sample 2x2 -outfile in.jpg odd.ppm
for turn in "--rotate 180" "--flip horizontal" "--rotate 90"; do
    checks=$((checks + 1))
    # shellcheck disable=SC2086
    "$zmx" jpeg transcode in.jpg refused.jpg $turn 2>err && bad "$turn is taken"
    grep -q "is no multiple of 16 cannot be turned so without loss" err && [ ! -e refused.jpg ] || bad "$turn: $(cat err)"
done
check "$zmx" jpeg transcode in.jpg o.jpg --crop 19,21,22,20
grep -q "warning: the part begins at 16,16" err || bad "no warning of another corner: $(cat err)"
checks=$((checks + 1))
"$zmx" jpeg transcode in.jpg strict.jpg --crop 19,21,22,20 --strict 2>err && bad "--strict takes another corner"
[ ! -e strict.jpg ] || bad "--strict leaves a file"

# A height behind the scan: the file of cjpeg with its height moved there is the same picture.
check cjpeg -quality 85 -restart 3B -outfile in.jpg c.ppm
python3 - <<'P'
data = bytearray(open("in.jpg", "rb").read())
at = data.index(b"\xff\xc0")
height = bytes(data[at + 5:at + 7])
data[at + 5:at + 7] = b"\0\0"
open("dnl.jpg", "wb").write(bytes(data[:-2]) + b"\xff\xdc\0\4" + height + bytes(data[-2:]))
P
check "$zmx" jpeg decode in.jpg want.ppm --strict
check "$zmx" jpeg decode dnl.jpg got.ppm --strict
check cmp want.ppm got.ppm
check "$zmx" jpeg decode - got.ppm --strict <dnl.jpg
check cmp want.ppm got.ppm
check "$zmx" jpeg transcode dnl.jpg o.jpg --strict
same o.jpg

# Quantisation tables: those that cjpeg makes of the same text.
awk 'BEGIN { for (t = 0; t < 2; ++t) { print "# table", t; for (i = 0; i < 64; ++i) printf "%d%s", 3 + i * (t + 2), i % 8 == 7 ? "\n" : " " } }' >two.txt
head -n 9 two.txt >one.txt
segments() { python3 -c '
import sys
data, at = open(sys.argv[1], "rb").read(), 2
while data[at + 1] != 0xDA:
    n = data[at + 2] << 8 | data[at + 3]
    if data[at + 1] == 0xDB: sys.stdout.write(data[at + 4:at + 2 + n].hex() + "\n")
    at += 2 + n' "$1"; }
for tables in one two; do
    for quality in 10 50 75 97; do
        for options in "" --progressive; do
            # shellcheck disable=SC2086
            check "$zmx" jpeg encode c.ppm o.jpg --qtables $tables.txt --quality $quality $options
            check cjpeg -baseline -quality $quality -qtables $tables.txt -outfile t.jpg c.ppm
            [ "$(segments o.jpg)" = "$(segments t.jpg)" ] || bad "$tables, quality $quality $options: other tables"
            check djpeg -outfile theirs.ppm o.jpg
            check "$zmx" jpeg decode o.jpg ours.ppm --strict
            check "$zmx" image compare ours.ppm theirs.ppm
            awk '$1 == "max" { exit $2 > 3 }' out || bad "$tables, quality $quality: another picture"
        done
    done
done
echo "16 17" >short.txt
checks=$((checks + 1))
"$zmx" jpeg encode c.ppm o.jpg --qtables short.txt 2>err && bad "short.txt is taken"
grep -q "2 numbers; a table has 64" err || bad "short.txt: $(cat err)"

# Nonsense is a wrong command line, by name, and no file: 2. A bad file is 1.
refused() { # refused CODE WORDS COMMAND...
    local code=$1 words=$2 got
    shift 2
    checks=$((checks + 1))
    rm -f no.*
    "$zmx" jpeg "$@" >out 2>err
    got=$?
    [ $got -eq "$code" ] && grep -q -e "$words" err && [ ! -e no.jpg ] && [ ! -e no.ppm ] || bad "$*: exit $got, $(cat err)"
}
for options in "--quality 0" "--quality 101" "--quality -1" "--quality nan" "--restart -1" "--restart 65536" "--sampling 5x1" "--sampling 2x2," \
    "--sampling 411" "--lossless 8" "--lossless 0" "--point-transform 1" "--precision 1" "--precision 17" "--precision 9" "--max-pixels -1" \
    "--max-pixels nan" "--dct fixed" "--rgb --ycck" "--progressive --lossless 1" "--fast --dct float" "--qtables one.txt --lossless 1" \
    "--raw-size 0x4" "--format rgb"; do
    # shellcheck disable=SC2086
    refused 2 "${options%% *}" encode c.ppm no.jpg $options
done
for options in "--scale 1/3" "--scale 2" "--upsampling none" "--fast --upsampling plain" "--max-pixels -5" "--format yuv" "--show-scans nowhere" "--to gif"; do
    # shellcheck disable=SC2086
    refused 2 "${options%% *}" decode in.jpg no.ppm $options
done
for options in "--rotate 45" "--rotate -90" "--flip diagonal" "--crop 1,2,3" "--orient --rotate 90" "--restart -2" "--scans one.txt --progressive"; do
    # shellcheck disable=SC2086
    refused 2 "${options%% *}" transcode in.jpg no.jpg $options
done
refused 1 "not inside" transcode in.jpg no.jpg --crop 0,0,1000,10
refused 1 "not inside" transcode in.jpg no.jpg --crop=-1,0,10,10
refused 1 "more pixels than the limit" transcode in.jpg no.jpg --max-pixels 10
refused 1 "one.txt" decode one.txt no.ppm
refused 1 "SOI" info one.txt
head -c 3000 in.jpg >cut.jpg
for command in "decode cut.jpg no.ppm" "transcode cut.jpg no.jpg"; do
    # shellcheck disable=SC2086
    refused 1 "cut.jpg: .*byte" $command --strict
done
check "$zmx" jpeg info cut.jpg
refused 1 "cut.jpg: byte" info cut.jpg --strict
finish 700
