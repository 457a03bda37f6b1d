#!/usr/bin/env bash
# Makes a host with another compiler and linker, set to this platform's usual conventions and
# otherwise to their defaults (which demand safe exception handlers), and runs it:
#   other_compiler_test.sh CLANG LLD_LINK SOURCE IMPORT_LIBRARY DLL EMULATOR
set -euo pipefail
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
"$1" --target=i686-pc-windows-msvc -std=c++20 -O1 -c "$3" -o "$folder/host.obj"
"$2" /nologo /nodefaultlib /entry:start /subsystem:console /out:"$folder/host.exe" \
  "$folder/host.obj" "$4"
cp "$5" "$folder"
"$6" "$folder/host.exe"
