#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# jpeg2000.sh BIN-DIR: JPEG2000 files of zmx and of OpenJPEG's programs, each decoded by the other.
#
# Row i of the design takes value (a * i + i / b) mod n of each option, with steps that have no common divisor with
# each other's counts, so that the values of any two options meet in 84 rows.
set -eu
zmx=$(realpath "$1")/zmx
for peer in opj_compress opj_decompress; do
    command -v "$peer" >/dev/null || { echo "no $peer"; exit 77; }
done
[ -x "$zmx" ] || { echo "no $zmx"; exit 77; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

# TYPE WIDTH HEIGHT CHANNELS MAXVAL: ramps, edges and noise of two strengths
picture() {
    awk -v t="$1" -v w="$2" -v h="$3" -v k="$4" -v max="$5" 'BEGIN {
        srand(7); printf "%s\n%d %d\n%d\n", t, w, h, max
        for (y = 0; y < h; y++) for (x = 0; x < w; x++) for (c = 0; c < k; c++) {
            v = y % 40 < 20 ? (3 * x + 2 * y + 40 * c) % 256 : (x + 10 * c) % 30 < 15 ? 20 : 235
            v += (rand() - 0.5) * (x % 50 < 30 ? 8 : 120)
            v = int(v * max / 255); print (v < 0 ? 0 : v > max ? max : v)
        }}' >ascii.pnm
    "$zmx" image convert ascii.pnm "$6"
}
picture P2 109 83 1 255 grey.pgm
picture P3 109 83 3 255 colour.ppm
picture P2 109 83 1 65535 deep.pgm
pictures=(grey.pgm colour.ppm deep.pgm)

orders=(LRCP RLCP RPCL PCRL CPRL)
tiles=("" "64 48" "37 83" "109 31" "50 50")
origins=("" "13 7" "5 0" "32 33")
precincts=("" "32,32" "64,32,16,64" "128,128")
blocks=("64,64" "32,32" "16,64" "4,4" "8,128")
layers=(1 2 3)
rows=84 failures=0 second=0
fail() { echo "FAILED: $*"; failures=$((failures + 1)); }
same() { "$zmx" image compare "$1" "$2" 2>/dev/null | grep -q '^psnr inf'; }
close() { "$zmx" image compare "$1" "$2" --within "${3:-1}" | awk '$1 == "within" { exit !($2 >= 0.999) }'; }

