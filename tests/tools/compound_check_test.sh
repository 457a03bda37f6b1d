#!/usr/bin/env bash
# compound_check as a process, on a file that a host saved: its exit status and what it prints.
# Usage: compound_check_test.sh CHECKER HOST
set -u
checker=$1 host=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder" || exit 2
failed=0

# expect STATUS PATTERN ARGUMENT...: the status, and a line of either output that fits the pattern.
expect() {
  local wanted=$1 pattern=$2 status=0
  shift 2
  "$checker" "$@" >printed 2>&1 || status=$?
  if [ "$status" -ne "$wanted" ] || ! grep -q "$pattern" printed; then
    echo "compound_check $*: status $status, expected $wanted, and '$pattern' in:"
    cat printed
    failed=1
  fi
}

"$host" . >/dev/null || exit 2
{ head -c 48 scene.kel; printf '\xF0'; tail -c +50 scene.kel; } >damaged.kel
head -c 100 scene.kel >short.kel

expect 0 '^scene.kel: valid$' scene.kel
expect 0 '^/Title	11	stream$' -l scene.kel
expect 1 '^directory: sector 0x.*expected one below' damaged.kel
expect 1 'file length expected 0x200 or more, found 0x64' scene.kel short.kel
expect 2 'cannot read missing' damaged.kel missing scene.kel
expect 2 'cannot read \.' .
expect 2 'no file is given'
expect 2 'unknown option -x' -x scene.kel
expect 2 'cannot read -x' -- -x
exit "$failed"
