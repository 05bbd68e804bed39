# The deepest own call path of a library, in bytes of stack, from what gcc writes with -fcallgraph-info=su. Calls that leave the
# library (libc, the host's services) count nothing; a call through a pointer is not followed.
#
# prints: BYTES FUNCTION > FUNCTION > ...
match($0, /^node: \{ title: "[^"]*"/) {
    name = substr($0, RSTART + 16, RLENGTH - 17)
    if (match($0, /[0-9]+ bytes \(/)) {
        frame[name] = substr($0, RSTART, RLENGTH) + 0
        known[name] = 1
    }
}
match($0, /^edge: \{ sourcename: "[^"]*" targetname: "[^"]*"/) {
    split(substr($0, RSTART, RLENGTH), part, "\"")
    calls[part[2]] = calls[part[2]] SUBSEP part[4]
}
function short(name) {
    sub(/^.*:/, "", name)
    return name
}
function deepest(name,    targets, count, i, depth, most) {
    if (!(name in known) || name in open)
        return 0
    if (name in depths)
        return depths[name]
    open[name] = 1
    most = 0
    count = split(calls[name], targets, SUBSEP)
    for (i = 2; i <= count; i++) {
        depth = deepest(targets[i])
        if (depth > most) {
            most = depth
            via[name] = targets[i]
        }
    }
    delete open[name]
    return depths[name] = frame[name] + most
}
END {
    for (name in known)
        if (deepest(name) > worst) {
            worst = depths[name]
            start = name
        }
    printf "%d", worst
    for (name = start; name != ""; name = via[name])
        printf " %s %s", name == start ? "" : ">", short(name)
    print ""
}
