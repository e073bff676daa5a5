#!/usr/bin/env python3
"""Installs and removes what ./dev package made, as a user would: test_package.py PACKAGE_FOLDER WINE_PATTERN

The setup program runs in copies of an empty Wine prefix; files and registry are compared with what they were before.
What Wine cannot show (elevation, a second user, Windows' own font cache) is not shown here.
"""
import json
import os
import pathlib
import re
import shutil
import signal
import sqlite3
import subprocess
import sys
import tempfile
import time
import unittest

HERE = pathlib.Path(__file__).resolve().parent
RUN = HERE.parent / "tools" / "wine-run"
PACKAGE = pathlib.Path(sys.argv.pop(1))
PATTERN = pathlib.Path(sys.argv.pop(1))
WORK = PACKAGE / "test"
PREFIX = WORK / "wine"
SETUP = next(PACKAGE.glob("Tavrix-*-setup.exe"))
FOLDER = "C:\\Program Files\\Tavrix"
USERS_FOLDER = "C:\\users\\{user}\\AppData\\Local\\Programs\\Tavrix"
FOLDER_TAKEN, IN_USE, SPACE, SECOND, ELSEWHERE, COPY, REGISTER, ABSENT = 4, 5, 6, 7, 8, 9, 10, 11
MENU = "C:\\ProgramData\\Microsoft\\Windows\\Start Menu\\Programs\\Tavrix"
POLISH = "C:\\Moje żółte pliki\\Tavrix x"
ASK_VERSION = 'WScript.Echo CreateObject("Tavrix.CInfo").VersjaLib()\n'


def wine(*command, wait=True):
    # Into a file: Wine's services keep the output of the program that started them, and a pipe would end with them only.
    with tempfile.TemporaryFile("w+", encoding="utf-8", errors="replace") as said:
        done = subprocess.run([RUN, "64", *command], stdout=said, stderr=subprocess.DEVNULL)
        said.seek(0)
        done.stdout = said.read()
    if wait:
        subprocess.run([RUN, "64", "--server", "--wait"], check=True)
    return done


def unix(windows_path):
    return PREFIX / "drive_c" / windows_path.removeprefix("C:\\").replace("\\", "/")


def files():
    """Every file of the prefix that is not scratch, with its size."""
    drive = PREFIX / "drive_c"
    return {f"{path.relative_to(drive)}": path.stat().st_size for path in drive.rglob("*")
            if path.is_file() and "Temp" not in path.parts and "temp" not in path.parts}


def registry():
    """Both roots with both views, as Wine keeps them; without the times of keys."""
    entries = {}
    for name in ("system.reg", "user.reg"):
        key = None
        for line in (PREFIX / name).read_text(encoding="utf-8", errors="replace").splitlines():
            if line.startswith("["):
                key = f"{name} {line[:line.rindex(']') + 1].lower()}"
                entries[key] = []
            elif key and line and not line.startswith("#time"):
                entries[key].append(line)
    # Below System Wine notes which display it was started on; the stand-in for ADO takes Wine's own place.
    return {key: sorted(values) for key, values in entries.items() if "[software" in key and "adodb" not in key}


def answers(bits):
    """What a script host of so many bits is told of the version, and nothing when there is no class."""
    (WORK / "ask.vbs").write_text(ASK_VERSION)
    system = "syswow64" if bits == 32 else "system32"
    done = wine(f"C:\\windows\\{system}\\cscript.exe", "//nologo", f"Z:{WORK}/ask.vbs", wait=False)
    return done.stdout.strip()


