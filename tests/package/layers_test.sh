#!/bin/sh
# usage: layers_test.sh SOURCE-FOLDER
# A file includes only what stands at or below its own layer; the right-hand side is what a folder may include from. The simulated
# cameras share no code with the library: a wrong byte in one must not be cancelled by the same wrong byte in the other.
set -eu
cd "$1"
allowed() {
    case $1 in
    include) echo 'include' ;;
    visca_que) echo 'include visca_que' ;;
    visca_sony_ctrl) echo 'include visca_que visca_sony_ctrl' ;;
    visca_common) echo 'include visca_que visca_sony_ctrl visca_common' ;;
    host) echo 'include host' ;;
    decode) echo 'decode' ;;
    sim) echo 'sim decode' ;;
    tool) echo 'include host sim decode tool' ;;
    examples) echo 'include' ;;
    esac
}

# Sets target to where a file's #include leads: beside the file, from the root, or into include/. System headers lead nowhere.
resolve() {
    target=
    for candidate in "${1%/*}/$2" "$2" "include/$2"; do
        [ -f "$candidate" ] || continue
        target=$candidate
        case $target in
        *..*) target=$(realpath --relative-to=. "$target") ;;
        esac
        return
    done
}

status=0
count=0
for folder in include visca_que visca_sony_ctrl visca_common host decode sim tool examples; do
    [ -d "$folder" ] || continue
    may=" $(allowed "$folder") "
    includes=$(find "$folder" -name '*.h' -o -name '*.c' -o -name '*.cpp' | sort |
        xargs -r grep -HoE '^ *# *include *["<][^">]+[">]' | sed -E 's/: *# *include *["<]/ /; s/[">]$//')
    while read -r file header; do
        [ -n "$file" ] || continue
        resolve "$file" "$header"
        [ -n "$target" ] || continue
        count=$((count + 1))
        case $may in
        *" ${target%%/*} "*) ;;
        *) echo "$file includes $target: $folder/ stands below ${target%%/*}/ or apart from it"; status=1 ;;
        esac
    done <<LIST
$includes
LIST
done
[ "$count" -gt 0 ] || { echo "no includes were found in $1"; exit 1; }
echo "$count includes of our own looked at"
exit $status
