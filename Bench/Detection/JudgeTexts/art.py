"""Terminal art for the judge, as UTF-8 that GBK or Big5 holds entirely: art/ENCODING/GENERATOR-NUMBER, a screen or more
a file, plain and with escape sequences. Each part has its own generators; toilet draws some of what "former" holds."""
import random
import re
import shutil

from Texts.packages import put, run

from JudgeTexts.special import lines_of

CODECS = {"gbk": ("gbk", "hans"), "big5": ("cp950", "hant")}
FILES = 20  # of each generator, encoding and manner


def keep(text, codec):
    """What the encoding holds of the characters, so that "▀" is left out where it does not exist."""
    return "".join(c for c in text if c.encode(codec, "ignore"))


class Pen:
    """Words and signs of one encoding."""

    def __init__(self, draw, codec, lines):
        self.draw, self.codec = draw, codec
        words = (word for line in lines for word in re.findall("[\u4e00-\u9fff]{1,6}", line))
        self.words = [word for word in words if keep(word, codec) == word]

    def word(self, most=6):
        return self.draw.choice(self.words)[:most]

    def signs(self, text):
        return keep(text, self.codec)

    def sign(self, text):
        return self.draw.choice(self.signs(text))


def framed_table(pen):
    """Cells between single lines."""
    widths = [pen.draw.randint(2, 6) for _ in range(pen.draw.randint(2, 5))]

    def rule(left, middle, right):
        return left + middle.join("─" * width for width in widths) + right

    def cells():
        words = (pen.word(width) if pen.draw.random() < .7 else str(pen.draw.randrange(100)) for width in widths)
        return "│" + "│".join(f"{word:　<{width}}" for word, width in zip(words, widths)) + "│"
    lines = [rule("┌", "┬", "┐")]
    for _ in range(pen.draw.randint(4, 12)):
        lines += [cells(), rule("├", "┼", "┤")]
    return lines[:-1] + [rule("└", "┴", "┘")]


def stepped_title(pen):
    """▁▂▃▄▅▆▇█ title █▇▆▅▄▃▂▁ and lists behind signs."""
    steps = pen.signs("▁▂▃▄▅▆▇█")
    lines = []
    for _ in range(pen.draw.randint(2, 5)):
        lines.append(" " * pen.draw.randrange(20) + steps + " " + pen.word() + " " + steps[::-1])
        mark = pen.sign("◆◇■□●○★☆※▲△▼▽")
        lines += [f"{mark} {number}. {pen.word()}" for number in range(1, pen.draw.randint(3, 8))]
    return lines


def separators(pen):
    """Rules of one sign or of two in turn, with a word in their middle now and then."""
    lines = []
    for _ in range(pen.draw.randint(12, 30)):
        pattern = pen.sign("─═━☆★●○◆◇＝～※→．") + (pen.sign("　☆★○●◎□■") if pen.draw.random() < .4 else "")
        rule = pattern * pen.draw.randint(4, 16)
        lines.append(rule + (pen.word() + rule if pen.draw.random() < .3 else ""))
    return lines


def folder_tree(pen):
    return ["│  " * pen.draw.randrange(4) + pen.draw.choice(("├─", "└─", "├── ", "└── "))
            + (pen.word() if pen.draw.random() < .5 else pen.draw.choice(("src", "readme.txt", "data", "main.c")))
            for _ in range(pen.draw.randint(15, 40))]


def double_frames(pen):
    """Boxes of double lines, where the encoding has them, with bars of progress."""
    lines = []
    for _ in range(pen.draw.randint(2, 6)):
        width = pen.draw.randint(8, 24)
        filled = pen.draw.randrange(width - 4)
        bar = pen.signs("█") * filled + pen.sign("▒░▓□▁") * (width - filled - 2) if pen.signs("▒░▓□") else ""
        lines += ["╔" + "═" * width + "╗", "║ " + pen.word() + "　" * 3 + "║", "║" + bar + "║",
                  "║" + pen.word() + f" {filled * 100 // width}%" + "║", "╚" + "═" * width + "╝"]
    return [pen.signs(line) for line in lines]


def block_picture(pen):
    """A picture of blocks and triangles, in runs, with blanks between them."""
    palette = pen.signs("▁▂▃▄▅▆▇█▉▊▋▌▍▎▏◢◣◤◥■□▓")
    return ["".join((" " * pen.draw.randint(0, 8)) + pen.draw.choice(palette) * pen.draw.randint(1, 6)
                    for _ in range(pen.draw.randint(3, 12))) for _ in range(pen.draw.randint(15, 25))]


def posted_page(pen):
    """A page of a bulletin board: its head, quoted lines, answers, a footer."""
    title = "標題" if pen.codec == "cp950" else "标题"
    lines = [f" 作者  user{pen.draw.randrange(99)} ({pen.word()})", f" {title}  [{pen.word(2)}] {pen.word()}", "─" * 39]
    lines += [": " + pen.word() + pen.sign("，。、…？") + pen.word() for _ in range(pen.draw.randint(2, 6))]
    lines += ["※ " + pen.word(), "--", pen.sign("◆※→★") + " From: 10.0.0." + str(pen.draw.randrange(255))]
    lines += [pen.sign("→※＋－") + f" user{pen.draw.randrange(99)}: {pen.word()}"
              for _ in range(pen.draw.randint(3, 9))]
    return lines + ["═" * pen.draw.randint(10, 30) if pen.signs("═") else "─" * 20]


