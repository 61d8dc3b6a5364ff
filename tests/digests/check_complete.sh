#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# check_complete.sh INCLUDE-DIR LIST CC: the list of digests names every function that the header declares, and at least
# 300 digests.
set -u
include=$1 list=$2 cc=$3
declared=$(printf '#include "zmxj.h"\n' | "$cc" -E -P -I "$include" -x c - | grep -oE '\bzmx[ij][A-Za-z0-9_]+ *\(' | tr -d ' (' | sort -u)
# Bad arguments alone are no digest of a function.
named=$(grep -v 'bad arguments' "$list" | grep -oE '\bzmx[ij][A-Za-z0-9_]+' | sort -u)
missing=$(comm -23 <(echo "$declared") <(echo "$named"))
extra=$(comm -13 <(echo "$declared") <(echo "$named"))
[ -z "$missing" ] || printf 'without a digest: %s\n' $missing
[ -z "$extra" ] || printf 'not declared: %s\n' $extra
digests=$(cut -d' ' -f2- "$list" | sort -u | wc -l)
echo "$digests digests of $(echo "$declared" | wc -l) functions"
[ -n "$declared" ] && [ -z "$missing$extra" ] && [ "$digests" -ge 300 ]
