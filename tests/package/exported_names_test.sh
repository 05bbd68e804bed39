#!/bin/sh
# usage: exported_names_test.sh CC viscacam.h libviscacam.so
# A host relies on every declared name; a name that is not declared is a promise nobody made.
set -eu
cc=$1 header=$2 library=$3
temp=$(mktemp -d)
trap 'rm -rf "$temp"' EXIT

# Preprocessed, one declaration a line: those marked for export, down to the name before the '(' or the ';'.
"$cc" -E -P -x c "$header" | tr '\n' ' ' | tr ';' '\n' | grep 'visibility *("default")' |
    sed -e 's/__attribute__ *((visibility *("default")))//' -e 's/(.*//' -e 's/ *$//' -e 's/.*[ *]//' |
    sort >"$temp/declared"
nm -D --defined-only "$library" | awk '{ print $NF }' | sort >"$temp/exported"

[ -s "$temp/declared" ] || { echo "no declaration marked VISCACAM_API was found in $header"; exit 1; }
if ! diff "$temp/declared" "$temp/exported" >"$temp/diff"; then
    sed -n -e 's/^< /declared in viscacam.h, not exported: /p' -e 's/^> /exported, not declared in viscacam.h: /p' \
        "$temp/diff"
    exit 1
fi
echo "$(wc -l <"$temp/exported") names"
