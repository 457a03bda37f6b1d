#!/usr/bin/env bash
# Has readers from elsewhere, libgsf and 7-Zip, read what the model tests write: every stream's
# name, place, size and bytes. Argument: the program storage_model_test.
set -euo pipefail
export LC_ALL=C.UTF-8

sevenZip=$(command -v 7zz || command -v 7z) || { echo "7-Zip is missing: run script/bootstrap"; exit 1; }
command -v gsf >/dev/null || { echo "gsf is missing: run script/bootstrap"; exit 1; }

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
KEL_KEEP_FILES=$folder "$1" >"$folder/log" || { cat "$folder/log"; exit 1; }

failures=0 files=0 streams=0
complain() { echo "$*"; failures=$((failures + 1)); }

for file in "$folder"/*.cfb; do
  name=$(basename "$file")
  files=$((files + 1))
  "$sevenZip" x -y -o"$file.7z" "$file" >"$folder/log" || complain "7-Zip cannot unpack $name"
  mkdir -p "$file.7z"
  diff -rq "$file.d" "$file.7z" >"$folder/log" || { complain "7-Zip differs in $name"; head "$folder/log"; }
  # A line is: d or f, 21 columns with the date, the size, the path; an empty storage is an f, too.
  gsf list "$file" 2>&1 | sed -nE 's/^f.{21} *//p' | sort >"$file.gsf"
  (cd "$file.d" && find . -mindepth 1 '(' -type f -printf '%s %P\n' -o -empty -printf '0 %P\n' ')') |
    sort | diff - "$file.gsf" >"$folder/log" ||
    { complain "gsf lists $name differently"; head "$folder/log"; }
  mapfile -d '' -t paths < <(cd "$file.d" && find . -type f -printf '%P\0')
  streams=$((streams + ${#paths[@]}))
  [ ${#paths[@]} -eq 0 ] ||
    cmp <(gsf cat "$file" "${paths[@]}" 2>&1) <(cd "$file.d" && cat "${paths[@]}") ||
    complain "gsf differs in $name"
done
echo "$files files, $streams streams, $failures differences"
[ "$files" -gt 0 ] && [ "$streams" -gt 0 ] && [ "$failures" -eq 0 ]
