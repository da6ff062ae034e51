"""Detects the encoding of Chinese text (GBK, GB18030, Big5, UTF-8, UTF-16LE, ASCII) and decodes it.

    detect(data)       the encoding of a buffer
    detect_file(path)  the encoding of a file
    decode(data)       a buffer as str
    open(path)         a text file, for reading

All functions may be called from any number of threads. Importing the package writes no file and does not change the
locale."""
from typing import TYPE_CHECKING, Optional

from ._codecs import codec_name
from ._engine import ENOUGH_MARGIN, Detection, detect
from ._files import detect_file, open
from ._undetected import UndetectedError

if TYPE_CHECKING:
    from _typeshed import ReadableBuffer

__all__ = ['ENOUGH_MARGIN', 'Detection', 'UndetectedError', 'decode', 'detect', 'detect_file', 'open']


def decode(data: 'ReadableBuffer', encoding: Optional[str] = None, errors: str = 'strict') -> str:
    """Decode a buffer, without its byte-order mark.

    `encoding` is detected if it is None. GBK and Big5, under all names that Python has for them and their extensions, are
    decoded by the tables of the library; any other encoding by Python. `errors` is the name of an error handler, as for
    bytes.decode.

    Raise UndetectedError if no encoding was detected, UnicodeDecodeError (by 'strict') if bytes are invalid in the
    encoding, LookupError if there is no encoding or error handler of this name."""
    if encoding is None:
        encoding = detect(data).encoding
        if encoding is None:
            raise UndetectedError('the encoding could not be detected')
    name = codec_name(encoding)
    text = str(data, name, errors)
    return text[1:] if name in ('utf-8', 'utf-16-le') and text.startswith('\ufeff') else text
