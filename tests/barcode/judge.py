#!/usr/bin/env python3
"""Draws random symbols of every kind and has two decoders that are not ours read the pictures.

Usage: judge.py --tavrix PROGRAM | --draw PROGRAM... [--kinds KIND...] [--count N]

PROGRAM draws each symbol: `tavrix`, or with --draw whatever takes a list of symbols (a line each: kind, dots per
inch, size step, text in hexadecimal UTF-8, picture file) and draws them, such as the printing of a Windows surface
under Wine.
Prints how many of each kind each decoder read. Ends with 1 unless every text came back from both.
"""
import argparse
import base64
import collections
import concurrent.futures
import itertools
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
Symbol = collections.namedtuple("Symbol", "kind text colour dpi step file")


def digits(count):
    return "".join(random.choice("0123456789") for _ in range(count))


def code128_text():
    """Pieces that need set A, B and C and the switches between them."""
    # zbarimg writes a line for each symbol.
    controls = [chr(c) for c in range(1, 32) if chr(c) != "\n"]
    pieces = [lambda: digits(random.choice((2, 3, 4, 5, 6, 8))),
              lambda: "".join(chr(random.randrange(32, 127)) for _ in range(random.randrange(1, 6))),
              lambda: "".join(random.choice(controls) for _ in range(random.randrange(1, 3)))]
    return "".join(random.choice(pieces)() for _ in range(random.randrange(1, 4)))


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
# What the classes make of an EAN-13 that is turned, at each of their sizes.
STEPS = range(6)
TURNED = {f"EAN-13 turned, Rozm {step}": ("TURNED", lambda: digits(12)) for step in STEPS}


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
    if symbol.kind in ("EAN8", "EAN13", "TURNED"):
        number, _, add_on = symbol.text.partition("+")
        return number + check_digit(number), add_on
    if symbol.kind == "EAN39EX":
        return "".join(map(full_ascii, symbol.text)), ""
    return symbol.text, ""


def draw_with_tavrix(tavrix, symbol):
    command = ["qr", "--color", symbol.colour] if symbol.kind == "QR" else ["barcode", "--kind", symbol.kind, "--no-caption"]
    subprocess.run([tavrix, *command, f"--text={symbol.text}", "--dpi", str(symbol.dpi), "--out", symbol.file], check=True)


def draw_with(command, symbols, folder):
    lines = folder / "symbols.txt"
    lines.write_text("".join(f"{s.kind}\t{s.dpi}\t{s.step}\t{s.text.encode().hex()}\t{s.file}\n" for s in symbols))
    subprocess.run([*command, lines], check=True)


def output_of(*command):
    return subprocess.run(command, capture_output=True).stdout.decode("utf-8", "replace")


# Each decoder takes pictures of one kind and yields the texts of each.

def zbar(symbols):
    if symbols[0].kind == "QR":
        # Left to itself the decoder guesses the encoding of a QR text, so it is asked for bytes, and writes nothing else.
        for symbol in symbols:
            yield [output_of("zbarimg", "-q", "--raw", "--nodbus", "--oneshot", "-Sbinary", symbol.file)]
        return
    out = output_of("zbarimg", "-q", "--xml", "--nodbus", "-Sean2.enable", "-Sean5.enable", "-Sisbn13.disable",
                    "-Sisbn10.disable", *(symbol.file for symbol in symbols))
    texts = collections.defaultdict(list)
    # No XML parser: it would make a line feed of a carriage return.
    for file, source in re.findall(r"<source href='(.*?)'>(.*?)</source>", out, re.S):
        for is_base64, text in re.findall(r"<data( format='base64')?[^>]*><!\[CDATA\[(.*?)\]\]></data>", source, re.S):
            texts[file].append(base64.b64decode(text).decode() if is_base64 else text)
    yield from (texts[symbol.file] for symbol in symbols)


def zxing(symbols):
    # Version 1.4 stops with an assertion where it finds one symbol in two scales of a large picture.
    out = output_of("ZXingReader", "-1", "-noscale", *(symbol.file for symbol in symbols))
    # Letters beyond ASCII are written by number.
    out = re.sub(r"<U\+([0-9A-F]+)>", lambda number: chr(int(number.group(1), 16)), out)
    texts = collections.defaultdict(list)
    for file, text in re.findall(r'^(\S+) \S+ "(.*)"$', out, re.M):
        texts[file].append(text)
    yield from (texts[symbol.file] for symbol in symbols)


DECODERS = {"zbarimg": zbar, "ZXingReader": zxing}
# ZXingReader writes control characters by name.
NAMES = {chr(i): f"<{n}>" for i, n in enumerate(
    "NUL SOH STX ETX EOT ENQ ACK BEL BS HT LF VT FF CR SO SI DLE DC1 DC2 DC3 DC4 NAK SYN ETB CAN EM SUB ESC FS GS RS "
    "US".split())}


def is_read(symbol, texts):
    text, add_on = expected(symbol)
    wanted = {text, "".join(NAMES.get(c, c) for c in text)}
    if symbol.kind in ("EAN13", "TURNED") and text[0] == "0":
        wanted.add(text[1:])  # a UPC-A number
    together = {number + space + add_on for number in wanted for space in ("", " ")}
    return bool(together & set(texts)) or (bool(wanted & set(texts)) and add_on in ["", *texts])


def make_symbols(name, count, folder):
    kind, make = (KINDS | TURNED)[name]
    step = list(TURNED).index(name) if name in TURNED else 0
    # The fewer dots there are for a module, the harder it is to turn.
    dpi = DPI[:1] if name in TURNED else DPI
    return [Symbol(kind, make(), QR_COLOURS[number % len(QR_COLOURS)], dpi[number % len(dpi)], step,
                   str(folder / f"{name.replace(' ', '-').replace(',', '')}-{number}.png")) for number in range(count)]


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--tavrix")
    parser.add_argument("--draw", nargs="+")
    parser.add_argument("--kinds", nargs="+")
    parser.add_argument("--count", type=int, default=200)
    options = parser.parse_args()
    random.seed(1)
    failed = False
    with tempfile.TemporaryDirectory() as folder, concurrent.futures.ThreadPoolExecutor(2) as pool:
        for name in options.kinds or list(KINDS | TURNED if options.draw else KINDS):
            symbols = make_symbols(name, options.count, pathlib.Path(folder))
            if options.draw:
                draw_with(options.draw, symbols, pathlib.Path(folder))
            else:
                list(pool.map(lambda symbol: draw_with_tavrix(options.tavrix, symbol), symbols))
            for decoder, read in DECODERS.items():
                # A decoder takes longer to start than to read a picture.
                heaps = [symbols[first:first + 25] for first in range(0, len(symbols), 25)]
                answers = itertools.chain.from_iterable(pool.map(lambda heap: list(read(heap)), heaps))
                unread = [(symbol, texts) for symbol, texts in zip(symbols, answers) if not is_read(symbol, texts)]
                print(f"{name}: {len(symbols)} drawn, {decoder} read {len(symbols) - len(unread)}")
                for symbol, texts in unread[:5]:
                    print(f"{symbol}: {texts}")
                failed = failed or bool(unread)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
