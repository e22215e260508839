# Starts the parts of a virtual desktop, one after the other, as desktop-options.sh read them. Sourced
# by scripts/desktop.
# shellcheck shell=bash

readonly ready_seconds=10
readonly background='#5b7a8c'

# Claims the desktop's folder. Making a folder succeeds for one only, so two starts never share one.
claim_state() {
    make_root
    if [[ -n $name ]]; then
        mkdir "$root/$name" 2>/dev/null ||
            fail "desktop '$name' exists already; end it with: scripts/desktop stop --name $name"
    else
        name=1
        until mkdir "$root/$name" 2>/dev/null; do
            [[ -e $root/$name ]] || fail "could not make a folder in $root"
            name=$((name + 1))
        done
    fi
    state=$root/$name
    # From here on, whatever goes wrong, nothing stays behind.
    trap 'give_up $?' EXIT
    trap 'exit 129' HUP
    trap 'exit 130' INT
    trap 'exit 143' TERM
    echo "$$ $(start_time $$)" >"$state/starting"
    mkdir "$state"/{home,run,log,services}
    chmod 700 "$state" "$state/run"
    [[ ${#state} -lt 80 ]] || fail "$state is too long a path for a socket: set TMPDIR to a shorter one"
}

give_up() {
    local status=$1
    trap - EXIT HUP INT TERM
    echo "scripts/desktop: desktop '$name' did not start" >&2
    show_logs >&2
    stop_services || true
    rm -rf "$state"
    exit "$status"
}

show_logs() {
    local log
    for log in "$state"/log/*; do
        if [[ -s $log ]]; then
            echo "--- ${log##*/}"
            tail -n 5 "$log"
        fi
    done
}

start_server() {
    local total=$size width height width2 height2
    IFS=x read -r width height <<<"$size"
    IFS=x read -r width2 height2 <<<"$second_size"
    local cookie first_at=+0+0 other_at=+0+0
    if [[ $screens == 2 ]]; then
        case $second_at in
            right) other_at=+$width+0 ;;
            left) first_at=+$width2+0 ;;
            above) first_at=+0+$height2 ;;
        esac
        if [[ $second_at == above ]]; then
            total=$((width > width2 ? width : width2))x$((height + height2))
        else
            total=$((width + width2))x$((height > height2 ? height : height2))
        fi
    fi

    # Only who has the cookie may connect. The server does not look at the display number in it.
    cookie=$(mcookie)
    install -m 600 /dev/null "$state/server-authority"
    install -m 600 /dev/null "$XAUTHORITY"
    install -m 600 /dev/null "$state/cookie"
    xauth -q -f "$state/server-authority" add :0 . "$cookie" 2>>"$state/log/xauth"
    # The number of the display arrives on a pipe that ends at once when the server does.
    local number display
    start_bus
    exec {number}< <(
        TAMRIK_DESKTOP_SERVICE=$state exec setsid Xvfb -displayfd 3 -screen 0 "${total}x24" -dpi 96 \
            -auth "$state/server-authority" -nolisten tcp -noreset 3>&1 >"$state/log/Xvfb" 2>&1 </dev/null
    )
    read -r -t "$ready_seconds" -u "$number" display || fail "the X server did not start"
    exec {number}<&-
    await_bus
    DISPLAY=:$display
    xauth -q -f "$XAUTHORITY" add "$DISPLAY" . "$cookie" 2>>"$state/log/xauth"
    echo "$cookie" >"$state/cookie"

    if [[ $screens == 2 ]]; then
        # Two monitors on one big screen; the second one has no output of its own.
        xrandr --setmonitor "*first" "$(monitor "$width" "$height")$first_at" screen
        xrandr --setmonitor second "$(monitor "$width2" "$height2")$other_at" none
    fi >"$state/log/xrandr" 2>&1
}

