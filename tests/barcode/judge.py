#!/usr/bin/env python3
"""Draws random symbols of every kind and has two decoders that are not ours read the pictures.

Usage: judge.py --tavrix PROGRAM [--draw PROGRAM...] [--count N] [--all-dpi] [--seed N]

PROGRAM draws each symbol: `tavrix`, or with --draw whatever takes a list of symbols (a line each: kind, dots per
inch, text in hexadecimal UTF-8, picture file) and draws them, such as the printing of a Windows surface under Wine.
Prints how many of each kind each decoder read. Ends with 1 unless every text came back from both.
"""
import argparse
import base64
import collections
import concurrent.futures
import pathlib
import random
import re
import subprocess
import sys
import tempfile

DPI = (203, 300, 600)
CODE39 = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ-. $/+%"
# Yellow and cyan are nearly white to a decoder's grey, green is too light for ZXingReader.
QR_COLOURS = ("black", "red", "blue", "magenta")
Symbol = collections.namedtuple("Symbol", "name kind text option file")


def digits(count):
    return "".join(random.choice("0123456789") for _ in range(count))


def code128_text():
    """Pieces that need set A, B and C and the switches between them."""
    pieces = [lambda: digits(random.choice((2, 3, 4, 5, 6, 8))),
              lambda: "".join(chr(random.randrange(32, 127)) for _ in range(random.randrange(1, 6))),
              lambda: "".join(chr(random.randrange(1, 32)) for _ in range(random.randrange(1, 3)))]
    text = "".join(random.choice(pieces)() for _ in range(random.randrange(1, 4)))
    # Lines of a batch end with these.
    return text.replace("\n", "\t").replace("\r", "\t")


def code39_text(characters, longest):
    text = "".join(random.choice(characters) for _ in range(random.randrange(1, longest)))
    return text.replace("*", "-")


def qr_text():
    return "".join(random.choice("zażółćgęśląjaźńŻÓŁW 0123456789/:-") for _ in range(random.randrange(1, 120))).strip() + "."


KINDS = {
    "EAN-8": ("EAN8", lambda: digits(7)),
    "EAN-13": ("EAN13", lambda: digits(12)),
    "EAN-13 +2": ("EAN13", lambda: digits(12) + "+" + digits(2)),
    "EAN-13 +5": ("EAN13", lambda: digits(12) + "+" + digits(5)),
    "Code 128": ("EAN128", code128_text),
    "Code 39": ("EAN39", lambda: code39_text(CODE39, 12)),
    "Code 39 full ASCII": ("EAN39EX", lambda: code39_text([chr(c) for c in range(32, 127)], 8)),
    "QR": ("QR", qr_text),
}


def check_digit(text):
    return str(-sum(int(d) * (3 if i % 2 == 0 else 1) for i, d in enumerate(reversed(text))) % 10)


def full_ascii(character):
    """ISO/IEC 16388, annex A, the other way round than the font has it: written from the standard's table."""
    table = {" ": " ", "-": "-", ".": ".", ":": "/Z", "@": "%V", "`": "%W"}
    if character in table or character.isdigit() or character.isupper():
        return table.get(character, character)
    for first, last, shift in (("!", "/", "/A"), (";", "?", "%F"), ("[", "_", "%K"), ("{", "~", "%P"), ("a", "z", "+A")):
        if first <= character <= last:
            return shift[0] + chr(ord(shift[1]) + ord(character) - ord(first))
    raise ValueError(character)


def expected(symbol):
    """What a decoder reports: the symbol's own text, and the add-on's."""
    if symbol.kind in ("EAN8", "EAN13"):
        number, _, add_on = symbol.text.partition("+")
        return number + check_digit(number), add_on
    if symbol.kind == "EAN39EX":
        return "".join(map(full_ascii, symbol.text)), ""
    return symbol.text, ""


def draw_with_tavrix(tavrix, symbols, folder):
    batches = collections.defaultdict(list)
    for symbol in symbols:
        if symbol.kind == "QR":
            colour, dpi = symbol.option
            subprocess.run([tavrix, "qr", "--text", symbol.text, "--color", colour, "--dpi", str(dpi), "--out",
                            symbol.file], check=True)
        else:
            batches[symbol.kind, symbol.option].append(symbol)
    for (kind, (_, dpi)), batch in batches.items():
        lines = folder / "batch.txt"
        lines.write_bytes("".join(symbol.text + "\n" for symbol in batch).encode())
        subprocess.run([tavrix, "barcode", "--kind", kind, "--batch", lines, "--dpi", str(dpi), "--no-caption", "--out",
                        folder / "batch-%.png"], check=True)
        for number, symbol in enumerate(batch, 1):
            (folder / f"batch-{number}.png").rename(symbol.file)


def draw_with(command, symbols, folder):
    lines = folder / "symbols.txt"
    lines.write_text("".join(f"{s.kind}\t{s.option[1]}\t{s.text.encode().hex()}\t{s.file}\n" for s in symbols))
    subprocess.run([*command, lines], check=True)


