#!/bin/sh
# usage: man_pages_test.sh PAGES-FOLDER libviscacam.3 VISCACAM-COMMAND
# Every subcommand has a manual page, every page is free of mistakes in its markup, and every option of the help stands in it.
set -eu
pages=$1 library_page=$2 tool=$3
command -v mandoc >/dev/null || { echo 'mandoc is not installed'; exit 77; }
temp=$(mktemp -d)
trap 'rm -rf "$temp"' EXIT
status=0
wrong() { echo "$*"; status=1; }
lint() { mandoc -T lint -W warning "$1" || wrong "$1 has mistakes"; }

lint "$library_page"
"$tool" --help | sed -n '/^Subcommands:/,/^$/s/^  \([a-z]*\).*/\1/p' >"$temp/subcommands"
[ -s "$temp/subcommands" ] || wrong 'no subcommands were found in the help'
while read -r name; do
    page=$temp/viscacam-$name.1
    gzip -dc "$pages/man1/viscacam-$name.1.gz" >"$page" || { wrong "there is no page for $name"; continue; }
    lint "$page"
    mandoc -T ascii "$page" | col -b >"$temp/text"
    for option in $("$tool" "$name" --help | grep -oE '^  (-[a-z],)?--[a-z][a-z-]*' | sed 's/.*--/--/'); do
        grep -qE -- "(^|[ ,])$option( |\$)" "$temp/text" || wrong "$name: $option does not stand in the manual page"
    done
done <"$temp/subcommands"
gzip -dc "$pages/man1/viscacam.1.gz" >"$temp/viscacam.1"
lint "$temp/viscacam.1"
exit $status
