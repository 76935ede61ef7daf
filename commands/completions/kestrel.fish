# fish completion for kestrel. In config.fish: kestrel completions fish | source
# The word at the cursor comes as it is typed, with a quote that is still open; the words before it do not.
function __kestrel_complete
    set -l words (commandline -opc)
    set -l current (commandline -ct)
    set -l plain (string unescape -- (string replace -r '^["\']' '' -- "$current"))
    for line in ($words[1] complete "=$plain" $words[2..-1] 2>/dev/null)
        if test "$line" = :files
            complete -C "'' $current"  # as an argument of a command that fish does not know
        else
            echo $line
        end
    end
end
complete -c kestrel -f -a '(__kestrel_complete)'
