"""The languages of the world's text by script, and how a line is known to be in the script that it should be in."""
import re

# Class, a character that each of its lines must hold, languages as the catalogues name them.
SCRIPTS = [
    ("world-latin", "[\u00c0-\u024f\u1e00-\u1eff]",
     "af an ast az br bs ca co crh cs csb cy da de eo es et eu fi fo fr fur ga gd gl gn haw hr hsb hu id is it kab kmr "
     "ku lb lt lv mg mi mt nb nds nl nn oc pl pt pt_BR ro rw sc se sk sl sq sr@latin sv sw tk tl tr uz vec wa wo yo"),
    ("world-vietnamese", "[\u00c0-\u024f\u1e00-\u1eff]", "vi"),
    ("world-cyrillic", "[\u0400-\u052f]",
     "ru uk be bg sr mk kk ky mn tg tt uz@cyrillic cv os ba ab"),
    ("world-greek", "[\u0370-\u03ff\u1f00-\u1fff]", "el"),
    ("world-hebrew", "[\u0590-\u05ff]", "he yi"),
    ("world-arabic", "[\u0600-\u06ff]", "ar fa ur ug ckb ps sd ks pa_PK"),
    ("world-caucasus", "[\u0530-\u058f\u10a0-\u10ff]", "ka hy"),
    ("world-indic", "[\u0900-\u0dff]",
     "hi mr ne bn bn_IN as pa gu or ta te kn ml si mai brx kok ks@devanagari doi sat@devanagari hne"),
    ("world-southeast", "[\u0e00-\u109f\u1780-\u17ff]", "th lo km my dz bo"),
    ("world-ethiopic", "[\u1200-\u139f]", "am ti gez byn tig"),
    ("world-japanese", "[\u3040-\u30ff\u4e00-\u9fff]", "ja"),
    ("world-korean", "[\uac00-\ud7a3]", "ko"),
]
LANGUAGES = [(kind, re.compile(sign), language) for kind, sign, names in SCRIPTS for language in names.split()]
HAN_OR_KANA = re.compile("[\u3040-\u30ff\u3400-\u9fff]")
SIGN = re.compile("[^\x00-\x7f]")

# Legacy encodings: class, Python's name, languages in it.
CENTRAL = "pl cs sk hu sl hr ro sr@latin bs sq"
WESTERN = "fr de es pt pt_BR it sv da nb nl fi is ca gl"
LEGACY = [
    ("shift-jis", "cp932", "ja"), ("euc-jp", "euc_jp", "ja"), ("euc-kr", "euc_kr", "ko"),
    ("koi8-r", "koi8_r", "ru"), ("koi8-u", "koi8_u", "uk"), ("cp866", "cp866", "ru bg"),
    ("windows-1250", "cp1250", CENTRAL), ("windows-1251", "cp1251", "ru uk bg be sr mk"),
    ("windows-1252", "cp1252", WESTERN), ("windows-1253", "cp1253", "el"), ("windows-1254", "cp1254", "tr"),
    ("windows-1255", "cp1255", "he"), ("windows-1256", "cp1256", "ar fa ur"), ("windows-1257", "cp1257", "lt lv et"),
    ("windows-874", "cp874", "th"), ("latin-1", "latin_1", WESTERN), ("iso-8859-2", "iso8859_2", CENTRAL),
    ("iso-8859-5", "iso8859_5", "ru uk bg sr mk"), ("iso-8859-7", "iso8859_7", "el"), ("iso-8859-9", "iso8859_9", "tr"),
    ("iso-8859-15", "iso8859_15", "fr de fi et nl it es pt"), ("mac-roman", "mac_roman", WESTERN),
]


def is_in(sign, kind, line):
    """Whether the line has a character of its script and none that would belong to the Chinese classes."""
    east = kind in ("world-japanese", "world-korean")
    return bool(sign.search(line)) and "\ufffd" not in line and (east or not HAN_OR_KANA.search(line))


def encoded(line, codec):
    """The line's bytes, or none where the encoding lacks a character or the line is ASCII."""
    try:
        packed = line.encode(codec)
    except UnicodeEncodeError:
        return b""
    return b"" if packed.isascii() else packed
