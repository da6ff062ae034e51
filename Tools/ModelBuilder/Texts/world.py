"""Text of the world's languages for counting: classes world-SCRIPT, a file a language, from message catalogues, manual
pages and dictionaries; world-signs, English with signs beyond ASCII; the same languages in their legacy encodings."""
from Texts import packages
from Texts.languages import HAN_OR_KANA, LANGUAGES, LEGACY, SIGN, encoded, is_in

CATALOGUES = ("iso-codes gettext git vlc-l10n calligra-data binutils-common gcc-12-locales dpkg-dev dpkg apt "
              "apt-utils aptitude-common coreutils debconf-i18n xkb-data cinnamon-l10n tuxpaint-data libc-l10n "
              "util-linux-locales bash tar grep sed findutils diffutils wget e2fsprogs bison flex psmisc nano mutt "
              "cups-common krita-l10n libkf5i18n-data abiword-common metacity-common zenity-common libwnck-3-common "
              "libgnomekbd-common gvfs-common yelp orca sound-juicer gnome-power-manager iagno tali five-or-more "
              "four-in-a-row lightsoff xfce4-settings lxpanel-data balsa dia-common gnumeric-common").split()
# Their messages are largely those of programs that are kept for judging.
LEFT_OUT = ("nemo", "nemo-extensions", "cinnamon-control-center", "cinnamon-settings-daemon")
DICTIONARIES = [f"hunspell-{name}" for name in (
    "af an ar be bg bn bo br bs ca cs da de-de dz el es eu fr-classical gd gl gu he hi hr hu id is it kk kmr ko "
    "lo lt lv ml mn ne nl no oc pl pt-br pt-pt ro ru si sk sl sr sv sw te th tr uk uz vi").split()]
DICTIONARIES += "myspell-eo myspell-et myspell-fa myspell-fo myspell-ga myspell-hy myspell-sq".split()
DICTIONARIES += [f"aspell-{name}" for name in "am cy hsb hy kn mr or pa ta uz fa te ml is gu".split()] + ["aspell"]
MANUALS = [f"manpages-{name}" for name in (
    "ja cs da de el es fi fr hu id it mk nb nl pl pt pt-br ro ru sr sv tr uk vi").split()]
PACKAGES = CATALOGUES + DICTIONARIES + MANUALS + ["unicode-data"]
# A dictionary's or manual's name where it is not the catalogue's.
WORDS = {"sr@latin": "sr_Latn", "ckb": "ckb", "pt": "pt_PT", "bn_IN": "bn", "ku": "kmr"}
CHARACTERS = 90_000  # of a language
LEGACY_BYTES = 300_000  # of an encoding


def pool_of(folder, kind, sign, language):
    """The language's lines: messages, manual pages, words; more than are wanted, in an order drawn once."""
    sources = (packages.catalogue_lines(folder, language, CATALOGUES, LEFT_OUT),
               packages.manual_lines(folder, language, MANUALS),
               packages.word_lines(folder, WORDS.get(language, language)))
    return [packages.distinct(source, lambda line: is_in(sign, kind, line) and len(line) < 1000, LEGACY_BYTES)
            for source in sources]


def balanced(pool, limit):
    """Half of them messages, a quarter manual pages, a quarter words; where one lacks, the messages fill up."""
    messages, manual, words = pool
    manual, words = packages.head(manual, limit // 4), packages.head(words, limit // 4)
    return packages.head(messages, limit - sum(map(len, manual)) - sum(map(len, words))) + manual + words


def signs(folder):
    """English with quotes, dashes, signs of rights, names; and the list of emoji with their English names."""
    names = (f"{package}/usr/share/doc/*/{part}" for package in CATALOGUES for part in ("copyright", "changelog*.gz"))
    files = packages.files(f"{folder}/deb", *names)
    lines = [line for path in files for line in packages.read(path).decode("utf-8", "ignore").split("\n")]
    lines += packages.catalogue_lines(folder, "en*", CATALOGUES)
    emoji = [line.split("#", 1)[1] for path in packages.files(f"{folder}/deb/unicode-data", "**/emoji-test.txt")
             for line in packages.read(path).decode().split("\n") if "; fully-qualified" in line]

    def is_latin(line):
        return SIGN.search(line) and not HAN_OR_KANA.search(line) and len(line) < 1000
    return {"english": packages.distinct(lines, is_latin, 4 * CHARACTERS),
            "emoji": packages.distinct(emoji, is_latin, CHARACTERS)}


def legacy(pools, codec, languages):
    """Language by language its lines in the encoding, LEGACY_BYTES in all."""
    names = languages.split()
    for language in names:
        lines = (encoded(line, codec) for line in balanced(pools[language], LEGACY_BYTES))
        yield language, packages.head([line for line in lines if line], LEGACY_BYTES // len(names))


def collect(folder, wanted):
    """Writes the chosen groups, "world" and "foreign", under FOLDER/text; gives a row for each file written."""
    pools = {language: pool_of(folder, kind, sign, language) for kind, sign, language in LANGUAGES}
    rows = []
    if "world" in wanted:
        rows += [(kind, language, balanced(pools[language], CHARACTERS)) for kind, _, language in LANGUAGES]
        rows += [("world-signs", source, found) for source, found in signs(folder).items()]
    rows = [(kind, source, "\n".join(found)) for kind, source, found in rows if found]
    for kind, source, text in rows:
        packages.put(f"{folder}/text/{kind}/{source}.txt", text.encode() + b"\n")
    for kind, codec, languages in LEGACY if "foreign" in wanted else []:
        for language, found in legacy(pools, codec, languages):
            packages.put(f"{folder}/text/{kind}/{language}.txt", b"\n".join(found) + b"\n")
            rows.append((kind, language, b"\n".join(found)))
    return [(kind, source, len(text)) for kind, source, text in rows]
