#!/usr/bin/env python3
"""Tests of the checks themselves: a gate that lets everything through looks just like a clean tree."""
import html
import json
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

TOOLS = pathlib.Path(__file__).resolve().parent


class Tree(unittest.TestCase):
    """A tree of its own per test, with the checks in its tools folder."""

    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.root = pathlib.Path(self.folder.name)
        shutil.copytree(TOOLS, self.root / "tools")
        self.addCleanup(self.folder.cleanup)

    def write(self, path, text):
        (self.root / path).parent.mkdir(parents=True, exist_ok=True)
        (self.root / path).write_text(text)

    def run_tool(self, name, *arguments):
        done = subprocess.run([sys.executable, self.root / "tools" / name, *arguments], capture_output=True, text=True)
        return done.returncode, done.stdout + done.stderr


class Layers(Tree):
    REFUSED = [
        ("base/a.h", '#include "ports/http.h"'),
        ("ports/a.h", '#include "ports/native/curl_http.h"'),
        ("ports/native/a.cpp", '#include "ports/windows/ado.h"'),
        ("ksef/a.cpp", "#include <windows.h>"),
        ("ksef/a.cpp", "#  include <oaidl.h>"),
        ("ksef/a.cpp", "#include <curl/curl.h>"),
        ("ksef/a.cpp", '#include "ports/portable/openssl_crypto.h"'),
        ("ksef/a.cpp", '#include "../ports/portable/openssl_crypto.h"'),
        ("ksef/a.cpp", '#include "barcode/qr.h"'),
        ("frame/a.cpp", '#include "com/factory.h"'),
        ("ksef/a.cpp", '#include "sandbox/basics/json.h"'),
        ("sandbox/service/a.cpp", '#include "base/text.h"'),
        ("sandbox/service/a.cpp", '#include "sandbox/http/routes.h"'),
        ("com/a.cpp", '#include "ports/native/curl_http.h"'),
        ("base/a.h", "#ifdef _WIN32\n#endif"),
        ("cli/a.cpp", "#if defined(__linux__) && 1\n#endif"),
        ("sandbox/http/a.cpp", "#ifdef SO_EXCLUSIVEADDRUSE\n#endif"),
        ("sandbox/a.cpp", "#if defined(SIGPIPE)\n#endif"),
    ]
    ALLOWED = [
        ("base/a.h", '#include "base/text.h"\n#include <string>'),
        ("ksef/a.cpp", '#include "a.h"\n#include "ports/http.h"\n#include <nlohmann/json.hpp>'),
        ("frame/a.cpp", '#include "ksef/encoding.h"'),
        ("com/classes/a.cpp", '#include "ports/windows/ado.h"\n#include <windows.h>\n#if _WIN64\n#endif'),
        ("tests/ports/a.cpp", '#include "ports/portable/openssl_crypto.h"\n#include <openssl/evp.h>'),
    ]

    def test_refuses_what_crosses_a_layer(self):
        self.write("ports/portable/openssl_crypto.h", "")
        for path, text in self.REFUSED:
            with self.subTest(path=path, text=text):
                self.write(path, text)
                status, output = self.run_tool("check_layers.py")
                self.assertEqual(status, 1, output)
                self.assertIn(f"{path}:1:", output)
                (self.root / path).unlink()

    def test_lets_pass_what_the_layers_allow(self):
        for path, text in self.ALLOWED:
            self.write(path, text)
        status, output = self.run_tool("check_layers.py")
        self.assertEqual(status, 0, output)


class Summary(Tree):
    def results(self, door, *cases):
        self.write(f"build/{door}/results/ctest.xml", f"<testsuite>{''.join(cases)}</testsuite>")

    def program(self, door, name, *cases):
        text = "".join(f'<testcase name="x" {case}' for case in cases)
        self.write(f"build/{door}/results/gtest/{name}_test.xml", f"<testsuites><testsuite>{text}</testsuite></testsuites>")

    def totals(self, *doors):
        status, output = self.run_tool("summary.py", *doors)
        return status, output.splitlines()[-1]

    def test_counts_native_cases(self):
        self.results("native", '<testcase name="a" status="run"/>',
                     '<testcase name="b" status="notrun"><skipped message="SKIP_REGULAR_EXPRESSION_MATCHED"/></testcase>')
        self.assertEqual(self.totals("native"), (0, "1 passed, 0 failed, 1 skipped"))

    def test_counts_the_cases_inside_a_windows_program(self):
        self.results("win32", '<testcase name="a" status="fail"/>')
        self.program("win32", "a", 'status="run" result="completed"/>', 'status="run" result="skipped"/>',
                     'status="run" result="completed"><failure/></testcase>')
        self.assertEqual(self.totals("win32"), (1, "1 passed, 1 failed, 1 skipped"))

    def test_a_program_that_dies_is_a_failure_with_and_without_a_report(self):
        self.results("win32", '<testcase name="a" status="fail"/>', '<testcase name="b" status="fail"/>')
        self.program("win32", "b", 'status="run" result="completed"/>')
        self.assertEqual(self.totals("win32"), (1, "1 passed, 2 failed, 0 skipped"))

    def test_a_program_that_was_not_found_is_a_failure(self):
        self.results("native", '<testcase name="a" status="notrun"><skipped message="Unable to find executable"/></testcase>')
        self.assertEqual(self.totals("native"), (1, "0 passed, 1 failed, 0 skipped"))

    def test_a_door_without_results_did_not_build(self):
        self.results("native", '<testcase name="a" status="run"/>')
        self.assertEqual(self.totals("native", "win64"), (1, "1 passed, 1 failed, 0 skipped"))

    def test_nothing_run_is_no_success(self):
        self.results("native")
        self.write("build/checks/results.txt", "passed layers\n")
        self.assertEqual(self.totals("native"), (1, "1 passed, 0 failed, 0 skipped"))


