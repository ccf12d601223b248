# A viewer's window, for scripts that set talview to the program.
source "$(dirname "${BASH_SOURCE[0]}")/../../scripts/common.sh"
pictures=${TALX_PICTURES:-} # a folder: pictures of the screen are kept there

# eventually COMMAND...: waits until it succeeds.
eventually() {
    for _ in $(seq 150); do
        "$@" && return
        sleep 0.2
    done
    [[ -z $pictures ]] || { import -silent -window root "$pictures/in-vain.png"; cp ./*.ppm "$pictures"; }
    die "In vain: $* (lines ${BASH_LINENO[*]}), complaints: $(cat complaints)"
}

# launch ARGUMENT...: the viewer, whose picture is at $left,$top then.
launch() {
    rm -f said # that of the one before
    wine "$talview" "$@" >said 2>complaints &
    viewer=$!
    eventually grep -qs "^shown: " said
    IFS=', ' read -r _ _ _ left top _ <said
}

leave() {
    xdotool mousemove $((left + 107)) $((top + 203)) # keys go to where the pointer is
    xdotool key alt+F4
    eventually grep -q '^drawn: ' said
    wait "$viewer" || die "The viewer ended with $?: $(cat complaints)"
}

copiedText() { [[ $(xclip -selection clipboard -o 2>/dev/null) == "$1" ]]; }
