#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# manual.sh BIN-DIR: manual pages and completions against --help; manual.py says what is compared.
exec python3 "$(dirname "$0")/manual.py" "$1"
