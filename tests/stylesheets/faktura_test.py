#!/usr/bin/env python3
"""Renders FA(3) documents with stylesheets/faktura-fa3.xsl and looks for what the page has lost.

The demonstration's invoices, the files named as arguments and, where the published schema is (TAVRIX_KSEF_SCHEMAS), documents made
from it: every element twice where it may be, every alternative and every code in one of them, each text of its own.
"""
import copy
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
XSD, NAMESPACE = "{http://www.w3.org/2001/XMLSchema}", "{http://crd.gov.pl/wzor/2025/06/25/13775/}"
KINDS = {"VAT": "Faktura", "KOR": "korygująca", "ZAL": "zaliczkowa", "ROZ": "rozliczeniowa", "UPR": "uproszczona",
         "KOR_ZAL": "korygująca fakturę zaliczkową", "KOR_ROZ": "korygująca fakturę rozliczeniową"}
# Said by what stands beside them.
IMPLIED = {"RolaInna", "TransportInny", "LadunekInny", "P_PMarzy", "NrKSeF", "P_19N", "P_22N", "P_PMarzyN"}
SAMPLES = {  # by type, or by element where its type has no name
    "TKwotowy": "-90071992547{0:04}.{1:02}", "TKwotowy2": "{0}.{0:08}", "TIlosci": "7{0:06}.{0:06}", "TProcentowy": "{1}.{0:06}", "TNaturalny": "{0}",
    "integer": "{0}", "TNrNIP": "111111{0:04}", "TNIPIdWew": "1111111111-{0:05}", "TNrVatUE": "X{0}", "SWIFT_Type": "ABCDEF22{1:03}", "TNrRB": "111122223333444455556{0:05}",
    "TNumerKSeF": "1111111111-20260101-00{0:04}-ABCDEF-01", "TAdresEmail": "a{0}@b.pl", "TNrKRS": "000000{0:04}", "TNrREGON": "0000{0:05}",
    "LinkDoPlatnosci": "https://a.pl/?IPKSeF=123{0:010}", "IPKSeF": "123{0:010}"}


class Page(html.parser.HTMLParser):
    def __init__(self, text):
        super().__init__()
        self.text, self.tags = "", set()
        self.feed(text)

    def handle_starttag(self, tag, attributes):
        self.tags.add(tag)

    def handle_data(self, data):
        self.text += data


def render(root):
    done = subprocess.run(["xsltproc", "--nonet", ROOT / "stylesheets/faktura-fa3.xsl", "-"], input=etree.tostring(root), capture_output=True, check=True)
    return Page(done.stdout.decode())


