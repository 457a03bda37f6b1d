#!/usr/bin/env bash
# Looks for x87 arithmetic in object files: no_x87_test.sh OBJDUMP FILE...
# Results are returned in an x87 register on this platform, so loading and storing is allowed, and
# so is the conversion of 64-bit integers, which is exact there.
set -euo pipefail
objdump=$1
shift
code=$("$objdump" -d --no-show-raw-insn "$@")
grep -q 'sqrtsd' <<<"$code" || { echo "no SSE2 square root either: is this the code?"; exit 1; }
! grep -E '	f(add|sub|mul|div|isub|iadd|imul|idiv|sqrt|sin|cos|sincos|ptan|patan|yl2x|2xm1|scale|prem|rndint|com|ucom)' \
  <<<"$code" || exit 1
