"""The package as its users call it. In the environment: CODETRANS_LIBRARY, the shared library, whose answers are the right
ones, and CODETRANS_SOURCES, the project's folder."""
import array
import codecs
import contextlib
import ctypes
import doctest
import io
import json
import mmap
import os
import pickle
import random
import resource
import struct
import subprocess
import sys
import tempfile
import threading
import unittest
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

import codetrans
from codetrans.__main__ import main

ROOT = Path(os.environ['CODETRANS_SOURCES'])
SAMPLES = {path.name: path.read_bytes() for path in sorted((ROOT / 'Test/Samples').iterdir())}
TABLE = 128 * 192
MODEL = (ROOT / 'Data/CodeTrans.model').read_bytes()
TABLES = {'gbk': struct.unpack_from(f'<{TABLE}H', MODEL), 'big5': struct.unpack_from(f'<{TABLE}H', MODEL, 2 * TABLE)}
RARE = b'\x81\x30\x81\x30\x95\x32\x82\x36\xa2\xe3'  # four bytes, four bytes beyond U+FFFF, a pair that GBK lacks
SEED = int(os.environ.get('CODETRANS_TEST_SEED', random.randrange(1 << 32)))


def entry(name, lead, trail):
    """The character of a pair in the model's table, or None."""
    first_high = 0x80 if name == 'gbk' else 0xA1
    if not (0x81 <= lead <= 0xFE and (0x40 <= trail <= 0x7E or first_high <= trail <= 0xFE)):
        return None
    unit = TABLES[name][(trail - 0x40) * 128 + (lead & 0x7F)]
    return None if unit == 0xFFFD else chr(unit)


def rare(data):
    with contextlib.suppress(UnicodeDecodeError):
        text = data.decode('gb18030')
        return text if len(text) == 1 else None


def reference(name, data, errors):
    """A plain decoder, character by character, and the places of the faults."""
    text, faults, at = [], [], 0
    while at < len(data):
        piece = data[at:]
        four = name == 'gbk' and len(piece) > 1 and 0x81 <= piece[0] <= 0xFE and 0x30 <= piece[1] <= 0x39
        if piece[0] < 0x80 or (piece[0] == 0x80 and name == 'gbk'):
            found, length = chr(piece[0]).replace('\x80', '€'), 1
        elif len(piece) > 1:
            length = 4 if four else 2
            found = entry(name, piece[0], piece[1]) or (name == 'gbk' and rare(piece[:length])) or None
        else:
            found = None
        if found is None:
            length = 2 if len(piece) > 1 and 0x81 <= piece[0] <= 0xFE and piece[1] >= 0x80 else 1
            faults.append((at, at + length))
            found, end = codecs.lookup_error(errors)(UnicodeDecodeError(name, data, at, at + length, 'bad'))
            length = end - at
        text.append(found)
        at += length
    return ''.join(text), faults


def faulty_texts(count):
    """Short texts of characters, halves of characters, ASCII and any bytes."""
    draw = random.Random(SEED)
    for _ in range(count):
        pieces = [b'\xd6\xd0', b'\xa4\xa4', b'a', b'7', b'\n', b'\x80', b'\xff', b'\xfd\xfe', RARE, RARE[:7], bytes(2)]
        pieces += [bytes(draw.randrange(256) for _ in range(3))]
        yield b''.join(draw.choices(pieces, k=draw.randrange(9)))


