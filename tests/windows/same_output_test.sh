#!/usr/bin/env bash
# Runs programs through the calculator of this machine and through another build; what they print and
# how they end must be the same, line ends aside:
#   same_output_test.sh NATIVE_BUILD EMULATOR KELCALC SOURCES
set -euo pipefail
native=$1/tools/kelcalc/kelcalc
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

# compare NAME ARGUMENT...: runs both with these arguments and this standard input.
failures=0
compare() {
  local name=$1 status=0 other=0
  shift
  cat >"$folder/input"
  "$native" "$@" <"$folder/input" >"$folder/out" 2>"$folder/err" || status=$?
  "$emulator" "$windows" "$@" <"$folder/input" >"$folder/out.win" 2>"$folder/err.win" || other=$?
  sed -i 's/\r$//' "$folder/out.win" "$folder/err.win"
  if [ $status -ne $other ] || ! diff -u "$folder/out" "$folder/out.win" ||
     ! diff -u "$folder/err" "$folder/err.win"; then
    echo "different: $name (ended with $status, the other with $other)"
    failures=$((failures + 1))
  fi
}
emulator=$2
windows=$3
sources=$4

# In a copy, because programs write files.
cp -r "$sources/examples" "$folder"
mkdir "$folder/tests"
cp -r "$sources/tests/programs" "$folder/tests"
cd "$folder"
count=0
for program in examples/*.3dc; do
  compare "$program" "$program" </dev/null
  count=$((count + 1))
done
for program in tests/programs/*; do
  compare "$program" <"$program"
  count=$((count + 1))
done

# Every elementary function over a sweep of degrees and of magnitudes, printed as the language does.
# Without the tangent of 630 degrees: so near its pole 51 bits stand before the point, and there
# Linux's C library is one unit off the nearest double.
python3 - >"$folder/sweep" <<'SWEEP'
for degrees in range(-720, 721):
    for function in ("sin", "cos", "tan"):
        if (abs(degrees), function) == (630, "tan"):
            continue
        print(f"{degrees} ;{function} # ")
for i in range(-1000, 1001):
    for function in ("asin", "acos"):
        print(f"{i / 1000} ;{function} # ")
    for function in ("atan", "exp", "ln", "sqrt"):
        print(f"{i * 0.02} ;{function} # ")
    print(f"{i * 0.37} {500 - i} ;atan2 # ")
    print(f"{i}123456789012345e{i % 23} # ")
SWEEP
compare "sweep of functions" <"$folder/sweep"

# Turns, to the last digit: the compiler joins their sines and cosines.
for degrees in 45 90 180 270 -90 540 1000000 9e15 1e22 1.7e100 3e300; do
  echo "r(0, 0, 1, $degrees) ;q # r(1, 0, 0, $degrees) ;m # r(1, 2, -3, $degrees) ;m # "
done >"$folder/turns"
compare "turns" --digits 17 <"$folder/turns"

echo "$count programs, $(wc -l <"$folder/sweep") results"
[ $failures -eq 0 ]
