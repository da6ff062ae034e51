#!/usr/bin/env bash
# Builds CodeTrans without its tests and installs it: the program, the libraries, the model and the manual.
# usage: ./install.sh           as a Debian package where there is dpkg, else under /usr/local
#        ./install.sh PREFIX    under that folder, as ~/.local
case ${1:-} in
    -*)
        sed -n '2,4s/^# //p' "$0"
        exit 2
        ;;
esac
prefix=${1:+$(realpath -m -- "$1")}
. "$(dirname "$0")/Tools/setup.sh"
need_to_build
folder=build-release

echo "Building ..."
targets=(all)
build $folder -DCMAKE_BUILD_TYPE=Release -DCODETRANS_TESTS=OFF -DCODETRANS_CLI=ON
echo "Installing ..."
if [ -z "$prefix" ] && command -v dpkg > /dev/null; then
    need dpkg-dev file
    rm -f $folder/codetrans_*.deb
    run "Making the package" cpack --config $folder/CPackConfig.cmake -B $folder
    package=$(echo "$PWD/$folder"/codetrans_*.deb)
    run "Installing the package" as_root env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y --no-install-recommends --reinstall --allow-downgrades "$package"
    program=/usr/bin/codetrans
else
    prefix=${prefix:-/usr/local}
    install=(cmake --install $folder --prefix "$prefix")
    if mkdir -p "$prefix" 2> /dev/null && [ -w "$prefix" ]; then
        run "Installing" "${install[@]}"
    else
        run "Installing" as_root "${install[@]}"
    fi
    program=$prefix/bin/codetrans
fi
echo "Installed: $program"
"$program" doctor || true
