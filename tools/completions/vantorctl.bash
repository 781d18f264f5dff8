# Completions of vantorctl for bash.

_vantorctl_shaders() {
    compgen -W "$("${COMP_WORDS[0]}" list 2>/dev/null | cut -d ' ' -f 1)" -- "$1"
    compgen -f -X '!*.metal' -- "$1"
    compgen -d -- "$1"
}

_vantorctl() {
    local current=${COMP_WORDS[COMP_CWORD]}
    local previous=${COMP_WORDS[COMP_CWORD - 1]}
    local look='--speed --tint --color1 --color2 --color3 --background --params --custom'
    local options='' files=''

    if ((COMP_CWORD == 1)); then
        mapfile -t COMPREPLY < <(compgen -W 'list set show unset main non-shader notify render
            gallery check watch --help --version' -- "$current")
        return
    fi
    case ${COMP_WORDS[1]} in
        list | show) options='--json' ;;
        set) options="--display --no-check --quiet $look" files=shaders ;;
        unset | notify) ;;
        main) options='--none' ;;
        non-shader) options='--off' ;;
        render) options="--size --time --out $look" files=shaders ;;
        gallery) options='--size --time --out' ;;
        check) files=shaders ;;
        watch) options="--display $look" files=shaders ;;
        *) return ;;
    esac

    COMPREPLY=()
    case $previous in
        -o | --out)
            compopt -o filenames 2>/dev/null
            mapfile -t COMPREPLY < <(compgen -f -- "$current")
            return
            ;;
        --display | --size | --time | --speed | --tint | --color[123] | --background | --params | \
            --custom) return ;;
    esac
    if [[ $current == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$options --help" -- "$current")
    elif [[ $files == shaders ]]; then
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(_vantorctl_shaders "$current")
    fi
}

complete -F _vantorctl vantorctl
