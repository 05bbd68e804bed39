#!/bin/sh
# usage: packages_test.sh CMAKE CC BUILD-FOLDER SOVERSION VERSION LIBDIR EXAMPLES
# The three Debian packages: what they hold and say, and that they install into an empty root and leave nothing behind.
set -eu
cmake=$1 cc=$2 build=$3 soversion=$4 version=$5 libdir=$6 examples=$7
for tool in dpkg-shlibdeps dpkg-deb file; do
    command -v $tool >/dev/null || { echo "$tool is not installed"; exit 77; }
done
temp=$(mktemp -d)
trap 'rm -rf "$temp"' EXIT
status=0
wrong() { echo "$*"; status=1; }

# Compressed lightly: it is the content that counts here.
cpack --config "$build/CPackConfig.cmake" -G DEB -D CPACK_DEBIAN_COMPRESSION_TYPE=gzip -B "$temp/made" >"$temp/log" 2>&1 || { cat "$temp/log"; echo 'cpack fails'; exit 1; }
machine=$(dpkg --print-architecture)
library=libviscacam$soversion
set --
for package in "$library" libviscacam-dev viscacam; do
    file=$temp/made/${package}_${version}_$machine.deb
    [ -f "$file" ] || { ls "$temp/made"; echo "there is no ${file##*/}"; exit 1; }
    set -- "$@" "$file"
done

field() { dpkg-deb -f "$temp/made/$1_${version}_$machine.deb" "$2"; }
expect_field() {
    value=$(field "$1" "$2")
    printf '%s\n' "$value" | grep -qE "$3" || wrong "$1: $2 is \"$value\", expected $3"
}
expect_field "$library" Depends '^libc6 \(>= [0-9.]+\)$'
expect_field "$library" Section '^libs$'
expect_field libviscacam-dev Depends "^$library \\(= $version\\)\$"
expect_field viscacam Depends 'libc6 .*libstdc\+\+6'
for package in "$library" libviscacam-dev viscacam; do
    expect_field "$package" Maintainer '<.*@.*>$'
    [ "$(field "$package" Description | wc -l)" -ge 3 ] || wrong "$package: the description is no more than a line"
done

holds() {
    package=$1
    shift
    dpkg-deb -c "$temp/made/${package}_${version}_$machine.deb" | awk '{ print $6 }' >"$temp/list"
    for name; do
        grep -qxF "./usr/$name" "$temp/list" || wrong "$package does not hold /usr/$name"
    done
    grep -qxF "./usr/share/doc/$package/copyright" "$temp/list" || wrong "$package has no copyright file"
}
holds "$library" "$libdir/libviscacam.so.$version" "$libdir/libviscacam.so.$soversion"
holds libviscacam-dev include/viscacam.h include/viscacam_host.h "$libdir/libviscacam.so" "$libdir/libviscacam.a" \
    "$libdir/pkgconfig/viscacam.pc" "$libdir/cmake/viscacam/viscacam-config.cmake" share/man/man3/libviscacam.3.gz
holds viscacam bin/viscacam share/man/man1/viscacam.1.gz share/man/man1/viscacam-demo.1.gz \
    share/bash-completion/completions/viscacam libexec/viscacam/board/xmodem share/doc/viscacam/docs/bench.md

# Installed into a root of its own; what the scripts of a package run there is replaced.
as_root=
if [ "$(id -u)" -ne 0 ]; then
    command -v fakeroot >/dev/null || { echo 'neither root nor fakeroot: not installed'; exit $((status ? 1 : 77)); }
    as_root=fakeroot
fi
root=$temp/root
mkdir -p "$root/var/lib/dpkg/info" "$root/var/lib/dpkg/updates" "$root/var/lib/dpkg/triggers" "$temp/bin"
: >"$root/var/lib/dpkg/status"
printf '#!/bin/sh\nexit 0\n' >"$temp/bin/ldconfig"
chmod +x "$temp/bin/ldconfig"
run_dpkg() {
    PATH="$temp/bin:$PATH" $as_root dpkg --root="$root" --force-depends --force-script-chrootless --force-not-root \
        --log="$temp/dpkg.log" "$@" >"$temp/log" 2>&1 || { cat "$temp/log"; echo "dpkg $* fails"; exit 1; }
}
left() { (cd "$root" && find . -path ./var/lib/dpkg -prune -o ! -type d -print | sort); }
run_dpkg --install "$@"
[ "$(left | wc -l)" -gt 20 ] || wrong 'hardly anything was installed'
"$root/usr/bin/viscacam" --version >"$temp/log" 2>&1 || wrong 'the installed command does not run'
grep -qF "$version" "$temp/log" || wrong "the installed command says it is $(cat "$temp/log")"

# An integrator's program is built against what the packages installed.
here=$(dirname "$0")
for kind in shared static; do
    "$here/cmake_package_test.sh" "$cmake" "$cc" "$examples" "$root/usr" $kind || wrong "find_package fails against the packages, $kind"
    "$here/pkg_config_test.sh" "$cc" "$examples" "$root/usr" "$libdir" "$version" $kind ||
        wrong "pkg-config fails against the packages, $kind"
done

run_dpkg --purge viscacam libviscacam-dev "$library"
[ -z "$(left)" ] || { left; wrong 'the files above are left behind'; }

# Nobody's address can be checked here: who ships the packages gives the maintainer's.
if command -v lintian >/dev/null; then
    lintian --allow-root --fail-on error --tag-display-limit 0 \
        --suppress-tags bogus-mail-host,bogus-mail-host-in-debian-changelog,unstripped-static-library "$@" >"$temp/log" 2>&1 ||
        { grep '^E:' "$temp/log"; wrong 'lintian finds errors'; }
fi
exit $status
