#!/bin/sh
# usage: print_pages.sh FOLDER VISCACAM-COMMAND...
# Fills FOLDER with the completions and man1/: what the command says of itself.
set -eu
folder=$1
shift
mkdir -p "$folder/man1"
"$@" --completion bash >"$folder/viscacam"
"$@" --completion zsh >"$folder/_viscacam"
"$@" --man-pages >"$folder/names"
while read -r name; do
    file=viscacam-$name.1
    [ "$name" != viscacam ] || file=viscacam.1
    "$@" --man "$name" >"$folder/man1/$file" </dev/null
done <"$folder/names"
if command -v gzip >/dev/null; then
    gzip -9n "$folder"/man1/*.1
fi
touch "$folder/stamp"
