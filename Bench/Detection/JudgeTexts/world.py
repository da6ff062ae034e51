"""The world's text for the judge: messages, help pages and vim's menus and tutors, by language. The parts come from
different programs; a line that several would hold is kept in the first of them."""
import os
import re

from Texts import packages
from Texts.languages import LANGUAGES, LEGACY, encoded, is_in

# Programs that share texts, such as a program and its fork, stand in the same part.
PROGRAMS = {
    "choose": ("libglib2.0-data evince-common atril-common rhythmbox-data audacity-data okular gparted-common "
               "deluge-common thunar-data xfce4-panel xfce4-terminal libfm-data pcmanfm gnome-mahjongg "
               "gnome-terminal-data gucharmap swell-foop gnome-klotski gnome-robots gnome-nibbles baobab "
               "gnome-calculator mate-calc-common gnome-disk-utility filezilla-common geany-common "
               "shotwell-common").split(),
    "former": ("libgtk-3-common eog totem-common epiphany-browser-data digikam-data synaptic marble-data "
              "transmission-common aisleriot file-roller engrampa-common seahorse brasero-common gnome-system-monitor "
              "mate-system-monitor-common gnome-chess quadrapassel gnome-mines gnome-sudoku hitori gnome-tetravex "
              "cheese-common simple-scan meld gramps bluefish-data xfdesktop4-data lxterminal").split(),
    "final": ("claws-mail-i18n hexchat-common gthumb-data gnome-weather gnome-clocks gnome-contacts gnome-maps gnome-music "
              "gnome-photos gnome-software-common gnome-characters gnome-logs remmina-common tilix-common guake parole "
              "ristretto xfburn mousepad homebank-data bleachbit gnome-shell-common mutter-common gnome-session-common "
              "gnome-settings-daemon-common gnome-keyring network-manager-gnome network-manager anjuta-common "
              "devhelp-common deja-dup dconf-editor ghex glade gnote planner-data konsole ark kcalc shared-mime-info "
              "gnome-menus software-properties-common vinagre gnome-nettool polari tellico-data konversation-data "
              "ktorrent-data darktable sylpheed-i18n geeqie-common freeciv-data debian-handbook").split()}
LINES = 2000  # of a language, for each part
LEAST = 60  # a language with fewer lines is left out
BYTES = 200_000  # of a legacy encoding
VIM = {"sjis": "shift-jis", "cp932": "shift-jis", "932": "shift-jis", "euc-jp": "euc-jp", "eucjp": "euc-jp",
       "ujis": "euc-jp", "euckr": "euc-kr", "koi8-r": "koi8-r", "koi8-u": "koi8-u", "cp1250": "windows-1250",
       "cp1251": "windows-1251", "cp1254": "windows-1254", "iso_8859-2": "iso-8859-2", "iso_8859-5": "iso-8859-5",
       "iso_8859-9": "iso-8859-9", "iso9": "iso-8859-9", "latin1": "latin-1", "latin2": "iso-8859-2"}


def lines_of(folder, kind, sign, language, part, seen):
    def is_wanted(line):
        return len(line) >= 4 and is_in(sign, kind, line) and line not in seen
    return packages.distinct(packages.catalogue_lines(folder, language, PROGRAMS[part]), is_wanted, 400_000)


def help_pages(folder, language, part):
    for program in PROGRAMS[part]:
        for path in packages.files(
                f"{folder}/deb/{program}", f"usr/share/help/{language}/**/*.page",
                f"usr/share/doc/{program}/html/{language}-*/*.html")[:12]:
            yield packages.read(path)


def message_files(folder, language, part):
    """A program's messages as its translator keeps them, each behind the words that it translates."""
    for path in (path for program in PROGRAMS[part] for path in packages.files(
            f"{folder}/deb/{program}", f"usr/share/locale*/{language}/LC_MESSAGES/*.mo")):
        pairs = packages.catalogue_pairs(path)
        text = "".join(f'msgid "{key}"\nmsgstr "{text}"\n\n' for key, text in pairs)
        yield text.encode()[:100_000].decode("utf-8", "ignore").encode()