class Detection(unittest.TestCase):
    def test_is_exactly_the_library_s(self):
        library = ctypes.CDLL(os.environ['CODETRANS_LIBRARY'])
        library.TQ_CodeDetect.argtypes = [ctypes.c_char_p, ctypes.c_size_t]
        self.assertEqual(library.TQ_Init(os.fsencode(Path(os.environ['CODETRANS_LIBRARY']).parent), None), 1)
        names = {0: [None], 1: ['utf-8'], 2: ['gb18030', 'ascii'], 3: ['big5hkscs'], 8: ['utf-16-le']}
        draw, seen = random.Random(SEED), set()
        texts = [text[start:start + size] for text in SAMPLES.values() for start in (0, 1, 33) for size in (2, 5, 64, 9999)]
        texts += [mark + text for text in texts[:200] for mark in (codecs.BOM_UTF8, codecs.BOM_UTF16_LE)]
        texts += [bytes(draw.choices(range(256), k=draw.randrange(12))) for _ in range(3000)]
        # Behind the head that is read with the lock held, and across its end.
        texts += [b'x' * (65536 - cut) + SAMPLES['news-hant.big5'] + b'y' * 9 for cut in range(3)]
        for text in texts:
            found = codetrans.detect(text)
            self.assertIn(found.encoding, names[library.TQ_CodeDetect(text, len(text))], f'{text!r}, seed {SEED}')
            self.assertEqual(found.encoding == 'ascii', found.encoding in names[2] and max(text, default=0) < 0x80)
            mark = {'utf-8': codecs.BOM_UTF8, 'utf-16-le': codecs.BOM_UTF16_LE}.get(found.encoding)
            self.assertEqual(found.bom, mark is not None and text.startswith(mark))
            self.assertEqual(found.confident, found.margin >= codetrans.ENOUGH_MARGIN or found.encoding == 'ascii')
            seen.add((found.encoding, found.bom, found.confident))
        self.assertGreaterEqual(len(seen), 10)

    def test_of_any_buffer_without_a_copy(self):
        text = SAMPLES['news-hans.gbk'] * (16 << 20 >> 12)
        right = codetrans.detect(text)
        with tempfile.TemporaryFile() as file:
            file.write(text)
            file.flush()
            with mmap.mmap(file.fileno(), 0) as mapped:
                before = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss
                for buffer in (bytearray(text), memoryview(text), array.array('B', text), mapped):
                    self.assertEqual(codetrans.detect(buffer), right)
                self.assertLess(resource.getrusage(resource.RUSAGE_SELF).ru_maxrss - before, 3 * len(text) >> 10)
        growing = bytearray(text)
        codetrans.detect(growing)
        growing.append(0)  # a buffer that is still held cannot grow
        self.assertEqual(codetrans.decode(memoryview(b'\xd6\xd0a')[:2], 'gbk'), '中')
        for wrong, error in (('text', TypeError), (None, TypeError), (memoryview(text)[::2], BufferError)):
            self.assertRaises(error, codetrans.detect, wrong)
            self.assertRaises(error, codetrans.decode, wrong)
            self.assertRaises(TypeError, codetrans.decode, wrong, 'gbk')

    def test_result_is_a_value(self):
        found = codetrans.detect(SAMPLES['news-hant.big5'])
        self.assertEqual(repr(found), "Detection(encoding='big5hkscs', bom=False, margin=100)")
        self.assertEqual([found], [pickle.loads(pickle.dumps(found))])
        self.assertEqual(len({found, codetrans.Detection('big5hkscs', False, 100), codetrans.Detection(None, False, 0)}), 2)
        self.assertNotEqual(found, codetrans.Detection('big5hkscs', True, 100))
        self.assertRaises(AttributeError, setattr, found, 'margin', 1)
        for arguments in (('gbk', False, 0), ('utf-8', False, 101), ('utf-8', False, -1)):
            self.assertRaises(ValueError, codetrans.Detection, *arguments)

    def test_in_many_threads(self):
        texts = [text for text in SAMPLES.values() if codetrans.detect(text).encoding] * 9
        texts += [b'plain ' * 50000, SAMPLES['news-hans.gbk'] * 300]

        def work(text):
            return codetrans.detect(text), codetrans.decode(text)

        right = list(map(work, texts))
        with ThreadPoolExecutor(8) as pool:
            self.assertEqual(list(pool.map(work, texts * 4)), right * 4)

    def test_lets_other_threads_run(self):
        text, ticks, stop = b'plain ' * (32 << 20), [], threading.Event()
        ticker = threading.Thread(target=lambda: [ticks.append(0) for _ in iter(lambda: stop.wait(0.001), True)])
        ticker.start()
        codetrans.detect(text)
        stop.set()
        ticker.join()
        self.assertGreater(len(ticks), 3)


