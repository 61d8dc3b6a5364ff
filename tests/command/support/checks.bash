# SPDX-License-Identifier: BSD-2-Clause
# checks.bash - what the checks of the zmx command share. Source it with the directory of the programs: it leaves the
# shell in a scratch directory.
zmx=$(realpath "$1")/zmx
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
cd "$dir" || exit 1
checks=0 failures=0

need() { for program in "$@"; do command -v "$program" >/dev/null || { echo "no $program"; exit 77; }; done; }
# need_pillow: sets `python` to one that has numpy and Pillow; Debian's may stand behind another one
need_pillow() {
    for python in python3 /usr/bin/python3; do "$python" -c 'import numpy, PIL' 2>/dev/null && return; done
    echo "no python3 with numpy and Pillow"
    exit 77
}
bad() { echo "FAILED: $*"; failures=$((failures + 1)); }
check() { checks=$((checks + 1)); "$@" >out 2>err || bad "$*: exit $?, $(cat out err)"; }
# finish N: at least N checks ran, and all passed
finish() { echo "$checks checks, $failures failures"; [ $failures -eq 0 ] && [ $checks -ge "$1" ]; }

# waves W H MAXVAL CHANNELS: a picture of waves, edges and fine texture, as plain PNM
waves() {
    awk -v w="$1" -v h="$2" -v m="$3" -v c="$4" 'BEGIN {
        s = 1
        print c == 1 ? "P2" : "P3", w, h, m
        for (y = 0; y < h; ++y) for (x = 0; x < w; ++x) for (k = 0; k < c; ++k) {
            s = (s * 1103515245 + 12345) % 2147483648; t = (int(s / 65536) % 17 - 8) / 255
            e = (int(x / 37) + int(y / 29)) % 2 * 0.12
            v = 0.45 + 0.27 * sin(x * 0.031 * (k + 1)) + 0.2 * cos(y * 0.043 + k) + t + e
            printf "%d\n", (v < 0 ? 0 : v > 1 ? m : int(v * m))
        }
    }'
}
same_pixels() { "$zmx" image compare "$1" "$2" | grep -qx "psnr inf"; }
