#!/usr/bin/env bash
# Installs the Windows build and compares the files with a list: install_test.sh BUILD LIST
set -euo pipefail
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cmake --install "$1" --prefix "$folder" >/dev/null
(cd "$folder" && find . -type f -printf '%P\n' | LC_ALL=C sort) | diff -u "$2" -
