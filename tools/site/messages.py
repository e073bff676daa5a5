"""The texts in the sources that read like sentences: what may reach a host, to be held against the page of messages."""
import re

ROOMS = ["ksef", "mail", "pdfsign", "barcode", "dialogs", "frame", "com", "ports"]
# The development databases' dialect reaches no host; the tables' help texts are the reference's.
PASSED_OVER = re.compile(r"ports/(portable/tsql|portable/sqlite_|native)|com/describe|_class\.cpp$")
WIDE = re.compile(r'(?<!\w)u"((?:[^"\\\n]|\\.)*)"')
# Beside them only narrow texts in Polish go out: what the settings file is told off for.
NARROW = re.compile(r'(?<!\w)"((?:[^"\\\n]|\\.)*)"')
JOINED = re.compile(r'"\s*\n\s*u?"')
SENTENCE = re.compile(r"[ąćęłńóśźżĄĆĘŁŃÓŚŹŻ]|[A-Za-z]{2,}[:,;(]? +\(?[A-Za-z]{2,}|STATUS|^[A-Z][a-z]+\.$|[a-z]{3,}: ?$", re.S)
SQL = re.compile(r"[,)' ]*(select|insert|and|from|where|set xact_abort|begin transaction|if @@|JESLI_|NumerRef_ksef)")
POLISH = re.compile(r"[ąćęłńóśźżĄĆĘŁŃÓŚŹŻ]|^(oczekiwano|nieznany|klucz|to nie) ")


def plain(text):
    return " ".join(re.sub(r"\\u00A0|\\(.)", lambda found: found[1] if found[1] in ('"', "\\") else " ", text).split())


def candidates(root):
    """{text: file} of every literal of the rooms that reads like a sentence."""
    found = {}
    for room in ROOMS:
        for path in sorted((root / room).rglob("*")):
            name = path.relative_to(root).as_posix()
            if path.suffix not in (".cpp", ".h") or PASSED_OVER.search(name):
                continue
            source = JOINED.sub("", re.sub(r"^\s*//.*$", "", path.read_text(encoding="utf-8"), flags=re.M))
            texts = [text for text in map(plain, WIDE.findall(source)) if SENTENCE.search(text) and not SQL.match(text)]
            texts += [text for text in map(plain, NARROW.findall(source)) if POLISH.search(text)]
            for text in texts:
                found.setdefault(text, name)
    return found
