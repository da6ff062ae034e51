#!/usr/bin/env bash
# Builds CodeTrans and runs the whole test suite, then once more under AddressSanitizer and UndefinedBehaviorSanitizer.
. "$(dirname "$0")/Tools/setup.sh"
need_to_test
make_locale
options=()
# A newer compiler's new warning must not keep a user from testing; in CI it must be seen.
[ -z "${CI:-}" ] || options+=(-DCODETRANS_WERROR=ON)

echo "Building in build ..."
build build "${options[@]}"
echo "Building in build-sanitize ..."
build build-sanitize -DCMAKE_BUILD_TYPE=Debug -DCODETRANS_SANITIZE=address "${options[@]}"
for folder in build build-sanitize; do
    echo "Testing in $folder ..."
    ctest --test-dir $folder --output-on-failure --parallel "$(nproc)" --no-tests=error
done
