#!/bin/sh
# Converts files in a folder to UTF-8 with find and xargs. Usage: batch.sh FOLDER [PROCESSES]
#
# `codetrans convert --recursive --jobs N` converts a whole folder without such a script. Use this form to select the files
# yourself: here, only files whose names end in .txt and that are in GBK or Big5.
set -eu
folder=$1 processes=${2:-$(nproc)}

# How many files are in each encoding?
codetrans detect --quiet --recursive "$folder" | cut -f 2 | sort | uniq -c

# Sixteen files per call. If a file was refused, codetrans has reported it, and the status of xargs is 123.
find "$folder" -type f -name '*.txt' -print0 |
    xargs -0 -r -n 16 -P "$processes" sh -c '
        for file; do
            case $(codetrans detect --quiet "$file" | cut -f 2) in
                GBK | Big5) codetrans convert --quiet --to utf-8 --in-place --backup .orig "$file" || exit 1 ;;
            esac
        done' sh
