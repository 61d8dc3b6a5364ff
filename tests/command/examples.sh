#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# examples.sh BIN-DIR: runs every example of every --help; examples.py says how.
exec python3 "$(dirname "$0")/examples.py" "$1"
