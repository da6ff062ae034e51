"""What is not Chinese for the judge: ASCII, and binary files of seven kinds."""
import base64
import json
import zlib

from Texts import binaries, packages
from Texts.packages import files, put, read

from JudgeTexts.world import PROGRAMS

BINARIES = {"choose": "python3.11-minimal sound-theme-freedesktop fonts-liberation xfonts-75dpi ncurses-term".split(),
            "former": "tcl8.6 libtcl8.6 sqlite3 gnome-audio fonts-freefont-ttf xfonts-100dpi libc-bin "
                     "gnome-icon-theme".split(),
            "final": "sox gdb perl-base fonts-linuxlibertine locales oxygen-icon-theme oxygen-sounds "
                     "xfonts-75dpi-transcoded".split()}


def ascii_kinds(folder):
    """ascii/KIND.txt, a third of each in every part."""
    english = b"\n".join(read(path) for path in files("/usr/share", "common-licenses/*")[:8])
    code = b"\n".join(read(path) for path in files(f"{folder}/npm", "lodash/package/*.js")[:200])
    table = b"\n".join(b"%d,%d.%02d,item %d,2023-%02d-%02d" %
                       (i, i * 7 % 997, i % 100, i * i % 77, i % 12 + 1, i % 28 + 1) for i in range(20000))
    log = b"\n".join(b"2023-05-%02d %02d:%02d:%02d host daemon[%d]: request /p/%x?id=%d took %d ms" %
                     (i % 28 + 1, i % 24, i % 60, i * 7 % 60, i, i * 7919, i, i % 313) for i in range(9000))
    packed = zlib.compress(code)
    package = json.loads(read(f"{folder}/npm/lodash/package/package.json"))
    kinds = {"english": english, "code": code, "csv": table, "log": log, "base64": base64.encodebytes(packed),
             "hex": packed.hex().encode(),
             "json": json.dumps(package | {"k": [[i, str(i * 3)] for i in range(9000)]}).encode()}
    for kind, data in kinds.items():
        data = bytes(byte for byte in data if byte < 0x80)[:400_000]
        for number, part in enumerate(BINARIES):
            put(f"{folder}/{part}/ascii/{kind}.txt", data[len(data) * number // 3:len(data) * (number + 1) // 3])


def binary_kinds(folder, part):
    """binary/KIND/SOURCE.bin."""
    names = PROGRAMS[part] + BINARIES[part]

    def found(*patterns):
        return files(f"{folder}/deb", *(f"{name}/{pattern}" for pattern in patterns for name in names))
    words = read(f"{folder}/{part}/world/lines/de.txt").decode().split("\n")
    limit = binaries.LIMIT
    tables = {"terminals": binaries.pieces(found("usr/share/terminfo/**/*"), 3000, 0, limit // 3),
              "locale": binaries.pieces(found("usr/lib/locale/**/LC_CTYPE"), limit // 3)}
    fonts = b"".join(read(path)[:12_000] for path in found("**/*.pcf.gz")[::3])
    debs = [path for name in names for path in files(f"{folder}/deb", f"{name}_*.deb")]
    kinds = {"programs": {"elf": binaries.programs(found("usr/bin/*", "usr/lib/**/*.so*"))},
             "bitmaps": binaries.pictures(found("**/*.png")),
             "sound": binaries.sound(found("**/*.wav", "**/*.og[ag]")),
             "catalogues": {"tables": binaries.catalogue_tables(found("usr/share/locale/*/LC_MESSAGES/*.mo"))},
             "databases": {"sqlite": binaries.made_database(words[:6000]), **tables},
             "fonts": {"outlines": binaries.pieces(found("**/*.[to]tf"), 60_000, 20_000, limit // 2),
                       "bitmap": fonts[:limit // 2]},
             "archives": {"gzip": binaries.pieces(found("**/*.gz"), 3000, 0, limit // 2),
                          "deb": binaries.pieces(debs, 3000, 1000, limit // 4),
                          "png": binaries.pieces(found("**/*.png"), 2000, 0, limit // 4)}}
    for kind, sources in kinds.items():
        for source, data in sources.items():
            if data:
                put(f"{folder}/{part}/binary/{kind}/{source}.bin", data)
    for kind, paths in {"programs": found("usr/bin/*", "usr/lib/**/*.so*"), "bitmaps": found("**/*.png"),
                        "fonts": found("**/*.[to]tf"), "catalogues": found("usr/share/locale/*/LC_MESSAGES/*.mo"),
                        "sound": found("**/*.wav", "**/*.og[ag]"), "archives": found("**/*.gz")}.items():
        for number, path in enumerate(paths[::max(1, len(paths) // 40)]):
            put(f"{folder}/{part}/foreign/files/{kind}/{number:03}", read_raw(path)[:1_000_000])


def read_raw(path):
    with open(path, "rb") as file:
        return file.read()


def collect(folder):
    packages.unpack_debian(folder, sum(BINARIES.values(), []))
    packages.unpack_npm(folder, ["lodash", "jschardet"])  # the second for the judge to compare with
    ascii_kinds(folder)
    for part in BINARIES:
        binary_kinds(folder, part)
