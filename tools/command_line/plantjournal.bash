# Completion for plantjournal in bash.

# Sets `words` to the words before the cursor, `open` to the quotation mark in which the last one is, and `fixed` to that
# part of the last one which readline keeps: it replaces only what follows a mark such as : or =, or the opening quote.
# Bash's own COMP_WORDS is split at these marks and still has its quotes.
_plantjournal_split() {
    local line=${COMP_LINE:0:COMP_POINT} word='' begun='' letter i
    for ((i = 0; i < ${#line}; i++)); do
        letter=${line:i:1}
        if [[ $open == "'" || ($open == '"' && $letter == '"') ]]; then
            if [[ $letter == "$open" ]]; then open=''; else word+=$letter; fi
        elif [[ $letter == "\\" && ($open == '' || ${line:i+1:1} == [\$\`\"\\]) ]]; then
            i=$((i + 1)) begun=yes
            word+=${line:i:1}
        elif [[ $open == '' && $letter == [\'\"] ]]; then
            open=$letter begun=yes fixed=$word
        elif [[ $open == '' && $letter == [[:space:]] ]]; then
            [[ ! $begun ]] || words+=("$word")
            word='' begun='' fixed=''
        else
            begun=yes
            word+=$letter
            [[ $open || $COMP_WORDBREAKS != *"$letter"* ]] || fixed=$word
        fi
    done
    words+=("$word")
}

# Prints a text as it is written after the opening quote, if any.
_plantjournal_quote() {
    local text=$1 letter quoted='' i
    [[ $open ]] || { printf '%q' "$text"; return; }
    for ((i = 0; i < ${#text}; i++)); do
        letter=${text:i:1}
        if [[ $open == "'" && $letter == "'" ]]; then
            quoted+="'\\''"
        elif [[ $open == '"' && $letter == [\$\`\"\\] ]]; then
            quoted+=\\$letter
        else
            quoted+=$letter
        fi
    done
    # Readline closes the quotes, but not after a text that ends with the same mark.
    [[ $text != *"$open" ]] || quoted+=$open
    printf '%s' "$quoted"
}

_plantjournal() {
    local words=() open='' fixed='' line name
    _plantjournal_split
    COMPREPLY=()
    while IFS= read -r line; do
        name=${line%%$'\t'*} # its description follows
        if [[ $name ]]; then
            COMPREPLY+=("$(_plantjournal_quote "${name:${#fixed}}")")
        else
            compopt -o default # file names
        fi
    done < <("${words[0]/#~\//$HOME/}" complete "${words[@]:1}" 2>/dev/null)
}
complete -F _plantjournal plantjournal
