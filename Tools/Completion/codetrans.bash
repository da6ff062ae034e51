# Completion of codetrans for bash; needs nothing but bash.
_codetrans() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} command= i
    for ((i = 1; i < COMP_CWORD; i++)); do
        case ${COMP_WORDS[i]} in detect | convert | names | doctor) command=${COMP_WORDS[i]} && break ;; esac
    done
    COMPREPLY=()
    local common='--help --directory --quiet --verbose'
    case $command$before in
        names--from | names-f) COMPREPLY=($(compgen -W 'gbk big5 utf-8 cp437' -- "$word")) && return ;;
    esac
    case $before in
        --to | -t) COMPREPLY=($(compgen -W 'utf-8 gbk utf-16le' -- "$word")) && return ;;
        --from | -f) COMPREPLY=($(compgen -W 'utf-8 gbk big5 utf-16le' -- "$word")) && return ;;
        --backup | --jobs | -j) return ;;
    esac
    case $command:$word in
        :-*) COMPREPLY=($(compgen -W "$common --version" -- "$word")) ;;
        :*) COMPREPLY=($(compgen -W 'detect convert names doctor' -- "$word")) ;;
        detect:-*) COMPREPLY=($(compgen -W "$common --json --recursive --jobs" -- "$word")) ;;
        convert:-*)
            COMPREPLY=($(compgen -W "$common --to --from --output --in-place --backup --recursive --jobs --bom --no-bom
                --lossy --force" -- "$word"))
            ;;
        names:-*)
            COMPREPLY=($(compgen -W "$common --apply --from --undo-list --undo --zip --extract-to" -- "$word"))
            ;;
        doctor:-*) COMPREPLY=($(compgen -W "$common" -- "$word")) ;;
        # No candidates: the shell completes file names, with all their oddities.
    esac
}
complete -o default -F _codetrans codetrans
