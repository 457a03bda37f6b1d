#!/usr/bin/env bash
# Reads the headers of the DLL: dll_contents_test.sh OBJDUMP DLL EXPORTS
set -euo pipefail
headers=$("$1" -p "$2")

grep -q 'file format pei-i386' <<<"$headers" || { echo "not for 32-bit x86"; exit 1; }

# The exported names, and nothing beside them.
sed -n '/Ordinal.Name Pointer. Table/,/^$/s/^\t\[ *[0-9]*\] //p' <<<"$headers" |
  LC_ALL=C sort | diff -u "$3" -

# Only libraries that every system has.
others=$(sed -n 's/^\tDLL Name: //p' <<<"$headers" |
  grep -viE '^(kernel32|user32|ole32|msvcrt)\.dll$' || true)
[ -z "$others" ] || { echo "needs other libraries: $others"; exit 1; }

# With this directory the system refuses to leave out thread notifications.
grep -qE '^Entry 9 0+ 0+ Thread Storage' <<<"$headers" || { echo "thread storage"; exit 1; }

# Nothing of the build is left in it.
"$1" -t "$2" | grep -q '^no symbols' || { echo "not stripped"; exit 1; }

grep -aqP 'V\0S\0_\0V\0E\0R\0S\0I\0O\0N' "$2" || { echo "does not tell its version"; exit 1; }
