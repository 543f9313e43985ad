# Completion of vnctl for bash: subcommands, options, and file names behind options that take one.

_vnctl_options() {
    case $1 in
        install) echo --help --json --quiet --name --eula --cid ;;
        uninstall) echo --help --json --quiet --name --keep-identity ;;
        status | attributes | pause | run-tasks) echo --help --json --quiet --cid ;;
        delete) echo --help --json --quiet --cid --keep-file ;;
        download)
            echo --help --json --quiet --cid --path --force --speed --http-delay --background \
                --origin-only --md5 --no-start --detach --cookie-file --query-auth-file --basic-auth-file
            ;;
        diagnose) echo --help --json --quiet ;;
        help) echo --help ;;
        *) echo --help --version --json --quiet --cid ;;
    esac
}

_vnctl() {
    local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    local subcommands='install uninstall status download attributes pause delete run-tasks diagnose help'
    COMPREPLY=()
    case $previous in
        -o | --path | --cookie-file | --query-auth-file | --basic-auth-file)
            compopt -o filenames 2>/dev/null
            mapfile -t COMPREPLY < <(compgen -f -- "$word")
            return
            ;;
        --name | --eula | --cid | --speed | --http-delay) return ;;
    esac
    if [[ $word == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$(_vnctl_options "${COMP_WORDS[1]}")" -- "$word")
    elif ((COMP_CWORD == 1)) || [[ $previous == help ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$subcommands" -- "$word")
    fi
}

complete -F _vnctl vnctl
