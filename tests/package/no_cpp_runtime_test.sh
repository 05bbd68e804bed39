#!/bin/sh
# usage: no_cpp_runtime_test.sh libviscacam.so libviscacam.a
# Exceptions, RTTI, new and delete, and guards of local statics all show as undefined names of the C++ runtime.
# __cxa_finalize and __cxa_atexit are libc's.
set -eu
status=0
look() {
    library=$1
    shift
    found=$(nm --undefined-only "$@" "$library" | awk '{ print $NF }' | sed 's/@.*//' |
        grep -E '^(__cxa_|__gxx_|_Unwind_|_Zn|_Zd|_ZS|_ZNS|_ZNKS|_ZT)' |
        grep -vxE '__cxa_(finalize|atexit)' | sort -u)
    if [ -n "$found" ]; then
        echo "$library needs of the C++ runtime:"
        echo "$found"
        status=1
    fi
}
look "$1" -D
look "$2"
exit $status
