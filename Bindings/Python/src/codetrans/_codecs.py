"""The codecs codetrans-gbk and codetrans-big5, which decode by the tables of the library. They do not encode."""
import codecs
from typing import TYPE_CHECKING, Callable, NoReturn, Optional, Tuple

from . import _engine

if TYPE_CHECKING:
    from _typeshed import ReadableBuffer

    Decoder = Callable[[ReadableBuffer, Optional[str], bool], Tuple[str, int]]

# The codecs of Python in whose place the tables are used.
FAMILIES = {
    'gb2312': 'codetrans-gbk',
    'gbk': 'codetrans-gbk',
    'gb18030': 'codetrans-gbk',
    'big5': 'codetrans-big5',
    'big5hkscs': 'codetrans-big5',
    'cp950': 'codetrans-big5',
}


def codec_name(encoding: str) -> str:
    """The codec that decodes an encoding. Raise LookupError if there is none."""
    name = codecs.lookup(encoding).name
    return FAMILIES.get(name, name)


def _codec(name: str, decoder: 'Decoder') -> codecs.CodecInfo:
    def encode(input: str, errors: str = 'strict') -> NoReturn:
        raise NotImplementedError(f'{name} only decodes')

    def decode(input: 'ReadableBuffer', errors: str = 'strict') -> Tuple[str, int]:
        return decoder(input, errors, True)

    class IncrementalDecoder(codecs.BufferedIncrementalDecoder):
        def _buffer_decode(self, input: 'ReadableBuffer', errors: str, final: bool) -> Tuple[str, int]:
            return decoder(input, errors, final)

    class StreamReader(codecs.StreamReader):
        def decode(self, input: 'ReadableBuffer', errors: str = 'strict') -> Tuple[str, int]:
            return decoder(input, errors, False)

    return codecs.CodecInfo(encode, decode, StreamReader, incrementaldecoder=IncrementalDecoder, name=name)


_CODECS = {
    'codetrans_gbk': _codec('codetrans-gbk', _engine.gbk_decode),
    'codetrans_big5': _codec('codetrans-big5', _engine.big5_decode),
}


def _find(name: str) -> Optional[codecs.CodecInfo]:
    return _CODECS.get(name.replace('-', '_'))


codecs.register(_find)
