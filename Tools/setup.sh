# Sourced by install.sh, demo.sh, test.sh and Tools/check-sources: makes a bare Debian or Ubuntu machine ready, quietly.
#
# Each step is skipped where its result is already there, so a second run costs nothing. Output of the steps goes to a
# log that is shown only when a step fails.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
mkdir -p build
setupLog=$PWD/build/setup.log
: > "$setupLog"

# run TITLE COMMAND...: one quiet step.
run() {
    local title=$1
    shift
    if ! "$@" >> "$setupLog" 2>&1; then
        echo "$title failed; the last lines of $setupLog:" >&2
        tail -n 30 "$setupLog" >&2
        exit 1
    fi
}

as_root() {
    if [ "$(id -u)" = 0 ]; then
        "$@"
    elif command -v sudo > /dev/null; then
        sudo "$@"
    else
        echo "Need root or sudo for: $*"
        return 1
    fi
}

# need PACKAGE...: installs the Debian packages that are missing.
need() {
    local missing=()
    for package in "$@"; do
        dpkg-query -W -f '${Status}' "$package" 2> /dev/null | grep -q 'ok installed' || missing+=("$package")
    done
    [ ${#missing[@]} = 0 ] && return
    if ! command -v apt-get > /dev/null; then
        echo "Not a Debian or Ubuntu machine. Install what corresponds to: ${missing[*]}" >&2
        exit 1
    fi
    echo "Installing ${missing[*]} ..."
    run "Updating the package lists" as_root apt-get update
    run "Installing packages" as_root env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y --no-install-recommends "${missing[@]}"
}

# What the libraries and the program need, and what all of the project does.
need_to_build() {
    need cmake g++ make libcli11-dev nlohmann-json3-dev libboost-dev libzip-dev
}
need_to_test() {
    need_to_build
    need locales libgtest-dev pkg-config python3-dev python3-setuptools
}

# The locale that the GBK and UTF-8 conversions run under, made in the build folder and found there through LOCPATH.
make_locale() {
    mkdir -p build/locale
    [ -d build/locale/zh_CN.gbk ] || run "Making the locale zh_CN.gbk" localedef -i zh_CN -f GBK build/locale/zh_CN.gbk
    export LOCPATH=$PWD/build/locale
}

# build FOLDER OPTION...: configures and builds, all or the $targets.
targets=()
build() {
    local folder=$1
    shift
    # A copy of a folder that was configured elsewhere starts anew.
    grep -qsxF "CMAKE_HOME_DIRECTORY:INTERNAL=$PWD" "$folder/CMakeCache.txt" ||
        rm -rf "$folder/CMakeCache.txt" "$folder/CMakeFiles"
    run "Configuring $folder" cmake -S . -B "$folder" "$@"
    run "Building $folder" cmake --build "$folder" --parallel "$(nproc)" ${targets[@]:+--target "${targets[@]}"}
}
