#!/usr/bin/env python3
"""Packs a folder so that the same files give the same bytes: zip.py FOLDER NAME_INSIDE ARCHIVE"""
import datetime
import os
import pathlib
import sys
import zipfile


def main():
    folder, name, archive = sys.argv[1:]
    time = datetime.datetime.fromtimestamp(int(os.environ["SOURCE_DATE_EPOCH"]), datetime.timezone.utc).timetuple()[:6]
    with zipfile.ZipFile(archive, "w") as packed:
        for path in sorted(path for path in pathlib.Path(folder).rglob("*") if path.is_file()):
            entry = zipfile.ZipInfo(f"{name}/{path.relative_to(folder)}", time)
            packed.writestr(entry, path.read_bytes(), zipfile.ZIP_DEFLATED, 9)


if __name__ == "__main__":
    main()
