"""Files that are no text, by kind: programs, pictures with flat colours, sound, tables of compiled catalogues,
databases, fonts, archives. Raw bytes in .bin files; each takes a piece of many files rather than one file whole."""
import collections
import os
import random
import sqlite3
import subprocess
import tempfile

from Texts import packages

LIMIT = 600_000  # bytes of a kind
KINDS = "programs bitmaps sound catalogues databases fonts archives".split()


def pieces(paths, size, skip=0, limit=LIMIT):
    """`size` bytes of each file behind its first `skip`, of files chosen with a fixed seed, up to `limit` in all."""
    paths = list(paths)
    random.Random(len(paths)).shuffle(paths)
    out = b""
    for path in paths:
        if len(out) < limit:
            with open(path, "rb") as file:
                file.seek(skip)
                out += file.read(size)
    return out[:limit]


def programs(paths):
    """ELF files, from their middle: code, tables and strings."""
    elf = []
    for path in paths:
        with open(path, "rb") as file:
            if file.read(4) == b"\x7fELF":
                elf.append(path)
    blocks = b""
    for path in elf[:60]:
        with open(path, "rb") as file:
            for part in range(8):
                file.seek(os.path.getsize(path) * part // 8)
                blocks += file.read(4096)
    return blocks[:LIMIT]


def pictures(paths):
    """PNG pictures, unpacked: Windows bitmaps and icons, portable pixmaps, Targa."""
    paths = list(paths)
    random.Random(len(paths)).shuffle(paths)
    found = collections.defaultdict(bytes)
    formats = {"bmp": ["ppmtobmp"], "bmp-palette": ["sh", "-c", "pnmquant 200 | ppmtobmp"], "tga": ["ppmtotga", "-rgb"],
               "ppm": ["cat"], "icon": ["sh", "-c", "pnmscale -xysize 32 32 | pnmquant 16 | ppmtowinicon"]}
    for path in paths:
        if min(map(len, (found[name] for name in formats))) > LIMIT // 5:
            break
        try:
            plain = packages.run(["pngtopnm", "-mix", "-background", "white", path], stderr=subprocess.DEVNULL)
            for name, command in formats.items():
                found[name] += packages.run(command, input=plain, stderr=subprocess.DEVNULL)[:20_000]
        except subprocess.CalledProcessError:  # a picture that the tools cannot read
            continue
    return {name: data[:LIMIT // 5] for name, data in found.items()}


def sound(paths):
    """Sound as samples of 16 and of 8 bits, without the silence at the ends of a file."""
    wide, narrow = b"", b""
    for path in paths:
        share = LIMIT // 2 // len(paths) + 1
        plain, trim = ["sox", "-V1", path, "-t", "raw", "-c", "1"], ["-", "silence", "1", "0.1", "1%"]
        wide += packages.run(plain + ["-b", "16", "-e", "signed"] + trim)[:share]
        narrow += packages.run(plain + ["-r", "11025", "-b", "8", "-e", "unsigned"] + trim)[:share]
    return {"pcm-16": wide, "pcm-8": narrow}


def catalogue_tables(paths):
    """What stands before the first text of a compiled catalogue: lengths, places and hashes."""
    out = b""
    paths = list(paths)
    random.Random(len(paths)).shuffle(paths)
    for path in paths:
        data = packages.read(path)
        order = "little" if data[:4] == b"\xde\x12\x04\x95" else "big"
        first = int.from_bytes(data[int.from_bytes(data[12:16], order) + 4:][:4], order)
        if len(out) < LIMIT:
            out += data[:min(first, 12_000)]
    return out[:LIMIT]


def made_database(words):
    """A database as SQLite writes it, of words, numbers and measures."""
    with tempfile.TemporaryDirectory() as folder:
        base = sqlite3.connect(f"{folder}/lite")
        base.execute("create table entry (id integer primary key, word text, weight real, stamp integer, data blob)")
        base.execute("create index by_weight on entry (weight)")
        draw = random.Random(5)
        rows = ((word, draw.random(), draw.randrange(1 << 40), draw.randbytes(draw.randrange(20))) for word in words)
        base.executemany("insert into entry (word, weight, stamp, data) values (?, ?, ?, ?)", rows)
        base.commit()
        base.close()
        return packages.read(f"{folder}/lite")[:LIMIT // 3]


def write(folder, kinds):
    """Writes {kind: {source: bytes}} as FOLDER/text/KIND/SOURCE.bin; gives a row for each."""
    rows = []
    for kind, sources in kinds.items():
        for source, data in sources.items():
            packages.put(f"{folder}/text/{kind}/{source}.bin", data)
            rows.append((kind, source, len(data)))
    return rows


PACKAGES = ("alsa-utils sound-icons tuxpaint-data calligra-data libmagic-mgc tzdata fonts-dejavu-core "
            "xfonts-base").split()


def collect(folder, text_packages):
    """All kinds, from `text_packages`, which the texts for counting come from, and PACKAGES."""
    deb = f"{folder}/deb"

    def found(*patterns):
        return packages.files(deb, *(f"{name}/{pattern}" for pattern in patterns for name in text_packages + PACKAGES))
    words = list(packages.word_lines(folder, "de"))[:6000]
    bitmap_fonts = b"".join(packages.read(path)[:12_000] for path in found("**/*.pcf.gz")[::3])
    debs = [path for name in text_packages for path in packages.files(deb, f"{name}_*.deb")]
    kinds = {
        "programs": {"elf": programs(found("usr/bin/*", "bin/*", "usr/lib/**/*.so*"))},
        "bitmaps": pictures(found("**/*.png")),
        "sound": sound(found("**/*.wav")),
        "catalogues": {"tables": catalogue_tables(found("usr/share/locale/*/LC_MESSAGES/*.mo"))},
        "databases": {"sqlite": made_database(words), "magic": pieces(found("**/*.mgc"), LIMIT // 3),
                      "zones": pieces(found("usr/share/zoneinfo/**/*"), 2000, 44, LIMIT // 6)},
        "fonts": {"truetype": pieces(found("**/*.ttf"), 60_000, 20_000, LIMIT // 2),
                  "bitmap": bitmap_fonts[:LIMIT // 2]},
        "archives": {"gzip": pieces(found("**/*.[1-8].gz"), 3000, 0, LIMIT // 2),
                     "deb": pieces(debs, 3000, 1000, LIMIT // 4),
                     "png": pieces(found("**/*.png"), 2000, 0, LIMIT // 4)},
    }
    return write(folder, kinds)
