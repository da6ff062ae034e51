#!/usr/bin/env bash
# build.sh [FOLDER]: builds the package in FOLDER (build/javascript), ready for `npm install FOLDER` and `npm pack`. Needs
# Emscripten (Debian: emscripten).
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
mkdir -p "${1:-$root/build/javascript}"
cd "${1:-$root/build/javascript}"
source=$root/Src/CodeTrans

# The memory holds the module's own data and a stack of 64 KiB; JavaScript adds what the model needs.
em++ -std=c++20 -O3 -fno-exceptions -fno-rtti -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror -I"$source" \
    "$root/Bindings/JavaScript/Module.cpp" "$source"/{Detection,FastPaths,Margin,Model,Shortcuts}.cpp \
    --no-entry -sSTANDALONE_WASM -sFILESYSTEM=0 -sALLOW_MEMORY_GROWTH -sTOTAL_STACK=65536 -sINITIAL_MEMORY=131072 \
    -o codetrans.wasm
chmod a-x codetrans.wasm
gzip -9 -n -c "$root/Data/CodeTrans.model" > codetrans.model.gz
cp "$root"/Bindings/JavaScript/{core.js,node.js,node.cjs,web.js,index.d.ts,package.json,README.md} "$root/LICENSE" .
cp index.d.ts index.d.cts
