#!/usr/bin/env bash
# Builds CodeTrans and shows it at work, on files of your own: the encoding of each, and its first lines as UTF-8. Nothing
# is changed. Without FILE, on the samples: their encodings, then conversions of whole files and of a buffer.
# usage: ./demo.sh [FILE...]
here=$PWD
. "$(dirname "$0")/Tools/setup.sh"
need_to_build
folder=build-release
program=$PWD/$folder/Tools/CodeTransCli/codetrans

echo "Building ..."
if [ $# = 0 ]; then
    need locales
    make_locale
    targets=(demo)
    build $folder -DCODETRANS_TESTS=OFF
    exec $folder/Examples/demo . Test/Samples $folder/demo
fi
targets=(codetrans)
build $folder -DCODETRANS_TESTS=OFF
cd "$here"
status=0
for file in "$@"; do
    echo
    "$program" --quiet detect -- "$file" || { status=1 && continue; }
    head -n 10 < <("$program" --quiet convert --lossy --to utf-8 --no-bom -- "$file") |
        LC_ALL=C.UTF-8 sed -E -e 's/^(.{0,120}).*/    \1/' -e '$a\'
done
exit $status
