#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# faults.sh BIN-DIR: each subcommand while memory, reads and writes fail, one call at a time; faults.py says what must hold.
set -u
library=$(dirname "$1")/lib/libzmx_faults.so
[ -e "$library" ] || { echo "no $library"; exit 77; }
exec python3 "$(dirname "$0")/faults.py" "$1/zmx" "$library" "${@:2}"
