#!/usr/bin/env python3
"""Writes a program's manual page and its completion for bash out of its own help: cli_pages.py PROGRAM VERSION MAN COMPLETION"""
import pathlib
import re
import subprocess
import sys

ENTRY = re.compile(r"^  (-\S+|[a-z]\S*)(.*)$")


def help_of(program, *commands):
    return subprocess.run([program, *commands, "--help"], check=True, capture_output=True, text=True).stdout


def subcommands(text):
    _, found, rest = text.partition("Subcommands:\n")
    return [match.group(1) for line in rest.split("\n\n")[0].splitlines() if found and (match := ENTRY.match(line))]


def options(text):
    return sorted({name for line in text.splitlines() if (match := ENTRY.match(line))
                   for name in match.group(1).split(",") if name.startswith("--")})


def roff(text):
    """Lines as they are; what roff would take for a request or a hyphen is none."""
    escaped = text.replace("\\", "\\e").replace("-", "\\-")
    return "\n".join("\\&" + line if line.startswith((".", "'")) else line for line in escaped.splitlines())


def man_page(name, version, texts):
    description, _, body = texts[()].partition("\n")
    page = [f'.TH {name.upper()} 1 "" "Tavrix {version}"', ".SH NAME",
            f"{name} \\- {roff(description.removeprefix('Tavrix - ').split('.')[0])}", ".SH SYNOPSIS", f".B {name}",
            "[options] [command]" if len(texts) > 1 else "[options]"]
    for commands, text in texts.items():
        title = " ".join([name, *commands])
        page += [f'.SH "{title}"' if commands else ".SH DESCRIPTION", ".nf", roff(text.split("\n\n\n")[0] if commands else text), ".fi"]
    return "\n".join(page) + "\n"


def completion(name, texts):
    function = f"_{name.replace('-', '_')}"
    cases = "\n".join(f'        "{" ".join(commands)}") words="{" ".join(subcommands(text) + options(text))}" ;;'
                      for commands, text in texts.items())
    return f"""# bash completion of {name}
{function}() {{
    local word commands="" words="" current=${{COMP_WORDS[COMP_CWORD]}}
    for word in "${{COMP_WORDS[@]:1:COMP_CWORD-1}}"; do
        [[ $word != -* ]] || break
        commands+="${{commands:+ }}$word"
    done
    case "$commands" in
{cases}
    esac
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current"; [[ $current == -* ]] || compgen -f -- "$current")
}}
complete -o filenames -F {function} {name}
"""


def main():
    program, version, man, completes = sys.argv[1:]
    name = pathlib.Path(program).name
    texts, waiting = {}, [()]
    while waiting:
        commands = waiting.pop(0)
        texts[commands] = help_of(program, *commands).replace(program, name)
        waiting += [(*commands, command) for command in subcommands(texts[commands])]
    pathlib.Path(man).write_text(man_page(name, version, texts))
    pathlib.Path(completes).write_text(completion(name, texts))


if __name__ == "__main__":
    main()
