#!/bin/bash
# usage: bash_completion_test.sh COMPLETION-FILE VISCACAM-COMMAND
# What the shell offers behind a beginning that somebody typed.
set -u
completions=/usr/share/bash-completion/bash_completion
[ -f $completions ] || { echo 'bash-completion is not installed'; exit 77; }
# shellcheck disable=SC1090,SC1091
. $completions
# shellcheck disable=SC1090
. "$1"
PATH=$(realpath "$(dirname "$2")"):$PATH # it is asked what ctl can do
status=0
temp=$(mktemp -d)
trap 'rm -rf "$temp"' EXIT
cd "$temp" && touch packets.cap || exit 1

# offers "viscacam d" demo doctor: all of these are among the offers
offers() {
    local line=$1 word
    shift
    COMP_LINE=$line COMP_POINT=${#line}
    read -ra COMP_WORDS <<<"$line"
    [[ $line != *' ' ]] || COMP_WORDS+=('')
    COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
    COMPREPLY=()
    _viscacam 2>"$temp/err"
    grep -v 'compopt: not currently executing' "$temp/err" && status=1
    for word; do
        if [[ $word == none ]]; then
            [[ ${#COMPREPLY[@]} -eq 0 ]] || { echo "\"$line\" offers ${COMPREPLY[*]}, expected nothing"; status=1; }
        elif [[ " ${COMPREPLY[*]-} " != *" $word "* ]]; then
            echo "\"$line\" offers \"${COMPREPLY[*]-}\", expected $word among it"
            status=1
        fi
    done
}
offers 'viscacam d' demo
offers 'viscacam ' demo sim
offers 'viscacam --v' --version
offers 'viscacam demo --p' --port
offers 'viscacam demo --camera son' sony1 sony4
offers 'viscacam demo --baud ' 9600 19200 38400
offers 'viscacam demo --baud 5' none
offers 'viscacam sim --fault drop-' drop-tx= drop-rx=
offers 'viscacam sim --link pack' packets.cap
offers 'viscacam demo u' upgrade
offers 'viscacam demo upgrade --d' --dry-run
offers 'viscacam demo upgrade --ca' --camera
offers 'viscacam ctl zo' zoom
offers 'viscacam ctl --sim sony1 zoom ' in out stop
offers 'viscacam ctl --si' --sim
offers 'viscacam decode --time ' absolute delta zero
offers 'viscacam decode pack' packets.cap
exit $status
