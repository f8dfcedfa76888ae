#!/usr/bin/env bash
# Has the program `drive` open and use drawings that are huge, senseless, changing or no files at all.
set -euo pipefail
drive=$1
work=$(mktemp -d)
trap 'kill $(jobs -p) || true; rm -rf "$work"' EXIT
cd "$work"

files=() wanted=()
opens() { # PATTERN-OF-COUNTS FILE
    wanted+=("$1") files+=("$2")
}
pairs() { printf '%s\n' 0 SECTION 2 ENTITIES "$@"; }
drawing() { # four values make a point, a line and a face
    pairs 0 POINT 10 "$1" 20 "$2" 30 "$3" 0 LINE 10 "$1" 20 "$2" 30 "$3" 11 "$2" 21 "$3" 31 "$4" \
        0 3DFACE 10 "$1" 20 "$2" 30 "$3" 11 "$4" 21 "$2" 31 "$3" 12 "$4" 22 "$3" 32 "$1" 13 "$1" 23 "$4" 33 "$2"
}
drawing 1.5 2.5 3.5 4.5 >sane.dxf

cp sane.dxf "line of 1 GB.dxf" && truncate -s 1G "line of 1 GB.dxf"
opens "opened 1 1 1" "line of 1 GB.dxf"
{ yes '' | head -n 10000000 || true; cat sane.dxf; } >"blank lines.dxf"
opens "opened 1 1 1" "blank lines.dxf"
digits=$(head -c 100000 /dev/zero | tr '\0' 7)
drawing "$digits" "-0.$digits" "1e-$digits" "1e$digits" >"long numbers.dxf"
opens "opened 1 1 1" "long numbers.dxf"
for value in 1e999 nan inf 1e308 4.9e-324 1e154; do
    drawing "$value" 1.0 "-$value" "$value" >"some $value.dxf"
    opens "opened 1 1 1" "some $value.dxf"
    drawing "$value" "$value" "$value" "$value" >"all $value.dxf"
    opens "opened 1 1 1" "all $value.dxf"
done
opens "opened 0 0 0" "$drive"
head -c 1000000 /dev/urandom >random.dxf
opens "opened * * *" random.dxf
for file in /proc/self/status /proc/self/mem /proc/cpuinfo; do
    opens "[or][pe]*" "$file"
done
opens "refused" "/tmp/.X11-unix/X${DISPLAY#:}"
ln -s loop.dxf loop.dxf
opens "refused" loop.dxf
opens "refused" "$(printf '%4096s' '' | tr ' ' n)"

# The beginning, with the entities, is there all the time.
{ cat sane.dxf; yes '' | head -n 30000000 || true; } >"shrinks and grows.dxf"
while sleep 0.02; do truncate -s 100000 shrinks*; truncate -s 30000000 shrinks*; done &
opens "opened 1 1 1" "shrinks and grows.dxf"
while sleep 0.02; do rm -f "comes and goes.dxf"; cp sane.dxf "comes and goes.dxf"; done &
for _ in 1 2 3; do
    opens "[or][pe]*" "comes and goes.dxf"
done

code=0
mapfile -t came < <(stdbuf -oL "$drive" visit "${files[@]}"; echo "exit code $?")
for i in "${!files[@]}"; do
    # shellcheck disable=SC2053 # these are patterns
    [[ ${came[i]:-nothing} == ${wanted[i]} ]] ||
        { echo "${files[i]}: ${came[i]:-nothing}, wanted ${wanted[i]}" && code=1; }
done
exit "$code"
