#!/usr/bin/env python3
"""Compares the Python package with the other detectors that Python has: how often each is right, and how long it takes.

    compare.py TEXTS [--count N] [--library build/libCodeTrans.so]

TEXTS is a folder that Bench/Detection/fetch-judge-texts wrote: its folder "choose" or "final". N texts are drawn for each row
(2000); the same N gives the same texts. With --library, the package's answers are compared with those of TQ_CodeDetect.
Each detector is told that the text is Chinese, if it can be told, and is left out if it is not installed."""
import argparse
import ctypes
import os
import random
import statistics
import time
from collections import defaultdict
from pathlib import Path

import codetrans

ENCODINGS = {'GBK': 'gbk', 'Big5': 'big5', 'UTF-8': 'utf-8', 'UTF-16LE': 'utf-16-le'}
LENGTHS = (2, 4, 8, 16, 64)  # characters
SIZES = {'64 B': 64, '1 KB': 1024, '1 MB': 1 << 20}


def family(name):
    """One of ENCODINGS, or None, for the name that a detector gives. ASCII is a part of them all and counts as GBK."""
    name = (name or '').lower().replace('_', '-')
    if name.startswith(('gb', 'hz', 'cp936')) or name in ('ascii', 'us-ascii', 'euc-cn'):
        return 'GBK'
    if name.startswith('big5') or name == 'cp950':
        return 'Big5'
    if name in ('utf-8', 'utf-8-sig'):
        return 'UTF-8'
    return 'UTF-16LE' if name in ('utf-16le', 'utf-16-le', 'utf-16') else None


def detectors():
    """The function of each detector from bytes to a name."""
    found = {'codetrans': lambda data: codetrans.detect(data).encoding}
    try:
        from chardet.enums import LanguageFilter
        from chardet.universaldetector import UniversalDetector

        def chardet(data):
            detector = UniversalDetector(lang_filter=LanguageFilter.CHINESE)
            detector.feed(data)
            return detector.close()['encoding']

        found['chardet'] = chardet
    except ImportError:
        print('no chardet')
    try:
        import charset_normalizer

        chinese = ['ascii', 'gb18030', 'big5', 'utf_8', 'utf_16_le']

        def normalizer(data):
            best = charset_normalizer.from_bytes(data, cp_isolation=chinese).best()
            return best and best.encoding

        found['charset-normalizer'] = normalizer
    except ImportError:
        print('no charset-normalizer')
    try:
        import icu

        def icu_best_chinese(data):
            names = [match.getName() for match in icu.CharsetDetector(data).detectAll()]
            return next(filter(family, names), None)

        found['ICU'] = icu_best_chinese
    except ImportError:
        print('no ICU')
    return found


def is_hanzi(character):
    return '\u4e00' <= character <= '\u9fff'


def encodable(text, encoding):
    try:
        return text.encode(encoding)
    except UnicodeEncodeError:
        return None


def running_text(folder):
    """The paragraphs of each script."""
    return {
        script: '\n'.join(path.read_text('utf-8') for path in sorted((folder / 'windows' / script).glob('*.txt')))
        for script in ('hans', 'hant')
    }


def draw_windows(texts, encoding, length, count, draw):
    """Pieces of running text, at least half of which are hanzi. Only traditional text is in Big5."""
    scripts = ['hant'] if encoding == 'Big5' else ['hans', 'hant']
    pieces = []
    while len(pieces) < count:
        text = texts[scripts[len(pieces) % len(scripts)]]
        start = draw.randrange(len(text) - length)
        window = text[start:start + length]
        data = encodable(window, ENCODINGS[encoding])
        if data and 2 * sum(map(is_hanzi, window)) >= length:
            pieces.append(data)
    return pieces


def draw_lines(folder, count, draw):
    lines = [line for path in sorted((folder / 'world/lines').glob('*.txt')) for line in path.read_bytes().splitlines()]
    return draw.sample([line for line in lines if not line.isascii()], count)