def in_pieces(read, files):
    pieces = [files[i:i + 100] for i in range(0, len(files), 100)]
    with concurrent.futures.ThreadPoolExecutor(2) as pool:
        return {file: texts for answers in pool.map(read, pieces) for file, texts in answers.items()}


def zbar(files):
    """XML tells which picture a text is from, and control characters survive it; letters beyond ASCII do not."""
    out = subprocess.run(["zbarimg", "-q", "--xml", "--nodbus", "-Sean2.enable", "-Sean5.enable", "-Sisbn13.disable",
                          "-Sisbn10.disable", *files], capture_output=True).stdout.decode("utf-8", "replace")
    answers = {}
    for source in re.finditer(r"<source href='([^']*)'>(.*?)</source>", out, re.S):
        data = re.findall(r"<symbol type='([^']*)'[^>]*?>.*?<data([^>]*)><!\[CDATA\[(.*?)\]\]></data>",
                          source.group(2), re.S)
        answers[source.group(1)] = [(kind, decoded_data(attributes, text)) for kind, attributes, text in data]
    for file, texts in answers.items():
        if any(kind == "QR-Code" for kind, _ in texts):
            answers[file] = [("QR-Code", zbar_bytes(file))]
    return answers


def zbar_bytes(file):
    """A text in full. Left to itself the decoder guesses an encoding, so it is asked for bytes."""
    out = subprocess.run(["zbarimg", "-q", "--raw", "--nodbus", "--oneshot", "-Sbinary", file], capture_output=True)
    return out.stdout.decode("utf-8", "replace").removesuffix("\n")


def decoded_data(attributes, text):
    return base64.b64decode(text).decode("utf-8", "replace") if "base64" in attributes else text


def zxing(files):
    # Version 1.4 stops with an assertion where it finds one symbol in two scales of a large picture.
    out = subprocess.run(["ZXingReader", "-1", "-noscale", *files], capture_output=True).stdout.decode("utf-8", "replace")
    # Letters beyond ASCII are written by number.
    out = re.sub(r"<U\+([0-9A-F]+)>", lambda number: chr(int(number.group(1), 16)), out)
    answers = collections.defaultdict(list)
    for line in out.splitlines():
        if found := re.match(r'(\S+) (\S+) "(.*)"$', line):
            answers[found.group(1)].append((found.group(2), found.group(3)))
    return answers


# ZXingReader writes control characters by name.
NAMES = {chr(i): f"<{n}>" for i, n in enumerate(
    "NUL SOH STX ETX EOT ENQ ACK BEL BS HT LF VT FF CR SO SI DLE DC1 DC2 DC3 DC4 NAK SYN ETB CAN EM SUB ESC FS GS RS "
    "US".split())}


def is_read(symbol, answers):
    text, add_on = expected(symbol)
    texts = [answer for _, answer in answers]
    shown = "".join(NAMES.get(c, c) for c in text)
    wanted = {text, shown}
    if symbol.kind == "EAN13" and text[0] == "0":
        wanted.add(text[1:])  # a UPC-A number
    if not add_on:
        return bool(wanted & set(texts))
    together = {f"{number} {add_on}" for number in wanted} | {f"{number}{add_on}" for number in wanted}
    return bool(together & set(texts)) or (bool(wanted & set(texts)) and add_on in texts)


def make_symbols(names, count, all_dpi, folder):
    symbols = []
    for name in names:
        kind, make = KINDS[name]
        for number in range(count):
            text = make()
            for dpi in DPI if all_dpi else (DPI[number % 3],):
                colour = QR_COLOURS[number % len(QR_COLOURS)]
                symbols.append(Symbol(name, kind, text, (colour, dpi), str(folder / f"{len(symbols)}.png")))
    return symbols


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--tavrix")
    parser.add_argument("--draw", nargs="+")
    parser.add_argument("--kinds", nargs="+", default=list(KINDS))
    parser.add_argument("--count", type=int, default=200)
    parser.add_argument("--all-dpi", action="store_true")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--keep", type=pathlib.Path, help="a folder for the pictures")
    options = parser.parse_args()
    random.seed(options.seed)
    with tempfile.TemporaryDirectory() as temporary:
        folder = options.keep or pathlib.Path(temporary)
        folder.mkdir(parents=True, exist_ok=True)
        symbols = make_symbols(options.kinds, options.count, options.all_dpi, folder)
        if options.draw:
            draw_with(options.draw, symbols, folder)
        else:
            draw_with_tavrix(options.tavrix, symbols, folder)
        files = [symbol.file for symbol in symbols]
        judges = {"zbarimg": in_pieces(zbar, files), "ZXingReader": in_pieces(zxing, files)}
    failed = False
    for name in options.kinds:
        drawn = [symbol for symbol in symbols if symbol.name == name]
        counts = []
        for judge, answers in judges.items():
            unread = [s for s in drawn if not is_read(s, answers.get(s.file, []))]
            counts.append(f"{judge} {len(drawn) - len(unread)}")
            for symbol in unread[:5]:
                print(f"{judge}: {symbol.text!r} {symbol.option} {symbol.file}: {answers.get(symbol.file)}")
            failed = failed or bool(unread)
        print(f"{name}: {len(drawn)} drawn, decoded: {', '.join(counts)}")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
