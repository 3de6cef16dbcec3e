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
            run | preview | limits | explain | couplings | source | convert | template | show | undo | compare)
                local names=() name list=jobs member=job
                case $command in show | undo | compare) list=history member=run ;; esac
                while read -r name; do [[ $name == "${word//\\/}"* ]] && names+=("$(printf '%q' "$name")"); done < <(
                    kolmera-cli $list --json --data "${folder/#\~/$HOME}" 2>/dev/null |
                        sed -nE 's/^ *"'$member'": "(.*)",?$/\1/p' | sed -E 's/\\(.)/\1/g')
                COMPREPLY=("${names[@]}")
                if [ ${#names[@]} -eq 0 ]; then COMPREPLY=($(compgen -f -- "$word")); compopt -o filenames; fi ;;
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
