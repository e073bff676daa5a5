#!/usr/bin/env python3
"""Wysyła jedną fakturę do KSeF poleceniem tavrix i mówi, jaki dostała numer. Baza dokumentów to plik SQLite.

    python3 wyslij_fakture.py BAZA NIP PLIK_TOKENU PLIK_XML TABELA ID ŚRODOWISKO

    ŚRODOWISKO   prod, demo albo test

Polecenia tavrix szuka w zmiennej TAVRIX, potem w PATH. Kod wyjścia: 0 numer i UPO są w wierszu, 1 numeru nie ma, 2 złe
argumenty, 3 błąd programu albo ustawień, 4 numer jest, UPO nie. Przy 1 KSeF odrzucił fakturę albo nie wiadomo (przerwane
połączenie); ponownie wysyła się te same bajty, nie fakturę zrobioną od nowa.
"""
import json
import os
import subprocess
import sys


def send(database, nip, token_file, xml_file, table, document, environment):
    command = [os.environ.get("TAVRIX", "tavrix"), "send", "--nip", nip, "--token-file", token_file, "--env", environment,
               "--xml", xml_file, "--db", database, "--table", table, "--id", document, "--json"]
    done = subprocess.run(command, stdout=subprocess.PIPE, encoding="utf-8")
    try:
        answer = json.loads(done.stdout)
    except json.JSONDecodeError:
        print(f"tavrix skończył z kodem {done.returncode} i bez odpowiedzi", file=sys.stderr)
        return 3
    print("wynik:", answer.get("result", ""))
    if done.returncode not in (0, 1, 3):
        return 3
    # Odpowiedź sama mówi, czy KSeF ma fakturę i czy UPO jest w bazie.
    print("numer_ksef:", (answer.get("row") or {}).get("numer_ksef", ""))
    if not answer.get("accepted"):
        return 1
    return 0 if answer["upo_stored"] else 4


def main():
    if len(sys.argv) != 8:
        print(__doc__, file=sys.stderr)
        return 2
    try:
        return send(*sys.argv[1:])
    except OSError as error:
        print("Nie można uruchomić tavrix:", error, file=sys.stderr)
        return 3


if __name__ == "__main__":
    sys.exit(main())
