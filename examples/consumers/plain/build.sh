#!/bin/sh
# SPDX-License-Identifier: BSD-2-Clause
# build.sh PREFIX: plain gcc on an installed libzmxjpx; the program finds the libraries by its run path.
set -eu
prefix=$1
libdir=$(dirname "$(find "$prefix" -name 'libzmxjpx.so' | head -n 1)")
${CC:-gcc} -std=c99 -Wall -Wextra "$(dirname "$0")/../consumer.c" -I "$prefix/include" -L "$libdir" -lzmxjpx -lzmxcore \
    -Wl,-rpath,"$libdir" -o consumer
