#compdef kestrel
# zsh completion for kestrel. In ~/.zshrc, after compinit: source <(kestrel completions zsh)
_kestrel() {
    local line word tab=$'\t' files=
    local current=${${(Q)words[CURRENT]}#[\"\']}  # without a quote that is still open
    local -a described open
    for line in "${(@f)$(${words[1]} complete "=$current" "${(@Q)words[2,CURRENT-1]}" 2>/dev/null)}"; do
        [[ -z $line ]] && continue
        if [[ $line == :files ]]; then
            files=1
            continue
        fi
        word=${line%%$tab*}
        if [[ $line == *$tab* ]]; then
            line=${word//:/\\:}:${line#*$tab}
        else
            line=${word//:/\\:}
        fi
        if [[ $word == *= ]]; then open+=("$line"); else described+=("$line"); fi
    done
    # kestrel has chosen what fits the word. -U: zsh does not choose again, and capitals are replaced.
    (( $#open )) && _describe 'parameter' open -U -S ''
    (( $#described )) && _describe 'kestrel' described -U
    [[ -n $files ]] && _files
}
if [[ $funcstack[1] == _kestrel ]]; then _kestrel "$@"; else compdef _kestrel kestrel; fi
