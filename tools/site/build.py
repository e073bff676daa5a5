#!/usr/bin/env python3
"""Builds the documentation for hosts, docs/pl, into a folder of pages that a browser opens without a server.

    python3 tools/site/build.py [FOLDER]        build/site unless told

Wrong is, and ends with 1: a link or an anchor that leads nowhere, a page outside the navigation, something loaded from elsewhere, a member of the
classes without text, a failure text of the sources that the page of messages does not have. The same sources give the same bytes.
"""
import argparse
import html
import json
import pathlib
import posixpath
import re
import shutil
import sys

import markdown
from markdown.treeprocessors import Treeprocessor
from markdown.extensions import Extension

sys.path.insert(0, str(pathlib.Path(__file__).parent))
import messages  # noqa: E402
import reference  # noqa: E402

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parents[1]
NAVIGATION = [
    ("Na początek", ["index", "instalacja", "pierwsze-kroki", "test-i-produkcja"]),
    ("Pierwsze kroki", ["vb6-vba", "delphi", "csharp", "powershell", "vbscript", "jscript", "python", "wiersz-polecen"]),
    ("W praktyce", ["ksef", "kody-kreskowe", "poczta", "pdf", "okna", "piaskownica", "ustawienia", "bezpieczenstwo"]),
    ("Kiedy coś nie działa", ["komunikaty"]),
    ("Klasy", None),
    ("Kod", ["przyklady"]),
]
EXAMPLE_KINDS = {".vbs", ".js", ".bas", ".cs", ".ps1", ".py", ".dpr"}
FOLDED = str.maketrans("ąćęłńóśźż", "acelnoszz")
LONG_PAGE = 5  # parts; from here on a page begins with a list of them
SHORT_TITLES = {"index.md": "O bibliotece"}
ERRORS = []


def complain(text):
    ERRORS.append(text)


def slug(text, _separator="-"):
    return re.sub(r"[^a-z0-9]+", "-", text.lower().translate(FOLDED)).strip("-")[:80] or "tekst"


def out_name(source):
    return source[:-3].replace("/", "-") + ".html"


class Page:
    """One page of Markdown, as HTML, with what links and the search need to know of it."""

    def __init__(self, source, text):
        self.source, self.out = source, out_name(source)
        self.links, self.ids, self.sections = [], set(), []
        converter = markdown.Markdown(extensions=["tables", "fenced_code", "sane_lists", "toc", Finish(self)],
                                      extension_configs={"toc": {"slugify": slug}})
        self.body = converter.convert(text)
        found = re.search(r"^# (.+)$", text, re.M)
        self.title = re.sub(r"[`*]", "", found.group(1)) if found else source
        parts = [token for top in converter.toc_tokens for token in top["children"]]
        if len(parts) >= LONG_PAGE:
            links = " ".join(f'<a href="#{part["id"]}">{part["name"]}</a>' for part in parts)
            self.body = self.body.replace("</h1>", f'</h1>\n<p class="parts">{links}</p>', 1)
        if not found:
            complain(f"{source}: no title")


class Finish(Extension):
    def __init__(self, page):
        super().__init__()
        self.page = page

    def extendMarkdown(self, md):
        md.treeprocessors.register(Walk(md, self.page), "finish", 1)


