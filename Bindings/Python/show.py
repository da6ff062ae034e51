"""Shows the encoding of each file and its first line: show.py FILE..."""
import os
import sys

import codetrans

for path in sys.argv[1:]:
    found = codetrans.detect_file(path)
    line = '(not detected)'
    if found.encoding is not None:
        with codetrans.open(path, errors='replace') as text:
            line = text.readline(60).rstrip()
    print(f'{os.path.basename(path):24} {found.encoding!s:10} {line}')
