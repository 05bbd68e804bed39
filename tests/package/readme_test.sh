#!/bin/sh
# usage: readme_test.sh CC SOURCE-FOLDER
set -eu
temp=$(mktemp -d)
trap 'rm -rf "$temp"' EXIT
awk '/^```/ { inside = ($0 == "```c"); next } inside' "$2/README.md" >"$temp/host.c"
[ -s "$temp/host.c" ] || { echo 'README.md holds no C program'; exit 1; }
"$1" -std=c99 -Wall -Wextra -Wpedantic -Werror -I "$2/include" -fsyntax-only "$temp/host.c"
