# Drives talview by a real mouse and keyboard: for a script that is called TALVIEW VIEW_MODEL ENGINE BITS, with a screen
# of so many bits and a prefix of its own (scripts/on-screen).
source "$(dirname "${BASH_SOURCE[0]}")/window.sh"
talview=$1 model=$2 engine=$3 bits=$4
shot=0
cd "$WINEPREFIX"

# start ARGUMENT...: the viewer, with a picture of 400 x 300; that is at $left,$top then.
start() {
    size=400x300
    xdotool mousemove 1000 740
    launch "$@" --no-state --engine "$engine" --size $size
}

# part FILE GEOMETRY: a part of the screen, counted from the picture's corner.
part() {
    local size x y
    IFS=+ read -r size x y <<<"$2"
    import -silent -window root -crop "$size+$((left + x))+$((top + y))" +repage "$1"
}

# How many pixels on the screen are not what the model says must be there. Where DirectDraw blends a marker, each channel
# may be off by two; the engines have 15 and 16 bits on the same screen.
differing() {
    local fuzz=1%
    [[ $bits == 32 ]] || fuzz=4%
    part seen.png "$size+0+0"
    convert seen.png expected.pgm -compose multiply -composite seen.ppm
    compare -metric AE -fuzz "$fuzz" seen.ppm expected.ppm null: 2>&1 || true
}
agrees() { [[ $(differing) == 0 ]]; }

# expect PICTURE OPTION...: what the model draws of a picture (that picture made, as PICTURE.pnm beside the file)
# with the viewer's options must appear.
expect() {
    wine "$model" expected "$bits" "${1%.*}.pnm" "$@" --size "$size"
    eventually agrees
    [[ -z $pictures ]] || cp seen.png "$pictures/$(basename "$0")-$engine-$bits-$((++shot)).png"
}

# picture FILE ARGUMENT...: makes it, of what convert's arguments make, and the same for the model.
picture() {
    convert "${@:2}" "$1"
    convert "$1" "${1%.*}.pnm"
}

# atWindow X Y: the window's corner is there on the screen.
atWindow() { [[ $(xdotool getwindowgeometry "$window" | sed -n 's/^ *Position: \([-0-9,]*\) .*/\1/p') == "$1,$2" ]]; }

point() { xdotool mousemove $((left + $1)) $((top + $2)); }

# drag BUTTON X Y X Y: in twenty steps.
drag() {
    local i
    point "$2" "$3"
    xdotool mousedown "$1"
    for i in $(seq 20); do point $(($2 + ($4 - $2) * i / 20)) $(($3 + ($5 - $3) * i / 20)); done
    xdotool mouseup "$1"
}

# The first field of the status line is empty or tells something.
value() {
    part line.png "50x12+0+$((${size#*x} + 3))"
    [[ $(identify -format %k line.png) -gt 1 ]]
}
noValue() { ! value; }

# atOnce COMMAND...: the viewer finds all input of the command waiting.
atOnce() {
    kill -STOP "$viewer"
    "$@"
    kill -CONT "$viewer"
}

# drawn: how often the viewer that has been left says it has drawn.
drawn() { sed -n 's/^drawn: \([0-9]*\) times.*/\1/p' said; }
