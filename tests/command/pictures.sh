#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# pictures.sh BIN-DIR: picture files between the zmx command, netpbm, libtiff's tools and Pillow; pictures.py says what is
# compared.
set -u
for program in ppmtobmp bmptopnm pngtopnm tiffcp tiffinfo tiff2rgba pgmnoise; do
    command -v $program >/dev/null || { echo "no $program"; exit 77; }
done
for python in python3 /usr/bin/python3; do
    if "$python" -c 'import numpy, PIL.TiffImagePlugin' 2>/dev/null; then
        exec "$python" "$(dirname "$0")/pictures.py" "$1/zmx"
    fi
done
echo "no python3 with numpy and Pillow"
exit 77
