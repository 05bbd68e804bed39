#!/bin/sh
# usage: scripts_test.sh SOURCE-FOLDER
set -eu
cd "$1"
command -v shellcheck >/dev/null || { echo 'shellcheck is not installed'; exit 77; }
find ./*/ .ci -path './build*' -prune -o -type f -print0 | xargs -0 grep -lZE '^#!/bin/(ba)?sh' | xargs -0 shellcheck
