#!/bin/sh
# usage: soname_test.sh libviscacam.so SONAME
set -eu
soname=$(readelf -d "$1" | sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p')
[ "$soname" = "$2" ] || { echo "soname is \"$soname\", expected \"$2\""; exit 1; }
