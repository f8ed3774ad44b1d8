# Completion for plantjournal in fish.

# Fish itself selects the offers that match what is typed, so the program gets only the beginning of a flag.
function __plantjournal_complete
    set -l words (commandline -opc)
    set -l typed (commandline -ct)
    set -l flag (string match -r -- '^--[^=]*=' $typed)
    set -l word ''
    string match -q -- '-*' $typed; and set word (string replace -r -- '=.*' '=' $typed)
    for line in ($words[1] complete $words[2..-1] $word 2>/dev/null)
        if not string match -q \t'*' -- $line
            printf '%s\n' $line
        else if test -n "$flag"
            string replace -r -- '^' $flag (complete -C "__plantjournal_no_command "(string replace -- $flag '' $typed))
        else
            complete -C "__plantjournal_no_command $typed"
        end
    end
end

complete -c plantjournal -f -a '(__plantjournal_complete)'
