# Sourced by ./run, ./test and bench/run_bench: installs what is missing of packages.txt (Debian packages), as root or
# with sudo.

# install_packages PART ...: the parts of packages.txt; each begins with a line "# PART". Where packages are not Debian's,
# nothing is installed, and the build says what it lacks.
install_packages() {
    command -v dpkg-query >/dev/null || return 0
    local missing=() package part wanted=0
    while read -r package; do
        case $package in
            '') ;;
            '# '*) wanted=0
                   for part in "$@"; do [[ $package == "# $part"* ]] && wanted=1; done ;;
            *) [ $wanted -eq 0 ] || dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q '^install ok installed' ||
                   missing+=("$package") ;;
        esac
    done <packages.txt
    [ ${#missing[@]} -eq 0 ] && return 0

    local as_root=()
    if ! command -v apt-get >/dev/null; then
        echo "Missing packages: ${missing[*]}. There is no apt-get here to install them with." >&2
        return 1
    fi
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || { echo "Missing packages: ${missing[*]}. Install them as root, or install sudo." >&2; return 1; }
        as_root=(sudo)
    fi
    echo "Installing ${missing[*]} ..."
    "${as_root[@]}" apt-get update -qq
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

# need_commands COMMAND ...: one line that names those that are not there.
need_commands() {
    local missing=() command
    for command in "$@"; do
        command -v "$command" >/dev/null || missing+=("$command")
    done
    [ ${#missing[@]} -eq 0 ] || { echo "Missing commands: ${missing[*]}. packages.txt lists what the build needs." >&2; return 1; }
}

# build PRESET [TARGET ...]
build() {
    local preset=$1
    shift
    need_commands cmake ninja c++ pkg-config
    cmake --preset "$preset" -Wno-dev >/dev/null
    cmake --build --preset "$preset" ${1:+--target "$@"}
}
