"""Debian and npm packages, unpacked without installing them, and the texts in them: message catalogues, manual pages,
word lists, plain files. Used for what the builder counts and for what the judge looks at, from different packages."""
import gettext
import glob
import gzip
import os
import random
import re
import subprocess
import unicodedata


def run(command, **options):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, **options).stdout


def unpack_debian(folder, names):
    """Every package once: FOLDER/deb/NAME."""
    os.makedirs(f"{folder}/deb", exist_ok=True)
    for name in names:
        if not os.path.isdir(f"{folder}/deb/{name}"):
            if not glob.glob(f"{folder}/deb/{name}_*.deb"):
                run(["apt-get", "download", name], cwd=f"{folder}/deb")
            run(["dpkg", "-x", glob.glob(f"{folder}/deb/{name}_*.deb")[0], f"{folder}/deb/{name}"])


def unpack_npm(folder, names):
    """Every package once: FOLDER/npm/NAME."""
    os.makedirs(f"{folder}/npm", exist_ok=True)
    for name in names:
        target = f"{folder}/npm/{name}"
        if not os.path.isdir(target):
            packed = run(["npm", "pack", "--silent", name], cwd=f"{folder}/npm").decode().strip()
            os.makedirs(target)
            run(["tar", "xzf", f"{folder}/npm/{packed}", "-C", target])


def files(folder, *patterns):
    """Regular files, in order, each once, though several names may lead to it."""
    found = (path for pattern in patterns for path in sorted(glob.glob(f"{folder}/{pattern}", recursive=True)))
    return [path for path in found if os.path.isfile(path) and not os.path.islink(path)]


def read(path):
    with (gzip.open if path.endswith(".gz") else open)(path, "rb") as file:
        return file.read()


def is_utf8(data):
    try:
        data.decode()
    except UnicodeDecodeError:
        return False
    return True


def put(path, data):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "wb") as file:
        file.write(data)


def catalogue_pairs(path):
    """A compiled catalogue's keys and translations; none where the file is damaged."""
    try:
        with open(path, "rb") as file:
            messages = gettext.GNUTranslations(file)._catalog
    except (OSError, IndexError, UnicodeDecodeError, ValueError):
        return []
    pairs = sorted((str(key), text) for key, text in messages.items() if isinstance(text, str))
    return [(key, text) for key, text in pairs if key]


def catalogue_lines(folder, locale, packages, left_out=()):
    """The translations into `locale` of all programs in the packages but those left out."""
    for package in sorted(packages):
        for path in files(f"{folder}/deb", f"{package}/usr/share/locale*/{locale}/LC_MESSAGES/*.mo"):
            for _, text in catalogue_pairs(path) if os.path.basename(path)[:-3] not in left_out else []:
                yield from text.split("\n")


def manual_lines(folder, language, packages=("manpages*",)):
    """Lines of manual pages in `language`, "." for English, their markup removed."""
    for package in sorted(packages):
        for path in files(f"{folder}/deb", f"{package}/usr/share/man/{language}/man*/*.gz"):
            for line in read(path).decode("utf-8", "replace").split("\n"):
                if not line.startswith(('.\\"', "'")) and "\ufffd" not in line:
                    yield re.sub(r"^\.[A-Za-z]+ ?|\\f.|\\&|\\", "", line)


def hunspell_words(path):
    """The words of a dictionary without their flags, in the encoding that its rules name."""
    with open(path[:-4] + ".aff", "rb") as file:
        found = re.search(rb"^\s*(?:\xef\xbb\xbf)?SET\s+(\S+)", file.read(5000), re.M)
    codec = found.group(1).decode().lower().replace("microsoft-", "") if found else "latin-1"
    for line in read(path).decode(codec, "ignore").split("\n")[1:]:
        yield unicodedata.normalize("NFC", re.split(r"[/\t ]", line.strip(), 1)[0])


def aspell_words(folder, path):
    """The words of a list that aspell's own program has packed."""
    packed = read(path)
    words = run([f"{folder}/deb/aspell/usr/bin/prezip-bin", "-d"], input=packed)
    for codec in ("utf-8", "latin-1"):
        try:
            return [word.split("/")[0] for word in words.decode(codec).split("\n")]
        except UnicodeDecodeError:
            continue
    return []


def word_lines(folder, language):
    """Words of the language from all dictionaries that were unpacked."""
    for path in files(f"{folder}/deb", f"*spell-*/usr/share/hunspell/{language}.dic",
                      f"*spell-*/usr/share/hunspell/{language}_[A-Z]*.dic"):
        yield from hunspell_words(path)
    for path in files(f"{folder}/deb", f"aspell-{language}/usr/share/aspell/*.cwl.gz"):
        yield from aspell_words(folder, path)


def head(lines, limit):
    """The first lines, up to `limit` characters or bytes."""
    kept, size = [], 0
    for line in lines:
        if size < limit:
            kept.append(line)
            size += len(line)
    return kept


def distinct(lines, wanted, limit):
    """Lines for which wanted(line) is true, each once, in an order of its own, up to `limit` characters."""
    chosen = list(dict.fromkeys(line for line in map(str.strip, lines) if line and wanted(line)))
    random.Random(len(chosen)).shuffle(chosen)
    return head(chosen, limit)
