#!/bin/sh
# usage: needed_libraries_test.sh libviscacam.so
# Camera boards have a C library and nothing else; the C++ runtime above all is not there. The thread library counts as libc: old
# C libraries have it apart.
set -eu
needed=$(readelf -d "$1" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p')
[ -n "$needed" ] || { echo "readelf finds no NEEDED entry in $1"; exit 1; }
status=0
for name in $needed; do
    case $name in
    libc.so* | libc.musl-* | libpthread.so* | ld-linux* | ld-musl-* | ld-uClibc*) ;;
    *) echo "needs $name at load time"; status=1 ;;
    esac
done
exit $status
