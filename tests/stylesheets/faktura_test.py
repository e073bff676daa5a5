#!/usr/bin/env python3
"""Renders FA(3) documents with stylesheets/faktura-fa3.xsl and looks for what the page has lost.

The demonstration's invoices, the files named as arguments and, where the published schema is (TAVRIX_KSEF_SCHEMAS), documents made
from it: whatever may repeat twice, every alternative and every code in one of them, each text only once.
"""
import datetime
import html.parser
import itertools
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as etree

ROOT = pathlib.Path(__file__).resolve().parents[2]
SCHEMAS = pathlib.Path(os.environ.get("TAVRIX_KSEF_SCHEMAS", ROOT.parent / "shared/ksef/xsd"))
XSD, INVOICE = "{http://www.w3.org/2001/XMLSchema}", "{http://crd.gov.pl/wzor/2025/06/25/13775/}"
KINDS = {"VAT": "Faktura", "KOR": "korygująca", "ZAL": "zaliczkowa", "ROZ": "rozliczeniowa", "UPR": "uproszczona",
         "KOR_ZAL": "korygująca fakturę zaliczkową", "KOR_ROZ": "korygująca fakturę rozliczeniową"}
SILENT = {"P_19N", "P_22N", "P_PMarzyN", *("RolaInna", "TransportInny", "LadunekInny", "P_PMarzy", "NrKSeF")}  # or told by the next field
SAMPLES = {  # by the name of a type, a base or an element; {0} counts, {1} is 0 to 99
    "TKwotowy": "-90071992547{0:04}.{1:02}", "TKwotowy2": "{0}.{0:08}", "TIlosci": "7{0:06}.{0:06}", "TProcentowy": "{1}.{0:06}",
    "TNaturalny": "{0}", "integer": "{0}", "TNrNIP": "111111{0:04}", "TNIPIdWew": "1111111111-{0:05}", "TNrVatUE": "X{0}",
    "SWIFT_Type": "ABCDEF22{1:03}", "TNrRB": "111122223333444455556{0:05}", "TNumerKSeF": "1111111111-20260101-00{0:04}-ABCDEF-01",
    "TAdresEmail": "a{0}@b.pl", "TNrKRS": "000000{0:04}", "TNrREGON": "0000{0:05}", "IPKSeF": "123{0:010}",
    "LinkDoPlatnosci": "https://a.pl/?IPKSeF=123{0:010}", "string": "<i>{0}&"}


class Page(html.parser.HTMLParser):
    def __init__(self, root):
        super().__init__()
        self.text, self.tags = "", set()
        self.feed(subprocess.run(["xsltproc", "--nonet", ROOT / "stylesheets/faktura-fa3.xsl", "-"], input=etree.tostring(root),
                                 capture_output=True, check=True).stdout.decode())

    def handle_starttag(self, tag, attributes):
        self.tags.add(tag)

    def handle_data(self, data):
        self.text += data

    def lost(self, root, words):
        """Texts of the document that the page has not, in the form that people expect."""
        wrong, here = [f"markup: {it}" for it in self.tags & {"i"}], squeezed(self.text)
        for name, value in [(it.tag.split("}")[-1], it.text.strip()) for it in root.iter() if len(it) == 0 and it.text]:
            if re.fullmatch(r"-?\d+\.\d+", value):  # digits in groups of three, and all of them
                if re.sub(r"(?<=\d)(?=(\d{3})+,)", "\u00A0", value.replace(".", ",")) not in self.text:
                    wrong.append(f"{name}: {value}")
            elif squeezed(words.get((name, value)) or (KINDS[value] if name == "RodzajFaktury" else value)) not in here:
                wrong.append(f"{name}: {value}")
        return wrong


def squeezed(text):
    return re.sub(r"[\s%]|(?<=\d)T(?=\d\d:)", "", text).casefold()