class Imports(Tree):
    def check(self, statement):
        self.write("a.c", f"#include <windows.h>\nint main(void) {{ {statement}; return 0; }}\n")
        subprocess.run(["i686-w64-mingw32-gcc-posix", "-D_WIN32_WINNT=0x0A00", self.root / "a.c", "-o",
                        self.root / "a.exe"], check=True)
        return self.run_tool("check_imports.py", f"{self.root}/a.exe")

    def test_refuses_a_function_of_windows_8(self):
        status, output = self.check("FILETIME t; GetSystemTimePreciseAsFileTime(&t)")
        self.assertEqual(status, 1)
        self.assertIn("GetSystemTimePreciseAsFileTime of kernel32", output)

    def test_lets_pass_what_windows_7_has(self):
        self.assertEqual(self.check("FILETIME t; GetSystemTimeAsFileTime(&t)")[0], 0)


class Hardening(Tree):
    HARD = ["-O2", "-fPIE", "-pie", "-fstack-protector-all", "-D_FORTIFY_SOURCE=2", "-Wl,-z,relro,-z,now"]
    WINDOWS = ["x86_64-w64-mingw32-gcc-posix"]
    CASES = [
        (["gcc", *HARD], ""), (["gcc", *HARD, "-no-pie"], "lacks a position independent program"),
        (["gcc", *HARD, "-fno-stack-protector"], "lacks a stack protector"), (["gcc", *HARD, "-Wl,-z,lazy"], "lacks BIND_NOW"),
        (["gcc", *HARD, "-Wl,-z,execstack"], "lacks a stack that"), (["gcc", *HARD, "-Wl,-rpath,/x"], "RPATH"),
        (["gcc", *HARD, "-U_FORTIFY_SOURCE"], "lacks FORTIFY"), (WINDOWS, ""),
        ([*WINDOWS, "-Wl,--disable-nxcompat"], "lacks NXCOMPAT"), ([*WINDOWS, "-Wl,--disable-dynamicbase"], "lacks DYNAMICBASE"),
        ([*WINDOWS, "-Wl,--disable-high-entropy-va"], "lacks HIGHENTROPYVA"),
        ([*WINDOWS, '-DMORE=__asm__(".section both,\\"wx\\"\\n.long 1\\n.text");'], "writable and executable"),
        (["gcc", *HARD, "-Wl,-z,norelro"], "lacks RELRO"),
        (["gcc", *HARD, '-DMORE=__asm__(".section both,\\"awx\\"\\n.long 1\\n.text");'], "has a segment that is writable"),
        ([*WINDOWS, "-Wl,--disable-reloc-section"], "has no relocations"),
        (["gcc", *HARD, '-DMORE=const char* made = __FILE__;'], "holds the path"),
    ]

    def test_refuses_what_lacks_one_of_its_fences(self):
        self.write("a.c", "#include <stdio.h>\n#include <string.h>\n#ifndef MORE\n#define MORE\n#endif\nMORE\n"
                          "int main(int c, char** v) { char b[9]; strcpy(b, v[0]); return printf(v[0]) + b[c]; }\n")
        for command, fault in self.CASES:
            with self.subTest(" ".join(command)):
                subprocess.run([*command, "-w", self.root / "a.c", "-o", self.root / "a.exe"], check=True)
                status, output = self.run_tool("check_hardening.py", f"{self.root}/a.exe")
                self.assertEqual(status, 1 if fault else 0, output)
                self.assertIn(fault, output)


