#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# manners.sh BIN-DIR: what users expect of any command: pipes, several files, exit codes, files that stay whole when work
# fails or is interrupted, and a bar on terminals only.
set -u
here=$(realpath "$(dirname "$0")")
. "$here/support/checks.bash"
need cmp script mkfifo

# code N WORDS COMMAND...: ends with N and says WORDS
code() {
    local want=$1 words=$2 got
    shift 2
    checks=$((checks + 1))
    "$@" >out 2>err
    got=$?
    [ $got -eq "$want" ] || bad "$*: exit $got, not $want: $(cat out err)"
    grep -qF -- "$words" out err || bad "$*: does not say '$words' but '$(cat out err)'"
}
empty() { checks=$((checks + 1)); [ ! -s "$1" ] || bad "$2: $(cat "$1")"; }
holds() { checks=$((checks + 1)); [ "$(ls -A "$1" | tr '\n' ' ')" = "$2" ] || bad "$1 holds $(ls -A "$1")"; }

waves 60 40 255 3 >a.ppm
waves 50 30 255 1 >b.pgm
"$zmx" image convert a.ppm a.ppm -f && "$zmx" image convert a.ppm a.png || bad "the pictures are not there"

# Pipes.
check bash -c '"$0" image convert - - <a.ppm >c.ppm && cmp a.ppm c.ppm' "$zmx"
check bash -c 'cat a.png | "$0" image convert - - | cmp - a.ppm' "$zmx"
check bash -c 'cat a.ppm | "$0" tiff encode - - | "$0" tiff decode - - | cmp - a.ppm' "$zmx"
check bash -c 'cat a.ppm | "$0" dds encode - - --format dxt5 --mips >p.dds && "$0" dds encode a.ppm f.dds --format dxt5 --mips && cmp p.dds f.dds' "$zmx"
check bash -c 'cat p.dds | "$0" dds decode - - --to png >p.png && "$0" dds decode f.dds f.png && cmp p.png f.png' "$zmx"
check bash -c 'cat a.png | "$0" image convert - -o x.png --crop 1,2,3,4 && "$0" image convert a.png y.png --crop 1,2,3,4 && cmp x.png y.png' "$zmx"
check "$zmx" image convert a.png --output o.ppm
check cmp a.ppm o.ppm

# Several files.
mkdir in made
cp a.png in/one.png && cp b.pgm in/two.pgm
check "$zmx" tiff encode in/one.png in/two.pgm made
holds made "one.tif two.tif "
check "$zmx" tiff decode made/one.tif made/two.tif -o made/ --to pam
holds made "one.pam one.tif two.pam two.tif "
check "$zmx" dds encode in/one.png in/two.pgm --suffix -small.dds --format dxt1
holds in "one-small.dds one.png two-small.dds two.pgm "
check "$zmx" image convert in/one.png made
check cmp in/one.png made/one.png
echo nonsense >in/bad.png
code 1 "in/bad.png: not a PNG" "$zmx" image convert in/bad.png in/one.png in/two.pgm -o made --suffix .bmp
checks=$((checks + 1))
[ -s made/one.bmp ] && [ -s made/two.bmp ] && [ ! -e made/bad.bmp ] || bad "one bad file ends the others: $(ls made)"

# Exit codes: 2 for a wrong command line, 1 for a file, 0 for help.
code 0 "zmx image convert" "$zmx" image convert --help
code 0 "Exit codes" "$zmx" --help
code 2 "" "$zmx"
code 2 "" "$zmx" paint
code 2 "--crop" "$zmx" image convert a.png x.png --crop 1,2,3
code 2 "where to?" "$zmx" image convert a.png
code 2 "no folder" "$zmx" image convert a.png b.pgm x.png
code 2 "two files would become" "$zmx" image convert a.png a.ppm -o made
code 2 "-f writes over it" "$zmx" image convert a.png a.png
code 2 "standard input has no name" "$zmx" image convert - -o made
code 2 "exclude" "$zmx" image convert a.png -o x.png --suffix .y
code 2 "--format" "$zmx" dds encode a.png x.dds --format dxt2
code 2 "--format" "$zmx" dds encode a.png x.dds
code 2 "--layer" "$zmx" dds decode f.dds x.png --layer -1
code 2 "--level" "$zmx" dds decode f.dds x.png --level -1
code 2 "--rows-per-strip" "$zmx" tiff encode a.png x.tif --rows-per-strip 0
code 2 "--threads" "$zmx" image compare a.png a.png --threads 0
code 2 "--threads" "$zmx" tiff encode a.png x.tif --threads 0
code 2 "--depth" "$zmx" image convert a.png x.png --depth 17
code 2 "--within" "$zmx" image compare a.png a.png --within -1
code 2 "--max-pixels" "$zmx" image convert a.png x.png --max-pixels -1
code 2 "--max-pixels" "$zmx" image convert a.png x.png --max-pixels many
code 2 "--to" "$zmx" image convert a.png x --to gif
code 2 "several files" "$zmx" dds decode f.dds - --mips
code 1 "none.png: No such file" "$zmx" image convert none.png x.png
code 1 "x.gif: the name of a picture" "$zmx" image convert a.png x.gif
code 1 "not inside the picture" "$zmx" image convert a.png x.png --crop 50,0,50,10
code 1 "more pixels than the limit" "$zmx" image convert a.png x.png --max-pixels 2399
code 1 "different shapes" "$zmx" image compare a.png b.pgm
code 1 "level 9 is not among its 6" "$zmx" dds decode f.dds x.png --level 9
code 1 "layer 1 is not among its 1" "$zmx" dds decode f.dds x.png --layer 1
code 1 "Compression 1 is not supported" bash -c 'tiffcp -c none made/one.tif plain.tif && exec "$0" tiff decode plain.tif x.png' "$zmx"
code 1 "a.dds: byte 0: not a DDS file" bash -c 'cp a.png a.dds && exec "$0" dds info a.dds' "$zmx"
code 1 "/: Is a directory" "$zmx" image convert / x.png
checks=$((checks + 1))
[ ! -e x.gif ] && ! ls -A | grep -q '^\.zmx' || bad "refused work leaves files: $(ls -A)"

