' cscript classes.vbs FOLDER: names each class before its turn, so that the last one named is where an error
' ended the script; prints what does not hold, then the sentinel. Nothing here shows a window for long or
' needs a network.
Option Explicit

Function Created(name)
    WScript.Echo name
    Set Created = WScript.CreateObject("Tavrix." & name)
End Function

Sub Expect(what, actual, expected)
    If VarType(actual) <> VarType(expected) Then
        WScript.Echo what & ": type " & VarType(actual) & " instead of " & VarType(expected)
    ElseIf actual <> expected Then
        WScript.Echo what & ": " & actual & " instead of " & expected
    End If
End Sub

Dim folder, object, windowsKey
folder = WScript.Arguments(0)

Set object = Created("CInfo")
Expect "VersjaLib", object.VersjaLib, "10.0.36.Tavrix"

Set object = Created("Rejestr")
windowsKey = "Software\Microsoft\Windows NT\CurrentVersion"
Expect "a root that there is not", object.RegGetValue(4, "a", "b"), ""
Expect "a value that there is", object.RegGetValue(2, windowsKey, "CurrentVersion"), _
    WScript.CreateObject("WScript.Shell").RegRead("HKLM\" & windowsKey & "\CurrentVersion")

Set object = Created("KseF_comm")
Expect "Base64EncodeSS", object.Base64EncodeSS("ABC"), "QUJD"

Set object = Created("Drk_Wyd_Ean_cls")
object.wys = 12.5
Expect "wys", object.wys, CCur(12.5)
Expect "szer", object.szer, CCur(0)
Expect "SyncShell", object.SyncShell("none.exe", 0, False, True), False

Set object = Created("Drk_Wyd_Ean_cls813")
Expect "EAN13", object.EAN13("590123412345"), "5JKLCDO*bcdefh+"
Expect "EAN8", object.EAN8("1234567"), ":BCDE*fgha+"

' Start B, "(12)", code C, 59 01 21 21 25, the check value 51, stop.
Set object = Created("Drk_Wyd_Ean_cls128")
Expect "Code128_Str", object.Code128_Str("ABC"), Chr(204) & "(12)" & Chr(199) & "[!559S" & Chr(206)

' Nothing listens there.
Set object = Created("ClsGetMail")
Expect "cmdGetMail", object.cmdGetMail("127.0.0.1", 1, "u", "p", True, "", "", folder), False

Set object = Created("CMessage")
object.Subject = "Faktura"
Expect "Subject", object.Subject, "Faktura"
Expect "Files", object.Files, ""
Expect "Size", object.Size, CLng(0)
Expect "DodajMail", object.DodajMail("x", folder, False), CLng(0)

Set object = Created("ClsSendMail")
Expect "NullStr of a null", object.NullStr(Null), ""
Expect "NullStr of a number", object.NullStr(7), "7"

Set object = Created("clsSocket")
Expect "ReceiveString", object.ReceiveString(), ""

Set object = Created("ClsPdfPodpis")
Expect "pdfpodpis", object.pdfpodpis(folder & "\none.pdf", folder & "\signed.pdf", folder & "\none.pfx", "1"), False

WScript.Echo "KONIEC"
