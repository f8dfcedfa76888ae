#!/usr/bin/env bash
# How the program ends as a process, and what it shows on Wayland, without X. The argument is its path.
set -euo pipefail
program=$1
work=$(mktemp -d)
trap 'kill $(jobs -p) 2>/dev/null || true; wait; rm -rf "$work"' EXIT
cd "$work"
export XDG_CONFIG_HOME=$work XDG_RUNTIME_DIR=$work
export ASAN_OPTIONS=detect_leaks=0 # the program unloads its drivers, whose leaks then have no name
printf '%s\n' 0 SECTION 2 ENTITIES 0 LINE 10 -1.0 20 0.0 30 0.0 11 1.0 21 0.0 31 0.0 >good.dxf
truncate -s 8G huge.dxf # a line that is longer than memory

# Runs a command of the shell, sends keys until the program ends, and checks its exit code and what it says.
ends() { # CODE TEXT KEYS COMMAND
    local code=0
    bash -c "$4" 2>errors &
    for _ in $(seq 300); do
        kill -0 $! 2>/dev/null || break
        timeout 2 xdotool search --onlyvisible --name '^Tolmera$' windowactivate key "$3" >/dev/null 2>&1 || true
        sleep 0.1
    done
    kill -0 $! 2>/dev/null && kill $!
    wait $! || code=$?
    if [[ $code -ne $1 || $(<errors) != *"$2"* ]]; then
        echo "$4: exit code $code, wanted $1 with \"$2\"; it says: $(<errors)"
        exit 1
    fi
}

ends 0 "" ctrl+q "exec '$program' good.dxf"
ends 1 "Tolmera needs OpenGL" Return "QT_XCB_GL_INTEGRATION=none exec '$program' good.dxf"
ends 1 "could not connect to display :9999" ctrl+q "DISPLAY=:9999 exec '$program'"
grep -q __asan_init "$program" || # the sanitizer needs more memory than any limit allows
    ends 1 "Tolmera: out of memory" ctrl+q "ulimit -v 1500000; exec '$program' huge.dxf"

weston --backend=x11-backend.so --shell=kiosk-shell.so --no-config --socket=wayland --width=500 --height=450 &>log &
until [[ -S wayland ]]; do sleep 0.1; done
env -u DISPLAY WAYLAND_DISPLAY=wayland QT_QPA_PLATFORM=wayland "$program" good.dxf &
for _ in $(seq 300); do
    colors=$(import -window root -depth 8 rgb:- | od -An -v -tx1 -w3 | sort -u)
    [[ $colors != *"80 80 80"*"f5 f5 f5"* ]] || exit 0
    sleep 0.2
done
echo "On Wayland there is no line on a background, only: $colors"
exit 1