def world(folder):
    """lines/LANGUAGE.txt and files/LANGUAGE/NUMBER below world/; gives the lines for the legacy encodings."""
    kept = {part: {} for part in PROGRAMS}
    for kind, sign, language in LANGUAGES:
        seen = set()
        for part in PROGRAMS:
            lines = lines_of(folder, kind, sign, language, part, seen)
            seen.update(lines)
            if len(lines) < LEAST:
                continue
            kept[part][language] = lines
            packages.put(f"{folder}/{part}/world/lines/{language}.txt", ("\n".join(lines[:LINES]) + "\n").encode())
            whole = list(help_pages(folder, language, part)) + list(message_files(folder, language, part))
            for number, data in enumerate(file for file in whole if sign.search(file.decode("utf-8", "ignore"))):
                packages.put(f"{folder}/{part}/world/files/{language}/{number:04}", data)
    return kept


def other_files(folder, part):
    """Copyright notes, news, programs, descriptions in many languages: files of the programs in UTF-8 beyond ASCII, by
    whether a fiftieth of their bytes is beyond it."""
    paths = (path for program in PROGRAMS[part] for path in packages.files(
        f"{folder}/deb/{program}", "usr/share/doc/*/*", "usr/share/**/*.py", "usr/share/**/*.xml", "usr/share/**/*.txt",
        "usr/share/applications/*", "usr/share/**/*.html", "usr/share/**/*.ui", "etc/**/*"))
    for number, path in enumerate(paths):
        data = packages.read(path)
        high = sum(byte > 0x7F for byte in data)
        if high and b"\0" not in data and packages.is_utf8(data):
            kind = "files-mostly-ascii" if high * 50 < len(data) else "files-of-programs"
            packages.put(f"{folder}/{part}/world/files/{kind}/{number:04}", data[:400_000])


def vim_files(folder):
    """Menus and tutors of vim, in UTF-8 and in legacy encodings, by language in one part or in the other."""
    for path in packages.files(f"{folder}/deb/vim-runtime", "**/tutor.*", "**/menu_*.vim"):
        name = os.path.basename(path)
        language = re.split(r"[._]", name)[1]
        suffix = re.sub(r"\.vim$", "", name).rsplit(".", 1)[-1]
        part = ("choose", "former")[ord(language[-1]) % 2]
        if "zh" in name or "chinese" in name or packages.read(path).isascii():
            continue
        if suffix == "euc":
            suffix = {"ja": "euc-jp", "ko": "euckr"}[language]
        if suffix.lower() == "utf-8":
            packages.put(f"{folder}/{part}/world/files/{language}/{name}", packages.read(path))
        elif suffix in VIM:
            packages.put(f"{folder}/{part}/foreign/files/{VIM[suffix]}/{name}", packages.read(path))


def legacy(folder, kept):
    """foreign/lines/ENCODING/LANGUAGE.txt, raw bytes, and whole files of such lines."""
    for part, lines in kept.items():
        for kind, codec, languages in LEGACY:
            names = [language for language in languages.split() if language in lines]
            for language in names:
                packed = [line for line in (encoded(line, codec) for line in lines[language]) if line]
                packed = packages.head(packed, BYTES // len(names))
                packages.put(f"{folder}/{part}/foreign/lines/{kind}/{language}.txt", b"\n".join(packed) + b"\n")
                for number in range(0, len(packed) - 50, max(50, len(packed) // 4)):
                    data = b"\r\n".join(packed[number:number + 50 + number % 200])
                    packages.put(f"{folder}/{part}/foreign/files/{kind}/{language}-{number}.txt", data)


def collect(folder):
    packages.unpack_debian(folder, sum(PROGRAMS.values(), []) + ["vim-runtime"])
    kept = world(folder)
    for part in PROGRAMS:
        other_files(folder, part)
    vim_files(folder)
    legacy(folder, kept)