# A monitor's size as xrandr takes it: pixels and, at 96 dpi, millimetres.
monitor() {
    echo "$1/$(($1 * 254 / 960))x$2/$(($2 * 254 / 960))"
}

start_bus() {
    # The panel and xfwm4 keep their settings in this service; nothing else may start by itself.
    cp /usr/share/dbus-1/services/org.xfce.Xfconf.service "$state/services/"
    configure bus.conf "$state/bus.conf"
    exec {bus_address}< <(
        TAMRIK_DESKTOP_SERVICE=$state exec setsid dbus-daemon --config-file="$state/bus.conf" --nofork \
            --nopidfile --print-address=3 3>&1 >"$state/log/dbus-daemon" 2>&1 </dev/null
    )
}

# It prints its address when it listens.
await_bus() {
    local address
    read -r -t "$ready_seconds" -u "$bus_address" address || fail "the session bus did not start"
    exec {bus_address}<&-
    [[ $address == "$DBUS_SESSION_BUS_ADDRESS"* ]] || fail "the session bus listens at $address"
}

# configure FILE TARGET: copies one of our settings files, its placeholders filled in.
configure() {
    local text
    text=$(<"$here/lib/desktop/$1")
    text=${text//@state@/$state}
    text=${text//@panel_height@/$panel_height}
    text=${text//@icon_size@/$icon_size}
    echo "$text" >"$2"
}

scaled() { # NUMBER: times the primary screen's scale, rounded
    awk -v number="$1" -v scale="$scale" 'BEGIN { printf "%.0f", number * scale }'
}

# Sets what programs on the desktop get to see, before the first of them starts: the bus passes its
# own environment on to the services it starts.
set_environment() {
    local variable
    while read -r variable; do
        unset "$variable"
    done < <(compgen -e | grep -E "$foreign_settings")
    export HOME=$state/home
    export XDG_CONFIG_HOME=$HOME/.config XDG_CACHE_HOME=$HOME/.cache
    export XDG_DATA_HOME=$HOME/.local/share XDG_STATE_HOME=$HOME/.local/state
    export XDG_RUNTIME_DIR=$state/run XDG_SESSION_TYPE=x11
    export DBUS_SESSION_BUS_ADDRESS=unix:path=$state/run/bus
    export XAUTHORITY=$state/authority DISPLAY=
    export LC_ALL=C.UTF-8 LANG=C.UTF-8
    export QT_QPA_PLATFORM=xcb
    # GTK: no accessibility bus, no mounts of the machine, no settings but ours.
    export NO_AT_BRIDGE=1 GIO_USE_VFS=local GSETTINGS_BACKEND=memory
    export TAMRIK_DESKTOP=$name
    mkdir -p "$XDG_CONFIG_HOME"/{openbox,tint2,gtk-3.0,gtk-2.0} "$XDG_CACHE_HOME" "$XDG_DATA_HOME" \
        "$XDG_STATE_HOME" "$XDG_CONFIG_HOME/xfce4/xfconf/xfce-perchannel-xml"
}

# Xft.dpi is how X11 desktops announce their scale: GTK, window managers and panels size their text
# by it, and so does Qt, which therefore must not be told again by QT_SCALE_FACTOR. Naming each
# screen's factor replaces what Qt made of Xft.dpi, exactly.
set_scale() {
    if [[ $scale == 1 && $second_scale == 1 ]]; then
        return
    fi
    echo "Xft.dpi: $(scaled 96)" | xrdb -nocpp -merge >"$state/log/xrdb" 2>&1
    if [[ $screens == 2 ]]; then
        export QT_SCREEN_SCALE_FACTORS="first=$scale;second=$second_scale"
    else
        export QT_SCREEN_SCALE_FACTORS=$scale
    fi
}

start_window_manager() {
    case $wm in
        openbox)
            configure openbox.xml "$XDG_CONFIG_HOME/openbox/rc.xml"
            start_service openbox openbox --sm-disable ;;
        xfwm4)
            start_service xfwm4 xfwm4 \
                --compositor="$([[ $compositor == xfwm4 ]] && echo on || echo off)" ;;
        none) return ;;
    esac
    awaited+=(window-manager)
}