class Setup(unittest.TestCase):
    SANDBOX = [f"{FOLDER}\\bin\\tavrix-sandbox.exe"]

    @classmethod
    def setUpClass(cls):
        os.environ["TAVRIX_WINEPREFIX"] = f"{PREFIX}"
        reader, writer = os.pipe()
        cls.display = subprocess.Popen(["Xvfb", "-displayfd", f"{writer}", "-screen", "0", "1024x768x24", "-nolisten",
                                        "tcp"], pass_fds=[writer], stderr=subprocess.DEVNULL)
        os.close(writer)
        with os.fdopen(reader) as number:
            os.environ["TAVRIX_DISPLAY"] = f":{number.readline().strip()}"
        shutil.rmtree(WORK, ignore_errors=True)
        WORK.mkdir()
        subprocess.run(["cp", "-al", PATTERN, PREFIX], check=True)
        for hive in PATTERN.glob("*.reg"):
            (PREFIX / hive.name).unlink()
            shutil.copy2(hive, PREFIX)
        # The first programs leave notes of their own in a new prefix.
        for bits in (32, 64):
            answers(bits)
        # Every Windows has these keys of a user; Wine makes them when something is put below.
        for key in ("Classes", "Microsoft\\Windows\\CurrentVersion\\Uninstall"):
            wine("reg", "add", f"HKCU\\Software\\{key}", "/f")
        wine("regsvr32", "/s", "C:\\nothing.dll")
        cls.files, cls.registry = files(), registry()

    @classmethod
    def tearDownClass(cls):
        subprocess.run([RUN, "64", "--server", "--kill"], check=False)
        cls.display.terminate()
        cls.display.wait()

    def install(self, *options, status=0, setup=SETUP):
        done = wine(f"Z:{setup}", "/S", *options)
        self.assertEqual(done.returncode, status, self.text())

    def text(self):
        """What the box would have said."""
        logs = sorted(PREFIX.glob("drive_c/users/*/Temp/Tavrix-setup.log"))
        return logs[-1].read_text(encoding="utf-16") if logs else ""

    def remove(self, folder, *options, status=0, start=None):
        """With _?= the uninstaller stays where it is: its status is told, but it cannot delete itself."""
        done = wine(start or f"{folder}\\Uninstall.exe", "/S", *options)
        self.assertEqual(done.returncode, status, self.text())

    def tearDown(self):
        """One failure is one failure: the next test finds nothing of this one's."""
        subprocess.run([RUN, "64", "--server", "--kill"], check=False)
        for folder in (FOLDER, POLISH):
            if (unix(folder) / "Uninstall.exe").exists():
                wine(f"{folder}\\Uninstall.exe", "/S")
            shutil.rmtree(unix(folder), ignore_errors=True)

    def variant(self, name, *damage, needed_kb=None):
        """The setup program packed anew, with a stage in which some files hold something else."""
        stage = WORK / f"stage-{name}"
        subprocess.run(["cp", "-al", PACKAGE / "stage" / "windows", stage], check=True)
        # The list is written anew, and not through the link.
        (stage / "files.txt").unlink()
        for path, content in damage:
            (stage / path).unlink()
            (stage / path).write_bytes(content)
        target = WORK / f"{name}.exe"
        listed = subprocess.run([sys.executable, HERE / "file_list.py", stage, HERE.parent / "build/win32/bin/fonts"],
                                check=True, capture_output=True, text=True).stdout
        if needed_kb:
            listed = re.sub("NEEDED_KB .*", f"NEEDED_KB {needed_kb}", listed)
        (WORK / f"{name}.nsh").write_text(listed)
        # Packed fast: what is looked at is what it does.
        script = (HERE / "setup.nsi").read_text().replace("SetCompressor /SOLID lzma", "SetCompress off")
        (WORK / f"{name}.nsi").write_text(script, encoding="utf-8")
        subprocess.run(["makensis", "-V1", "-INPUTCHARSET", "UTF8", "-DVERSION=99.0.0", f"-DSTAGE={stage}",
                        f"-DFILES={WORK / name}.nsh", f"-DOUTPUT={target}", WORK / f"{name}.nsi"], check=True,
                       env=os.environ | {"LC_ALL": "C.UTF-8"})
        return target

    def expect_nothing_left(self):
        self.assertEqual((answers(32), answers(64)), ("", ""))
        wine("regsvr32", "/s", "C:\\nothing.dll")
        self.maxDiff = 4000
        after, now = registry(), files()
        self.assertEqual({k: v for k, v in after.items() if self.registry.get(k) != v}, {})
        self.assertEqual(set(self.registry) - set(after), set())
        self.assertEqual({k: v for k, v in now.items() if self.files.get(k) != v}, {})
        self.assertEqual(set(self.files) - set(now), set())

    def expect_installed(self, for_all=True):
        if not for_all:
            # Wine looks for classes in the machine's part of the registry alone, and keeps a user's in one view.
            keys = [key for key in registry() if key.startswith("user.reg [software\\\\classes") and
                    key.endswith("}\\\\inprocserver32]")]
            self.assertGreater(len(keys), 5)
            return
        for bits in (32, 64):
            self.assertRegex(answers(bits), r"^\d+\.\d+\.\d+\.Tavrix$", f"{bits} bits")

    def expect_whole(self, folder):
        """What was listed is there, with what Windows shows of it."""
        stage = PACKAGE / "stage" / "windows"
        listed = (stage / "files.txt").read_bytes().decode("utf-16-le").split()
        self.assertGreater(len(listed), 50)
        for name in map(lambda line: line.replace("\\", "/"), listed):
            self.assertEqual((unix(folder) / name).read_bytes(), (stage / name).read_bytes(), name)
        for settings in ("x86", "x64"):
            self.assertEqual((unix(folder) / settings / "Tavrix.json").read_bytes(),
                             (stage / "Tavrix.default.json").read_bytes())
        self.assertEqual(len(list(unix(MENU).glob("*.lnk"))), 3)
        entries = registry()
        entry = entries["system.reg [software\\\\microsoft\\\\windows\\\\currentversion\\\\uninstall\\\\tavrix]"]
        program = f"{folder}\\Uninstall.exe".replace("\\", "\\\\")
        version = re.search(r"-([\d.]+)-setup", SETUP.name).group(1)
        self.assertIn(f'"DisplayVersion"="{version}"', entry)
        # Wine writes other letters by their numbers.
        if folder.isascii():
            self.assertIn(f'"UninstallString"="\\"{program}\\""', entry)
            self.assertIn(f'"QuietUninstallString"="\\"{program}\\" /S"', entry)
        fonts = entries["system.reg [software\\\\microsoft\\\\windows nt\\\\currentversion\\\\fonts]"]
        for font in (stage / "x86").glob("*.ttf"):
            self.assertTrue((unix("C:\\windows\\Fonts") / font.name).exists(), font.name)
            self.assertTrue([line for line in fonts if line.endswith(f'="{font.name}"')], font.name)

    def test_comes_and_goes_without_a_trace(self):
        users = USERS_FOLDER.format(user=next((PREFIX / "drive_c/users").glob("[!P]*")).name)
        spelt = f"Z:{unix(FOLDER)}\\Uninstall.exe"
        for name, folder, options, start in [("for all", FOLDER, (), None), ("for one", users, ("/CurrentUser",), None),
                                             ("path", POLISH, (f"/D={POLISH}".split(" ")), None),
                                             ("other spelling", FOLDER, (), spelt)]:
            with self.subTest(name):
                began = time.monotonic()
                self.install(*options)
                print(f"{name}: installed in {time.monotonic() - began:.1f} s", file=sys.stderr)
                self.expect_installed("/CurrentUser" not in options)
                if "/CurrentUser" not in options:
                    self.expect_whole(folder)
                began = time.monotonic()
                self.remove(folder, start=start)
                print(f"{name}: removed in {time.monotonic() - began:.1f} s", file=sys.stderr)
                self.expect_nothing_left()

    def test_an_update_keeps_what_a_user_changed_and_no_older_file(self):
        settings = unix(FOLDER) / "x86" / "Tavrix.json"
        foreign = unix("C:\\windows\\Fonts\\free3of9.ttf")
        foreign.write_bytes(b"somebody else's")
        self.install()
        folder = unix(FOLDER)
        self.assertEqual(len(settings.read_bytes()), len(settings.read_bytes().replace(b"current", b"classic")))
        # As long as what was there, so that nothing but the bytes tells them apart.
        own = settings.read_bytes().replace(b"current", b"classic")
        settings.write_bytes(own)
        # These nobody changed since an older version brought them.
        for name in ("Tavrix.default.json", "x64/Tavrix.json"):
            (folder / name).write_text("{ }")
        listed = (folder / "files.txt").read_bytes() + "docs\\older.html\r\n".encode("utf-16-le")
        (folder / "files.txt").write_bytes(listed)
        (folder / "docs" / "older.html").write_text("of an older version")
        self.install("/D=C:\\elsewhere", status=ELSEWHERE)
        self.install()
        self.expect_installed()
        self.assertEqual(settings.read_bytes(), own)
        self.assertIn(b"current", (folder / "x64" / "Tavrix.json").read_bytes())
        self.assertFalse((folder / "docs" / "older.html").exists())
        self.assertEqual(list(folder.rglob("*.old")), [])
        self.remove(FOLDER)
        self.assertEqual([path for path in folder.rglob("*") if path.is_file()], [settings])
        self.assertEqual(foreign.read_bytes(), b"somebody else's")
        foreign.unlink()
        shutil.rmtree(folder)
        self.expect_nothing_left()

    def test_one_at_a_time(self):
        (WORK / "other.nsi").write_text("Unicode true\nSilentInstall silent\nRequestExecutionLevel user\nOutFile other.exe\nSection\n"
                                        "System::Call 'kernel32::CreateMutexW(p 0, i 0, w \"Global\\TavrixSetup\")'\n"
                                        'FileOpen $1 "C:\\held" w\nSleep 120000\nSectionEnd\n')
        subprocess.run(["makensis", "-V1", "other.nsi"], cwd=WORK, check=True)
        other = subprocess.Popen([RUN, "64", f"Z:{WORK}/other.exe"], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        while not unix("C:\\held").exists():
            self.assertIsNone(other.poll())
            time.sleep(0.2)
        self.assertEqual(wine(f"Z:{SETUP}", "/S", wait=False).returncode, SECOND)
        other.terminate()
        other.wait()
        subprocess.run([RUN, "64", "--server", "--kill"], check=False)
        unix("C:\\held").unlink()
        self.expect_nothing_left()

    def test_takes_no_folder_of_others(self):
        theirs = unix("C:\\moje")
        (theirs / "docs").mkdir(parents=True)
        listed = "faktury.db\r\n..\\moje\\wazne.txt\r\n".encode("utf-16-le")
        for name in ("faktury.db", "wazne.txt"):
            (theirs / name).write_text("theirs")
        # One at a time; the last two are names that many programs have.
        for name in ("files.txt", "LICENSE.txt", "Uninstall.exe", "install.ini"):
            (theirs / name).write_bytes(listed)
            before = files()
            self.install("/D=C:\\moje", status=FOLDER_TAKEN)
            self.assertEqual(files(), before, name)
            (theirs / name).unlink()
        shutil.rmtree(theirs)
        self.install()
        self.install("/CurrentUser", *f"/D={FOLDER}".split(" "), status=ELSEWHERE)
        self.expect_installed()
        self.remove(FOLDER)
        self.expect_nothing_left()

    def test_what_fails_leaves_what_was_there(self):
        broken = self.variant("broken", ("x64/Tavrix.dll", b"no DLL"), ("Tavrix.default.json", b"{ }"))
        self.install(status=REGISTER, setup=broken)
        self.expect_nothing_left()
        self.install(*f"/D={POLISH}".split(" "))
        # An update goes where the older version is.
        self.install(status=REGISTER, setup=broken)
        self.expect_installed()
        self.expect_whole(POLISH)
        self.assertEqual(list(unix(POLISH).rglob("*.old")), [])
        # What an interrupted update leaves, and then its repetition.
        listed = unix(POLISH) / "files.txt"
        (unix(POLISH) / "x64" / "Tavrix.dll").rename(unix(POLISH) / "x64" / "Tavrix.dll.old")
        listed.rename(listed.with_name("files.txt.old"))
        self.install()
        self.expect_whole(POLISH)
        self.assertEqual(list(unix(POLISH).rglob("*.old")), [])
        # Removed by somebody who sees another language.
        english = os.environ | {"LC_ALL": "C.UTF-8", "WINEPREFIX": f"{PREFIX}", "WINEDEBUG": "-all",
                                "DISPLAY": os.environ["TAVRIX_DISPLAY"], "WINEDLLOVERRIDES": "winemenubuilder.exe=d"}
        subprocess.run(["/usr/lib/wine/wine64", f"{POLISH}\\Uninstall.exe", "/S"], check=True, env=english)
        subprocess.run([RUN, "64", "--server", "--wait"], check=True)
        self.expect_nothing_left()

    def test_a_full_disk_leaves_nothing(self):
        small = unix("C:\\maly")
        small.mkdir()
        if subprocess.run(["mount", "-t", "tmpfs", "-o", "size=20m", "none", small], capture_output=True).returncode:
            small.rmdir()
            self.skipTest("mounting a small disk needs root")
        try:
            self.install("/D=C:\\maly\\x", status=SPACE)
            # Room when it is asked for, and none when it is needed.
            self.install("/D=C:\\maly\\x", status=COPY, setup=self.variant("small", needed_kb=1))
            self.assertEqual(list(small.iterdir()), [])
        finally:
            subprocess.run(["umount", small], check=True)
        small.rmdir()
        self.expect_nothing_left()

    def test_an_installed_example_sends_to_the_installed_sandbox(self):
        ado = HERE.parent / "build" / "win32" / "bin" / "TavrixDevAdo.dll"
        if not ado.exists():
            self.skipTest("Wine has no ADO, and its stand-in is not built (target tavrix_dev_ado)")
        if not (PACKAGE / "stage" / "windows" / "bin" / "tavrix-sandbox.exe").exists():
            self.skipTest("the package has no tavrix-sandbox.exe")
        self.install()
        registrar = "C:\\windows\\syswow64\\regsvr32.exe"
        wine(registrar, "/s", f"Z:{ado}", wait=False)
        with subprocess.Popen([RUN, "64", *self.SANDBOX, "--port", "0", "--port-file", f"{WORK}/port", "--quiet"],
                              env=os.environ | {"TAVRIX_WINE_TIMEOUT_S": "120"}) as sandbox:
            while not (WORK / "port").exists() or not (WORK / "port").read_text().strip():
                self.assertIsNone(sandbox.poll())
                time.sleep(0.2)
            origin = f"http://127.0.0.1:{(WORK / 'port').read_text().strip()}"
            (unix(FOLDER) / "x86" / "Tavrix.json").write_text(json.dumps(
                {"profile": "current", "ksef": {"test": origin, "demo": origin, "production": origin}, "http": {"proxy": "direct"}}))
            schema = (HERE.parent / "demo" / "schema.sql").read_text().replace("(max)", "")
            with sqlite3.connect(WORK / "firma.db") as database:
                database.executescript(schema)
                database.execute("insert or ignore into dok_fak (ddout_id, ddout_data_wyst) values (1001, date('now'))")
            invoice = (HERE.parent / "demo" / "faktura.xml").read_text()
            (WORK / "invoice.xml").write_text(re.sub("<P_1>[^<]*", f"<P_1>{time.strftime('%Y-%m-%d')}", invoice))
            (WORK / "token.txt").write_text("R|nip-5265877635|s")
            done = wine("C:\\windows\\syswow64\\cscript.exe", "//nologo",
                        f"{FOLDER}\\examples\\vbscript\\wyslij_fakture.vbs", f"Data Source=Z:{WORK}/firma.db", "5265877635",
                        f"Z:{WORK}/token.txt", f"Z:{WORK}/invoice.xml", "dok_fak", "1001", "2", wait=False)
            # Ctrl+C; it would sit out the other signal.
            sandbox.send_signal(signal.SIGINT)
        self.assertRegex(done.stdout, "numer_ksef: 5265877635-")
        wine(registrar, "/s", "/u", f"Z:{ado}", wait=False)
        subprocess.run([RUN, "64", "--server", "--kill"], check=False)
        self.remove(FOLDER)
        shutil.rmtree(unix(FOLDER))
        self.expect_nothing_left()

    def test_changes_nothing_while_a_host_is_at_work(self):
        self.install()
        # Wine lets a loaded DLL be written to; Windows holds it as this program does.
        (WORK / "hold.nsi").write_text('Unicode true\nSilentInstall silent\nRequestExecutionLevel user\nOutFile hold.exe\n'
                                       f'Section\nFileOpen $0 "{FOLDER}\\x64\\Tavrix.dll" r\n'
                                       'FileOpen $1 "C:\\held" w\nSleep 120000\nSectionEnd\n')
        subprocess.run(["makensis", "-V1", "hold.nsi"], cwd=WORK, check=True)
        host = subprocess.Popen([RUN, "64", f"Z:{WORK}/hold.exe"], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        while not unix("C:\\held").exists():
            self.assertIsNone(host.poll())
            time.sleep(0.2)
        before = files()
        for program in (lambda: wine(f"Z:{SETUP}", "/S", wait=False),
                        lambda: wine(f"{FOLDER}\\Uninstall.exe", "/S", *f"_?={FOLDER}".split(" "), wait=False)):
            self.assertEqual(program().returncode, IN_USE, self.text())
            self.assertIn("x64\\Tavrix.dll", self.text())
            self.assertEqual(files(), before)
        host.terminate()
        host.wait()
        subprocess.run([RUN, "64", "--server", "--kill"], check=False)
        self.expect_installed()
        shutil.copy2(unix(FOLDER) / "Uninstall.exe", unix("C:\\again.exe"))
        self.remove(FOLDER)
        self.remove(FOLDER, *f"_?={FOLDER}".split(" "), start="C:\\again.exe", status=ABSENT)
        unix("C:\\again.exe").unlink()
        unix("C:\\held").unlink()
        self.expect_nothing_left()


if __name__ == "__main__":
    unittest.main(verbosity=2)
