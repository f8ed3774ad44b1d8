#compdef plantjournal
# Completion for plantjournal in zsh.

_plantjournal() {
    local line name prefix
    local -a given names shown
    given=("${(@Q)words[2,CURRENT-1]}" "${(Q)PREFIX}")
    [[ $PREFIX != --*=* ]] || prefix=${(Q)PREFIX%%=*}=
    for line in "${(@f)$(${~words[1]} complete "${given[@]}" 2>/dev/null)}"; do
        name=${line%%$'\t'*}
        if [[ -n $name ]]; then
            names+=("${name#$prefix}")
            shown+=("${name#$prefix}${${line#*$'\t'}:+  -- ${line#*$'\t'}}")
        elif [[ -n $line ]]; then
            [[ -z $prefix ]] || compset -P '*='
            _files
            return
        fi
    done
    [[ -z $prefix ]] || compset -P '*='
    if [[ "$shown" == *'  -- '* ]]; then
        compadd -l -d shown -M 'm:{[:lower:][:upper:]}={[:upper:][:lower:]}' -a names
    else
        compadd -M 'm:{[:lower:][:upper:]}={[:upper:][:lower:]}' -a names
    fi
}

_plantjournal "$@"
