#!/usr/bin/env python3
"""Detects the encoding of standard input and writes the text in UTF-8 to standard output, with the library and ctypes:

    ./with_ctypes.py /usr/share/CodeTrans < old.txt

The first argument is the folder that contains Data/CodeTrans.model. The environment variable CODETRANS_LIBRARY is the path
of the library, if the system does not find it."""
import ctypes
import os
import sys

ENCODINGS = {1: 'UTF-8', 2: 'GBK', 3: 'Big5', 8: 'UTF-16LE'}
library = ctypes.CDLL(os.environ.get('CODETRANS_LIBRARY', 'libCodeTrans.so.1'))
library.TQ_CodeDetect.argtypes = [ctypes.c_char_p, ctypes.c_size_t]
library.TQ_ToUnicode.argtypes = [ctypes.c_char_p, ctypes.c_size_t, ctypes.c_char_p, ctypes.c_size_t, ctypes.c_int]
library.TQ_ToUnicode.restype = ctypes.c_size_t
library.TQ_GetLastErrorMsg.restype = ctypes.c_char_p


def detect(text):
    """Returns the name of the encoding of some bytes, or None."""
    return ENCODINGS.get(library.TQ_CodeDetect(text, len(text)))


def decode(text, encoding):
    """Decodes bytes to str: GBK and Big5 with the tables of the library, other encodings with Python."""
    if encoding in ('UTF-8', 'UTF-16LE'):
        return text.decode(encoding)
    code = {name: code for code, name in ENCODINGS.items()}[encoding]
    units = ctypes.create_string_buffer(2 * len(text) or 1)
    size = library.TQ_ToUnicode(text, len(text), units, len(units), code)
    return units.raw[:size].decode('UTF-16LE')


if __name__ == '__main__':
    if library.TQ_Init(os.fsencode(sys.argv[1]), None) != 1:
        sys.exit(library.TQ_GetLastErrorMsg().decode(errors='replace'))
    content = sys.stdin.buffer.read()
    sys.stdout.buffer.write(decode(content, detect(content) or sys.exit('the encoding could not be detected')).encode())