for ((i = 0; i < rows; ++i)); do
    in=${pictures[i % 3]} ext=${pictures[i % 3]#*.}
    levels=$(((i + i / 7) % 7)) order=${orders[(2 * i + i / 5) % 5]} tile=${tiles[(3 * i + i / 25) % 5]}
    origin=${origins[(i + i / 4) % 4]} precinct=${precincts[(3 * i + i / 16) % 4]} block=${blocks[(i + i / 10) % 5]}
    count=${layers[(i + i / 3) % 3]} style=$(((37 * i + i / 2) % 64)) marks=$(((i + i / 8) % 4))
    # ---- ours, lossless, to theirs
    ours=(--levels "$levels" --order "$order" --block "$block")
    [ -n "$tile" ] && ours+=(--tile "${tile/ /,}")
    [ -n "$origin" ] && ours+=(--origin "${origin/ /,}" --tile-origin "$((${origin% *} / 2)),$((${origin#* } / 2))")
    [ -n "$precinct" ] && ours+=(--precincts "$precinct")
    [ "$count" = 2 ] && ours+=(--rate 1,0)
    [ "$count" = 3 ] && ours+=(--rate 0.5,2,0)
    ((style & 1)) && ours+=(--bypass)
    ((style & 2)) && ours+=(--reset)
    ((style & 4)) && ours+=(--terminate)
    ((style & 8)) && ours+=(--causal)
    ((style & 16)) && ours+=(--predictable)
    ((style & 32)) && ours+=(--symbols)
    ((marks & 1)) && ours+=(--sop)
    ((marks & 2)) && ours+=(--eph --tile-parts)
    file=a.j2k
    ((i % 4 == 0)) && file=a.jp2
    rm -f ./*.j2k ./*.jp2 out.*
    "$zmx" j2k encode "$in" $file "${ours[@]}" && opj_decompress -i $file -o "out.$ext" >log 2>&1 && same "$in" "out.$ext" ||
        fail "ours to theirs: $in ${ours[*]}"
    "$zmx" j2k decode --strict $file "own.$ext" && same "$in" "own.$ext" || fail "ours to ours: $in ${ours[*]}"
    # ---- theirs to ours, lossless and lossy by turns
    [ -n "$tile" ] && [ "$levels" -gt 4 ] && levels=4 # more are refused for tiles of this size
    lossy=$((i % 2))
    rates=(1 "20,1" "40,10,1")
    ((lossy)) && rates=(8 "20,6" "40,10,4")
    # opj_compress gives up where a packet is longer than the samples, and on tiles one sample wide: such rows get
    # larger blocks with fewer terminations and one tile-part, then no origin and no precincts.
    for attempt in 1 2 3; do
        case $attempt in 2) block=64,64 style=$((style & 27)) ;; 3) origin="" precinct="" ;; esac
        theirs=(-n $((levels + 1)) -p "$order" -b "$block" -M "$style" -r "${rates[count - 1]}")
        [ -n "$tile" ] && theirs+=(-t "${tile/ /,}")
        [ -n "$origin" ] && theirs+=(-d "${origin/ /,}" -T "$((${origin% *} / 2)),$((${origin#* } / 2))")
        [ -n "$precinct" ] && theirs+=(-c "[$(sed 's/\([0-9]*,[0-9]*\),/\1],[/g' <<<"$precinct")]")
        ((marks & 1)) && theirs+=(-SOP)
        ((marks & 2)) && theirs+=(-EPH)
        ((marks & 2)) && ((attempt == 1)) && [ "${order:0:1}" != P ] && theirs+=(-TP "${order:0:1}")
        ((lossy)) && theirs+=(-I)
        rm -f b.j2k
        { opj_compress -i "$in" -o b.j2k "${theirs[@]}" >log; } 2>/dev/null && grep -q 'Generated' log && break
    done
    [ -s b.j2k ] || { fail "opj_compress: $in ${theirs[*]}"; continue; }
    second=$((second + (attempt > 1)))
    "$zmx" j2k decode --strict b.j2k "out.$ext" || { fail "theirs to ours: $in ${theirs[*]}"; continue; }
    if ((lossy)); then
        # OpenJPEG scales the high bands of the 9/7 filter by 1.625732, where 2 / K is 1.625786: some levels in 65536.
        level=1
        [ "$in" = deep.pgm ] && level=4
        opj_decompress -i b.j2k -o "ref.$ext" >log 2>&1
        close "ref.$ext" "out.$ext" $level || fail "theirs to ours, lossy: $in ${theirs[*]}"
    else
        # Now and then opj_compress loses something; then its own decoder is the measure.
        same "$in" "out.$ext" || { opj_decompress -i b.j2k -o "ref.$ext" >log 2>&1 && ! same "$in" "ref.$ext" && same "ref.$ext" "out.$ext"; } ||
            fail "theirs to ours, lossless: $in ${theirs[*]}"
    fi
done

# ---- what only some files have
check() { # NAME, then arguments of opj_compress
    local name=$1
    shift
    opj_compress -i colour.ppm -o b.j2k "$@" >log 2>&1 || { fail "opj_compress: $name"; return; }
    opj_decompress -i b.j2k -o ref.ppm >log 2>&1 || { fail "opj_decompress: $name"; return; }
    "$zmx" j2k decode --strict b.j2k out.ppm && close ref.ppm out.ppm || fail "$name"
}
check "region of interest, lossless" -ROI c=0,U=7
check "region of interest, lossy" -I -r 10 -ROI c=1,U=5
check "no component transform" -mct 0 -r 10
check "lengths in the headers" -PLT -TLM
check "guard bits" -GuardBits 4 -I -r 10
check "tile-parts by layer" -TP L -r 20,10,1
# Fewer resolutions and layers than the file has.
opj_compress -i colour.ppm -o b.j2k -I -r 40,10,4 -t 40,60 -d 3,5 -n 4 >log 2>&1
for n in 1 2 3; do
    opj_decompress -i b.j2k -o ref.ppm -r $n >log 2>&1 && "$zmx" j2k decode b.j2k out.ppm --reduce $n && close ref.ppm out.ppm ||
        fail "$n resolutions less"
    opj_decompress -i b.j2k -o ref.ppm -l $n >log 2>&1 && "$zmx" j2k decode b.j2k out.ppm --layers $n && close ref.ppm out.ppm ||
        fail "$n layers"
done
# Ours, lossy: both decoders agree.
for extra in "--rate 1" "--psnr 40 --tile 37,29 --origin 5,9" "--rate 0.5,2 --levels 3 --bypass --terminate"; do
    # shellcheck disable=SC2086
    "$zmx" j2k encode colour.ppm a.jp2 --lossy $extra && opj_decompress -i a.jp2 -o ref.ppm >log 2>&1 &&
        "$zmx" j2k decode a.jp2 out.ppm && close ref.ppm out.ppm || fail "ours, lossy: $extra"
done
# Progression order changes, and packet headers in the main and tile headers.
for extra in "--rate 1,2,0 --levels 4 --changes 0,0,1,5,3,4,0,0,3,3,2,1,0,0,3,5,3,3" "--packed-headers main --tile 37,83 --eph" \
    "--packed-headers tile --tile 50,50 --tile-parts --sop --order RPCL"; do
    # shellcheck disable=SC2086
    "$zmx" j2k encode colour.ppm a.j2k $extra && opj_decompress -i a.j2k -o ref.ppm >log 2>&1 && same colour.ppm ref.ppm &&
        "$zmx" j2k decode a.j2k out.ppm --strict && same colour.ppm out.ppm || fail "ours: $extra"
done
# Subsampled and signed components, as OpenJPEG's raw reader would have them.
"$zmx" j2k encode colour.ppm a.j2k --no-colour-transform --sampling 2,2 --origin 3,5 && opj_decompress -i a.j2k -o ref.ppm >log 2>&1 ||
    fail "subsampled components"
"$zmx" j2k encode grey.pgm a.j2k --signed && opj_decompress -i a.j2k -o ref.pgm >log 2>&1 && same grey.pgm ref.pgm ||
    fail "signed components"

echo "$rows rows, $second of them with a second choice for opj_compress, $failures failures"
[ "$failures" = 0 ]
