#!/bin/sh
# usage: run_example.sh minimal_host shared|static
# Runs without a camera: the usage, then a port that is not there. Then what it was linked to.
set -eu
program=$1 kind=$2
output=$(mktemp)
trap 'rm -f "$output"' EXIT

expect() {
    status=$1 text=$2
    shift 2
    result=0
    "$program" "$@" >"$output" 2>&1 || result=$?
    if [ "$result" -ne "$status" ] || ! grep -qF "$text" "$output"; then
        cat "$output"
        echo "minimal_host $*: exit status $result, expected $status and the text \"$text\""
        exit 1
    fi
}
expect 2 'usage: minimal_host'
expect 1 '/dev/no-such-port: No such file or directory' /dev/no-such-port
expect 1 'no camera answers on /dev/no-such-port' /dev/no-such-port

readelf -d "$program" >"$output"
linked=static
grep -q 'NEEDED.*libviscacam' "$output" && linked=shared
[ "$linked" = "$kind" ] || { echo "minimal_host was linked to the $linked library, expected the $kind one"; exit 1; }
