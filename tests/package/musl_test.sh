#!/bin/sh
# usage: musl_test.sh CMAKE SOURCE-FOLDER [VISCACAM-COMMAND]
# The library alone for the C library musl, whose tools bring no C++ headers; a program of it zooms a simulated camera.
set -eu
cmake=$1 source=$2 tool=${3:-}
command -v musl-gcc >/dev/null || { echo 'musl-tools is not installed'; exit 77; }
temp=$(mktemp -d)
trap 'rm -rf "$temp"' EXIT
fail() { cat "$temp/log"; echo "$1"; exit 1; }

"$cmake" -S "$source" -B "$temp/build" -G 'Unix Makefiles' -DCMAKE_TOOLCHAIN_FILE="$source/cmake/toolchain-musl.cmake" \
    -DVISCACAM_BUILD_TESTS=OFF -DVISCACAM_BUILD_TOOL=OFF -DVISCACAM_WERROR=ON -DCMAKE_BUILD_TYPE=Release >"$temp/log" 2>&1 ||
    fail 'the library cannot be configured for musl'
"$cmake" --build "$temp/build" --parallel 2 >"$temp/log" 2>&1 || fail 'the library does not build for musl'
needed=$(readelf -d "$temp/build/libviscacam.so" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p')
[ "$needed" = libc.so ] || { echo "the library needs \"$needed\", expected musl's libc.so alone"; exit 1; }
musl-gcc -std=c99 -I "$source/include" "$source/examples/minimal_host.c" "$temp/build/libviscacam.a" -static \
    -o "$temp/minimal_host" 2>"$temp/log" || fail 'a host does not link with musl'
[ -n "$tool" ] || exit 0
"$(dirname "$0")/zoom_camera.sh" "$temp/minimal_host" "$tool"
