#!/bin/sh
# usage: install.sh CMAKE BUILD-FOLDER PREFIX LIBDIR SONAME VERSION
# Installs into an empty prefix, for the tests of the installed package, and looks whether everything is there.
set -eu
cmake=$1 build=$2 prefix=$3 libdir=$4 soname=$5 version=$6
rm -rf "$prefix"
"$cmake" --install "$build" --prefix "$prefix" >/dev/null

cd "$prefix"
status=0
for file in include/viscacam.h include/viscacam_host.h "$libdir/libviscacam.a" "$libdir/libviscacam.so" "$libdir/$soname" \
    "$libdir/libviscacam.so.$version" "$libdir/pkgconfig/viscacam.pc" "$libdir/cmake/viscacam/viscacam-config.cmake" \
    share/man/man3/libviscacam.3.gz share/doc/viscacam/docs/README.md; do
    [ -f "$file" ] || { echo "not installed: $file"; status=1; }
done
if [ -f bin/viscacam ]; then
    for file in share/man/man1/viscacam.1.gz share/bash-completion/completions/viscacam libexec/viscacam/board/xmodem; do
        [ -f "$file" ] || { echo "not installed: $file"; status=1; }
    done
    bin/viscacam --version >/dev/null || { echo 'the installed command does not run'; status=1; }
fi
[ "$(find include -type f | wc -l)" -eq 2 ] || { echo 'include/ holds more than the two public headers'; status=1; }
for link in libviscacam.so "$soname"; do
    [ -L "$libdir/$link" ] || { echo "$link is no link"; status=1; }
done
if grep -rlF "$build" . --include='*.cmake' --include='*.pc'; then
    echo 'the files named above mention the build folder'
    status=1
fi
exit $status
