#!/bin/sh
# usage: examples_test.sh PAGE.md CC SOURCE-FOLDER libviscacam.a VISCACAM-COMMAND
# Runs the blocks of a page. Those of a section run one after the other, the sections ("## ...") side by side:
#   ```sh          in a shell that stops at the first failure
#   ```sh beside   in a terminal of its own: beside what follows, up to the end of the section; it has to print a line first
#   ```sh root     needs root or a board: looked at by the shell, but not run
#   ```c           compiled against the library and linked with the services of the minimal host; with a main() it is run, with a
#                  simulated camera of the module type that it names
# A section has an empty folder, which stands for /tmp; a simulated camera stands for its /dev/ttyUSB0.
set -eu
page=$1 cc=$2 source=$3 library=$4
tool=$(cd "$(dirname "$5")" && pwd)
here=$(cd "$(dirname "$0")" && pwd)
temp=$(mktemp -d)
trap 'rm -rf "$temp"' EXIT
PATH=$tool:$PATH
export PATH

awk -v folder="$temp" '
    /^```/ && inside { close(file); inside = 0; next }
    /^## / && !inside { section++ }
    /^```(sh|c)/ {
        inside = 1
        kind = substr($0, 4)
        sub(/ /, "-", kind)
        desk = sprintf("%s/section-%02d", folder, section)
        system("mkdir -p " desk "/blocks " desk "/desk")
        file = sprintf("%s/blocks/%03d-line-%d.%s", desk, ++count, NR, kind)
        printf "" >file
        next
    }
    /^```/ { inside = 1; file = "/dev/null"; next }
    inside { print >file }
' "$page"

fail() {
    echo "$page: the block ${1##*/} $2" >&2
    for output in "$section"/*.out; do
        [ ! -s "$output" ] || { echo "-- ${output##*/}"; tail -n 20 "$output"; } >&2
    done
    exit 1
}

# start NAME COMMAND...: in a process group of its own, until the end of the section. Waits for its first line.
start() {
    run=$1
    shift
    mkfifo "$section/$run.ready"
    setsid "$@" >"$section/$run.ready" 2>"$section/$run.out" </dev/null &
    beside="$beside $!"
    exec 3<"$section/$run.ready"
    read -r line <&3 || return 1
    echo "$line" >>"$section/$run.out"
    cat <&3 >>"$section/$run.out" & # so that it never waits for a reader
    exec 3<&-
}

# shellcheck disable=SC2317 # the trap calls it
end() {
    for pid in $beside; do
        kill -s TERM -- "-$pid" 2>/dev/null || true
    done
    wait # also for what copies their output
}

# The block with the places that stand for others.
typed() {
    sed "s#/tmp/#$section/desk/#g; s#/dev/ttyUSB0#$section/desk/ttyUSB0#g" "$1" >"$1.typed"
    if grep -q "$section/desk/ttyUSB0" "$1.typed" && [ ! -e "$section/ttyUSB0.ready" ]; then
        start ttyUSB0 viscacam sim --boot 0 --link "$section/desk/ttyUSB0" || fail "$1" 'has no camera at /dev/ttyUSB0'
        head -c 3 "$section/desk/ttyUSB0" >/dev/null # the power-on notice: it has been on for long
    fi
}

# A program in C: linked with the services of the minimal host, whose own main() is put aside.
program() {
    name=$(basename "$1")
    "$cc" -std=c99 -Wall -Wextra -Wpedantic -Werror -I "$source/include" -x c -c "$1" -o "$1.o" >"$section/$name.out" 2>&1 ||
        fail "$1" 'does not compile'
    grep -q 'int main(' "$1" || return 0
    [ -e "$section/services.o" ] ||
        "$cc" -std=c99 -I "$source/include" -I "$source/examples" -c "$here/services.c" -o "$section/services.o"
    "$cc" "$1.o" "$section/services.o" "$library" -pthread -o "$1.program" || fail "$1" 'does not link'
    type=$(grep -o -m 1 '0x020[0-9A-Fa-f]*' "$1") || type=0x02000001
    start "$name-camera" viscacam sim --camera "$type" --boot 0 --latency none --link "$section/$name-camera" ||
        fail "$1" 'has no camera'
    (cd "$section/desk" && CAMERA="$section/$name-camera" TYPE=$type "$1.program") >"$section/$name.out" 2>&1 ||
        fail "$1" "ends with status $?"
}

block() {
    case $1 in
    *.sh)
        typed "$1"
        (cd "$section/desk" && sh -eu "$1.typed") >"$section/$(basename "$1").out" 2>&1 </dev/null ||
            fail "$1" "ends with status $?"
        ;;
    *.sh-beside)
        typed "$1"
        cd "$section/desk"
        start "$(basename "$1")" sh -eu "$1.typed" || fail "$1" 'ended without a line'
        cd "$here"
        ;;
    *.sh-root) sh -n "$1" || fail "$1" 'is no shell text' ;;
    *.c) program "$1" ;;
    *) fail "$1" 'is of no kind that can be run' ;;
    esac
}

section() {
    section=$1
    beside=
    trap end EXIT
    XDG_RUNTIME_DIR=$section/desk # where simulated cameras put links that are not named
    export XDG_RUNTIME_DIR
    for text in "$section"/blocks/*; do
        block "$text"
        echo . >>"$temp/done"
    done
}

sections=
for folder in "$temp"/section-*; do
    [ -d "$folder" ] || { echo "$page has no examples" >&2; exit 1; }
    (section "$folder") &
    sections="$sections $!"
done
status=0
for pid in $sections; do
    wait "$pid" || status=1
done
echo "$(wc -l <"$temp/done") examples ran"
exit "$status"
