# Completion of vorlen for bash: source this file, or install it as 'vorlen' where bash-completion looks.

_vorlen() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    # An equals sign is a word of its own: --delays = min
    if [[ $current == '=' ]]; then
        current=
    elif [[ $previous == '=' ]] && ((COMP_CWORD >= 2)); then
        previous=${COMP_WORDS[COMP_CWORD - 2]}
    fi

    local words=
    case $previous in
        --sdf | --sdc | --netlist | --json)
            compopt -o filenames 2>/dev/null
            mapfile -t COMPREPLY < <(compgen -f -- "$current")
            return
            ;;
        --top | --paths | --per-endpoint)
            COMPREPLY=()
            return
            ;;
        --delays) words='min typ max minmax' ;;
        --clocks) words='propagated ideal' ;;
        --resolution) words='1ps 100fs 10fs 1fs' ;;
        --mode) words='exhaustive critical' ;;
        --color) words='auto always never' ;;
        --progress) words='auto never' ;;
        *)
            if [[ " ${COMP_WORDS[*]:1:COMP_CWORD-1} " == *' analyze '* ]]; then
                words='--sdf --sdc --netlist --top --delays --clocks --resolution --mode --paths --per-endpoint --setup
                    --hold --unconstrained --exceptions --json --quiet --verbose --color --progress
                    --allow-violations --help'
            else
                words='analyze --help --version'
            fi
            ;;
    esac
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
}

complete -F _vorlen vorlen
