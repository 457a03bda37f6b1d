#!/usr/bin/env bash
# Asks another compiler, set to this platform's usual conventions, for the names of the members, and
# looks for them in the import library: decorated_names_test.sh CLANG NM SOURCE IMPORT_LIBRARY
set -euo pipefail
object=$(mktemp)
trap 'rm -f "$object"' EXIT
"$1" --target=i686-pc-windows-msvc -std=c++20 -c "$3" -o "$object"
wanted=$("$2" --undefined-only "$object" | sed -n 's/^ *U \(.*HelpSys.*\)/\1/p')
[ "$(wc -l <<<"$wanted")" -eq 4 ] || { echo "not four members: $wanted"; exit 1; }
offered=$("$2" --defined-only "$4" | sed -n 's/^[0-9a-f]* T //p')
diff <(sort <<<"$wanted") <(grep -xF "$wanted" <<<"$offered" | sort)
