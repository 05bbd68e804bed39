#!/bin/sh
# usage: example_camera_test.sh CC SOURCE-FOLDER libviscacam.a VISCACAM-COMMAND
# The example against a simulated camera: what an integrator copies has to work, not only to link.
set -eu
cc=$1 source=$2 library=$3 tool=$4
temp=$(mktemp -d)
trap 'kill "$camera" 2>/dev/null || true; rm -rf "$temp"' EXIT
camera=
"$cc" -std=c99 -I "$source/include" "$source/examples/minimal_host.c" "$library" -pthread -o "$temp/minimal_host"

mkfifo "$temp/ready"
"$tool" sim --boot 0 --link "$temp/port" >"$temp/ready" &
camera=$!
exec 3<"$temp/ready"
read -r line <&3 || { echo 'the simulated camera did not start'; exit 1; }

status=0
printed=$("$temp/minimal_host" "$temp/port" 2>"$temp/log") || status=$?
case $status:$printed in
'0:zoom position 0x0000') ;;
'0:zoom position 0x'????) exit 0 ;;
esac
cat "$temp/log"
echo "$line"
echo "minimal_host: exit status $status, \"$printed\", expected 0 and a zoom position other than 0x0000"
exit 1
