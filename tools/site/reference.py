"""The reference: what the build writes into docs/interface.md, and beside it the Polish text of every class and member."""
import re

DECLARATION = re.compile(r"\| (\d+) \| `((?:Function|Sub|Property|Event) (\w+)\(.*?)` \| (.*?) \| \w+ \|")
SECTION = re.compile(r"^## +(\w+) *$", re.M)
DESCRIBED = re.compile(r"^- `(\w+)`[,:]", re.M)


class Member:
    def __init__(self, number, declaration, name, summary):
        self.number, self.declaration, self.name, self.summary = number, declaration, name, summary
        self.arguments = re.findall(r"By(?:Val|Ref) (\w+)", declaration)


def tables(interface):
    """{class: (what it is, {member: Member})} as the page says; events come behind the members."""
    classes = {}
    for part in re.split(r"^## ", interface, flags=re.M)[1:]:
        name, rest = part.split("\n", 1)
        members = {found[2]: Member(*found) for found in DECLARATION.findall(rest)}
        classes[name.strip()] = (rest.strip().split("\n", 1)[0], members)
    return classes


def pages(root, complain):
    """{file name: Markdown} of the classes; whatever has no text, or text without a member, is complained of."""
    classes = tables((root / "docs/interface.md").read_text(encoding="utf-8"))
    folder = root / "docs/pl/klasy"
    for stray in sorted({path.stem for path in folder.glob("*.md")} - set(classes)):
        complain(f"docs/pl/klasy/{stray}.md: there is no such class")
    made = {}
    for name, (what, members) in classes.items():
        path = folder / f"{name}.md"
        if not path.exists():
            complain(f"docs/pl/klasy/{name}.md is missing")
            continue
        made[f"klasy/{name}.md"] = page(name, what, members, path.read_text(encoding="utf-8"), complain)
    return made


def page(name, what, members, text, complain):
    introduction, *sections = SECTION.split(text)
    texts = dict(zip(sections[::2], sections[1::2]))
    for stray in sorted(set(texts) - set(members)):
        complain(f"docs/pl/klasy/{name}.md: {name} has no member {stray}")
    title, _, rest = introduction.strip().partition("\n")
    identity = what.partition(". ProgID ")[2]
    lines = [title, "", f"ProgID {identity}" if identity else "", "", rest.strip(), ""]
    for member in members.values():
        described = texts.get(member.name, "").strip()
        if not described:
            complain(f"docs/pl/klasy/{name}.md: no text for {member.name}")
        for stray in sorted(set(DESCRIBED.findall(described)) - set(member.arguments)):
            complain(f"docs/pl/klasy/{name}.md: {member.name} has no argument {stray}")
        lines += [f"## {member.name}", "", "```vb", member.declaration, f"' DISPID {member.number}", "```", "", described, ""]
    return "\n".join(lines)
