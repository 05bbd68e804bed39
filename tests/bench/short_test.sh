#!/bin/sh
# usage: short_test.sh VISCACAM-BENCH
# The figures themselves are not looked at: there are too few repetitions, and the machine may be busy.
set -eu
table=$("$1" --short exchange queue callers log profile)
printf '%s\n' "$table"

status=0
rows=0
row() { # FIGURE VALUE-AND-UNIT, a regular expression
    rows=$((rows + 1))
    printf '%s\n' "$table" | grep -qE "^\\| $1 \\| $2 \\| [^|]+ \\| [^|]+ \\| [^|]+ \\|" ||
        { echo "no row \"$1\" with $2"; status=1; }
}
time='[0-9][0-9.e-]* us'
row 'inquiry round trip, median' "$time"
row 'the same, for information' "$time"
row 'inquiry round trip, 99th percentile' "$time"
row "completion to the next command's first byte" "$time"
row 'processor time an inquiry, all threads' "$time"
row 'processor time a command, all threads' "$time"
row 'a command put on the queue, one caller' "$time"
row 'a command put on the queue, two callers at once' "$time"
row 'the same beside what it cannot do without' "$time"
row 'heap allocations in 500 commands and inquiries' '0 calls'
row 'packets lost, torn or out of order, eight callers at once' '0 packets'
row 'heap allocations meanwhile' '0 calls'
row 'a log line that the host filters out' "$time"
row 'a log line written' "$time"
row 'a packet dump written' "$time"
row 'an exposure profile applied again' "$time"
row 'packets that it sends' '0 packets'

# The first has two peers; the heading has two lines.
[ "$(printf '%s\n' "$table" | wc -l)" -eq $((rows + 1 + 2)) ] || { echo "not $((rows + 1)) rows"; status=1; }
exit $status
