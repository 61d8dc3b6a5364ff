#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# hostile.sh BIN-DIR: files that someone broke, in bulk, within the limits of docs/limits.md: in one process the codecs on
# truncations, changed files and bombs; then the command on the bombs, with limits on the process.
set -u
here=$(realpath "$(dirname "$0")")
. "$here/support/checks.bash"
hostile=$(dirname "$zmx")/hostile
source=$(realpath "$here/../..")
check "$source/tests/hostile/samples.sh" "$zmx" "$source" samples
count=600
[ -z "${ZMX_LONG_TESTS:-}" ] || count=60000
# The sanitizers take many times as long, and have their own tests of the same kind (fuzz/).
(ulimit -v 65536 && "$zmx" --version >/dev/null 2>&1) && plain=1 || plain=0
cuts=400
[ $plain = 1 ] || count=$((count / 20)) cuts=20
for codec in jpeg jpeg2000 dds tiff picture pgx; do
    check "$hostile" $codec samples/$codec --count $count --cuts $cuts --keep .
    tail -1 out
    check "$hostile" $codec samples/$codec --count 0 --cuts 0 --max-pixels 1048576 --keep .
done

# ---- the command: 10 seconds of processor time; of memory what the rule allows, and 64 MiB for the program and its libraries
export MALLOC_ARENA_MAX=1
mkdir bombs
for codec in jpeg jpeg2000 dds tiff picture; do check "$hostile" $codec samples/$codec --write-bombs bombs --max-pixels 65536; done
# limited FIXED-KIB PER-BYTE-KIB FILE COMMAND...: an answer, which is a picture or a message
limited() {
    local kib=$((65536 + $1 + $2 * ($(stat -c %s "$3") + 1023) / 1024)) status
    shift 3
    checks=$((checks + 1))
    (
        ulimit -t 10
        [ $plain = 0 ] || ulimit -v $kib
        exec "$@"
    ) >out 2>err
    status=$?
    [ $status -le 1 ] || bad "$*: exit $status, $(tail -3 err)"
}
for file in bombs/*; do
    case $file in
    */jpeg-*) limited 34816 8 "$file" "$zmx" jpeg decode "$file" o.ppm --max-pixels 65536
        limited 34816 8 "$file" "$zmx" jpeg transcode "$file" o.jpg --rotate 90 --trim --max-pixels 65536 ;;
    */jpeg2000-*) limited 526848 2560 "$file" "$zmx" j2k decode "$file" o.ppm -t 1 --max-pixels 65536 ;;
    */dds-*) limited 4096 16 "$file" "$zmx" dds decode "$file" o.pam ;;
    */tiff-*) limited 61440 16 "$file" "$zmx" tiff decode "$file" o.ppm --max-pixels 65536 ;;
    *) limited 61440 16 "$file" "$zmx" image convert "$file" o.png --max-pixels 65536 ;;
    esac
done
finish 45
