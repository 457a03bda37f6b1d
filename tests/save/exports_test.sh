#!/usr/bin/env bash
# Compares what a library exports with a list: exports_test.sh NM LIBRARY LIST
set -euo pipefail
"$1" -D -C --defined-only "$2" | sed -E 's/^[0-9a-f]* +. +//' | LC_ALL=C sort | diff -u "$3" -
