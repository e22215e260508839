# What `scripts/desktop start` can be asked for. Sourced by scripts/desktop.
# shellcheck shell=bash

one_of() { # OPTION VALUE ALLOWED...
    local option=$1 value=$2 allowed
    shift 2
    for allowed in "$@"; do
        [[ $value != "$allowed" ]] || return 0
    done
    fail "$option is one of $*, not '$value'"
}

a_size() { # OPTION VALUE
    [[ $2 =~ ^[1-9][0-9]{2,4}x[1-9][0-9]{2,4}$ ]] ||
        fail "$1 is WIDTHxHEIGHT in pixels, such as 1920x1080, not '$2'"
}

a_scale() { # OPTION VALUE
    [[ $2 =~ ^([1-3](\.[0-9]{1,2})?|4)$ ]] || fail "$1 is a number from 1 to 4, not '$2'"
}

a_name() {
    [[ $1 =~ ^[A-Za-z0-9_-][A-Za-z0-9._-]*$ ]] ||
        fail "a name has letters, digits, dots, hyphens and underscores, not '$1'"
}

parse_start_options() {
    name='' screens=1 size=1920x1080 second_size=1280x1024 second_at=right scale=1 second_scale=''
    wm=openbox compositor='' tray=xembed owner=''
    while [[ $# -gt 0 ]]; do
        [[ $# -ge 2 || $1 != --* ]] || fail "$1 needs a value; see scripts/desktop --help"
        case $1 in
            --name) name=$2; a_name "$name" ;;
            --screens) screens=$2; one_of "$1" "$2" 1 2 ;;
            --size) size=$2; a_size "$1" "$2" ;;
            --second-size) second_size=$2; a_size "$1" "$2" ;;
            --second-at) second_at=$2; one_of "$1" "$2" left right above ;;
            --scale) scale=$2; a_scale "$1" "$2" ;;
            --second-scale) second_scale=$2; a_scale "$1" "$2" ;;
            --wm) wm=$2; one_of "$1" "$2" openbox xfwm4 none ;;
            --compositor) compositor=$2; one_of "$1" "$2" picom xfwm4 none ;;
            --tray) tray=$2; one_of "$1" "$2" xembed sni none ;;
            --until-exit-of) owner=$2; [[ $2 =~ ^[0-9]+$ && -d /proc/$2 ]] || fail "there is no process '$owner'" ;;
            *) fail "unknown option '$1'; see scripts/desktop --help" ;;
        esac
        shift 2
    done
    second_scale=${second_scale:-$scale}
    if [[ -z $compositor ]]; then
        compositor=picom
        [[ $wm != xfwm4 ]] || compositor=xfwm4
    fi
    [[ $compositor != xfwm4 || $wm == xfwm4 ]] || fail "xfwm4's compositor needs --wm xfwm4"
}