class Walk(Treeprocessor):
    def __init__(self, md, page):
        super().__init__(md)
        self.page, self.rows = page, {}

    def run(self, root):
        for element in root.iter():
            if element.tag == "a":
                element.set("href", self.target(element.get("href", "")))
            elif element.tag == "img":
                element.set("src", self.target(element.get("src", "")))
            elif element.tag == "table":
                self.label_cells(element)
        self.collect(root)

    def target(self, link):
        address, mark, anchor = link.partition("#")
        if not address:
            target = self.page.out
        elif "://" in address or address.startswith("mailto:"):
            complain(f"{self.page.source}: leads out of the pages: {link}")
            return link
        else:
            place = posixpath.normpath(posixpath.join("docs/pl", posixpath.dirname(self.page.source), address))
            if place.startswith("docs/pl/") and place.endswith(".md"):
                target = out_name(place[len("docs/pl/"):])
            elif place.startswith("docs/pictures/"):
                target = "obrazy/" + posixpath.basename(place)
            elif place.startswith("examples"):
                target, anchor = "przyklady.html", slug(place)
                mark = "#"
            else:
                target = place
        self.page.links.append((target, anchor, link))
        return (target if target != self.page.out else "") + mark + anchor if anchor or target != self.page.out else "#"

    # On a phone a table becomes a pile of cards: each cell then says itself what it is.
    def label_cells(self, table):
        heads = [" ".join("".join(cell.itertext()).split()) for cell in table.iter("th")]
        for row in table.iter("tr"):
            cells = row.findall("td")
            for head, cell in zip(heads, cells):
                if head:
                    cell.set("data-label", head)
            if self.page.source == "komunikaty.md" and cells:
                anchor = "m-" + slug("".join(cells[0].itertext()))
                self.rows[anchor] = self.rows.get(anchor, 0) + 1
                row.set("id", anchor if self.rows[anchor] == 1 else f"{anchor}-{self.rows[anchor]}")

    def add(self, anchor, title, text):
        if anchor in self.page.ids:
            complain(f"{self.page.source}: the anchor {anchor} stands twice")
        self.page.ids.add(anchor)
        self.page.sections.append([anchor, title, [text] if text else []])

    def collect(self, root):
        self.page.sections.append(["", "", []])
        for element in root:
            text = self.words(element)
            if element.tag in ("h1", "h2", "h3", "h4"):
                self.add(element.get("id"), text, "")
            elif self.page.source == "komunikaty.md" and element.tag == "table":
                for row in element.iter("tr"):
                    cells = [" ".join("".join(cell.itertext()).split()) for cell in row.findall("td")]
                    if cells:
                        self.add(row.get("id"), cells[0], " ".join(cells[1:]))
            elif text:
                self.page.sections[-1][2].append(text)

    # What fenced code was is in the stash by now.
    def words(self, element):
        text = " ".join("".join(element.itertext()).split())
        return "" if "wzxhzdk" in text else text


def example_files():
    return [path for path in sorted((ROOT / "examples").rglob("*")) if path.suffix in EXAMPLE_KINDS]


def examples_page():
    lines = ["# Przykłady", "", "Całe programy, do skopiowania. Te w VBScript, JScript, Delphi i Pythonie z poleceniem `tavrix` uruchamiają testy Tavrix; "
             "te w VBA, C#, PowerShellu i Pythonie z pywin32 napisano bez możliwości uruchomienia."]
    folder = None
    for path in example_files():
        if path.parent != folder:
            folder = path.parent
            lines += ["", f"## {folder.relative_to(ROOT).as_posix()}"]
        name = path.relative_to(ROOT).as_posix()
        lines += ["", f"### {name}", "", "~~~~", path.read_text(encoding="utf-8-sig").rstrip(), "~~~~"]
    return "\n".join(lines) + "\n"


def sources():
    texts = {path.relative_to(ROOT / "docs/pl").as_posix(): path.read_text(encoding="utf-8")
             for path in sorted((ROOT / "docs/pl").rglob("*.md")) if path.parent.name != "klasy"}
    texts.update(reference.pages(ROOT, complain))
    texts["przyklady.md"] = examples_page()
    return texts


def navigation(pages):
    groups = []
    for title, names in NAVIGATION:
        if names is None:
            names = [name[:-3] for name in pages if name.startswith("klasy/")]
        for name in names:
            if name + ".md" not in pages:
                complain(f"the navigation names {name}, which is no page")
        groups.append((title, [pages[name + ".md"] for name in names if name + ".md" in pages]))
    shown = {page.source for _, group in groups for page in group}
    for stray in sorted(set(pages) - shown):
        complain(f"docs/pl/{stray} is not in the navigation")
    return groups


def whole(page, groups):
    menu = []
    for title, group in groups:
        menu.append(f"<p>{title}</p><ul>")
        for other in group:
            current = ' aria-current="page"' if other is page else ""
            menu.append(f'<li><a href="{other.out}"{current}>{html.escape(SHORT_TITLES.get(other.source, other.title))}</a></li>')
        menu.append("</ul>")
    template = (HERE / "page.html").read_text(encoding="utf-8")
    for name, value in (("title", html.escape(page.title)), ("menu", "\n".join(menu)), ("body", page.body)):
        template = template.replace("{{" + name + "}}", value)
    return template


