"""Prints the encodings of files: python -m codetrans [--json] FILE..."""
import argparse
import io
import json
import os
import sys
from typing import List, Optional

from . import detect, detect_file


def main(arguments: Optional[List[str]] = None) -> int:
    parser = argparse.ArgumentParser(
        prog='python -m codetrans',
        description='Print the name of each file, its encoding, and whether the answer is confident.',
        epilog='Status: 0 if the encodings of all files were detected, 1 if not, 2 if a file cannot be read.',
    )
    parser.add_argument('files', metavar='FILE', nargs='+', help='a file, or - for standard input')
    parser.add_argument('--json', action='store_true', help='print an object of JSON on each line')
    options = parser.parse_args(arguments)
    # File names may be in other encodings than the terminal; their bytes are printed as they are.
    if isinstance(sys.stdout, io.TextIOWrapper):
        sys.stdout.reconfigure(errors='surrogateescape')
    status = 0
    for name in options.files:
        try:
            found = detect(sys.stdin.buffer.read()) if name == '-' else detect_file(name)
        except OSError as error:
            print(f'{name}: {error.strerror}', file=sys.stderr)
            status = 2
            continue
        status = status or int(found.encoding is None)
        if options.json:
            values = {key: getattr(found, key) for key in ('encoding', 'bom', 'margin', 'confident')}
            print(json.dumps({'file': name, **values}))
        else:
            print(name, found.encoding or 'unknown', 'confident' if found.confident else 'not confident', sep='\t')
    return status


if __name__ == '__main__':
    try:
        code = main()
        sys.stdout.flush()
    except BrokenPipeError:  # the reader, such as head, has enough
        os.dup2(os.open(os.devnull, os.O_WRONLY), sys.stdout.fileno())  # for the flush at the end
        code = 1
    sys.exit(code)
