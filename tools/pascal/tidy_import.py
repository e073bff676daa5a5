#!/usr/bin/env python3
"""tidy_import.py UNIT.pas: makes an imported unit one that Free Pascal compiles, in place.

Free Pascal knows ASCII names only, so Polish letters lose their strokes; Delphi needs none of this. The importer also lists
the functions of IUnknown and IDispatch, whose numbers every dispatch interface reserves, and their events clash with its own.
"""
import pathlib
import re
import sys

LETTERS = str.maketrans("ąćęłńóśźżĄĆĘŁŃÓŚŹŻ", "acelnoszzACELNOSZZ")
RESERVED = re.compile(r"QueryInterface|AddRef|Release|GetTypeInfoCount|GetTypeInfo|GetIDsOfNames|Invoke")
FIRST_RESERVED_DISPID = 0x60000000


def belongs_to_the_base(line):
    dispid = re.search(r"\bdispid (\d+);", line) or re.match(r"\s*(\d+): if assigned\(", line)
    if dispid:
        return int(dispid[1]) >= FIRST_RESERVED_DISPID
    # The event class's types, fields and properties of the same functions.
    member = re.match(r"\s*(?:T__\w+?|FOn|property On)(%s)\s*[=:]" % RESERVED.pattern, line)
    return member is not None


def tidy(source):
    lines, skip = [], False
    for line in source.translate(LETTERS).splitlines():
        # The call of an event stands on the line after its number.
        skip, drop = belongs_to_the_base(line) and line.lstrip()[:1].isdigit(), skip or belongs_to_the_base(line)
        if not drop:
            lines.append(line)
    return "\n".join(lines) + "\n"


if __name__ == "__main__":
    path = pathlib.Path(sys.argv[1])
    path.write_text(tidy(path.read_text(encoding="cp1250")), encoding="ascii", errors="replace")
