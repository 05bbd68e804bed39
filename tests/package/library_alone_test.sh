#!/bin/sh
# usage: library_alone_test.sh CMAKE SOURCE-FOLDER CC CXX
# The library alone needs a compiler, CMake and make: no package is looked for, and both libraries come out.
set -eu
cmake=$1 source=$2 cc=$3 cxx=$4
temp=$(mktemp -d)
trap 'rm -rf "$temp"' EXIT
cat >"$temp/no_packages.cmake" <<'EOT'
macro(find_package)
    message(FATAL_ERROR "The library alone looks for the package ${ARGV0}")
endmacro()
EOT

fail() { cat "$temp/log"; echo "$1"; exit 1; }
"$cmake" -S "$source" -B "$temp/build" -G 'Unix Makefiles' -DCMAKE_C_COMPILER="$cc" -DCMAKE_CXX_COMPILER="$cxx" \
    -DVISCACAM_BUILD_TESTS=OFF -DVISCACAM_BUILD_TOOL=OFF -DVISCACAM_WERROR=ON \
    -DCMAKE_PROJECT_TOP_LEVEL_INCLUDES="$temp/no_packages.cmake" >"$temp/log" 2>&1 ||
    fail 'the library alone cannot be configured'
"$cmake" --build "$temp/build" --parallel 2 >"$temp/log" 2>&1 || fail 'the library alone does not build'
"$cmake" --install "$temp/build" --prefix "$temp/installed" >"$temp/log" 2>&1 || fail 'the library alone does not install'
for name in libviscacam.so libviscacam.a; do
    [ -n "$(find "$temp/installed" -name $name)" ] || { echo "$name was not installed"; exit 1; }
done
