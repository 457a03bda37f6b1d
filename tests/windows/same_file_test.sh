#!/usr/bin/env bash
# The same host saves the same scene through the library of this machine and through the DLL; the
# checkers of both systems must find nothing damaged in the DLL's file, and the same as in the other:
#   same_file_test.sh NATIVE_BUILD EMULATOR SCENE_HOST COMPOUND_CHECK
set -euo pipefail
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
mkdir "$folder/native" "$folder/windows"

# Each host saves, stops in the middle of a save, and saves again. They are to say the same.
run() { # HOST...
  "$@" . && { "$@" . crash || [ $? -eq 3 ]; } && "$@" .
}
(cd "$folder/native" && run "$1/examples/scene_host/scene_host") >"$folder/native.txt"
(cd "$folder/windows" && run "$2" "$3") | tr -d '\r' >"$folder/windows.txt"
diff -u "$folder/native.txt" "$folder/windows.txt"

check=$1/tools/compound_check/compound_check
"$check" "$folder/windows/scene.kel"
"$2" "$4" "$folder/windows/scene.kel"
list() { "$check" -l "$1" | grep -E 'stream$|storage$'; }
diff -u <(list "$folder/native/scene.kel") <(list "$folder/windows/scene.kel")
streams=$(list "$folder/native/scene.kel" | sed -n 's/^\/\(.*\)\t[0-9]*\tstream$/\1/p')
grep -qx 'Meshes/Pyramid/Points' <<<"$streams"
while read -r path; do
  cmp <("$check" -x "$path" "$folder/native/scene.kel") \
    <("$check" -x "$path" "$folder/windows/scene.kel")
done <<<"$streams"
cmp <("$2" "$4" -x Meshes/Pyramid/Points "$folder/windows/scene.kel") \
  <("$check" -x Meshes/Pyramid/Points "$folder/native/scene.kel")
