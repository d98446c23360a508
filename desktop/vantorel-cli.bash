# bash completion for vantorel-cli
_vantorel_cli()
{
    local cur prev words cword
    _init_completion || return

    if [[ $cword -eq 1 ]]; then
        COMPREPLY=($(compgen -W 'normalize check --help --version' -- "$cur"))
        return
    fi
    if [[ $prev == --data-dir ]]; then
        _filedir -d
        return
    fi
    if [[ $cur == -* ]]; then
        local options='--data-dir --read=game --read=editor --help'
        case ${words[1]} in
            normalize) options+=' --in-place --allow-changes --split-hard-links --sync=auto --sync=each --sync=shared' ;;
            check) options+=' --strict' ;;
        esac
        COMPREPLY=($(compgen -W "$options" -- "$cur"))
        return
    fi
    # Scripts in any letter case, and folders to search.
    _filedir '@(wepn|WEPN|Wepn)'
} &&
    complete -F _vantorel_cli vantorel-cli