def draw_files(folder, name, count, draw):
    paths = sorted(path for path in (folder / 'files' / name).rglob('*') if path.is_file() and path.stat().st_size < 1 << 16)
    return [path.read_bytes() for path in draw.sample(paths, min(count // 10, len(paths)))]


def samples(folder, count):
    """Rows of (what, encoding, texts)."""
    draw = random.Random(1)
    texts = running_text(folder)
    for length in LENGTHS:
        for encoding in ENCODINGS:
            yield f'{length} characters', encoding, draw_windows(texts, encoding, length, count, draw)
    for encoding, name in zip(ENCODINGS, ('gbk', 'big5', 'utf8', 'utf16')):
        yield 'whole files', encoding, draw_files(folder, name, count, draw)
    yield 'lines in other languages', 'UTF-8', draw_lines(folder, count, draw)


def print_table(columns, rows):
    print('| | ' + ' | '.join(columns) + ' |\n|---|' + '---|' * len(columns))
    for name, cells in rows:
        print(f'| {name} | ' + ' | '.join(cells) + ' |', flush=True)
    print()


def accuracy_rows(rows, found):
    for what, encoding, texts in rows:
        right = [sum(family(detect(data)) == encoding for data in texts) for detect in found.values()]
        yield f'{what}, {encoding} ({len(texts)})', [f'{100 * n / len(texts):.1f} %' for n in right]


def seconds(detect, texts):
    """The median time of a call, each on the next text: of seven runs, or of as many as a second has, three at least."""
    runs, started = [], time.perf_counter()
    while len(runs) < 3 or (len(runs) < 7 and time.perf_counter() - started < 1):
        begun = time.perf_counter()
        for data in texts:
            detect(data)
        runs.append((time.perf_counter() - begun) / len(texts))
    return statistics.median(runs)


def shown(duration):
    for unit, size in (('s', 1), ('ms', 1e-3), ('µs', 1e-6)):
        if duration >= size:
            return f'{duration / size:.3g} {unit}'
    return f'{duration * 1e9:.0f} ns'


def speed_rows(texts, found):
    for label, size in SIZES.items():
        for encoding, codec in ENCODINGS.items():
            data = texts['hant' if encoding == 'Big5' else 'hans'].encode(codec, 'ignore')
            pieces = [data[at:at + size].ljust(size, b' ') for at in range(0, min(len(data), 200 * size), size)]
            few = pieces[:1] if size > 4096 else pieces
            times = []
            for name, detect in found.items():
                times.append(seconds(codetrans.detect if name == 'codetrans' else detect, few))
            yield f'{label}, {encoding}', [shown(times[0])] + [f'{shown(t)} (× {t / times[0]:,.0f})' for t in times[1:]]


def print_differences(path, rows):
    """Compares with the library on every text that was drawn."""
    library = ctypes.CDLL(os.path.abspath(path))
    library.TQ_CodeDetect.argtypes = [ctypes.c_char_p, ctypes.c_size_t]
    if library.TQ_Init(os.fsencode(os.path.dirname(os.path.abspath(path))), None) != 1:
        raise SystemExit('no model beside the library')
    codes = {0: None, 1: 'UTF-8', 2: 'GBK', 3: 'Big5', 8: 'UTF-16LE'}
    tally = defaultdict(int)
    for _, _, texts in rows:
        for data in texts:
            tally[family(codetrans.detect(data).encoding) == codes[library.TQ_CodeDetect(data, len(data))]] += 1
    print(f'{tally[True] + tally[False]:,} texts: {tally[False]} answers differ from those of the library')


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument('texts', type=Path)
    parser.add_argument('--count', type=int, default=2000)
    parser.add_argument('--library')
    options = parser.parse_args()
    found = detectors()
    rows = list(samples(options.texts, options.count))
    print_table(found, accuracy_rows(rows, found))
    print_table(found, speed_rows(running_text(options.texts), found))
    if options.library:
        print_differences(options.library, rows)


if __name__ == '__main__':
    main()
