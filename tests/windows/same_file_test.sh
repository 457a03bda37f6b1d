#!/usr/bin/env bash
# The same host saves the same scene through the library of this machine and through the DLL; an
# independent reader must find the same in both files, and the checkers of both systems must find
# nothing damaged in the DLL's:
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

describe() {
  python3 "$(dirname "$0")/compound_contents.py" "$1"
}
describe "$folder/native/scene.kel" >"$folder/native.contents"
describe "$folder/windows/scene.kel" >"$folder/windows.contents"
grep -q 'Meshes/Pyramid' "$folder/native.contents"
diff -u "$folder/native.contents" "$folder/windows.contents"
cat "$folder/windows.contents"

"$1/tools/compound_check/compound_check" "$folder/windows/scene.kel"
"$2" "$4" "$folder/windows/scene.kel"
for path in Title Meshes/Pyramid/Points; do
  cmp <("$2" "$4" -x "$path" "$folder/windows/scene.kel") \
    <("$1/tools/compound_check/compound_check" -x "$path" "$folder/native/scene.kel")
done
