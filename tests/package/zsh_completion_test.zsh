# usage: zsh -f zsh_completion_test.zsh COMPLETION-FILE VISCACAM-COMMAND
zmodload zsh/zpty || exit 77
typeset -i failed=0
folder=${1:A:h}
path=(${2:A:h} $path) # it is asked what ctl can do
temp=$(mktemp -d)
trap 'rm -rf $temp' EXIT

# The shell that is tried writes each offer to a file: the screen is for people.
cat >$temp/rc <<'RC'
PROMPT= RPROMPT=
fpath=($FOLDER $fpath)
autoload -Uz compinit && compinit -u -d $TEMP/dump
zstyle ':completion:*' menu no
compadd() {
    local -a offers
    case " $* " in
    *' -O '* | *' -A '* | *' -D '*) builtin compadd "$@"; return ;;
    esac
    builtin compadd -O offers "$@"
    (( $#offers )) && print -rl -- $offers >>$TEMP/offers
    builtin compadd "$@"
}
finish() { print done >>$TEMP/done; zle kill-buffer }
zle -N finish
bindkey '^I' expand-or-complete '^X' finish
print ready >>$TEMP/done
RC

await() {
    local -F until=$((SECONDS + 20))
    while [[ ! -s $temp/done ]]; do
        zpty -rt tried screen 2>/dev/null
        (( SECONDS < until )) || { print "zsh did not answer"; exit 1 }
    done
    rm -f $temp/done
}
typeset -F SECONDS
zpty tried "FOLDER=${(q)folder} TEMP=${(q)temp} TERM=dumb zsh -f -i"
zpty -w tried "FOLDER=${(q)folder} TEMP=${(q)temp}; source ${(q)temp}/rc"
await

# offers LINE WORD...: all of these are among the offers
offers() {
    local line=$1 word
    shift
    rm -f $temp/offers; touch $temp/offers
    zpty -wn tried "$line"$'\t\x18'
    await
    for word; do
        grep -qxF -- "$word" $temp/offers || {
            print -r -- "\"$line\" offers \"$(tr '\n' ' ' <$temp/offers)\", expected $word among it"
            failed=1
        }
    done
}
offers 'viscacam ' demo sim
offers 'viscacam demo --' --port --camera --baud
offers 'viscacam demo --camera ' sony1 kova2
offers 'viscacam sim --baud ' 9600 38400
offers 'viscacam sim --fault drop-' drop-tx= drop-rx=
offers 'viscacam demo ' upgrade export
offers 'viscacam ctl zo' zoom
offers 'viscacam ctl --sim sony1 zoom ' in out stop
zpty -d tried
exit $failed
