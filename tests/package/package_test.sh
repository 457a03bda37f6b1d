#!/usr/bin/env bash
# Installs the library, moves the installed folder, and builds and runs against it the host of the
# README, once with CMake and once with pkg-config, and a copy of the example host. The installed
# files are compared with installed_files.txt.
#   package_test.sh SOURCE_FOLDER BUILD_FOLDER CMAKE COMPILER SANITIZERS
set -euo pipefail
source=$1 build=$2 cmake=$3 compiler=$4 sanitizers=$5
here=$source/tests/package
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

"$cmake" --install "$build" --prefix "$work/first" >"$work/log"
mv "$work/first" "$work/moved"
(cd "$work/moved" && find . -type f -o -type l) |
  sed -E 's/^\.\///; s/(Targets)-[a-z]+(\.cmake)$/\1-CONFIG\2/; s/(\/(examples|calc|geometry)\/).*/\1.../' |
  LC_ALL=C sort -u |
  diff -u "$here/installed_files.txt" -

# As a part of another project nothing of ours is installed.
mkdir "$work/outer"
cat >"$work/outer/CMakeLists.txt" <<OUTER
cmake_minimum_required(VERSION 3.25)
project(outer LANGUAGES CXX)
add_subdirectory("$source" kelsave)
OUTER
CXX=$compiler "$cmake" -G Ninja -S "$work/outer" -B "$work/outer/build" >"$work/log"
"$cmake" --install "$work/outer/build" --prefix "$work/nothing" >"$work/log"
[ ! -e "$work/nothing" ]

# The host is the README's example, word for word.
cp -r "$here/consumer" "$work/consumer"
sed -n '/^```cpp$/,/^```$/{/^```/d;p}' "$source/README.md" >"$work/consumer/main.cpp"
flags=(-Wall -Wextra -Wpedantic -Werror)
[ -z "$sanitizers" ] || flags+=("-fsanitize=$sanitizers")

run_host() { # COMMAND...: runs it in a new folder and looks at what it left
  local folder
  folder=$(mktemp -d "$work/run-XXXXXX")
  (cd "$folder" && "$@") >"$work/log" || { cat "$work/log"; exit 1; }
  "$work/moved/bin/compound_check" --strict "$folder/scene.kel" >"$work/log"
}

build_host() { # SOURCE BUILD
  CXX=$compiler CXXFLAGS="${flags[*]}" "$cmake" -G Ninja -S "$1" -B "$2" \
    -DCMAKE_PREFIX_PATH="$work/moved" >"$work/log"
  "$cmake" --build "$2" >"$work/log" || { cat "$work/log"; exit 1; }
}

build_host "$work/consumer" "$work/with_cmake"
run_host "$work/with_cmake/host"

cp -r "$source/examples/scene_host" "$work/copied"
build_host "$work/copied" "$work/copied_built"
run_host "$work/copied_built/scene_host" .

cp -r "$source/examples/embed" "$work/embed"
build_host "$work/embed" "$work/embed_built"
[ "$("$work/embed_built/embed" 1 2 3)" = $' p(-2.000000, 1.000000, 8.000000)\nits height is 8' ]

export PKG_CONFIG_PATH
PKG_CONFIG_PATH=$(dirname "$(find "$work/moved" -name kelsave.pc)")
read -ra package < <(pkg-config --cflags --libs kelsave)
"$compiler" -std=c++17 "${flags[@]}" "$work/consumer/main.cpp" -o "$work/with_pkg_config" \
  "${package[@]}" -Wl,-rpath,"$(pkg-config --variable=libdir kelsave)"
run_host "$work/with_pkg_config"
read -ra package < <(pkg-config --cflags --libs kelcalc)
"$compiler" -std=c++17 "${flags[@]}" "$work/embed/main.cpp" -o "$work/embed_pkg_config" \
  "${package[@]}"
[ "$("$work/embed_pkg_config" 0 0 1 | tail -n 1)" = "its height is 6" ]