def index_of(pages):
    entries = []
    for page in pages.values():
        for anchor, title, texts in page.sections:
            if title or texts:
                entries.append([page.out + ("#" + anchor if anchor else ""), page.title, title or page.title, " ".join(texts)])
    return "var PAGES=" + json.dumps(entries, ensure_ascii=False, separators=(",", ":"), indent=0) + ";\n"


def check_links(pages, folder):
    by_out = {page.out: page for page in pages.values()}
    for page in pages.values():
        for target, anchor, link in page.links:
            if not (folder / target).is_file():
                complain(f"{page.source}: {link} leads nowhere")
            elif anchor and target in by_out and anchor not in by_out[target].ids:
                complain(f"{page.source}: {link}: no such anchor")
        for address in re.findall(r'(?:src|href)="((?:https?:)?//[^"]*)', page.body):
            complain(f"{page.source}: loads from elsewhere: {address}")


def check_versions(texts):
    numbers = re.findall(r"version_(?:major|minor|revision) = (\d+)", (ROOT / "base/version.h").read_text(encoding="utf-8"))
    version = ".".join(numbers)
    for source, text in texts.items():
        for named in re.findall(r"Tavrix-(\d+\.\d+\.\d+)|(\d+\.\d+\.\d+)\.Tavrix", text):
            if version not in named:
                complain(f"{source}: this is version {version}, not {''.join(named)}")


def check_settings(text):
    listed = re.findall(r"`((?:[a-z]+\.)?profile|[a-z]+\.[a-z_]+)`(?=,? )", (ROOT / "docs/settings.md").read_text(encoding="utf-8"))
    sections = ("ksef.", "qr.", "http.", "mail.", "xml.", "helpdesk.", "trace.", "profile")
    for key in sorted(set(listed)):
        if key.startswith(sections) and f"`{key}`" not in text:
            complain(f"ustawienia.md: the key {key} is missing")


def check_messages(text):
    # What a message is stands in the first column; the explanations may use its words.
    known = messages.plain("\n".join(re.findall(r"^\| (.*?) \| ", text, re.M)))
    found = messages.candidates(ROOT)
    listed = [messages.plain(line) for line in (HERE / "no_messages.txt").read_text(encoding="utf-8").splitlines()
              if line and not line.startswith("#")]
    for message, file in found.items():
        if message not in listed and message not in known:
            complain(f"{file}: docs/pl/komunikaty.md does not say what this means: {message}")
    for line in listed:
        if line not in found:
            complain(f"tools/site/no_messages.txt: no source has this text: {line}")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("folder", nargs="?", type=pathlib.Path, default=ROOT / "build/site")
    folder = parser.parse_args().folder
    if folder.exists() and any(folder.iterdir()) and not (folder / "search.js").exists():
        parser.error(f"{folder} holds something else")
    shutil.rmtree(folder, ignore_errors=True)
    (folder / "obrazy").mkdir(parents=True)
    texts = sources()
    pages = {source: Page(source, text) for source, text in texts.items()}
    groups = navigation(pages)
    for page in pages.values():
        (folder / page.out).write_text(whole(page, groups), encoding="utf-8")
        for target, _, _ in page.links:
            picture = ROOT / "docs/pictures" / posixpath.basename(target)
            if target.startswith("obrazy/") and picture.is_file():
                shutil.copyfile(picture, folder / target)
    for name in ("style.css", "search.js"):
        shutil.copyfile(HERE / name, folder / name)
    (folder / "index.js").write_text(index_of(pages), encoding="utf-8")
    check_links(pages, folder)
    check_versions(texts)
    check_settings(texts.get("ustawienia.md", ""))
    check_messages(texts.get("komunikaty.md", ""))
    if ERRORS:
        print("\n".join(ERRORS))
        return 1
    print(f"{len(pages)} pages in {folder.name}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
