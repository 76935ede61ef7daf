# bash completion for kestrel. In ~/.bashrc: source <(kestrel completions bash)
# bash takes words apart at = and :, kestrel does not, so they are put together again; what bash replaces is the
# part behind the last of these characters.
_kestrel() {
    local words=() i word line
    for ((i = 1; i <= COMP_CWORD; i++)); do
        word=${COMP_WORDS[i]}
        if ((${#words[@]})) && [[ $word == [=:]* || ${COMP_WORDS[i - 1]} == *[=:] ]]; then
            words[-1]+=$word
        else
            words+=("$word")
        fi
    done
    local current=${words[-1]} shown=${COMP_WORDS[COMP_CWORD]}
    [[ $shown == [=:] ]] && shown=
    local kept=${current%"$shown"}
    # A quote that is still open stays where it is: only what is behind it is asked for and replaced.
    shown=${shown#[\"\']}
    current=$kept$shown
    COMPREPLY=()
    while IFS= read -r line; do
        if [[ $line == :files ]]; then
            compopt -o filenames
            while IFS= read -r word; do COMPREPLY+=("$word"); done < <(compgen -f -- "$shown")
            continue
        fi
        word=${line%%$'\t'*}
        [[ $word == *= ]] && compopt -o nospace
        COMPREPLY+=("${word#"$kept"}")
    done < <("${COMP_WORDS[0]/#\~/$HOME}" complete "=$current" "${words[@]:0:${#words[@]}-1}" 2>/dev/null)
}
complete -F _kestrel kestrel
