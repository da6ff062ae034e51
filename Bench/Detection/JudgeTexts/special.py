"""Texts that are rare in running prose and are made for the judge with a fixed seed: ASCII with signs, Chinese with
characters beyond U+FFFF, Chinese with the forms that old East Asian standards brought to Unicode."""
import json
import random
import re
import unicodedata

from Texts.packages import files, put, read, unpack_npm

# What stands where in a line of ASCII: kind of sign, then the pieces with W for a word of the line.
SIGNS = {
    "rights": ["© 2024 W", "W® W", "W™", "W ℠"], "currency": ["€ 5", "£20", "¥ 300", "5 €", "₹ 90"],
    "law": ["§ 4", "§12 W", "¶ 3", "† W"], "measures": ["20 °C", "± 3", "5 µm", "3 × 4", "½ W", "10²", "90°", "¼"],
    "quotes": ["“W”", "‘W’", "W’s", "«W»", "„W“"], "dashes": ["W — W", "1–9", "W – W", "W…", "W—W"],
    "bullets": ["• W", "· W", "◦ W", "▪ W", "‣ W"], "arrows": ["W → W", "← W", "W ⇒ W", "↑", "W ↔ W"],
    "checks": ["✓ W", "✗ W", "✔", "★ W", "☐ W"],
    "letters": ["café", "naïve", "Müller", "señor", "façade", "Ångström", "Sørensen", "Straße", "Łódź", "résumé",
                "São", "Zoë", "über", "niño", "Çelik", "Dvořák"],
}
TONES = [chr(code) for code in range(0x1F3FB, 0x1F400)]
JOINED = ["👨‍👩‍👧", "👩‍💻", "🏳️‍🌈", "👨‍🚀", "👩‍🔬", "🧑‍🎓", "👩‍❤️‍👨", "🐻‍❄️", "👨‍👦", "🧙‍♂️"]
TONED = list("👍👋👌🙏👏💪🤝✋👆🙋")

# Cantonese words, and characters of names and places from the tables of standard characters, beyond U+FFFF.
CANTONESE = ("𠵱家 𨋢 𠺢 𡃁仔 𠹺 𠱁 𠱸 㩒𨋢掣 𧨾 𨂾 𢲸 𠝹 𥄫 𨃩 𩓥 𢯎 𠿪 𠺘 𡁻 𢳂 𦧺 𠼻 𡀝 𠺌 𠻹 𢱑 𢫏 𨳊 𪐀 𠸐 𢭃 𠶧 𠻺 "
             "𡅏 𦉘 𥇣 𨅝 𢟭 𪘲 𠳏 𢬿 𡲢 𤓓 𣲷 𢴈 𠽌 𠵇 𡃴 𠵼 𠶜 𢶍 𢺳 𠾼 𧕴").split()
NAMES = ("𠙶𠳐𡎚𡐓𣗋𣲗𣲘𣸣𤧛𤩽𤫉𥔲𥕢𥖨𥻗𦈡𦒍𦙶𦝼𦭜𦰡𧿹𨐈𨙸𨚕𨟠𨭉𨱇𨱏𨱑𨱔𨺙𩽾𩾃𩾌𪟝𪣻𪤗𪨰𪨶𪩘𪾢𫄧𫄨𫄷𫄸𫇭𫌀𫍣"
         "𫍯𫍲𫍽𫐄𫐐𫐓𫑡𫓧𫓯𫓶𫓹𫔍𫔎𫔶𫖮𫖯𫖳𫗧𫗴𫘜𫘝𫘦𫘧𫘨𫘪𫘬𫚕𫚖𫚭𫛭𫞩𫟅𫟦𫟹𫟼𫠆𫠊𫠜𫢸𫫇𫭟𫭢𫭼𫮃𫰛𫵷𫶇𫷷𫸩𬀩𬀪"
         "𬂩𬃊𬇕𬇙𬇹𬉼𬊈𬊤𬌗𬍛𬍡𬍤𬒈𬒔𬒗𬕂𬘓𬘘𬘡𬘩𬘫𬘬𬘭𬘯𬙂𬙊𬙋𬜬𬜯𬞟𬟁𬟽𬣙𬣞𬣡𬣳𬤇𬤊𬤝𬨂𬨎𬩽𬪩𬬩𬬭𬬮𬬱𬬸𬬹𬬻𬬿𬭁𬭊𬭎"
         "𬭚𬭛𬭤𬭩𬭬𬭯𬭳𬭶𬭸𬭼𬮱𬮿𬯀𬯎𬱖𬱟𬳵𬳶𬳽𬳿𬴂𬴃𬴊𬶋𬶍𬶏𬶐𬶟𬶠𬶨𬶭𬶮𬷕𬸘𬸚𬸣𬸦𬸪𬹼𬺈𬺓")
