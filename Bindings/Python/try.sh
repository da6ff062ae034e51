#!/usr/bin/env bash
# Builds the Python package, installs it into a virtual environment of its own, build/python, and shows it at work: on the
# samples, or on your own files, which are not changed.
# usage: Bindings/Python/try.sh [FILE...]
files=()
for file in "$@"; do files+=("$(realpath -- "$file")"); done
. "$(dirname "$0")/../../Tools/setup.sh"
need g++ python3-dev python3-pip python3-setuptools python3-venv python3-wheel
environment=build/python

# Debian's Python: its packages are the ones that were just installed. They build the package without a network.
echo "Building ..."
rm -rf build/python-wheel Bindings/Python/build # of an earlier version
run "Building the wheel" /usr/bin/python3 -m pip wheel --no-build-isolation --no-deps --no-index \
    --wheel-dir build/python-wheel Bindings/Python
run "Making the virtual environment" /usr/bin/python3 -m venv --clear "$environment"
run "Installing the wheel" "$environment/bin/pip" install --no-index build/python-wheel/codetrans-*.whl
echo "Installed: $environment/bin/python"
[ ${#files[@]} != 0 ] || files=(Test/Samples/*-hans.* Test/Samples/*-hant.big5)
"$environment/bin/python" Bindings/Python/show.py "${files[@]}"
