#!/bin/sh
# usage: headers_test.sh CC CXX INCLUDE-FOLDER
# Each public header must compile alone, as C99 and as C++17, without a warning.
set -eu
cc=$1 cxx=$2 include=$3
status=0
for header in viscacam.h viscacam_host.h; do
    for language in 'c -std=c99' 'c++ -std=c++17'; do
        compiler=$cc
        [ "${language%% *}" = c ] || compiler=$cxx
        # The language is two words on purpose.
        # shellcheck disable=SC2086
        echo "#include <$header>" | "$compiler" -x $language -Wall -Wextra -Wpedantic -Werror -I "$include" -fsyntax-only - ||
            { echo "$header does not compile alone as $language"; status=1; }
    done
done
exit $status