class Maker:
    def __init__(self):
        self.types = {it.get("name"): it for file in SCHEMAS.glob("*.xsd") for it in etree.parse(file).getroot() if it.get("name")}
        self.words = {}

    def document(self, variant):
        self.numbers = itertools.count(1)
        return self.element(self.types["Faktura"], variant)

    def element(self, declaration, variant):
        made, kind = etree.Element(INVOICE + declaration.get("name")), declaration.get("type", "").split(":")[-1]
        self.fill(made, self.types.get(kind, declaration), variant)
        if len(made) == 0:
            made.text = declaration.get("fixed") or self.value(declaration.get("name"), kind, self.types.get(kind, declaration), variant)
        return made

    def fill(self, made, node, variant):
        parts = [it for it in node if it.tag != XSD + "annotation"]
        if node.tag == XSD + "choice":
            parts, variant = [parts[variant % len(parts)]], variant // len(parts)
        if node.tag == XSD + "extension":
            parts += self.types[node.get("base").split(":")[-1]]
        for part in parts:
            if part.tag == XSD + "element":
                made.extend(self.element(part, variant + turn) for turn in range(1 if part.get("maxOccurs", "1") == "1" else 2))
            elif part.tag == XSD + "attribute":
                made.set(part.get("name"), part.get("fixed") or list(part.iter(XSD + "enumeration"))[variant % 6].get("value"))
            else:
                self.fill(made, part, variant)

    def value(self, element, kind, definition, variant):
        codes = list(definition.iter(XSD + "enumeration"))
        if codes:
            code = codes[variant % len(codes)]
            if code.get("value").isdigit():  # the first words of what the schema says it means
                self.words[element, code.get("value")] = code.findtext(f".//{XSD}documentation", "").split(" - w ")[0][:18]
            return code.get("value")
        for name in (element, kind):
            if name in SAMPLES:
                number = next(self.numbers)
                return SAMPLES[name].format(number, number % 100)
            if name.startswith("TData"):
                return str(datetime.date(2026, 1, 1) + datetime.timedelta(next(self.numbers))) + "T10:11:12Z" * ("Czas" in name)
        base = next((it.get("base").split(":")[-1] for it in definition.iter() if it.get("base")), kind)
        return self.value(element, base.replace("token", "string"), self.types.get(base, definition), variant)


def judge_documents_from_schema():
    maker, flags, wrong = Maker(), set(), []
    with tempfile.TemporaryDirectory() as folder:
        for file in SCHEMAS.glob("*.xsd"):  # what one imports stands beside it
            pathlib.Path(folder, file.name).write_text(re.sub(r'schemaLocation="[^"]*/', 'schemaLocation="', file.read_text()))
        for variant in range(40):
            root = maker.document(variant)
            subprocess.run(["xmllint", "--nonet", "--noout", "--schema", next(pathlib.Path(folder).glob("schemat_FA*")), "-"],
                           input=etree.tostring(root), stderr=subprocess.PIPE, check=True)
            page = Page(root)
            wrong += [f"made {variant}: {it}" for it in page.lost(root, maker.words) + ["Pozostałe dane"] * ("Pozostałe dane" in page.text)]
            # A flag is told by words of the sheet's own: without it the page says less.
            for parent, flag in [(parent, it) for parent in root.iter() for it in parent if it.text == "1" and len(it) == 0]:
                if flag.tag.split("}")[1] not in SILENT and (parent.tag, flag.tag) not in flags:
                    flags.add((parent.tag, flag.tag))
                    place = list(parent).index(flag)
                    parent.remove(flag)
                    wrong += [f"{flag.tag} is not told"] * (squeezed(Page(root).text) == squeezed(page.text))
                    parent.insert(place, flag)
    for number, parent in enumerate([it for it in root.iter() if len(it)]):  # what no schema knows, in every place
        for name in (INVOICE + "Nowe", "P_15", next((it.tag for it in parent if len(it) == 0), "Nowe")):
            etree.SubElement(parent, name).text = f"{name[-1]}{number}."
    for number, element in enumerate(root.iter()):
        element.set("nowy", f"@{number}.")
    page = Page(root)
    attributes = [it.get("nowy") for it in root.iter() if it.get("nowy")]
    return wrong + ["unknown " + it for it in page.lost(root, maker.words) + [it for it in attributes if it not in page.text]]


def main():
    wrong, published = [], next(SCHEMAS.glob("schemat_FA*"), None)
    for file in [*sorted((ROOT / "demo").glob("*.xml")), *sys.argv[1:]]:
        root = etree.parse(file).getroot()
        wrong += [f"{file}: {it}" for it in Page(root).lost(root, {})]
    wrong += judge_documents_from_schema() if published else []
    print("\n".join(wrong) or "nothing is lost" + "; no schema to make documents from" * (not published))
    return min(len(wrong), 1)


if __name__ == "__main__":
    sys.exit(main())
