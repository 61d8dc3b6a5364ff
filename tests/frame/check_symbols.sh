#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# check_symbols.sh INCLUDE-DIR LIBRARY NM CC: the functions that the library exports are those that the header declares.
set -u
include=$1 library=$2 nm=$3 cc=$4
declared=$(printf '#include "zmxj.h"\n' | "$cc" -E -P -I "$include" -x c - | grep -oE '\bzmx[ij][A-Za-z0-9_]+ *\(' | tr -d ' (' | sort -u)
exported=$("$nm" -D --defined-only "$library" | awk '$2 ~ /^[A-Z]$/ && $2 != "A" {print $3}' | sed 's/@.*//' | sort -u)
[ -n "$exported" ] || { echo "no exported symbol found in $library"; exit 1; }
missing=$(comm -23 <(echo "$declared") <(echo "$exported"))
extra=$(comm -13 <(echo "$declared") <(echo "$exported"))
[ -z "$missing" ] || printf 'declared but not exported: %s\n' $missing
[ -z "$extra" ] || printf 'exported but not declared: %s\n' $extra
echo "$(echo "$exported" | wc -l) functions exported"
[ -z "$missing$extra" ]
