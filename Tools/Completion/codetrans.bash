# Completion of codetrans for bash; needs nothing but bash.
_codetrans() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} command= i
    for ((i = 1; i < COMP_CWORD; i++)); do
        case ${COMP_WORDS[i]} in detect | convert | restore | names | doctor) command=${COMP_WORDS[i]} && break ;; esac
    done
    COMPREPLY=()
    local common='--help --directory --quiet --verbose'
    local files='--recursive --include --exclude --files-from --null --jobs'
    local encodings='gbk gb18030 big5 big5-hkscs utf-8 utf-8-sig utf-16 utf-16le utf-16be utf-32 ascii'
    case $command$before in
        names--from | names-f) COMPREPLY=($(compgen -W 'gbk big5 utf-8 cp437' -- "$word")) && return ;;
    esac
    case $before in
        --to | -t) COMPREPLY=($(compgen -W "$encodings" -- "$word")) && return ;;
        --from | -f | --only) COMPREPLY=($(compgen -W "$encodings hz utf-7" -- "$word")) && return ;;
        --eol) COMPREPLY=($(compgen -W 'lf crlf' -- "$word")) && return ;;
        --backup | --jobs | -j | --sure | --include | --exclude) return ;;
    esac
    case $command:$word in
        :-*) COMPREPLY=($(compgen -W "$common --version" -- "$word")) ;;
        :*) COMPREPLY=($(compgen -W 'detect convert restore names doctor' -- "$word")) ;;
        detect:-*) COMPREPLY=($(compgen -W "$common $files --json --only --print0" -- "$word")) ;;
        convert:-*)
            COMPREPLY=($(compgen -W "$common $files --to --from --list --lines --sure --output --in-place --backup --dry-run
                --json --bom --no-bom --eol --fix-declarations --lossy --force" -- "$word"))
            ;;
        restore:-*) COMPREPLY=($(compgen -W "$common --recursive --backup --dry-run --force" -- "$word")) ;;
        names:-*)
            COMPREPLY=($(compgen -W "$common --apply --from --undo-list --undo --zip --extract-to" -- "$word"))
            ;;
        doctor:-*) COMPREPLY=($(compgen -W "$common" -- "$word")) ;;
        # No candidates: the shell completes file names, with all their oddities.
    esac
}
complete -o default -F _codetrans codetrans
