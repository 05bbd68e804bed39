#!/bin/sh
# usage: zsh_completion_test.sh COMPLETION-FILE VISCACAM-COMMAND
# An interactive zsh at a terminal of its own: what it offers at the tab key.
set -eu
command -v zsh >/dev/null || { echo 'zsh is not installed'; exit 77; }
exec zsh -f "$(dirname "$0")/zsh_completion_test.zsh" "$1" "$2"
