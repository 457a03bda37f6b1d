#!/usr/bin/env bash
# compound_check as a process, on files that a host saved and that libgsf wrote: its exit status and
# what it prints.
# Usage: compound_check_test.sh CHECKER HOST
set -u
checker=$1 host=$2
command -v gsf >/dev/null || { echo "gsf is missing: run script/bootstrap"; exit 1; }
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder" || exit 2
failed=0

# expect STATUS PATTERN ARGUMENT...: the status, and a line of either output that fits the pattern.
expect() {
  local wanted=$1 pattern=$2 status=0
  shift 2
  timeout 60 "$checker" "$@" >printed 2>&1 || status=$?
  if [ "$status" -ne "$wanted" ] || ! grep -qa -- "$pattern" printed; then
    echo "compound_check $*: status $status, expected $wanted, and '$pattern' in:"
    cat printed
    failed=1
  fi
}

"$host" . >/dev/null || exit 2
mkdir storage empty
head -c 9000 "$host" >storage/big
seq 30 | while read -r i; do echo "$i" >"storage/stream $i"; done
gsf createole gsf.ole storage empty >/dev/null 2>&1 || exit 2
{ head -c 48 scene.kel; printf '\xF0'; tail -c +50 scene.kel; } >damaged.kel
cp gsf.ole short.ole  # its stream "big" promises more than it has
entry=$(grep -obUaP 'b\x00i\x00g\x00\x00' gsf.ole | cut -d: -f1)
printf '\xFF' | dd of=short.ole bs=1 seek=$((entry + 121)) conv=notrunc status=none
mkfifo pipe
: >nothing
echo text >text
"$checker" -x /storage/big gsf.ole | cmp - storage/big || failed=1

expect 0 '^scene.kel: whole$' --strict scene.kel
expect 0 '^/Title	10	stream$' -l scene.kel
expect 0 '^gsf.ole: whole$' gsf.ole
expect 1 '^  unusual: /storage/big: has a time of modification although it is a stream$' --strict gsf.ole
expect 1 '^  directory: leads to a sector that the file does not have$' damaged.kel
expect 1 '^  directory: .* \[offset 0x30, found 0xF0\]$' --verbose scene.kel damaged.kel
expect 1 '^  /storage/big: its size is 65320 bytes, its sectors hold 9216$' short.ole
expect 1 'compound_check: storage/big is damaged; see' -x storage/big short.ole
expect 0 '^30$' -x '/storage/stream 30' short.ole
expect 1 '^  file: is empty$' nothing
expect 1 '^  header: this is no compound file$' text
expect 2 'cannot read missing: there is no such file' damaged.kel missing scene.kel
expect 2 'cannot read \.: it is a folder' .
expect 2 'cannot read pipe: it is no plain file' pipe
expect 2 'there is no stream Tittle in scene.kel' -x Tittle scene.kel
expect 2 '/storage is a storage, not a stream' -x /storage gsf.ole
expect 2 '-x takes one file' -x Title scene.kel gsf.ole
expect 2 'no file is given'
expect 2 'unknown option -y' -y scene.kel
expect 2 'cannot read -x' -- -x
exit "$failed"
