#!/usr/bin/env python3
"""Rysuje kod EAN-13 na etykietę, w punktach drukarki: jeden moduł to całkowita liczba punktów, więc kod się skanuje.

    python3 etykieta.py 12_CYFR PLIK.png [PUNKTÓW_NA_CAL] [PUNKTÓW_NA_MODUŁ]

Bez dwóch ostatnich: 203 punkty na cal i 2 punkty na moduł (0,25 mm). Polecenia tavrix szuka w zmiennej TAVRIX, potem w PATH.
"""
import os
import subprocess
import sys


def main():
    if not 3 <= len(sys.argv) <= 5:
        print(__doc__, file=sys.stderr)
        return 2
    text, file = sys.argv[1:3]
    dpi = int(sys.argv[3]) if len(sys.argv) > 3 else 203
    dots = int(sys.argv[4]) if len(sys.argv) > 4 else 2
    # Szerokość modułu podaje się w twipach: 1440 na cal.
    module = max(1, round(dots * 1440 / dpi))
    command = [os.environ.get("TAVRIX", "tavrix"), "barcode", "--kind", "EAN13", "--text", text, "--out", file,
               "--dpi", str(dpi), "--module", str(module)]
    try:
        return subprocess.run(command).returncode
    except OSError as error:
        print("Nie można uruchomić tavrix:", error, file=sys.stderr)
        return 3


if __name__ == "__main__":
    sys.exit(main())
