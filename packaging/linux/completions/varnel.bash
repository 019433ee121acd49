# Completion of "varnel ctl" for bash. Models are those of the server that ctl talks to.
_varnel()
{
    local current=${COMP_WORDS[COMP_CWORD]} IFS=$'\n' words=() candidate
    COMPREPLY=()
    case $COMP_CWORD in
    1) words=(ctl) ;;
    2) [ "${COMP_WORDS[1]}" != ctl ] || words=(tags chat) ;;
    *)
        [ "${COMP_WORDS[1]} ${COMP_WORDS[2]}" = 'ctl chat' ] || return 0
        # A colon is a word of its own to bash: put the name of the model together again.
        local name= i
        for ((i = 3; i <= COMP_CWORD; ++i)); do
            name+=${COMP_WORDS[i]}
            if ((i > 3)) && [ "${COMP_WORDS[i]}" != : ] && [ "${COMP_WORDS[i - 1]}" != : ]; then
                return 0
            fi
        done
        local shown=${name%"$current"}
        [ "$current" != : ] || shown=$name current=
        mapfile -t words < <(timeout 3 "${COMP_WORDS[0]}" ctl tags 2>/dev/null)
        for candidate in "${words[@]}"; do
            if [[ $candidate == "$name"* ]]; then
                COMPREPLY+=("$(printf %q "${candidate#"$shown"}")")
            fi
        done
        return 0
        ;;
    esac
    for candidate in "${words[@]}"; do
        [[ $candidate != "$current"* ]] || COMPREPLY+=("$candidate")
    done
}
complete -F _varnel varnel
