#!/usr/bin/env bash
# Builds the page on a bare Debian 12 and tests it in Chromium. Installs what is missing: Emscripten and Chromium are large
# downloads. Screenshots are left in build/web-test/screenshots.
. "$(dirname "$0")/../Tools/setup.sh"
need cmake g++ make libgtest-dev locales emscripten nodejs chromium chromium-driver python3-selenium fonts-noto-cjk
targets=(WebPage)
build build
ctest --test-dir build --output-on-failure --no-tests=error --tests-regex '^WebPage$'
echo "Open build/web/codetrans.html in a browser. Screenshots: build/web-test/screenshots"
