# Completion for plantjournal in bash.
_plantjournal() {
    local words word
    mapfile -t words < <("${COMP_WORDS[0]}" complete "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null)
    COMPREPLY=()
    for word in "${words[@]}"; do
        COMPREPLY+=("$(printf '%q' "$word")")
    done
}
complete -o default -F _plantjournal plantjournal
