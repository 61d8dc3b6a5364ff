#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# check_install.sh SOURCE-DIR HOME: uses what the commands of docs/adopt.md have built in HOME/build, a fresh folder that was
# configured once, and installed into HOME/zmx, an empty prefix: the command, find_package, pkg-config, plain gcc. Each component
# holds what it should, `uninstall` leaves nothing behind. Then static libraries, FetchContent, and the same objects from
# another folder.
set -eu
source=$1
home=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$home/zmx
[ -n "${ZMX_LONG_TESTS:-}" ] || export CXX="$source/tests/install/quick-g++"
fail() { echo "FAILED: $*" >&2; exit 1; }
quiet() { "$@" >"$work/log" 2>&1 || { tail -n 40 "$work/log" >&2; fail "$*"; }; }
build() { # build FOLDER OPTION...: configures and builds
    quiet cmake -S "$source" -B "$work/$1" -G Ninja -DZMX_TESTS=OFF -DZMX_BENCH=OFF "${@:2}"
    quiet cmake --build "$work/$1"
}

echo "== what is installed"
libdir=$(dirname "$(find "$prefix" -name libzmxjpx.so)")
version=$(env -u LD_LIBRARY_PATH "$prefix/bin/zmx" --version) || fail "the installed zmx does not start"
[[ $version == *6.1* ]] || fail "zmx --version says: $version"
printf 'P5\n16 16\n255\n' >"$work/in.pgm"
head -c 256 /dev/zero | tr '\0' 'x' >>"$work/in.pgm"
quiet "$prefix/bin/zmx" j2k encode "$work/in.pgm" "$work/out.jp2"
quiet "$prefix/bin/zmx" j2k decode "$work/out.jp2" "$work/back.pgm"
tail -c 256 "$work/in.pgm" | cmp - <(tail -c 256 "$work/back.pgm") || fail "the installed zmx does not bring a picture back"
# A C program needs no C++ runtime for the library itself.
! readelf -d "$libdir/libzmxjpx.so.6.1" | grep -q 'libstdc++' || fail "libzmxjpx.so wants libstdc++"

consumer() { # consumer WHAT PROGRAM: runs it, without help from the environment
    (unset LD_LIBRARY_PATH && "$2") || fail "the consumer by $1"
}
consumers() { # consumers KIND PREFIX [PKG-CONFIG FLAG]: by CMake and pkg-config
    local libdir
    libdir=$(dirname "$(dirname "$(find "$2" -name zmxjpx.pc)")")
    quiet cmake -S "$source/examples/consumers/cmake" -B "$work/c-$1" -DCMAKE_PREFIX_PATH="$2"
    quiet cmake --build "$work/c-$1"
    consumer "find_package, $1" "$work/c-$1/consumer"
    mkdir -p "$work/p-$1"
    cp "$source/examples/consumers/pkg-config/Makefile" "$work/p-$1"
    cp "$source/examples/consumers/consumer.c" "$work"
    quiet env PKG_CONFIG_PATH="$libdir/pkgconfig" make -C "$work/p-$1" STATIC="${3-}" LDFLAGS="-Wl,-rpath,$libdir"
    consumer "pkg-config, $1" "$work/p-$1/consumer"
}
consumers shared "$prefix"
(cd "$work" && quiet "$source/examples/consumers/plain/build.sh" "$prefix")
consumer "plain gcc" "$work/consumer"
# find_package does not take it for a version that it is not compatible with.
mkdir "$work/other"
printf 'cmake_minimum_required(VERSION 3.16)\nproject(other NONE)\nfind_package(zmxjpx %s CONFIG REQUIRED)\n' 6.0 >"$work/other/CMakeLists.txt"
if cmake -S "$work/other" -B "$work/other/build" -DCMAKE_PREFIX_PATH="$prefix" >"$work/log" 2>&1; then fail "find_package takes 6.1 for 6.0"; fi
grep -q 'not compatible\|no.*compatible\|version: 6.1' "$work/log" || fail "find_package failed for another reason: $(cat "$work/log")"

echo "== components"
libs=$(realpath --relative-to="$prefix" "$libdir")
holds() { # holds COMPONENT PATH...: these, and nothing of what others hold
    quiet cmake --install "$home/build" --component "$1" --prefix "$work/$1"
    local pattern
    for pattern in "${@:2}"; do compgen -G "$work/$1/$pattern" >/dev/null || fail "the component $1 has no $pattern"; done
    find "$work/$1" ! -type d -printf '%P\n'
}
{
    holds runtime "$libs/libzmxjpx.so.6.1" "$libs/libzmxcore.so.6.1"
    holds development include/zmxj.h include/zmxj_version.h include/zmxj/dct.h "$libs/libzmxjpx.so" "$libs/cmake/zmxjpx/zmxjpxConfig.cmake" \
        "$libs/pkgconfig/zmxjpx.pc"
    holds command bin/zmx "share/man/man1/zmx-jpeg-encode.1*" "share/bash-completion/completions/zmx" "share/zsh/site-functions/_zmx"
    holds docs "share/doc/*/LICENSE" "share/doc/*/CHANGELOG.md" "share/doc/*/docs/architecture.md" "share/doc/*/docs/abi.md" "share/doc/*/docs/faq.md"
} >"$work/files"
grep -v '/html/' "$work/files" | sort >"$work/parts"
(cd "$prefix" && find . ! -type d -printf '%P\n') | grep -v '/html/' | sort | diff - "$work/parts" || fail "the components are not the whole, each file once"
rm -f "$home"/build/install_manifest_*.txt

echo "== uninstall"
quiet cmake --build "$home/build" --target uninstall
left=$(find "$prefix" -type f -o -type l)
[ -z "$left" ] || fail "left behind by uninstall: $left"

echo "== static libraries"
build static -DCMAKE_INSTALL_PREFIX="$work/fixed" -DBUILD_SHARED_LIBS=OFF -DZMX_CODECS=OFF
quiet cmake --install "$work/static"
[ -n "$(find "$work/fixed" -name libzmxjpx.a)" ] && [ -z "$(find "$work/fixed" -name 'libzmxjpx.so*')" ] || fail "no static library, or a shared one"
consumers static "$work/fixed" --static
# The same objects, from sources and in a folder of other names: nothing of the place or the time is in them.
count=0
for object in "$work"/static/CMakeFiles/zmxjpx_objects.dir/src/*.o; do
    cmp "$object" "$home/build/CMakeFiles/zmxjpx_objects.dir/src/${object##*/}" || fail "two builds differ"
    count=$((count + 1))
done
[ $count -gt 50 ] || fail "only $count objects compared"

echo "== as a part of another project"
quiet cmake -S "$source/examples/consumers/fetchcontent" -B "$work/fetch" -DCMAKE_INSTALL_PREFIX="$work/none" -G Ninja
quiet cmake --build "$work/fetch"
consumer FetchContent "$work/fetch/consumer"
quiet cmake --install "$work/fetch"
[ ! -e "$work/none" ] || fail "install rules leak into the other project"
echo "all consumers work, $count objects are the same twice"