PUNCTUATION = "，、。；：？！（）｛｝〔〕＃＆＊＋－＜＞＝＄％＠"
SMALL = dict(zip(PUNCTUATION, "﹐﹑﹒﹔﹕﹖﹗﹙﹚﹛﹜﹝﹞﹟﹠﹡﹢﹣﹤﹥﹦﹩﹪﹫"))
VERTICAL = dict(zip("（）｛｝〔〕【】《》〈〉「」『』…—＿", "︵︶︷︸︹︺︻︼︽︾︿﹀﹁﹂﹃﹄︙︱︳"))
BOPOMOFO = [chr(code) for code in range(0x3105, 0x312A)]
TONE_MARKS = ["", "ˊ", "ˇ", "ˋ", "˙"]
NARROW = {unicodedata.normalize("NFKC", chr(code)): chr(code)
          for code in [*range(0xFF61, 0xFFA0), *range(0xFF01, 0xFF5F)]}
HAN_RUN = re.compile("[\u3400-\u9fff]{4,}")


def half(items, part):
    """Half of the items for "choose", the other for "former"; "final" has all, in texts of its own."""
    return items if part == "final" else items[part == "former"::2]


def sign(draw, part, kind, emoji):
    if kind == "emoji":
        return draw.choice(half(emoji, part))
    if kind == "emoji-joined":
        return draw.choice(half(JOINED, part))
    if kind == "emoji-toned":
        return draw.choice(half(TONED, part)) + draw.choice(TONES)
    return draw.choice(half(SIGNS[kind], part) if kind == "letters" else SIGNS[kind])


def signs(folder, part, lines):
    """signs/KIND.txt: pieces of ASCII lines with one to three signs of a kind between their words."""
    draw = random.Random(f"signs {part}")
    named = json.loads(read(files(f"{folder}/npm", "emojilib/**/*en*.json")[0]))
    emoji = sorted(text for text in named if len(text) <= 2)
    plain = [line.split() for line in lines if line.isascii() and len(line.split()) > 2]
    for kind in [*SIGNS, "emoji", "emoji-joined", "emoji-toned"]:
        made = []
        while len(made) < 600:
            words = draw.choice(plain)
            start = draw.randrange(len(words) - 1)
            words = words[start:start + draw.randint(2, 12)]
            for _ in range(draw.choice((1, 1, 1, 2, 3))):
                place = draw.randrange(len(words) + 1)
                words[place:place] = [sign(draw, part, kind, emoji).replace("W", draw.choice(words))]
            text = " ".join(words)
            if sum(c < "\x80" for c in text) >= 8:
                made.append(text)
        put(f"{folder}/{part}/signs/{kind}.txt", ("\n".join(made) + "\n").encode())


def inserted(draw, line, pieces, every=12):
    """The line with pieces among its hanzi, one for about `every` characters."""
    out, position = [], 0
    while position < len(line):
        step = draw.randint(2, 2 * every - 2)
        out += [line[position:position + step], draw.choice(pieces)]
        position += step
    return "".join(out)


