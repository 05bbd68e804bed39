#!/bin/sh
# usage: zoom_camera.sh minimal_host VISCACAM-COMMAND
# The built example against a simulated camera: it has to print a position that is not the wide end.
set -eu
program=$1 tool=$2
temp=$(mktemp -d)
trap 'kill "$camera" 2>/dev/null || true; rm -rf "$temp"' EXIT
camera=
mkfifo "$temp/ready"
"$tool" sim --boot 0 --link "$temp/port" >"$temp/ready" &
camera=$!
exec 3<"$temp/ready"
read -r line <&3 || { echo 'the simulated camera did not start'; exit 1; }

status=0
printed=$("$program" "$temp/port" 2>"$temp/log") || status=$?
case $status:$printed in
'0:zoom position 0x0000') ;;
'0:zoom position 0x'????) exit 0 ;;
esac
cat "$temp/log"
echo "$line"
echo "minimal_host: exit status $status, \"$printed\", expected 0 and a zoom position other than 0x0000"
exit 1
