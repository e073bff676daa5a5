#!/usr/bin/env python3
"""pdf_bench.py TAVRIX: signing beside `pdfsig -add-signature`, both as processes, and the most memory each took.

The documents: one page of 50 KB, 2000 pages of 50 MB, 2000 pages of 200 MB.
"""
import os
import pathlib
import subprocess
import sys
import tempfile
import time

SIZES = [(1, 50_000), (2000, 50_000_000), (2000, 200_000_000)]
PREPARE = """
set -e
openssl req -x509 -newkey rsa:2048 -nodes -keyout key -out certificate -subj '/CN=Jan Kowalski'
openssl pkcs12 -export -inkey key -in certificate -out key.pfx -passout pass:x -name author
mkdir nss; certutil -N --empty-password -d sql:nss; pk12util -i key.pfx -W x -d sql:nss
"""


def document(path, pages, size):
    """Pages of content that nobody can compress."""
    offsets = []
    with open(path, "wb") as out:
        def put(body):
            offsets.append(out.tell())
            out.write(b"%d 0 obj\n" % len(offsets) + body + b"\nendobj\n")

        out.write(b"%PDF-1.4\n")
        put(b"<< /Type /Catalog /Pages 2 0 R >>")
        kids = b" ".join(b"%d 0 R" % (3 + 2 * page) for page in range(pages))
        put(b"<< /Type /Pages /Count %d /MediaBox [ 0 0 595 842 ] /Kids [ %b ] >>" % (pages, kids))
        for page in range(pages):
            put(b"<< /Type /Page /Parent 2 0 R /Contents %d 0 R >>" % (4 + 2 * page))
            content = b"%" + os.urandom(size // pages).replace(b"\n", b" ").replace(b"\r", b" ")
            put(b"<< /Length %d >>\nstream\n" % len(content) + content + b"\nendstream")
        table = out.tell()
        out.write(b"xref\n0 %d\n0000000000 65535 f \n" % (len(offsets) + 1))
        out.writelines(b"%010d 00000 n \n" % offset for offset in offsets)
        out.write(b"trailer\n<< /Size %d /Root 1 0 R >>\nstartxref\n%d\n%%%%EOF\n" % (len(offsets) + 1, table))


def measured(command, times=3):
    """The shortest time in seconds, and the most memory in MB."""
    best, most = float("inf"), 0
    for _ in range(times):
        begin = time.monotonic()
        process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = status
        best, most = min(best, time.monotonic() - begin), max(most, usage.ru_maxrss / 1e3)
        if status:
            sys.exit(f"pdf_bench.py: {command[0]} failed")
    return best, most


def main():
    program = pathlib.Path(sys.argv[1]).resolve()
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        subprocess.run(["bash", "-c", PREPARE], check=True, capture_output=True)
        for pages, size in SIZES:
            document("in.pdf", pages, size)
            ours, memory = measured([program, "sign-pdf", "in.pdf", "out.pdf", "--pfx", "key.pfx", "--pin", "x"])
            theirs, their_memory = measured(
                ["pdfsig", "-nssdir", "sql:nss", "-add-signature", "-nick", "author", "in.pdf", "peer.pdf"])
            print(f"pdf, {pages} pages of {size / 1e6:g} MB: {ours * 1e3:.0f} ms, {memory:.0f} MB; "
                  f"pdfsig {theirs * 1e3:.0f} ms, {their_memory:.0f} MB; ratio {theirs / ours:.1f}", flush=True)


if __name__ == "__main__":
    main()
