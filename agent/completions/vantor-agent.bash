# Completions of vantor-agent for bash.

_vantor_agent_outputs() {
    "${COMP_WORDS[0]}" status --json 2>/dev/null | sed -n 's/^ *"connector": "\(.*\)",$/\1/p'
}

_vantor_agent_entries() {
    echo default match-desktop
    vantorctl list 2>/dev/null | cut -d ' ' -f 1
}

_vantor_agent() {
    local current=${COMP_WORDS[COMP_CWORD]}
    local previous=${COMP_WORDS[COMP_CWORD - 1]}
    local options='' candidates=''

    if ((COMP_CWORD == 1)); then
        mapfile -t COMPREPLY < <(compgen -W 'run picker status choose lock unlock pause resume
            reload quit --help --version' -- "$current")
        return
    fi
    case ${COMP_WORDS[1]} in
        run)
            options='--output --choose --mode --max-fps --seconds --unlock-after --out --config
                --clean --patience --extension'
            ;;
        picker) options='--json --extension' ;;
        status) options='--json' ;;
        choose)
            case $COMP_CWORD in
                2) candidates=$(_vantor_agent_outputs) ;;
                3) candidates=$(_vantor_agent_entries) ;;
            esac
            ;;
        lock | unlock | pause | resume | reload | quit) ;;
        *) return ;;
    esac

    COMPREPLY=()
    case $previous in
        --output) candidates='headless window background' ;;
        --mode) candidates='locked idle default' ;;
        --out | --extension)
            compopt -o filenames 2>/dev/null
            mapfile -t COMPREPLY < <(compgen -d -- "$current")
            return
            ;;
        --config)
            compopt -o filenames 2>/dev/null
            mapfile -t COMPREPLY < <(compgen -f -- "$current")
            return
            ;;
        --choose | --max-fps | --patience | --seconds | --unlock-after) return ;;
    esac
    if [[ $current == -* ]]; then
        candidates="$options --help"
    fi
    mapfile -t COMPREPLY < <(compgen -W "$candidates" -- "$current")
}

complete -F _vantor_agent vantor-agent