def drawn_words(pen):
    """ASCII words that toilet draws with blocks and lines; what the encoding lacks becomes a blank."""
    font = pen.draw.choice(("future", "mono9", "smblock", "mono12", "emboss", "pagga"))
    word = pen.draw.choice(("Hello", "LINUX", "news", "Chapter 1", "2024", "BBS", "welcome", "Map"))
    text = run(["toilet", "-f", font, word]).decode()
    lines = ["".join(c if pen.signs(c) else "  " for c in line.replace("▀", "▄")) for line in text.split("\n")]
    return [line.rstrip() for line in lines if line.strip()] + [pen.word() + "　" + pen.sign("☆★○●")]


def bar_chart(pen):
    """Bars of one sign behind words and before numbers, with an axis below."""
    bar, axis = pen.sign("█▇▆■▓▃"), pen.sign("│｜┃├") if pen.draw.random() < .7 else "|"
    rows = [(pen.word(4), pen.draw.randint(1, 30)) for _ in range(pen.draw.randint(4, 12))]
    lines = [f"{word:　<4}{axis}{bar * count} {count}" for word, count in rows]
    return lines + ["　" * 4 + pen.signs("└") + pen.sign("─━┴") * pen.draw.randint(10, 30), "　" * 4 + pen.word()]


def calendar(pen):
    """A month in a grid: weekdays, numbers, marks on some days."""
    mark, rule = pen.sign("●○★☆※◎"), pen.sign("─═━－")
    lines = [f"{pen.sign('【〖『「')}{pen.draw.randint(1, 12)}月　{pen.word(3)}", rule * pen.draw.randint(14, 21)]
    lines.append(" ".join("日一二三四五六"))
    days = ["  "] * pen.draw.randrange(7) + [
        mark if pen.draw.random() < .15 else f"{day:2}" for day in range(1, pen.draw.randint(29, 32))]
    lines += [" ".join(days[start:start + 7]) for start in range(0, len(days), 7)]
    return lines + [rule * pen.draw.randint(14, 21), mark + " " + pen.word()]


def menu_screen(pen):
    """A menu of numbers or letters between stars, with a prompt."""
    edge = pen.sign("＊※☆★◆◇§＃")
    lines = [edge * 20, edge + "　" * 4 + pen.word() + "　" * 4 + edge]
    for number in range(pen.draw.randint(3, 9)):
        label = pen.draw.choice((f"[{number}]", f"({chr(65 + number)})", pen.sign("①②③④⑤⑥⑦⑧⑨⑩") if
                                 pen.signs("①") else f"{number}．"))
        lines.append(f"{edge}　{label} {pen.word()}" + pen.sign("…．・‥→") * pen.draw.randrange(8) + edge)
    return lines + [edge * 20, pen.word(4) + pen.sign("：＞→") + " "]


def chessboard(pen):
    """A board of crossing lines with discs, and columns that letters name."""
    left, middle, right = pen.signs("├┼┤")
    lines = ["  " + " ".join("ABCDEFGHI")]
    for row in range(9):
        cells = [pen.sign("●○") if pen.draw.random() < .25 else "" for _ in range(9)]
        signs = [left] + [middle] * 7 + [right]
        lines.append(f"{9 - row} " + pen.draw.choice(("─", "")).join(c or s for c, s in zip(cells, signs)))
    return lines + [f"{pen.sign('●○')} {pen.word(3)} {pen.sign('△▲※→')} {pen.draw.randrange(300)}"]


GENERATORS = {"choose": [framed_table, stepped_title, separators, folder_tree],
              "former": [double_frames, block_picture, posted_page, drawn_words],
              "final": [bar_chart, calendar, menu_screen, chessboard]}


def coloured(draw, line):
    """The line with colours set between some of its characters, and reset at its end."""
    def colour():
        return f"\x1b[{draw.randrange(2)};{draw.randrange(30, 38)}" + draw.choice(("m", f";{draw.randrange(40, 48)}m"))
    return colour() + "".join(c + (colour() if draw.random() < .12 else "") for c in line) + "\x1b[m"


def collect(folder):
    if not shutil.which("toilet"):
        raise SystemExit("toilet is needed: Debian's package toilet")
    for part, generators in GENERATORS.items():
        for encoding, (codec, script) in CODECS.items():
            draw = random.Random(f"art {part} {encoding}")
            pen = Pen(draw, codec, lines_of(folder, part, script))
            for generator in generators:
                for number in range(2 * FILES):
                    lines = [line for _ in range(2) for line in generator(pen)]
                    manner = "coloured" if number % 2 else "plain"
                    lines = [coloured(draw, line) for line in lines] if number % 2 else lines
                    name = generator.__name__.replace("_", "-")
                    target = f"{folder}/{part}/art/{encoding}/{manner}-{name}-{number:02}"
                    put(target, ("\n".join(lines) + "\n").encode())
