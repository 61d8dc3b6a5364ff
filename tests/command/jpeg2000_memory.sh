#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# jpeg2000_memory.sh BIN-DIR: what the zmx j2k commands take for large pictures. A limit on the address space, or on data,
# that holds a fraction of the samples: a picture goes through line by line, or tile by tile; and a window takes a fraction
# of the time of the whole. Sanitizers take more by themselves: such builds are passed over.
set -u
here=$(realpath "$(dirname "$0")")
. "$here/support/checks.bash"
need awk head pamcut cmp
(ulimit -v 65536 && "$zmx" --version >/dev/null 2>&1) || { echo "this build takes more by itself"; exit 77; }

# limited KIB COMMAND...: within so much address space. A second thread has room for its stack; glibc would set aside 64 MB of
# addresses for a heap of its own where it finds them at the right place, which is chance.
export MALLOC_ARENA_MAX=1
limited() { check bash -c 'ulimit -v "$1"; shift; exec "$@"' limited "$@"; }
# noisy WIDTH HEIGHT CHANNELS: waves with texture that repeat after 61 rows
noisy() {
    printf 'P%d\n%d %d\n255\n' $(($3 == 1 ? 5 : 6)) "$1" "$2"
    LC_ALL=C awk -v n=$((61 * $1 * $3)) 'BEGIN {
        s = 7
        for (i = 0; i < n; ++i) {
            s = (s * 16807) % 2147483647
            printf "%c", 128 + int(50 * sin(i * 0.003) + 40 * cos(i * 0.00011) + s / 2147483647 * 14)
        } }' >rows
    for ((i = $2; i > 0; i -= 61)); do head -c $(((i < 61 ? i : 61) * $1 * $3)) rows; done
}
same() { check cmp "$1" "$2"; }

# ---- 12 megapixels, 36 MB of samples; a third of the limit is the program with its libraries
noisy 4000 3000 3 >a.ppm
for options in "-t 1" "-t 2 --tile 512,512 --order RPCL"; do
    # shellcheck disable=SC2086
    limited 98304 "$zmx" j2k encode a.ppm a.jp2 $options
    limited 98304 "$zmx" j2k decode a.jp2 b.ppm -t 2
    same a.ppm b.ppm
done
# All passes wait until the rate is settled, many more than are kept.
limited 131072 "$zmx" j2k encode a.ppm a.jp2 --lossy --rate 2 -t 2
limited 98304 "$zmx" j2k decode a.jp2 b.ppm --strict -t 2
# So do rows that a PSNR is measured by, in a temporary file: from a pipe, too, and with components of other sizes.
limited 90112 "$zmx" j2k encode - a.jp2 --lossy --psnr 35 -t 1 <a.ppm
limited 90112 "$zmx" j2k encode a.ppm b.jp2 --lossy --psnr 30,35 --tile 512,512 --sampling 2,2 --no-colour-transform -t 1
for file in a.jp2 b.jp2; do
    limited 98304 "$zmx" j2k decode $file b.ppm --strict --layers 2 -t 1
    [ $file = b.jp2 ] && continue
    check "$zmx" image compare a.ppm b.ppm
    awk '$1 == "psnr" { exit !($2 > 34.95 && $2 < 35.05) }' out || bad "a PSNR of 35 dB is $(cat out)"
done
# The limit is one: planes stand in memory as a whole.
(ulimit -v 98304; "$zmx" j2k decode a.jp2 b.pgx) >out 2>err && bad "12 megapixels of planes within 96 MB"
rm a.ppm b.ppm

# ---- 100 megapixels: through a pipe in tiles, from a file without
noisy 10000 10000 1 >a.pgm
limited 98304 "$zmx" j2k encode - a.jp2 --tile 10000,256 -t 1 <a.pgm
limited 196608 "$zmx" j2k encode a.pgm whole.jp2 -t 1
ls -l ./*.jp2

# ---- a window of it in less than 2 % of the time that the whole takes, each within a limit
TIMEFORMAT='%U'
# Without exec: the shell would be gone before it could tell the time.
seconds() { { time (ulimit -v 163840; "$zmx" j2k decode "$@" -t 1 2>err >out); } 2>&1; }
least() { for _ in 1 2 3; do seconds "$@"; done | sort -n | head -1; }
for file in a.jp2 whole.jp2; do
    whole=$(seconds $file b.pgm)
    same a.pgm b.pgm
    for reduce in 0 2; do
        window=$(least $file w.pgm --window 4100,5200,512,512 --reduce $reduce)
        awk -v f=$file -v w="$window" -v all="$whole" -v r=$reduce 'BEGIN {
            printf "%s: window of 512 x 512, reduced by %d: %.2f s of %.2f s, %.2f %%\n", f, r, w, all, 100 * w / all
            exit !(w ~ /^[0-9.]+$/ && all > 0.2 && w < 0.02 * all) }' || bad "a window takes too long: $(cat err)"
    done
    check "$zmx" j2k decode $file w.pgm --window 4100,5200,512,512
    pamcut -left 4100 -top 5200 -width 512 -height 512 a.pgm | same - w.pgm
done
finish 17
