# The processes of a virtual desktop. Sourced by scripts/desktop; $state is the desktop's folder.
#
# Every process is started with a variable in its environment that names the desktop. Whatever it
# starts in turn (the bus its services, a panel its plug-ins) inherits it, so a desktop's processes
# can be told from all others at any time, also after the script that started them was killed.
# shellcheck shell=bash

: "${state:=}"

# start_service NAME COMMAND...: runs it in the background, its output in log/NAME.
start_service() {
    local name=$1
    shift
    TAMRIK_DESKTOP_SERVICE=$state setsid "$@" >"$state/log/$name" 2>&1 </dev/null &
}

# Prints the process ids of this desktop's services.
service_pids() {
    local environment
    # Processes that end while grep reads them make it complain; other users' it may not read.
    { grep --files-with-matches --null-data --line-regexp --fixed-strings \
        "TAMRIK_DESKTOP_SERVICE=$state" /proc/[0-9]*/environ 2>/dev/null || true; } |
        while IFS=/ read -r _ _ environment _; do
            echo "$environment"
        done
}

# Ends all services of this desktop, and says which had to be killed or would not end at all.
stop_services() {
    local -A asked=()
    local pids pid round none_seen=0
    for ((round = 0; round < 200; ++round)); do
        mapfile -t pids < <(service_pids)
        if [[ ${#pids[@]} -gt 0 ]]; then
            none_seen=0
        elif ((++none_seen == 2)); then
            # Seen twice: a process that was about to become a service would have by now.
            return 0
        fi
        for pid in "${pids[@]}"; do
            # A service may start another one until it is gone itself: hence asked one by one.
            if [[ -z ${asked[$pid]:-} ]]; then
                asked[$pid]=1
                kill -TERM "$pid" 2>/dev/null || true
            elif ((round == 120)); then
                echo "scripts/desktop: killing $pid ($(name_of "$pid")), which did not end" >&2
                kill -KILL "$pid" 2>/dev/null || true
            fi
        done
        sleep 0.025
    done
    echo "scripts/desktop: could not end ${pids[*]}" >&2
    return 1
}

name_of() {
    cat "/proc/$1/comm" 2>/dev/null || echo gone
}
