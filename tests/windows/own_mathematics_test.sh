#!/usr/bin/env bash
# Looks for functions of <cmath> that object files take from elsewhere, as the compiler's run-time
# with its x87 code: own_mathematics_test.sh COMPILER NM FILE...
set -euo pipefail
declared=$("$1" -E -P -x c++ -include cmath - </dev/null |
  grep -oE '[a-z0-9_]+ ?\([^()]*(double|float)[^()]*\)' | grep -oE '^[a-z0-9]+' | sort -u)
symbols=$("$2" "${@:3}")
used=$(awk '$1 == "U" { sub(/^(__imp_)?_/, "", $2); print $2 }' <<<"$symbols" | sort -u |
  comm -12 - <(echo "$declared"))
defined=$(awk '$2 == "T" { sub(/^_/, "", $3); print $3 }' <<<"$symbols" | sort -u)
grep -qx sincos <<<"$used" || { echo "no use of sincos: are these the objects?"; exit 1; }
foreign=$(comm -23 <(echo "$used") <(echo "$defined"))
[ -z "$foreign" ] || { echo "not ours:" $foreign; exit 1; }
