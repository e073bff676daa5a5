' Wysyla jedna fakture do KSeF i mowi, jaki dostala numer.
'
'   cscript //nologo wyslij_fakture.vbs POLACZENIE NIP PLIK_TOKENU PLIK_XML TABELA ID SRODOWISKO
'
'   POLACZENIE   napis polaczenia ADO
'   NIP          numer podatkowy firmy, ten sam co w tokenie
'   PLIK_TOKENU  plik, w ktorym jest tylko token KSeF
'   PLIK_XML     faktura FA(3) w UTF-8
'   TABELA, ID   tabela dokumentow i ddout_id dokumentu
'   SRODOWISKO   1 produkcja, 0 demo, 2 test
'
' Kod wyjscia: 0 numer i UPO sa w wierszu, 1 numeru nie ma, 2 zle argumenty, 3 blad programu, 4 numer jest, UPO nie. Przy 1 KSeF
' odrzucil fakture albo nie wiadomo (przerwane polaczenie); ponownie wysyla sie te same bajty, nie fakture zrobiona od nowa.
' Ostatni wiersz to KONIEC. Plik nie ma polskich liter, bo host skryptow czyta go w stronie kodowej systemu.
Option Explicit

Const ForReading = 1
Const AnsiBytes = 0

' Jeden znak na kazdy bajt pliku; biblioteka sama zamienia znaki strony kodowej z powrotem na bajty.
Function ReadBytes(path)
    Dim files, stream
    Set files = WScript.CreateObject("Scripting.FileSystemObject")
    Set stream = files.OpenTextFile(path, ForReading, False, AnsiBytes)
    ReadBytes = stream.ReadAll
    stream.Close
End Function

' Sam token: bez konca wiersza i bez trzech bajtow znacznika UTF-8, od ktorych Notatnik bywa, ze zaczyna plik.
Function OnlyToken(text)
    OnlyToken = Trim(Replace(Replace(text, vbCr, ""), vbLf, ""))
    If Asc(OnlyToken & " ") > 127 Then OnlyToken = Mid(OnlyToken, 4)
End Function

Function ColumnText(connection, column, table, id)
    Dim rows
    Set rows = connection.Execute("select " & column & " from " & table & " where ddout_id=" & id)
    If rows.EOF Then
        ColumnText = ""
    Else
        ColumnText = "" & rows.Fields.Item(0).Value
    End If
    rows.Close
End Function

Sub StopOnError(step)
    If Err.Number = 0 Then Exit Sub
    WScript.Echo step & ": " & Err.Description & " (" & Hex(Err.Number) & ")"
    WScript.Echo "KONIEC"
    WScript.Quit 3
End Sub

Dim arguments, connection, ksef, token, xml, answer, before, number, exitCode
Set arguments = WScript.Arguments
If arguments.Count <> 7 Then
    WScript.Echo "wyslij_fakture.vbs POLACZENIE NIP PLIK_TOKENU PLIK_XML TABELA ID SRODOWISKO"
    WScript.Quit 2
End If

On Error Resume Next
token = OnlyToken(ReadBytes(arguments(2)))
StopOnError "Plik tokenu"
xml = ReadBytes(arguments(3))
StopOnError "Plik faktury"
Set connection = WScript.CreateObject("ADODB.Connection")
connection.Open arguments(0)
StopOnError "Baza"
' Dokument, ktory ma juz numer, jest w KSeF: drugie wyslanie byloby duplikatem.
before = ColumnText(connection, "numer_ksef", arguments(4), arguments(5))
StopOnError "Wiersz dokumentu"
If before <> "" Then
    WScript.Echo "Dokument ma juz numer: " & before
    WScript.Echo "KONIEC"
    WScript.Quit 0
End If
Set ksef = WScript.CreateObject("Tavrix.KseF_comm")
StopOnError "Tavrix.KseF_comm"
answer = ksef.SendInvoiceToKSeF(connection, arguments(1), token, xml, "FA (3)", "1-0E", "FA", _
    CLng(arguments(6)), arguments(4), CLng(arguments(5)))
StopOnError "Wysylanie"

' O przyjeciu mowi wiersz, nie tekst: przyjeta bywa takze wtedy, gdy UPO jeszcze nie ma.
number = ColumnText(connection, "numer_ksef", arguments(4), arguments(5))
StopOnError "Wiersz dokumentu"
WScript.Echo "wynik: " & answer
WScript.Echo "numer_ksef: " & number
connection.Close
exitCode = 0
If number = "" Then
    exitCode = 1
ElseIf answer <> "" Then
    exitCode = 4
End If
WScript.Echo "KONIEC"
WScript.Quit exitCode