class Decoding(unittest.TestCase):
    def test_of_every_pair(self):
        differences = {}
        for name, rivals in (('gbk', ['gbk', 'gb18030']), ('big5', ['big5hkscs', 'cp950', 'big5'])):
            for lead in range(0x80, 0x100):
                for trail in range(0x100):
                    pair = bytes((lead, trail))
                    right = reference(name, pair, 'replace')[0]
                    self.assertEqual(codetrans.decode(pair, name, 'replace'), right, pair)
                    for rival in rivals if entry(name, lead, trail) else []:
                        differences[rival] = differences.get(rival, 0) + (pair.decode(rival, 'replace') != right)
        self.assertEqual(differences, {'gbk': 0, 'gb18030': 0, 'big5hkscs': 68, 'cp950': 3257, 'big5': 3310})

    def test_of_all_of_unicode(self):
        everything = ''.join(map(chr, [*range(0xD800), *range(0xE000, 0x110000, 7)]))
        self.assertEqual(codetrans.decode(everything.encode('gb18030'), 'gb18030'), everything)

    def test_of_faulty_texts(self):
        handlers = ['replace', 'ignore', 'backslashreplace', 'surrogateescape']
        for data in faulty_texts(4000):
            for name in TABLES:
                for errors in handlers:
                    right, faults = reference(name, data, errors)
                    self.assertEqual(codetrans.decode(data, name, errors), right, f'{data!r}, {name}, seed {SEED}')
                    for whole in (True, False):
                        decoder = codecs.getincrementaldecoder('codetrans-' + name)(errors)
                        pieces = [data] if whole else [data[i:i + 1] for i in range(len(data))]
                        decoded = ''.join(map(decoder.decode, pieces)) + decoder.decode(b'', True)
                        self.assertEqual(decoded, right, f'{data!r}, {name}, seed {SEED}')
                if faults:
                    with self.assertRaises(UnicodeDecodeError) as caught:
                        codetrans.decode(bytearray(data), name)
                    error = caught.exception
                    self.assertEqual((error.object, error.start, error.end), (data, *faults[0]))

    def test_cut_character(self):
        incomplete = [b'\x81', b'\x81\x30', b'\x81\x30\x81']
        for data in incomplete + [b'\xff', b'\x81\x20', b'\x81\x30\xff', b'\x81\x30\x81\x81', b'\x81\x30\x81\x29']:
            with self.assertRaises(UnicodeDecodeError) as caught:
                codetrans.decode(data, 'gbk')
            reason = 'incomplete' if data in incomplete else 'illegal'
            self.assertEqual(caught.exception.reason, reason + ' multibyte sequence', data)
            decoder = codecs.getincrementaldecoder('codetrans-gbk')('replace')
            self.assertEqual(decoder.decode(data) == '', data in incomplete, data)  # waits for more, or does not

    def test_long_text_with_faults_across_pieces(self):
        for cut in range(3):
            data = b'x' * (65536 - cut) + b'\xd6\xd0' * 70000 + b'\xff' + RARE + b'\xd6'
            right = 'x' * (65536 - cut) + '中' * 70000 + '\ufffd' + RARE.decode('gb18030') + '\ufffd'
            self.assertEqual(codetrans.decode(data, 'gbk', 'replace'), right)

    def test_handlers(self):
        self.addCleanup(codecs.register_error, 'codetrans-test', codecs.strict_errors)
        for answer, right in (
            (lambda error: ('<\U0001F600>', error.end), 'a<\U0001F600>b'),
            (lambda error: ('-', -1), 'a-b'),
            (lambda error: ('-', 9), IndexError),
            (lambda error: ('-', -9), IndexError),
            (lambda error: (b'-', error.end), TypeError),
            (lambda error: None, TypeError),
            (lambda error: 1 // 0, ZeroDivisionError),
        ):
            codecs.register_error('codetrans-test', answer)
            if isinstance(right, str):
                self.assertEqual(codetrans.decode(b'a\xffb', 'big5', 'codetrans-test'), right)
            else:
                self.assertRaises(right, codetrans.decode, b'a\xffb', 'big5', 'codetrans-test')
        again = iter([('x' * 9, 0), ('', 3)])  # back to the start, then to the end
        codecs.register_error('codetrans-test', lambda error: next(again))
        self.assertEqual(codetrans.decode(b'ab\xff', 'gbk', 'codetrans-test'), 'ab' + 'x' * 9 + 'ab')
        self.assertRaises(LookupError, codetrans.decode, b'\xff', 'gbk', 'no-such-handler')
        self.assertRaises(LookupError, codetrans.decode, b'a', 'no-such-encoding')

    def test_by_detection(self):
        for name, data in SAMPLES.items():
            twin = SAMPLES.get(Path(name).stem + '.utf8')
            if twin is not None:
                self.assertEqual(codetrans.decode(data), twin.decode(), name)
                found = codetrans.detect(data)
                self.assertEqual(codetrans.decode(data, found.encoding), twin.decode(), name)
        text = '中文编码检测'
        self.assertEqual(codetrans.decode(text.encode('utf-8-sig')), text)
        self.assertEqual(codetrans.decode(codecs.BOM_UTF16_LE + text.encode('utf-16-le')), text)
        self.assertEqual((codetrans.decode(b''), codetrans.decode(b'', 'gbk')), ('', ''))
        self.assertRaises(codetrans.UndetectedError, codetrans.decode, SAMPLES['korean.euc-kr'])
        with self.assertRaises(UnicodeDecodeError) as caught:
            codetrans.decode(text.encode('utf-8-sig') + b'\xff')
        self.assertEqual(caught.exception.start, 21)
        self.assertRaises(UnicodeDecodeError, codetrans.decode, text.encode('utf-16-le') + b'-', 'utf-16-le')
        self.assertRaises(NotImplementedError, text.encode, 'codetrans-gbk')

    def test_leaves_no_memory_behind(self):
        faulty = b'\xd6\xd0\xff' * 20 + RARE

        def work():
            for _ in range(3000):
                codetrans.decode(faulty, 'gbk', 'replace')
                with contextlib.suppress(UnicodeDecodeError):
                    codetrans.decode(faulty, 'big5')
                codetrans.detect(faulty * 30)
            return resource.getrusage(resource.RUSAGE_SELF).ru_maxrss, sys.getrefcount(codetrans.detect(faulty).encoding)

        work()
        before = work()
        after = [work() for _ in range(3)][-1]
        self.assertLess(after[0] - before[0], 2048)
        self.assertEqual(after[1], before[1])


class Files(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def write(self, data, name='file'):
        (self.folder / name).write_bytes(data)
        return self.folder / name

    def test_open(self):
        lines = '第一行\r\n第二行€\n' * 5000
        for encoding in ('gb18030', 'utf-8', 'utf-8-sig', 'utf-16-le', 'utf-16', 'ascii', 'big5'):
            text = lines.replace('€', '') if encoding == 'big5' else 'plain\r\n' if encoding == 'ascii' else lines
            path = self.write(text.encode(encoding))
            with codetrans.open(str(path)) as file:
                self.assertEqual(file.readline(), text[:text.index('\r')] + '\n', encoding)
                place = file.tell()
                rest = file.read()
                file.seek(place)
                self.assertEqual(file.read(), rest)
                file.seek(0)
                self.assertEqual(file.read(), text.replace('\r\n', '\n'), encoding)
            with codetrans.open(path, newline='') as file:
                self.assertEqual(file.read(), text)
        for encoding in ('utf-8', 'utf-16-le'):  # a named encoding, with a mark and without
            for mark in ('\ufeff', ''):
                with codetrans.open(self.write(f'{mark}中文'.encode(encoding)), encoding=encoding) as file:
                    self.assertEqual(file.read(), '中文')
        path = self.write(b'\xd6\xd0\xff')
        with codetrans.open(path, encoding='gbk') as strict, codetrans.open(path, 'rt', 'gbk', 'replace') as lossy:
            self.assertRaises(UnicodeDecodeError, strict.read)
            self.assertEqual(lossy.read(), '中\ufffd')
        for mode in ('rb', 'w', 'r+', ''):
            self.assertRaises(ValueError, codetrans.open, path, mode)
        self.assertRaises(codetrans.UndetectedError, codetrans.open, self.write(SAMPLES['korean.euc-kr']))
        self.assertRaises(FileNotFoundError, codetrans.open, self.folder / 'none')
        self.assertEqual(codetrans.open(self.write(b'')).read(), '')

    def test_file_that_cannot_be_mapped(self):
        os.mkfifo(self.folder / 'pipe')
        for call in (lambda path: codetrans.open(path).read(), lambda path: codetrans.detect_file(path).encoding):
            writer = threading.Thread(target=self.write, args=(SAMPLES['title-hans.gbk'], 'pipe'))
            writer.start()
            self.assertIn(call(self.folder / 'pipe'), ('gb18030', SAMPLES['title-hans.utf8'].decode()))
            writer.join()

    def test_program(self):
        paths = [str(self.write(data, name)) for name, data in SAMPLES.items() if name.startswith('title')]
        nothing, korean = str(self.folder / 'none'), str(self.write(SAMPLES['korean.euc-kr'], 'korean'))
        for files, status in ((paths, 0), ([korean], 1), ([nothing, korean, *paths], 2)):
            with contextlib.redirect_stdout(io.StringIO()) as out, contextlib.redirect_stderr(io.StringIO()) as err:
                self.assertEqual(main(['--json', *files]), status)
            rows = list(map(json.loads, out.getvalue().splitlines()))
            self.assertEqual([row['file'] for row in rows], [file for file in files if file != nothing])
            self.assertEqual([row['encoding'] for row in rows], [codetrans.detect_file(row['file']).encoding for row in rows])
            self.assertEqual(nothing in err.getvalue(), status == 2)
        run = subprocess.run([sys.executable, '-m', 'codetrans', '-'], input=SAMPLES['news-hans.gbk'], stdout=subprocess.PIPE)
        self.assertEqual((run.stdout, run.returncode), (b'-\tgb18030\tconfident\n', 0))

    def test_program_with_a_file_name_in_gbk_and_a_reader_that_ends(self):
        name = os.fsencode(self.folder) + b'/\xce\xd2'
        with open(name, 'wb') as file:
            file.write(SAMPLES['news-hans.gbk'])
        command, environment = [sys.executable, '-m', 'codetrans'], {**os.environ, 'PYTHONIOENCODING': 'utf-8:strict'}
        run = subprocess.run([*command, name], env=environment, stdout=subprocess.PIPE)
        self.assertEqual((run.stdout, run.returncode), (name + b'\tgb18030\tconfident\n', 0))
        source, sink = os.pipe()
        os.close(source)
        run = subprocess.run([*command, name], stdout=sink, stderr=subprocess.PIPE)
        os.close(sink)
        self.assertEqual((run.stderr, run.returncode), (b'', 1))

    def test_import_leaves_locale_and_folders_alone(self):
        code = """import locale, os
before = locale.setlocale(locale.LC_ALL)
import codetrans
codetrans.decode(codetrans.decode(b'\\xd6\\xd0\\xce\\xc4' * 9).encode('gbk'))
assert locale.setlocale(locale.LC_ALL) == before, locale.setlocale(locale.LC_ALL)
"""
        environment = {**os.environ, 'HOME': str(self.folder), 'TMPDIR': str(self.folder)}
        subprocess.run([sys.executable, '-c', code], cwd=self.folder, env=environment, check=True)
        self.assertEqual(list(self.folder.iterdir()), [])

    def test_readme(self):
        self.addCleanup(os.chdir, os.getcwd())
        os.chdir(ROOT)
        readme = str(ROOT / 'Bindings/Python/README.md')
        failed, tried = doctest.testfile(readme, module_relative=False)
        self.assertEqual((failed, tried > 5), (0, True))


if __name__ == '__main__':
    unittest.main()
