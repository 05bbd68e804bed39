#!/bin/sh
# usage: interface_gate_test.sh SOURCE-FOLDER libviscacam.so
# What the gate lets pass and what not, on a copy of the headers.
set -eu
source=$1 library=$2
temp=$(mktemp -d)
trap 'rm -rf "$temp"' EXIT
status=0
header=$temp/include/viscacam.h

fresh() {
    rm -rf "${temp:?}"/*
    mkdir -p "$temp/scripts" "$temp/tests/package"
    cp -r "$source/include" "$source/CMakeLists.txt" "$temp"
    cp "$source/scripts/check-interface" "$temp/scripts"
    cp -r "$source/tests/package/interface" "$temp/tests/package"
}
raise() { sed -i "s/^set($1 [0-9]*)/set($1 7)/" "$temp/CMakeLists.txt"; }
passes() {
    name=$1
    shift
    "$temp/scripts/check-interface" "$@" "$library" >"$temp/out" 2>&1 || { cat "$temp/out"; echo "refused: $name"; status=1; }
}
refuses() {
    if "$temp/scripts/check-interface" "$library" >"$temp/out" 2>&1 || ! grep -qF "$2" "$temp/out"; then
        cat "$temp/out"
        echo "expected \"$2\": $1"
        status=1
    fi
}

fresh
sed -i -e 's|^VISCACAM_API uint32_t VISCA_ZoomIn(void);|/** New words. */\n&   // and more|' -e 's/VERSION_MINOR 1/VERSION_MINOR 9/' "$header"
passes 'a comment, a space and the version of the release'
fresh
sed -i 's/VISCA_ZoomIn(void)/VISCA_ZoomIn(uint32_t ulSpeed)/' "$header"
refuses 'another argument' 'raise VISCACAM_SOVERSION'
raise VISCACAM_INTERFACE_REVISION
refuses 'another argument with a raised revision' 'raise VISCACAM_SOVERSION'
raise VISCACAM_SOVERSION
refuses 'another argument with a raised version, not on record' 'record it with --update'
passes 'recording a raised version' --update
passes 'a recorded version'
fresh
sed -i 's/VISCA_FAILURE  *1U/VISCA_FAILURE 9U/' "$header"
refuses 'another value of a constant' 'raise VISCACAM_SOVERSION'
fresh
sed -i 's/^VISCACAM_API uint32_t VISCA_ZoomIn(void);/&\nVISCACAM_API uint32_t VISCA_ZoomFly(void);/' "$header"
refuses 'one function more' 'raise VISCACAM_INTERFACE_REVISION'
raise VISCACAM_INTERFACE_REVISION
passes 'recording one function more' --update
fresh
sed -i 's/^uint32_t COMDRV_GetCamModuleType(void);/uint64_t COMDRV_GetCamModuleType(void);/' "$temp/include/viscacam_host.h"
refuses 'another result of a service of the host' 'raise VISCACAM_SOVERSION'
exit $status
