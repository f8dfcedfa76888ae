#!/usr/bin/env bash
# The program on a Wayland compositor, without X: the screen shows a drawing, and what is picked in it. Takes the program.
set -eu
work=$(mktemp -d)
trap 'kill $(jobs -p); wait; rm -rf "$work"' EXIT
export XDG_RUNTIME_DIR=$work ASAN_OPTIONS=detect_leaks=0
printf '%s\n' 0 SECTION 2 ENTITIES 0 LINE 10 -1.0 20 0.0 30 0.0 11 1.0 21 0.0 31 0.0 >"$work/line.dxf"

# Waits until the screen shows a color, and notes the number of its last pixel. On the way, double-clicks on a pixel.
wait_for() { # WHAT COLOR [PIXEL]
    for _ in $(seq 100); do # weston takes the place of the pointer where this enters its window
        [[ $# -lt 3 ]] || xdotool mousemove 0 0 sleep 0.1 mousemove $(($3 % 640)) $(($3 / 640)) sleep 0.1 \
            click --repeat 2 --delay 50 1
        import -window root -depth 8 "rgb:$work/screen"
        pixel=$(od -An -v -tx1 -w3 "$work/screen" | grep -n "$2" | tail -n 1 | cut -d : -f 1)
        [[ -z $pixel ]] || return 0
        sleep 0.2
    done
    echo "The screen does not show $1, $2."
    exit 1
}

weston --backend=x11-backend.so --shell=kiosk-shell.so --no-config --socket=test --width=500 --height=450 &>"$work/log" &
until [[ -S $work/test ]]; do sleep 0.1; done
env -u DISPLAY WAYLAND_DISPLAY=test QT_QPA_PLATFORM=wayland "$1" "$work/line.dxf" &
wait_for "the background" "80 80 80"
wait_for "the line" "f5 f5 f5"
wait_for "the line as picked" "ff 00 ff" $((pixel - 1))