def supplement(folder, part, hans, hant):
    """supplement/KIND.txt: Chinese lines with characters beyond U+FFFF."""
    draw = random.Random(f"supplement {part}")
    named = json.loads(read(files(f"{folder}/npm", "emojilib/**/*en*.json")[0]))
    emoji = half(sorted(text for text in named if any(c > "\uffff" for c in text)), part)
    texts = {"emoji": [inserted(draw, line, emoji) for line in hans[:1500]],
             "names": [inserted(draw, line, half(NAMES, part)) for line in hans[1500:3000]],
             "cantonese": [inserted(draw, line, half(CANTONESE, part)) for line in hant[:1500]],
             "found": [line for line in hans + hant if any(c > "\uffff" for c in line)]}
    for kind, lines in texts.items():
        put(f"{folder}/{part}/supplement/{kind}.txt", ("\n".join(lines) + "\n").encode())


def compatibility():
    """The ideographs of U+F900 to FAFF by the character that each stands for."""
    return {unicodedata.normalize("NFC", chr(code)): chr(code) for code in range(0xF900, 0xFB00)
            if unicodedata.normalize("NFC", chr(code)) != chr(code)}


def half_width(line):
    """Half-width kana for full-width ones, their marks of voice apart, and full-width ASCII for ASCII."""
    return "".join(NARROW.get(c, c) for c in unicodedata.normalize("NFD", line))


def syllable(draw):
    return "".join(draw.choice(BOPOMOFO) for _ in range(draw.randint(1, 3))) + draw.choice(TONE_MARKS)


def forms(folder, part, hant, japanese, korean):
    """forms/KIND.txt: Chinese lines with small and vertical forms, compatibility ideographs, bopomofo, kana, Hangul."""
    draw = random.Random(f"forms {part}")
    kana = [word for line in japanese for word in re.findall("[\u3041-\u30ff]{2,8}", line)]
    hangul = [word for line in korean for word in re.findall("[\uac00-\ud7a3]{1,6}", line)]
    same = compatibility()
    texts = {
        "small": ["".join(SMALL.get(c, c) for c in line) for line in hant],
        "vertical": ["".join(VERTICAL.get(c, c) for c in line) for line in hant],
        "compatibility": ["".join(same.get(c, c) for c in line) for line in hant],
        "half-width": [inserted(draw, line, [half_width(word) for word in kana[:400]]) for line in hant[:800]]
        + [half_width(line) for line in hant],
        "bopomofo": [inserted(draw, line, [f"（{syllable(draw)}）", syllable(draw), syllable(draw)])
                     for line in hant[:1500]],
        "kana": [inserted(draw, line, kana) for line in hant[:1500]],
        "hangul": [inserted(draw, line, hangul) for line in hant[:1500]],
    }
    for kind, lines in texts.items():
        changed = [line for line in lines if HAN_RUN.search(line)]
        put(f"{folder}/{part}/forms/{kind}.txt", ("\n".join(changed[:6000]) + "\n").encode())


def lines_of(folder, part, script):
    """Lines of running text of every kind, in turn."""
    draw = random.Random(f"lines {part}")
    lines = []
    for path in files(f"{folder}/{part}/windows/{script}", "*.txt"):
        text = [line for line in read(path).decode().split("\n") if len(line) > 7]
        lines += draw.sample(text, min(1500, len(text)))
    draw.shuffle(lines)
    return lines


def plain(data):
    return re.sub("<[^>]*>", "", data.decode("ascii", "ignore"))


def world_lines(folder, part, language):
    return read(f"{folder}/{part}/world/lines/{language}.txt").decode().split("\n")


def collect(folder):
    unpack_npm(folder, ["emojilib", "lodash"])
    english = {"choose": files("/usr/share", "common-licenses/*")[:8],
               "former": files(f"{folder}/deb", "vim-runtime/usr/share/vim/vim*/doc/*.txt")[:40],
               "final": files(f"{folder}/deb", "debian-handbook/usr/share/doc/**/en-US/**/*.html")[:40]}
    for part, paths in english.items():
        signs(folder, part, [line for path in paths for line in plain(read(path)).split("\n")])
        hans, hant = lines_of(folder, part, "hans"), lines_of(folder, part, "hant")
        supplement(folder, part, hans, hant)
        forms(folder, part, hant, world_lines(folder, part, "ja"), world_lines(folder, part, "ko"))
