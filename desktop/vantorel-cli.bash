# bash completion for vantorel-cli
_vantorel_cli()
{
    local cur prev words cword
    _init_completion || return

    if [[ $cword -eq 1 ]]; then
        COMPREPLY=($(compgen -W 'normalize check table apply set diff show --help --version' -- "$cur"))
        return
    fi
    if [[ $prev == --data-dir ]]; then
        _filedir -d
        return
    fi
    if [[ $prev == -o ]]; then
        _filedir csv
        return
    fi
    if [[ $cur == -* ]]; then
        local options='--data-dir --read=game --read=editor --help'
        case ${words[1]} in
            normalize) options+=' --in-place --allow-changes --split-hard-links --sync=auto --sync=each --sync=shared' ;;
            check) options+=' --strict' ;;
            table) options='--data-dir -o --help' ;;
            apply) options='--data-dir --dry-run --force --help' ;;
            set) options='--data-dir --dry-run --where --help' ;;
            diff | show) options='--data-dir --help' ;;
        esac
        COMPREPLY=($(compgen -W "$options" -- "$cur"))
        return
    fi
    if [[ ${words[1]} == apply ]]; then
        _filedir '@(csv|CSV)'
        return
    fi
    # Scripts in any letter case, and folders to search.
    _filedir '@(wepn|WEPN|Wepn)'
} &&
    complete -F _vantorel_cli vantorel-cli
