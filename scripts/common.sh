# shellcheck shell=bash
# What the scripts share; to be sourced by bash.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"

# Wine without debugging output, offers to install Mono and Gecko, and a debugger that holds a crashed program, unless the
# caller wants one.
export WINEDEBUG=-all WINEDLLOVERRIDES="${WINEDLLOVERRIDES-mscoree,mshtml,winedbg.exe=}"

say() {
    printf '\n== %s\n' "$*"
}

die() {
    printf '%s\n' "$*" >&2
    exit 1
}

# The product's version, which stands in CMakeLists.txt.
projectVersion() {
    sed -n 's/^project(.* VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt
}

# installPackages [FILE...] installs the packages of scripts/packages, or of the files, that are missing, or says which
# ones are and how to get them.
installPackages() {
    local package apt lists=("${@:-scripts/packages}") missing=()
    command -v dpkg-query >/dev/null || die "This is not Debian; needed are: $(grep -hv '^#' "${lists[@]}" | xargs)"
    while read -r package; do
        [[ $(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null) == installed ]] || missing+=("$package")
    done < <(grep -hv '^#' "${lists[@]}")
    [[ ${#missing[@]} -gt 0 ]] || return 0

    say "Installing ${missing[*]}"
    apt=(apt-get -qq -o Dpkg::Use-Pty=0)
    if [[ $EUID -ne 0 ]]; then
        sudo -n true 2>/dev/null || die "Cannot install packages here. As root: apt-get install ${missing[*]}"
        apt=(sudo -n env DEBIAN_FRONTEND=noninteractive "${apt[@]}")
    fi
    export DEBIAN_FRONTEND=noninteractive
    "${apt[@]}" update || die "The package lists cannot be read; still missing: ${missing[*]}"
    "${apt[@]}" install -y --no-install-recommends "${missing[@]}" >/dev/null ||
        die "Packages cannot be installed; still missing: ${missing[*]}"
}

# buildPreset PRESET [TARGET...] configures and builds; what configuring finds out is shown only when it fails.
buildPreset() {
    local log=build/$1-configure.log
    say "Building build/$1"
    mkdir -p build
    cmake --preset "$1" >"$log" 2>&1 || { cat "$log"; die "Configuring build/$1 failed"; }
    cmake --build --preset "$1" ${2:+--target "${@:2}"}
}
