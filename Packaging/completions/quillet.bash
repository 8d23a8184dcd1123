# shellcheck shell=bash
_quillet() {
    local word=$2 previous=$3 command=${COMP_WORDS[1]}
    COMPREPLY=()
    if ((COMP_CWORD == 1)); then
        mapfile -t COMPREPLY < <(compgen -W 'watch status preview panel menubar version' -- "$word")
    elif [[ $previous == --out ]]; then
        compopt -o filenames
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
    elif [[ $command == status ]]; then
        mapfile -t COMPREPLY < <(compgen -W '--json' -- "$word")
    elif [[ $command == preview || $command == panel || $command == menubar ]]; then
        mapfile -t COMPREPLY < <(compgen -W '--out' -- "$word")
    fi
}
complete -F _quillet quillet
