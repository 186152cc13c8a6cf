# Completion of vornic, vornic-repair, vornic-check, vornic-convert and vornic-media for bash. It needs
# no other functions, so that it can be read into any shell.

# Completes names of project files and folders.
_vornic_files() {
    local name
    compopt -o filenames 2>/dev/null
    while IFS= read -r name; do
        case ${name,,} in
            *.xml | *.fcpxml | *.fcpxmld) COMPREPLY+=("$name") ;;
            *) if [[ -d $name ]]; then COMPREPLY+=("$name"); fi ;;
        esac
    done < <(compgen -f -- "$1")
}

# Completes one of the words in $1; after a comma, the next one of a list.
_vornic_words() {
    local front=''
    if [[ $3 == list && $2 == *,* ]]; then
        front=${2%,*},
    fi
    local word
    while IFS= read -r word; do
        COMPREPLY+=("$front$word")
    done < <(compgen -W "$1" -- "${2#"$front"}")
}

_vornic_rules() {
    printf '%s ' '*' xml structure references timing values versions characters media
    "$1" --list-rules 2>/dev/null | while read -r rule _; do printf '%s ' "$rule"; done
}

# Sets `current` and `previous`: the word to complete and the option whose value it may be, also in
# --option=value, which bash takes apart. The value of --fix may be left out: only behind a "=" is
# the next word one.
_vornic_at() {
    current=${COMP_WORDS[COMP_CWORD]}
    previous=${COMP_WORDS[COMP_CWORD - 1]}
    if [[ $current == '=' ]]; then
        current=''
    elif [[ $previous == --fix ]]; then
        previous=''
    elif [[ $previous == '=' && $COMP_CWORD -gt 1 ]]; then
        previous=${COMP_WORDS[COMP_CWORD - 2]}
    fi
}

_vornic_check() {
    local current previous
    _vornic_at
    COMPREPLY=()
    case $previous in
        --format) _vornic_words 'text json sarif gnu' "$current" ;;
        --least) _vornic_words 'error warning info' "$current" ;;
        --fail-on) _vornic_words 'error warning info never' "$current" ;;
        --only | --ignore | --fix) _vornic_words "$(_vornic_rules "$1")" "$current" list ;;
        --explain) _vornic_words "$(_vornic_rules "$1")" "$current" ;;
        --reads) _vornic_words '1 2 3 4 5 1.0 1.1 1.2 1.3 1.4 1.5 1.6 1.7 1.8 1.9 1.10 1.11 1.12
            1.13 1.14' "$current" ;;
        --report | --timeline | -o)
            compopt -o filenames 2>/dev/null
            mapfile -t COMPREPLY < <(compgen -f -- "$current")
            ;;
        --max | --where | -j) ;;
        *)
            if [[ $current == -* ]]; then
                _vornic_words '-r -j --format --report --quiet --only --ignore --least --fail-on --max
                    --reads --media --fix --set-version --dry-run -o --timeline --where --list-rules --explain --help --version' "$current"
            else
                _vornic_files "$current"
            fi
            ;;
    esac
}

_vornic_media() {
    local current previous
    _vornic_at
    COMPREPLY=()
    case $previous in
        --format) _vornic_words 'text json csv' "$current" ;;
        --pick) _vornic_words 'newest longest-tail' "$current" ;;
        --form) _vornic_words 'localhost triple-slash windows' "$current" ;;
        --search)
            compopt -o filenames 2>/dev/null
            mapfile -t COMPREPLY < <(compgen -d -- "$current")
            ;;
        --report | -o)
            compopt -o filenames 2>/dev/null
            mapfile -t COMPREPLY < <(compgen -f -- "$current")
            ;;
        --map) ;;
        *)
            if [[ $current == -* ]]; then
                _vornic_words '-r --format --report --quiet --unused --map --search --pick --form
                    --dry-run -o --in-place --help --version' "$current"
            else
                if ((COMP_CWORD == 1)); then
                    _vornic_words 'list missing relink' "$current"
                fi
                _vornic_files "$current"
            fi
            ;;
    esac
}

_vornic_convert() {
    local current previous
    _vornic_at
    COMPREPLY=()
    case $previous in
        --format) _vornic_words 'text json' "$current" ;;
        --to) _vornic_words '1 2 3 4 5 1.6 1.7 1.8 1.9 1.10 1.11 1.12 1.13 1.14' "$current" ;;
        --assume) _vornic_words '1 2 3 4 5 1.0 1.1 1.2 1.3 1.4 1.5 1.6 1.7 1.8 1.9 1.10 1.11 1.12
            1.13 1.14' "$current" ;;
        -o)
            compopt -o filenames 2>/dev/null
            mapfile -t COMPREPLY < <(compgen -f -- "$current")
            ;;
        --max) ;;
        *)
            if [[ $current == -* ]]; then
                _vornic_words '--to --lowest --assume --strict --strip --dry-run -o --in-place --bundle
                    --no-bundle --format --max --help --version' "$current"
            else
                _vornic_files "$current"
            fi
            ;;
    esac
}

_vornic_repair() {
    local current previous
    _vornic_at
    COMPREPLY=()
    if [[ $previous == --format ]]; then
        _vornic_words 'text json' "$current"
    elif [[ $current == -* ]]; then
        _vornic_words '--quiet --undo --list --force --salvage -o --format --help --version' "$current"
    else
        _vornic_files "$current"
    fi
}

_vornic() {
    local current previous
    _vornic_at
    COMPREPLY=()
    if [[ $previous == -convertxmeml ]]; then
        _vornic_words '1 2 3 4 5' "$current"
    elif [[ $current == -* ]]; then
        _vornic_words '-convertxmeml --help --version' "$current"
    else
        _vornic_files "$current"
    fi
}

complete -F _vornic vornic
complete -F _vornic_repair vornic-repair
complete -F _vornic_check vornic-check
complete -F _vornic_convert vornic-convert
complete -F _vornic_media vornic-media