class Sources(Tree):
    LIST = """
deb http://mirror/debian bookworm main contrib
 deb [arch=amd64 signed-by=/k.gpg] http://mirror/security bookworm-security main
# deb http://mirror/debian bookworm-updates main
deb http://mirror/debian bookworm-backports main
deb https://elsewhere/debian bookworm stable
"""
    STANZAS = """# the archive
Types: deb deb-src
URIs: http://mirror/debian
Suites: bookworm bookworm-updates
Components: main

Types: deb
URIs: http://mirror/off
Suites: bookworm
Components: main
Enabled: no

Types: deb
URIs: http://mirror/next
Suites: trixie
Components: main
"""

    @unittest.skipUnless("bookworm" in pathlib.Path("/etc/os-release").read_text(), "the entries are Debian 12's")
    def test_takes_the_entries_of_this_release_and_no_others(self):
        self.write("etc/sources.list", self.LIST)
        self.write("etc/sources.list.d/debian.sources", self.STANZAS)
        script = 'root=$1; source "$1/tools/lib.sh"; source "$1/tools/sources.sh"; write_source_entries "$1/etc"'
        subprocess.run(["bash", "-euc", script, "bash", self.root], check=True,
                       env={"TAVRIX_CACHE": f"{self.root}/cache", "PATH": "/usr/bin:/bin", "HOME": "/"})
        written = self.root / "cache" / "apt" / "sources"
        self.assertEqual((written / "debian.list").read_text().splitlines(), [
            "deb-src http://mirror/debian bookworm main contrib",
            "deb-src [arch=amd64 signed-by=/k.gpg] http://mirror/security bookworm-security main"])
        stanzas = (written / "debian.sources").read_text()
        self.assertEqual(stanzas.count("Types: deb-src\n"), 1)
        self.assertIn("Suites: bookworm bookworm-updates", stanzas)
        self.assertNotIn("mirror/off", stanzas)
        self.assertNotIn("trixie", stanzas)


class Site(Tree):
    """The documentation's pages, built from a copy of this tree with a few things broken in it."""

    DAMAGE = [
        ("docs/pl/ksef.md", "## Limity", "## Granice", "komunikaty.md: ksef.md#limity: no such anchor"),
        ("docs/pl/pdf.md", "pdf-box.png", "pdf-bix.png", "pdf.md: ../pictures/pdf-bix.png leads nowhere"),
        ("docs/pl/okna.md", "# Okna", "# Okna\n\n[sieć](https://example.com/)", "okna.md: leads out of the pages"),
        ("docs/pl/klasy/Rejestr.md", "## RegGetValue", "## RegValue", "no text for RegGetValue"),
        ("docs/pl/klasy/ClsPdfPodpis.md", "- `pin`", "- `haslo`", "pdfpodpis has no argument haslo"),
        ("docs/pl/komunikaty.md", "| `Nie podano adresata.` |", "| |", "does not say what this means: Nie podano adresata."),
    ]

    def test_refuses_what_leads_nowhere_and_what_has_no_words(self):
        for folder in ["base", "docs", "examples", "ksef", "mail", "pdfsign", "barcode", "dialogs", "frame", "com", "ports"]:
            shutil.copytree(TOOLS.parent / folder, self.root / folder)
        for path, old, new, _ in self.DAMAGE:
            text = (self.root / path).read_text(encoding="utf-8")
            self.assertIn(old, text)
            (self.root / path).write_text(text.replace(old, new, 1), encoding="utf-8")
        done = subprocess.run(["/usr/bin/python3", self.root / "tools/site/build.py"], capture_output=True, text=True)
        self.assertEqual(done.returncode, 1, done.stderr)
        for _, _, _, complaint in self.DAMAGE:
            self.assertIn(complaint, done.stdout)

    # What is typed, and the title found first.
    SEARCHES = [
        ("Nie podano adresata", "Nie podano adresata."),
        ("Nie znaleziono dokumetu:1001 w tabeli dok_fak", "Nie znaleziono dokumetu:…"),
        ("ActiveX component can't create object", "Która odmiana"),
        ("status 440", "Duplikaty"),
        ("korekta", "Faktury offline"),
        ("zolty", ""),
    ]

    @unittest.skipUnless(shutil.which("chromium"), "no Chromium")
    def test_finds_what_people_type(self):
        site = self.root / "site"
        subprocess.run(["/usr/bin/python3", TOOLS / "site/build.py", site], check=True, capture_output=True)
        asking = f"""<script>const field = document.getElementById('query');
            document.title = JSON.stringify({json.dumps([typed for typed, _ in self.SEARCHES])}.map(typed => {{
                field.value = typed;
                field.dispatchEvent(new Event('input'));
                return document.querySelector('#found b')?.textContent ?? '';
            }}));</script></body>"""
        page = site / "index.html"
        page.write_text(page.read_text(encoding="utf-8").replace("</body>", asking), encoding="utf-8")
        done = subprocess.run(["chromium", "--headless", "--no-sandbox", "--disable-gpu", f"--user-data-dir={self.root}/chromium",
                               "--dump-dom", page.as_uri()], capture_output=True, text=True, timeout=120)
        title = html.unescape(re.search("<title>(.*?)</title>", done.stdout, re.DOTALL).group(1))
        self.assertEqual(json.loads(title), [found for _, found in self.SEARCHES])


if __name__ == "__main__":
    unittest.main()
