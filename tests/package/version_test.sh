#!/bin/sh
# usage: version_test.sh VERSION viscacam.h CHANGELOG.md
# The version is written down in three places, all by hand.
set -eu
version=$1 header=$2 changelog=$3
number() { sed -n "s/^#define VISCACAM_VERSION_$1 *//p" "$header"; }
in_header=$(number MAJOR).$(number MINOR).$(number PATCH)
in_changelog=$(sed -n 's/^## \([0-9][0-9.]*\).*/\1/p' "$changelog" | head -n 1)
status=0
[ "$in_header" = "$version" ] || { echo "viscacam.h says $in_header, CMakeLists.txt says $version"; status=1; }
[ "$in_changelog" = "$version" ] || {
    echo "the newest entry of CHANGELOG.md is \"$in_changelog\", CMakeLists.txt says $version"
    status=1
}
exit $status
