#!/usr/bin/env bash
# Builds the JavaScript package on a bare Debian 12, tests it, and shows what it detects in the samples. Installs what is
# missing: Emscripten is a large download (1 GB installed).
. "$(dirname "$0")/../../Tools/setup.sh"
need cmake g++ make libgtest-dev locales emscripten nodejs
targets=(JavaScriptPackage JavaScriptAnswers)
build build
ctest --test-dir build --output-on-failure --no-tests=error --tests-regex '^JavaScriptPackage$'

cat > build/javascript-samples.mjs <<'SHOW'
import { readFileSync } from 'node:fs';
import { load } from './javascript/node.js';
const { detect } = await load();
for (const name of process.argv.slice(2)) {
  const { encoding, margin } = detect(readFileSync(name));
  console.log(`${(encoding ?? 'undetected').padEnd(10)}  margin ${String(margin).padStart(3)}  ${name}`);
}
SHOW
node build/javascript-samples.mjs Test/Samples/*.*
