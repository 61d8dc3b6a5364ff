#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# check_install.sh SOURCE-DIR: configures once in an empty folder, builds, installs into an empty prefix, and uses what is
# there as its users do: the command, find_package, pkg-config, plain gcc, FetchContent; then shared libraries give way to
# static ones, and `uninstall` leaves nothing behind.
set -eu
source=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix
fail() { echo "FAILED: $*"; exit 1; }
quiet() { "$@" >"$work/log" 2>&1 || { tail -n 40 "$work/log"; fail "$*"; }; }
options=(-DCMAKE_INSTALL_PREFIX="$prefix" -DZMX_TESTS=OFF -DZMX_BENCH=OFF -G Ninja)

echo "== shared libraries"
quiet cmake -S "$source" -B "$work/shared" "${options[@]}"
quiet cmake --build "$work/shared"
quiet cmake --install "$work/shared"
libdir=$(dirname "$(find "$prefix" -name libzmxjpx.so)")
version=$(env -u LD_LIBRARY_PATH "$prefix/bin/zmx" --version) || fail "the installed zmx does not start"
[[ $version == *6.1* ]] || fail "zmx --version says: $version"
printf 'P5\n16 16\n255\n' >"$work/in.pgm"
head -c 256 /dev/zero | tr '\0' 'x' >>"$work/in.pgm"
quiet "$prefix/bin/zmx" j2k encode "$work/in.pgm" "$work/out.jp2"
quiet "$prefix/bin/zmx" j2k decode "$work/out.jp2" "$work/back.pgm"
tail -c 256 "$work/in.pgm" | cmp - <(tail -c 256 "$work/back.pgm") || fail "the installed zmx does not bring a picture back"
[ -f "$prefix/share/doc/zmxjpx/LICENSE" ] && [ -f "$prefix/share/doc/zmxjpx/docs/architecture.md" ] || fail "no documents"
# A C program needs no C++ runtime for the library itself.
! readelf -d "$libdir/libzmxjpx.so.6.1" | grep -q 'libstdc++' || fail "libzmxjpx.so wants libstdc++"

consumer() { # consumer WHAT PROGRAM: runs it, without help from the environment
    (unset LD_LIBRARY_PATH && "$2") || fail "the consumer by $1"
}
consumers() { # consumers KIND [PKG-CONFIG FLAG]: by CMake and pkg-config
    quiet cmake -S "$source/examples/consumers/cmake" -B "$work/c-$1" -DCMAKE_PREFIX_PATH="$prefix"
    quiet cmake --build "$work/c-$1"
    consumer "find_package, $1" "$work/c-$1/consumer"
    mkdir -p "$work/p-$1"
    cp "$source/examples/consumers/pkg-config/Makefile" "$work/p-$1"
    cp "$source/examples/consumers/consumer.c" "$work"
    quiet env PKG_CONFIG_PATH="$libdir/pkgconfig" make -C "$work/p-$1" STATIC="${2-}" LDFLAGS="-Wl,-rpath,$libdir"
    consumer "pkg-config, $1" "$work/p-$1/consumer"
}
consumers shared
(cd "$work" && quiet "$source/examples/consumers/plain/build.sh" "$prefix")
consumer "plain gcc" "$work/consumer"
quiet cmake --build "$work/shared" --target uninstall
left=$(find "$prefix" -type f -o -type l)
[ -z "$left" ] || fail "left behind by uninstall: $left"

echo "== static libraries"
quiet cmake -S "$source" -B "$work/static" "${options[@]}" -DBUILD_SHARED_LIBS=OFF -DZMX_CODECS=OFF
quiet cmake --build "$work/static"
quiet cmake --install "$work/static"
[ -f "$libdir/libzmxjpx.a" ] && [ ! -e "$libdir/libzmxjpx.so" ] || fail "no static library, or a shared one"
consumers static --static

echo "== as a part of another project"
quiet cmake -S "$source/examples/consumers/fetchcontent" -B "$work/fetch" -DCMAKE_INSTALL_PREFIX="$work/none" -G Ninja
quiet cmake --build "$work/fetch"
consumer FetchContent "$work/fetch/consumer"
quiet cmake --install "$work/fetch"
[ ! -e "$work/none" ] || fail "install rules leak into the other project"
echo "all consumers work"
