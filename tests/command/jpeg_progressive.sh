#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# Progressive and multi-scan files, both ways with libjpeg-turbo's programs: jpegtran brings their files and ours to one
# form, in which equal coefficients are equal bytes; the sizes of our files; scan scripts.
#
#   jpeg_progressive.sh BIN-DIR
set -u
. "$(dirname "$0")/support/checks.bash"
need cjpeg djpeg jpegtran awk

waves 253 187 255 3 >c.pnm && "$zmx" image convert c.pnm c.ppm || exit 1
waves 97 130 255 1 >g.pnm && "$zmx" image convert g.pnm g.pgm || exit 1
cat >bits.txt <<'T'
# every bit of the luma in a scan of its own
0,1,2: 0-0, 0, 3;
0: 1-2, 0, 2; 0: 3-63, 0, 4;
0: 3-63, 4, 3; 0: 3-63, 3, 2;
1: 1-63, 0, 0;
2: 1-5, 0, 1; 2: 6-63, 0, 1; 2: 1-63, 1, 0;
0: 1-63, 2, 1;
0,1,2: 0-0, 3, 2; 0: 0-0, 2, 1; 1 2: 0-0, 2, 1; 0,1,2: 0-0, 1, 0;
0: 1-63, 1, 0;
T
printf '0,1,2: 0-0, 0, 2;\n0: 1-63, 0, 3;\n1: 1-20, 0, 1;\n' >unfinished.txt
printf '0; 2 1;\n' >wrong.txt
printf '0;\n1;\n2;\n' >three.txt
printf '0,2;\n1;\n' >two.txt
printf '0: 0-0, 0, 1;\n0: 1-63, 0, 3;\n0: 1-63, 3, 2;\n0: 1-63, 2, 1;\n0: 0-0, 1, 0;\n0: 1-63, 1, 0;\n' >grey.txt

same_coefficients() { # FILE FILE
    jpegtran -copy none -outfile 1.jpg "$1" 2>>log && jpegtran -copy none -outfile 2.jpg "$2" 2>>log && cmp 1.jpg 2.jpg
}
quiet() { [ ! -s log ] || { cat log; return 1; }; }
equal_digests() { awk '$1 == "before" { b = $2 } $1 == "after" { a = $2 } END { exit !(a && a == b) }' digests; }

# theirs FILE: what we make of a file of theirs, in every form, is the same coefficients
theirs() {
    local form
    for form in "" --progressive "--restart 5" "--progressive --restart 3"; do
        : >log
        # shellcheck disable=SC2086
        "$zmx" jpeg transcode "$1" t.jpg --digest $form >digests 2>log || bad "transcode $1 $form: $(cat log)"
        check equal_digests
        check same_coefficients "$1" t.jpg
        check quiet
    done
    [ "${2-}" != unfinished ] || return # djpeg smooths over what is missing
    djpeg -outfile theirs.pnm "$1" && check "$zmx" jpeg decode "$1" ours.png --strict
    "$zmx" image convert theirs.pnm theirs.png
    # Both transforms are within a level of the exact one; the colours make three of it.
    local max
    max=$("$zmx" image compare ours.png theirs.png | awk '$1 == "max" { print $2 }')
    check test "$max" -le 3
}
for sampling in 1x1 2x1 2x2 1x2 4x1; do
    for options in "-progressive" "-progressive -restart 3B" "-scans bits.txt" "-scans bits.txt -restart 1" "-scans three.txt" "-scans two.txt -restart 9B"; do
        # shellcheck disable=SC2086
        cjpeg -quality 80 -sample $sampling $options -outfile theirs.jpg c.ppm || { bad "cjpeg $options"; continue; }
        theirs theirs.jpg
    done
done
for options in "-progressive" "-scans grey.txt -restart 7B"; do
    # shellcheck disable=SC2086
    cjpeg -quality 90 $options -outfile theirs.jpg g.pgm && theirs theirs.jpg
done
# Refinement scans that never come.
cjpeg -scans unfinished.txt -quality 85 -outfile theirs.jpg c.ppm && theirs theirs.jpg unfinished

