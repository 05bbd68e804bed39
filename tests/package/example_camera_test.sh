#!/bin/sh
# usage: example_camera_test.sh CC SOURCE-FOLDER libviscacam.a VISCACAM-COMMAND
# The example against a simulated camera: what an integrator copies has to work, not only to link.
set -eu
cc=$1 source=$2 library=$3 tool=$4
temp=$(mktemp -d)
trap 'rm -rf "$temp"' EXIT
"$cc" -std=c99 -I "$source/include" "$source/examples/minimal_host.c" "$library" -pthread -o "$temp/minimal_host"
"$(dirname "$0")/zoom_camera.sh" "$temp/minimal_host" "$tool"