class Maker:
    def __init__(self):
        self.types = {it.get("name"): it for file in SCHEMAS.glob("*.xsd") for it in etree.parse(file).getroot() if it.get("name")}
        self.numbers, self.words = itertools.count(1), {}

    def document(self, variant):
        self.numbers = itertools.count(1)
        return self.element(self.types["Faktura"], variant)

    def element(self, declaration, variant):
        made, kind = etree.Element(NAMESPACE + declaration.get("name")), (declaration.get("type") or "").split(":")[-1]
        definition = self.types.get(kind, declaration)
        self.content(definition, made, variant)
        for attribute in [*definition.findall(f".//{XSD}extension/{XSD}attribute"), *definition.findall(f"{XSD}complexType/{XSD}attribute")] if definition.find(f".//{XSD}element/..//{XSD}extension") is None else definition.findall(f"{XSD}complexType/{XSD}attribute"):
            made.set(attribute.get("name"), attribute.get("fixed") or [it.get("value") for it in attribute.iter(XSD + "enumeration")][variant % 6])
        if len(made) == 0:
            made.text = declaration.get("fixed") or self.value(definition, [kind, declaration.get("name")], variant, declaration.get("name"))
        return made

    def content(self, node, made, variant):
        for child in node:
            times = 1 if child.get("maxOccurs", "1") == "1" else 2
            if child.tag == XSD + "element":
                made.extend(self.element(child, variant + turn) for turn in range(times))
            elif child.tag == XSD + "choice":
                options = [it for it in child if it.tag != XSD + "annotation"]
                self.content([options[variant % len(options)]], made, variant // len(options))
            elif child.tag == XSD + "extension" and child.get("base").split(":")[-1] in self.types:
                self.content(self.types[child.get("base").split(":")[-1]], made, variant)
            elif child.tag in (XSD + "complexType", XSD + "sequence", XSD + "complexContent"):
                self.content(child, made, variant)

    def value(self, definition, names, variant, element):
        enumerated = list(definition.iter(XSD + "enumeration"))
        if enumerated:
            chosen = enumerated[variant % len(enumerated)]
            if chosen.get("value").isdigit() and (words := chosen.findtext(f".//{XSD}documentation", "").split(" - w ")[0][:18]) not in ("", "Tak", "Nie"):
                self.words[element, chosen.get("value")] = words
            return chosen.get("value")
        number = next(self.numbers)
        for name in names:
            if name in SAMPLES:
                return SAMPLES[name].format(number, number % 100)
            if (name or "").startswith("TData"):
                day = str(datetime.date(2026, 1, 1) + datetime.timedelta(number))
                return day + "T10:11:12Z" if "Czas" in name else day
        base = next((it.get("base").split(":")[-1] for it in definition.iter() if it.get("base")), None)
        return self.value(self.types.get(base, []) if base in self.types else etree.Element("x"), [base], variant, element) if base else f"<i>{number}&"


def squeezed(text):
    return re.sub(r"[\s%]", "", text)


def lost(root, words):
    page = render(root)
    text, wrong = squeezed(page.text), [f"markup: {it}" for it in page.tags & {"i", "script"}]
    for leaf in (it for it in root.iter() if len(it) == 0 and (it.text or "").strip()):
        name, value = leaf.tag.split("}")[-1], leaf.text.strip()
        wanted = words.get((name, value)) or (KINDS[value] if name == "RodzajFaktury" else value.replace("T", " ") if re.match(r"\d{4}-\d\d-\d\dT", value) else value)
        if re.fullmatch(r"-?\d+\.\d+", value):
            wanted = re.sub(r"(?<=\d)(?=(\d{3})+,)", "\u00A0", value.replace(".", ",")) if name not in ("WKom", "SKom") else value.replace(".", ",")
        if squeezed(wanted).casefold() not in text.casefold() or ("\u00A0" in wanted and wanted not in page.text):
            wrong.append(f"{name}: {value}")
    return wrong, page


def made_from_schema():
    maker, flags, wrong = Maker(), set(), []
    with tempfile.TemporaryDirectory() as folder:
        for file in SCHEMAS.glob("*.xsd"):
            (pathlib.Path(folder) / file.name).write_text(re.sub(r'schemaLocation="[^"]*/', 'schemaLocation="', file.read_text()))
        schema, written = next(pathlib.Path(folder).glob("schemat_FA*.xsd")), pathlib.Path(folder) / "made.xml"
        for variant in range(24):
            root = maker.document(variant)
            etree.ElementTree(root).write(written, "utf-8")
            subprocess.run(["xmllint", "--nonet", "--noout", "--schema", schema, written], check=True, stderr=subprocess.PIPE if variant else None)
            missing, page = lost(root, maker.words)
            wrong += [f"made {variant}: {it}" for it in missing + ["Pozostałe dane"] * ("Pozostałe dane" in page.text)]
            # Whatever a flag says, the page says less without it.
            for parent, child in [(parent, child) for parent in root.iter() for child in parent if child.text == "1" and len(child) == 0]:
                if (child.tag.split("}")[1] not in IMPLIED) and (parent.tag, child.tag) not in flags:
                    flags.add((parent.tag, child.tag))
                    less = copy.deepcopy(root)
                    place = list(root.iter()).index(parent)
                    cut = list(less.iter())[place]
                    cut.remove(cut[list(parent).index(child)])
                    wrong += [f"made {variant}: {child.tag} is not told"] * (squeezed(render(less).text) == squeezed(page.text))
        # What no schema knows, in every place.
        for number, parent in enumerate([it for it in root.iter() if len(it)]):
            etree.SubElement(parent, NAMESPACE + "Nowe").text = f"n{number}n"
            etree.SubElement(parent, "P_15").text = f"o{number}o"
        return wrong + ["unknown: " + it for it in lost(root, maker.words)[0]]


def main():
    wrong = []
    for file in sorted((ROOT / "demo").glob("*.xml")) + sys.argv[1:]:
        wrong += [f"{file}: {it}" for it in lost(etree.parse(file).getroot(), {})[0]]
    if next(SCHEMAS.glob("schemat_FA*.xsd"), None):
        wrong += made_from_schema()
    else:
        print("there is no schema: only the demonstration's invoices were rendered")
    print("\n".join(wrong) or "nothing is lost")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