# How much is said.
"$zmx" image convert a.png x.ppm >out 2>err && empty err "an easy conversion talks" && empty out "it talks to standard output"
code 0 "x.ppm: 7213 bytes from a.png in" "$zmx" image convert a.png x.ppm -v
"$zmx" image convert a.png r.png -q
"$zmx" dds encode made/one.png x.dds --format dxt1 -t 1 >out 2>err && empty err "one thread talks"

# A failed write leaves the old file, and nothing else.
mkdir kept && echo old >kept/o.ppm && cp kept/o.ppm old
checks=$((checks + 1))
(ulimit -f 2; "$zmx" image convert a.png kept/o.ppm) 2>err && bad "2 KiB hold 7"
grep -q 'kept/o.ppm: File too large' err || bad "a file that may not grow: $(cat err)"
check cmp old kept/o.ppm
(ulimit -f 2; "$zmx" tiff encode a.png kept/o.ppm) 2>/dev/null
(ulimit -f 2; "$zmx" dds encode a.png kept/o.ppm --format dxt5) 2>/dev/null
check cmp old kept/o.ppm
holds kept "o.ppm "
if mkdir tiny && mount -t tmpfs -o size=64k none tiny 2>/dev/null; then
    waves 400 200 255 3 | "$zmx" image convert - big.ppm
    cp a.ppm tiny/o.ppm
    code 1 "tiny/o.ppm: No space left on device" "$zmx" image convert big.ppm tiny/o.ppm
    check cmp a.ppm tiny/o.ppm
    holds tiny "o.ppm "
    umount tiny
fi
code 1 "No space left on device" "$zmx" image convert a.png /dev/full --to ppm
# Text is output too.
code 1 "standard output: No space left on device" bash -c '"$0" dds info f.dds >/dev/full' "$zmx"
code 1 "standard output: No space left on device" bash -c '"$0" image convert --help >/dev/full' "$zmx"

# A reader that goes away ends the command, by a signal or where that is ignored by an error; a spool leaves nothing.
waves 400 200 255 3 | "$zmx" image convert - long.ppm
for ending in ppm bmp tif; do
    checks=$((checks + 1))
    TMPDIR=$dir/kept "$zmx" image convert long.ppm - --to $ending 2>err | head -c 10 >/dev/null
    [ "${PIPESTATUS[0]}" -gt 128 ] || bad "a broken pipe ends it with ${PIPESTATUS[0]}: $(cat err)"
    holds kept "o.ppm "
done
code 1 "standard output: Broken pipe" bash -c 'trap "" PIPE; { "$0" image convert long.ppm - 2>said; echo $? >code; } | true; cat said; exit $(cat code)' "$zmx"

# An interrupted command leaves no half file, and ends as the signal ends it.
for signal in INT TERM HUP QUIT; do
    mkfifo slow
    (head -c 5000 a.ppm; sleep 5) >slow &
    feeder=$!
    # A shell has its children in the background ignore INT.
    env --default-signal=INT,QUIT "$zmx" image convert slow kept/o.ppm 2>err &
    worker=$!
    for _ in $(seq 100); do ls -A kept | grep -q '^\.zmx' && break; sleep 0.05; done
    checks=$((checks + 2))
    ls -A kept | grep -q '^\.zmx' || bad "no unfinished file is there to be removed"
    kill -$signal $worker
    wait $worker
    got=$?
    [ $got -gt 128 ] || bad "SIG$signal ends it with $got"
    kill $feeder 2>/dev/null
    wait $feeder 2>/dev/null
    rm slow
    holds kept "o.ppm "
    check cmp old kept/o.ppm
done

# A bar for what takes longer than a second, on a terminal alone.
cat >slowly <<'EOF'
head -c 3000 a.ppm
sleep 1.3
tail -c +3001 a.ppm
EOF
checks=$((checks + 2))
export zmx
script -qec 'sh slowly | "$zmx" image convert - x.png' bar >/dev/null </dev/null
grep -q '\[#' bar || bad "no bar on a terminal: $(cat bar)"
sh slowly | "$zmx" image convert - x.png 2>err
empty err "a bar where no terminal is"
checks=$((checks + 1))
script -qec 'sh slowly | "$zmx" image convert - x.png -q' bar >/dev/null </dev/null
grep -q '\[#' bar && bad "a bar in spite of -q"
code 2 "standard output is a terminal" bash -c "script -qec '\"\$zmx\" image convert a.png - --to png' said >/dev/null </dev/null; code=\$?; cat said; exit \$code"
finish 92
