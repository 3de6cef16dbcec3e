# Completion of kolmera-cli for bash. Commands and options are those that --help tells; jobs are those of the data folder.
_kolmera_cli() {
    local -a words=()
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} command= folder=${KOLMERA_DATA:-} i
    for ((i = 1; i < COMP_CWORD; i++)); do
        case ${COMP_WORDS[i]} in
            -d | --data) folder=${COMP_WORDS[++i]} ;;
            -*) ;;
            *) [ -n "$command" ] || command=${COMP_WORDS[i]}; words+=("${COMP_WORDS[i]}") ;;
        esac
    done
    local IFS=$'\n'
    case $before in
        -d | --data) COMPREPLY=($(compgen -d -- "$word")); compopt -o filenames; return ;;
        --locale) COMPREPLY=($(compgen -W $'sv\nen' -- "$word")); return ;;
        --summary | --connect-file | --save | --rejects | --output) COMPREPLY=($(compgen -f -- "$word")); compopt -o filenames; return ;;
    esac
    if [[ $word == -* ]]; then
        COMPREPLY=($(compgen -W "$(kolmera-cli ${command:+"$command"} --help 2>/dev/null | grep -oE -- '--[a-z-]+' | sort -u)" -- "$word"))
    elif [ -z "$command" ]; then
        COMPREPLY=($(compgen -W "$(kolmera-cli --help 2>/dev/null | sed -nE 's/^  ([a-z][a-z-]*) .*/\1/p')" -- "$word"))
    else
        case $command in
            run | preview | limits | explain)
                local jobs=() job
                while read -r job; do [[ $job == "${word//\\/}"* ]] && jobs+=("$(printf '%q' "$job")"); done < <(
                    kolmera-cli jobs --json --data "${folder/#\~/$HOME}" 2>/dev/null | sed -nE 's/^ *"job": "(.*)",?$/\1/p')
                COMPREPLY=("${jobs[@]}") ;;
            register)
                case ${#words[@]} in
                    1) COMPREPLY=($(compgen -W "$(kolmera-cli registers 2>/dev/null | sed -nE '2,$s/ .*//p')" -- "$word")) ;;
                    2) COMPREPLY=($(compgen -W $'list\ncolumns\nshow\nset\nremove\nimport\nexport' -- "$word")) ;;
                    *) COMPREPLY=($(compgen -f -- "$word")); compopt -o filenames ;;
                esac ;;
            *) COMPREPLY=($(compgen -f -- "$word")); compopt -o filenames ;;
        esac
    fi
}
complete -F _kolmera_cli kolmera-cli
