"""Wysyła jedną fakturę do KSeF przez automatyzację Windows (pakiet pywin32) i mówi, jaki dostała numer.

    python wyslij_fakture_com.py POŁĄCZENIE NIP PLIK_TOKENU PLIK_XML TABELA ID ŚRODOWISKO

Python musi mieć tyle bitów, ile zarejestrowana Tavrix.dll. Argumenty i kody wyjścia są te same co w
examples/vbscript/wyslij_fakture.vbs.
"""
import sys

import pythoncom
import win32com.client


def column_text(connection, column, table, document):
    answer = connection.Execute(f"select {column} from {table} where ddout_id={document}")
    rows = answer[0] if isinstance(answer, tuple) else answer
    try:
        value = None if rows.EOF else rows.Fields.Item(0).Value
        return "" if value is None else str(value)
    finally:
        rows.Close()


def send(database, nip, token_file, xml_file, table, document, environment):
    with open(token_file, encoding="utf-8-sig") as file:
        token = file.read().strip()
    # Jeden znak na każdy bajt; newline="" zostawia końce wierszy takimi, jakie są.
    with open(xml_file, encoding="latin-1", newline="") as file:
        xml = file.read()
    connection = win32com.client.Dispatch("ADODB.Connection")
    connection.Open(database)
    try:
        # Dokument, który ma już numer, jest w KSeF: drugie wysłanie byłoby duplikatem.
        number = column_text(connection, "numer_ksef", table, document)
        if number:
            print("Dokument ma już numer:", number)
            return 0
        ksef = win32com.client.Dispatch("Tavrix.KseF_comm")
        answer = ksef.SendInvoiceToKSeF(connection, nip, token, xml, "FA (3)", "1-0E", "FA", environment, table, document)
        # Argumenty przez referencję wracają w krotce za wynikiem.
        if isinstance(answer, tuple):
            answer = answer[0]
        # O przyjęciu mówi wiersz, nie tekst: przyjęta bywa także wtedy, gdy UPO jeszcze nie ma.
        number = column_text(connection, "numer_ksef", table, document)
        print("wynik:", answer)
        print("numer_ksef:", number)
        if not number:
            return 1
        return 4 if answer else 0
    finally:
        connection.Close()


def main():
    if len(sys.argv) != 8:
        print(__doc__, file=sys.stderr)
        return 2
    try:
        *texts, document, environment = sys.argv[1:]
        return send(*texts, int(document), int(environment))
    except (OSError, ValueError, pythoncom.com_error) as error:
        print("Błąd:", error, file=sys.stderr)
        return 3


if __name__ == "__main__":
    sys.exit(main())