# ours PICTURE OPTIONS...: djpeg takes it without a word, and the coefficients are those of our sequential file, in
# scans of the components one by one
ours() {
    : >log
    check "$zmx" jpeg encode "$@" --quality 83 || return
    mv "$2" progressive.jpg
    case $1 in *.pgm) echo "0;" ;; *) printf '0;\n1;\n2;\n' ;; esac >single.txt
    check "$zmx" jpeg encode "$1" sequential.jpg --quality 83 ${sampling:+--sampling $sampling} --scans single.txt
    check djpeg -outfile theirs.pnm progressive.jpg
    check same_coefficients progressive.jpg sequential.jpg
    check quiet
}
for sampling in 444 422 420 1x2,1x1,1x1 4x1,1x1,1x1 2x2,2x1,1x2; do
    ours c.ppm o.jpg --sampling $sampling --progressive
    ours c.ppm o.jpg --sampling $sampling --progressive --restart 4
    ours c.ppm o.jpg --sampling $sampling --scans bits.txt --restart 2
    ours c.ppm o.jpg --sampling $sampling --scans three.txt
    ours c.ppm o.jpg --sampling $sampling --scans two.txt --restart 11
done
sampling=
ours g.pgm o.jpg --progressive
ours g.pgm o.jpg --scans grey.txt --restart 7
# A picture of one block, and one of many empty ones: runs over all of it.
"$zmx" image convert c.ppm dot.ppm --crop 0,0,5,3 && ours dot.ppm o.jpg --progressive
{ printf 'P5 2200 1300 255\n'; head -c $((2200 * 1300)) /dev/zero | tr '\0' '\200'; } >flat.pgm
ours flat.pgm o.jpg --progressive

# A bad script: one line that names the scan.
"$zmx" jpeg encode c.ppm o.jpg --scans wrong.txt 2>message && bad "wrong.txt is taken"
check grep -q "scan script, scan 2: components out of order" message
check test "$(wc -l <message)" = 1

# The pictures after each scan: as many as there are scans, the last one the picture itself, each nearer to it.
"$zmx" jpeg encode c.ppm o.jpg --progressive --quality 90 && mkdir -p shown && check "$zmx" jpeg decode o.jpg last.png --show-scans shown
check test "$(ls shown | wc -l)" = 10
check same_pixels shown/scan010.png last.png
last=0
for n in 001 005 008 009; do
    now=$("$zmx" image compare shown/scan$n.png last.png | awk '$1 == "psnr" { print $2 }')
    check awk -v a="$last" -v b="$now" 'BEGIN { exit !(b > a) }'
    last=$now
done

# Sizes of photographs, at the same tables and sampling: no more than 0.5 % above theirs, and where both transforms are
# in floating point, equal to 0.1 %.
percent() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%+.2f", 100 * a / b - 100 }'; } # percent OURS THEIRS
size() { wc -c <"$1"; }
for photo in /usr/share/backgrounds/mate/nature/{Dune,Garden,Storm,Wood,TwoWings}.jpg; do
    [ -f "$photo" ] || continue
    djpeg -outfile photo.ppm "$photo"
    for quality in 50 75 90; do
        cjpeg -progressive -optimize -quality $quality -sample 2x2 -outfile theirs.jpg photo.ppm
        cjpeg -dct float -progressive -optimize -quality $quality -sample 2x2 -outfile float.jpg photo.ppm
        "$zmx" jpeg encode photo.ppm ours.jpg --progressive --quality $quality
        above=$(percent "$(size ours.jpg)" "$(size theirs.jpg)") apart=$(percent "$(size ours.jpg)" "$(size float.jpg)")
        echo "$(basename "$photo"), quality $quality: $(size ours.jpg) bytes, $above % to cjpeg, $apart % to its float transform"
        check awk -v above="$above" -v apart="$apart" 'BEGIN { exit !(above <= 0.5 && apart <= 0.1 && apart >= -0.1) }'
        # The same coefficients in the same scans take no more bytes.
        check "$zmx" jpeg transcode theirs.jpg t.jpg --progressive
        check test "$(size t.jpg)" -le "$(size theirs.jpg)"
    done
done
finish 300
