#!/usr/bin/env bash
# Builds CodeTrans and shows it at work: the encoding of each sample, then conversions of whole files and of a buffer.
. "$(dirname "$0")/Tools/setup.sh"
echo "Building ..."
build build

build/Examples/demo . Test/Samples build/demo
