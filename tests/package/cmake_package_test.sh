#!/bin/sh
# usage: cmake_package_test.sh CMAKE CC EXAMPLES PREFIX shared|static
# An integrator's CMake project, with C++ in other parts of it, finds the installed package; its C program links and runs.
set -eu
cmake=$1 cc=$2 examples=$3 prefix=$4 kind=$5
temp=$(mktemp -d)
trap 'rm -rf "$temp"' EXIT
static=OFF
[ "$kind" = shared ] || static=ON

echo 'enable_language(CXX)' >"$temp/with_cpp.cmake"

fail() { cat "$temp/log"; echo "$1"; exit 1; }
"$cmake" -S "$examples" -B "$temp/build" -G 'Unix Makefiles' -DCMAKE_C_COMPILER="$cc" -DCMAKE_C_FLAGS='-Wall -Wextra -Werror' \
    -DCMAKE_PREFIX_PATH="$prefix" -DUSE_STATIC=$static \
    -DCMAKE_PROJECT_INCLUDE="$temp/with_cpp.cmake" >"$temp/log" 2>&1 || fail 'find_package(viscacam) fails'
"$cmake" --build "$temp/build" >"$temp/log" 2>&1 || fail "minimal_host does not build against the $kind library"
grep -q "^$cc " "$temp/build/CMakeFiles/minimal_host.dir/link.txt" ||
    { cat "$temp/build/CMakeFiles/minimal_host.dir/link.txt"; echo 'minimal_host, a C program, was not linked as C'; exit 1; }
"$(dirname "$0")/run_example.sh" "$temp/build/minimal_host" "$kind"
