#!/bin/sh
# A large tree into UTF-8 with the usual Unix tools: batch.sh FOLDER [PROCESSES].
#
# `codetrans convert --recursive --jobs` does as much alone. This form is for those who choose the files otherwise: here,
# only text files whose names end in .txt and that are in GBK or Big5.
set -eu
folder=$1 processes=${2:-$(nproc)}

# What is there?
codetrans detect --quiet --recursive "$folder" | cut -f 2 | sort | uniq -c

# Sixteen files a call. xargs' status is 123 when a file was refused; each has been named by then.
find "$folder" -type f -name '*.txt' -print0 |
    xargs -0 -r -n 16 -P "$processes" sh -c '
        for file; do
            case $(codetrans detect --quiet "$file" | cut -f 2) in
                GBK | Big5) codetrans convert --quiet --to utf-8 --in-place --backup .orig "$file" || exit 1 ;;
            esac
        done' sh
