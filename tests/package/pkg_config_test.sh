#!/bin/sh
# usage: pkg_config_test.sh CC EXAMPLES PREFIX LIBDIR VERSION shared|static
# A plain C compiler builds the example with what pkg-config says, as its first lines promise.
set -eu
cc=$1 examples=$2 prefix=$3 libdir=$4 version=$5 kind=$6
command -v pkg-config >/dev/null || { echo 'pkg-config is not installed'; exit 77; }
temp=$(mktemp -d)
trap 'rm -rf "$temp"' EXIT
export PKG_CONFIG_PATH="$prefix/$libdir/pkgconfig"

found=$(pkg-config --modversion viscacam)
[ "$found" = "$version" ] || { echo "pkg-config says version $found, expected $version"; exit 1; }
if [ "$kind" = shared ]; then
    flags="$(pkg-config --cflags --libs viscacam) -Wl,-rpath,$(pkg-config --variable=libdir viscacam)"
else
    flags="$(pkg-config --static --cflags --libs viscacam) -static"
fi
# The flags are words on purpose.
# shellcheck disable=SC2086
"$cc" -std=c99 -Wall -Wextra -Werror "$examples/minimal_host.c" $flags -o "$temp/minimal_host" ||
    { echo "minimal_host does not build with: $flags"; exit 1; }
"$(dirname "$0")/run_example.sh" "$temp/minimal_host" "$kind"
