# fish completion for kestrel. In config.fish: kestrel completions fish | source
function __kestrel_complete
    set -l words (commandline -opc)
    set -l current (commandline -ct)
    for line in ($words[1] complete "=$current" $words[2..-1] 2>/dev/null)
        if test "$line" = :files
            __fish_complete_path $current
        else
            echo $line
        end
    end
end
complete -c kestrel -f -a '(__kestrel_complete)'
