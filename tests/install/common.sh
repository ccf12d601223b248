# shellcheck shell=bash
# What the tests of what is installed share; to be sourced by bash. Their first argument is the folder of a build.
source "$(dirname "${BASH_SOURCE[0]}")/../../scripts/common.sh"

build=$(realpath "$1")
work=$build/install/$(basename "$0")
rm -rf "$work"
mkdir -p "$work"
# Wine shall put no entries in the menus of the desktop.
export WINEDLLOVERRIDES="$WINEDLLOVERRIDES;winemenubuilder.exe="

# buildProject TOOLCHAIN SDK FOLDER [TARGET]: builds a project in FOLDER-build with what was installed alone.
buildProject() {
    { cmake -G Ninja -S "$3" -B "$3-build" -DCMAKE_TOOLCHAIN_FILE="$2/cmake/$1.cmake" -DCMAKE_PREFIX_PATH="$2" \
        -DCMAKE_CXX_FLAGS="-O1 -Wall -Wextra -Werror" && cmake --build "$3-build" --target "${4:-all}"; } \
        >"$3.log" 2>&1 || die "$3 cannot be built: $(cat "$3.log")"
}

# buildClasses SDK PROGRAM: classes.c, with the ids of the SDK.
buildClasses() {
    x86_64-w64-mingw32-gcc-posix -Wall -Wextra -Werror -I "$1/include" -o "$2" tests/install/classes.c \
        "$1/lib/libtalxrend_ids.a" -lole32 -loleaut32 -luuid
}

# showsImage PICTURE: a window alone has few colours.
showsImage() {
    local colors
    colors=$(identify -format %k "$1")
    [[ $colors -ge 100 ]] || die "$1 has $colors colours only"
}
