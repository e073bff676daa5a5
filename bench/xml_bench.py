#!/usr/bin/env python3
"""xml_bench.py TAVRIX: 1000 invoices held against a schema and ten made pages, beside xmllint and xsltproc.

Everything runs as processes. The schema is read once for all documents, or again for each of them. Where the published
schemas (TAVRIX_KSEF_SCHEMAS) are not there, the validation is not measured.
"""
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
COUNT = 1000
ONE_BY_ONE = 40


def seconds(*commands):
    """The shortest of three runs of all commands. Whether they find a document valid does not count here."""
    best = float("inf")
    for _ in range(3):
        begin = time.monotonic()
        for command in commands:
            subprocess.run(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        best = min(best, time.monotonic() - begin)
    return best


def validation(program, schema, names):
    ours = [program, "validate", "--schema", schema]
    theirs = ["xmllint", "--nonet", "--noout", "--schema", schema]
    once, their_once = seconds(ours + names), seconds(theirs + names)
    some = names[:ONE_BY_ONE]
    each, their_each = (seconds(*[command + [name] for name in some]) / len(some) for command in (ours, theirs))
    print(f"validation, schema read once: {once / COUNT * 1e3:.2f} ms a document; "
          f"xmllint {their_once / COUNT * 1e3:.2f} ms; ratio {their_once / once:.2f}")
    print(f"validation, schema read each time: {each * 1e3:.1f} ms; xmllint {their_each * 1e3:.1f} ms; "
          f"ratio {their_each / each:.2f}", flush=True)


def rendering(program, name, what):
    sheet = str(ROOT / "stylesheets/faktura-fa3.xsl")
    ours = seconds([program, "render", name, "--xsl", sheet, "-o", f"{name}.html"])
    theirs = seconds(["xsltproc", "--nonet", "-o", f"{name}.peer.html", sheet, name])
    print(f"page of {what}: {ours * 1e3:.0f} ms; xsltproc {theirs * 1e3:.0f} ms; ratio {theirs / ours:.2f}", flush=True)


def main():
    program = str(pathlib.Path(sys.argv[1]).resolve())
    folder = pathlib.Path(os.environ.get("TAVRIX_KSEF_SCHEMAS", ROOT.parent / "shared/ksef/xsd"))
    schema = next(folder.glob("schemat_FA*"), None)
    invoice = (ROOT / "demo/faktura.xml").read_text()
    row = re.search(r"\s*<FaWiersz>.*?</FaWiersz>", invoice, re.DOTALL).group()
    with tempfile.TemporaryDirectory() as folder:
        names = [f"{folder}/{number}.xml" for number in range(COUNT)]
        for name in names:
            pathlib.Path(name).write_text(invoice)
        if schema:
            validation(program, str(schema), names)
        else:
            print("validation: not measured, the schemas are not there")
        rendering(program, names[0], "an invoice of one row")
        pathlib.Path(names[1]).write_text(invoice.replace(row, row * 1000))
        rendering(program, names[1], "an invoice of 1000 rows")


if __name__ == "__main__":
    main()
