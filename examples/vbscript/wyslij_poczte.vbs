' Wysyla wiadomosc z zalacznikiem przez serwer SMTP.
'
'   cscript //nologo wyslij_poczte.vbs SERWER PORT SSL UZYTKOWNIK PLIK_HASLA OD DO TEMAT ZALACZNIK
'
'   SSL          1 z TLS (na porcie 465 od poczatku, na innych STARTTLS), 0 bez; bez TLS tylko w sieci wlasnej
'   UZYTKOWNIK   konto na serwerze; myslnik, gdy serwer nie chce logowania
'   PLIK_HASLA   plik, w ktorym jest tylko haslo
'   ZALACZNIK    sciezka pliku
'
' Kod wyjscia: 0 serwer przyjal wiadomosc, 1 nie (powod jest w wyniku), 2 zle argumenty, 3 blad programu.
Option Explicit

Function FirstLine(path)
    Dim stream
    Set stream = WScript.CreateObject("Scripting.FileSystemObject").OpenTextFile(path, 1)
    FirstLine = stream.ReadLine
    stream.Close
End Function

Dim arguments, mail, user, password, answer
Set arguments = WScript.Arguments
If arguments.Count <> 9 Then
    WScript.Echo "wyslij_poczte.vbs SERWER PORT SSL UZYTKOWNIK PLIK_HASLA OD DO TEMAT ZALACZNIK"
    WScript.Quit 2
End If
user = ""
password = ""
On Error Resume Next
If arguments(3) <> "-" Then
    user = arguments(3)
    password = FirstLine(arguments(4))
End If
Set mail = WScript.CreateObject("Tavrix.ClsSendMail")
answer = mail.sendmail(arguments(6), arguments(7), arguments(5), "W zalaczeniu faktura.", arguments(0), CLng(arguments(1)), _
    user, password, arguments(8), CLng(arguments(2)), "", "", "", "", "", "", "")
If Err.Number <> 0 Then
    WScript.Echo "Blad: " & Err.Description & " (" & Hex(Err.Number) & ")"
    WScript.Quit 3
End If
If answer = "" Then
    WScript.Echo "Wyslano."
    WScript.Echo "KONIEC"
    WScript.Quit 0
End If
WScript.Echo "Nie wyslano: " & answer
WScript.Echo "KONIEC"
WScript.Quit 1
