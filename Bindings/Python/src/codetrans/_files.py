"""Files: their encoding, and reading them as text."""
import codecs
import io
import mmap
import os
from typing import Optional, Tuple, Union

from ._codecs import codec_name
from ._engine import Detection, detect
from ._undetected import UndetectedError

Path = Union[str, bytes, 'os.PathLike[str]', 'os.PathLike[bytes]']

# The byte-order mark of an encoding, and the codec that takes it away, also after a seek to the start.
_MARKED = {'utf-8': (codecs.BOM_UTF8, 'utf-8-sig'), 'utf-16-le': (codecs.BOM_UTF16_LE, 'utf-16')}


def _detect_stream(file: io.BufferedReader) -> Tuple[Detection, io.BufferedReader]:
    """What is in the file, and the file, or what was read from it if it is one that can be read only once."""
    try:
        with mmap.mmap(file.fileno(), 0, access=mmap.ACCESS_READ) as content:
            return detect(content), file
    except (ValueError, OSError):  # empty, or no regular file
        with file:
            data = file.read()
        return detect(data), io.BufferedReader(io.BytesIO(data))  # type: ignore[arg-type] # read-only, unlike a BytesIO


def detect_file(path: Path) -> Detection:
    """Detect the encoding of a file, which is mapped into memory: only what is needed to decide is read.

    The file must not be cut short meanwhile. Raise OSError if it cannot be read."""
    with io.open(path, 'rb') as file:
        return _detect_stream(file)[0]


def open(
    path: Path, mode: str = 'r', encoding: Optional[str] = None, errors: Optional[str] = None, newline: Optional[str] = None
) -> io.TextIOWrapper:
    """Open a text file for reading, as the built-in open does, with the encoding that the whole file speaks for.

    A byte-order mark is not part of the text. `encoding` is detected if it is None, else taken as by `decode`. `errors`
    and `newline` are those of the built-in open. `mode` is 'r' or 'rt': for anything else, use the built-in open.

    Raise UndetectedError if no encoding was detected, and what the built-in open raises."""
    if mode not in ('r', 'rt'):
        raise ValueError(f"mode must be 'r' or 'rt', not {mode!r}; the built-in open writes files and reads bytes")
    file = io.open(path, 'rb')
    try:
        if encoding is None:
            detection, file = _detect_stream(file)
            if detection.encoding is None:
                raise UndetectedError(f'the encoding could not be detected: {os.fsdecode(path)!r}')
            encoding = detection.encoding
        name = codec_name(encoding)
        if name in _MARKED and file.peek(3).startswith(_MARKED[name][0]):
            name = _MARKED[name][1]
        return io.TextIOWrapper(file, name, errors, newline)
    except BaseException:
        file.close()
        raise
