#!/usr/bin/env bash
# The same host saves the same scene through the library of this machine and through the DLL; an
# independent reader must find the same in both files, and the checkers of both systems must find
# nothing damaged in the DLL's:
#   same_file_test.sh NATIVE_BUILD EMULATOR SCENE_HOST COMPOUND_CHECK
set -euo pipefail
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
mkdir "$folder/native" "$folder/windows"

"$1/examples/scene_host/scene_host" "$folder/native" >"$folder/native.txt"
"$2" "$3" "$folder/windows" | tr -d '\r' >"$folder/windows.txt"

# The hosts saw the same calls; the sizes of the files are the storage's own business.
diff -u <(sed 's/, [0-9]* bytes$//' "$folder/native.txt") \
  <(sed 's/, [0-9]* bytes$//' "$folder/windows.txt")

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
for path in Title Meshes/Box; do
  cmp <("$2" "$4" -x "$path" "$folder/windows/scene.kel") \
    <("$1/tools/compound_check/compound_check" -x "$path" "$folder/native/scene.kel")
done