start_compositor() {
    case $compositor in
        picom)
            # No shadows, no fading, whatever the machine's own settings say.
            start_service picom picom --backend xrender --config /dev/null --no-vsync ;;
        xfwm4) ;; # came with the window manager
        none) return ;;
    esac
    awaited+=(_NET_WM_CM_S0)
}

start_panel() {
    local xfconf=$XDG_CONFIG_HOME/xfce4/xfconf/xfce-perchannel-xml
    case $tray in
        xembed)
            if [[ $wm == none ]]; then
                # tint2 waits for a window manager to say how many desktops there are.
                xprop -root -f _NET_NUMBER_OF_DESKTOPS 32c -set _NET_NUMBER_OF_DESKTOPS 1
            fi
            configure tint2rc "$XDG_CONFIG_HOME/tint2/tint2rc"
            start_service tint2 tint2 -c "$XDG_CONFIG_HOME/tint2/tint2rc" ;;
        sni)
            configure xfce4-panel.xml "$xfconf/xfce4-panel.xml"
            start_service xfce4-panel xfce4-panel --disable-wm-check ;;
        none) return ;;
    esac
    awaited+=(_NET_SYSTEM_TRAY_S0)
}

await() { # THING...
    local problem
    [[ $# -eq 0 ]] || problem=$("$here/lib/await_x11.py" "$ready_seconds" "$@" 2>&1) || fail "$problem"
}

# A program decides at its start which kind of tray icon to show, by what it finds on the bus.
await_notifier_host() {
    local watcher=org.kde.StatusNotifierWatcher round
    gdbus wait --session --timeout "$ready_seconds" "$watcher" ||
        fail "the panel did not offer a StatusNotifierWatcher"
    for ((round = 0; round < 200; ++round)); do
        if [[ $(gdbus call --session --dest "$watcher" --object-path /StatusNotifierWatcher \
            --method org.freedesktop.DBus.Properties.Get "$watcher" IsStatusNotifierHostRegistered) \
            == *true* ]]; then
            return
        fi
        sleep 0.05
    done
    fail "the panel did not register as a StatusNotifierItem host"
}

start_desktop() {
    parse_start_options "$@"
    "$here/setup" desktop
    claim_state
    panel_height=$(scaled 32) icon_size=$(scaled 22)
    set_environment
    if [[ -n $owner ]]; then
        start_service watcher "$here/desktop" watch "$owner" "$name"
    fi
    start_server
    set_scale
    configure gtk-settings.ini "$XDG_CONFIG_HOME/gtk-3.0/settings.ini"
    local awaited=()
    start_window_manager
    start_compositor
    await "${awaited[@]}"
    # tint2 starts over, a second later, when a compositor appears after it.
    awaited=()
    start_panel
    await "${awaited[@]}"
    if [[ $tray == sni ]]; then
        await_notifier_host
    fi
    # A compositor that starts later would not find the background.
    hsetroot -solid "$background" >"$state/log/hsetroot" 2>&1 || fail "could not set the background"

    local description="display $DISPLAY, screens $screens, scale $scale, $wm, compositor $compositor, tray $tray"
    echo "$description" >"$state/description"
    save_environment
    print_environment
    rm "$state/starting"
    trap - EXIT HUP INT TERM
    echo "scripts/desktop: desktop '$name' is up: $description" >&2
}

save_environment() {
    local variable
    for variable in HOME DISPLAY DBUS_SESSION_BUS_ADDRESS NO_AT_BRIDGE TAMRIK_DESKTOP \
        $(compgen -e | grep -E "$foreign_settings"); do
        printf 'export %s=%q\n' "$variable" "${!variable}"
    done | sort -u >"$state/environment"
}
