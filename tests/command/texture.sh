#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# texture.sh BIN-DIR: DDS files between the zmx command and Pillow; texture.py says what is compared.
set -u
for python in python3 /usr/bin/python3; do
    if "$python" -c 'import numpy, PIL.DdsImagePlugin' 2>/dev/null; then
        exec "$python" "$(dirname "$0")/texture.py" "$1/zmx"
    fi
done
echo "no python3 with numpy and Pillow"
exit 77
