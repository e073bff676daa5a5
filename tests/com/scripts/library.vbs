' cscript library.vbs DATABASE: prints what does not hold, then the sentinel.
Option Explicit

Sub Expect(what, actual, expected)
    If actual <> expected Then WScript.Echo what & ": " & actual & " instead of " & expected
End Sub

Dim ksef, text, bytes, connection, rows, field, names
Set ksef = WScript.CreateObject("Tavrix.KseF_comm")
Expect "type of the object", VarType(ksef), vbObject

' Variables travel by reference, literals by value.
text = "Za" & Chr(191) & Chr(243) & Chr(179) & Chr(230)
Expect "Base64EncodeSS of a variable", ksef.Base64EncodeSS(text), "WmG/87Pm"
bytes = ksef.Base64DecodeToBytes("AAEC/w==")
Expect "type of bytes", VarType(bytes), vbArray + 17
Expect "Base64Encode of bytes", ksef.Base64Encode(bytes), "AAEC/w=="
Expect "Base64Encode of a script's array", ksef.Base64Encode(Array(0, 1, 2, 255)), "AAEC/w=="
ksef.BASEURL = "https://example.test"
Expect "baseUrl", ksef.baseUrl, "https://example.test"

Set connection = WScript.CreateObject("ADODB.Connection")
connection.Open "Data Source=" & WScript.Arguments(0)
Set rows = WScript.CreateObject("ADODB.Recordset")
rows.CursorLocation = 3
rows.Open "select top 1 ddout_id, numer_ksef, opis from dok_fak where ddout_id=1", connection, 3, 4
names = ""
For Each field In rows.Fields
    names = names & field.Name & ";"
Next
Expect "For Each over the fields", names, "ddout_id;numer_ksef;opis;"
Expect "rows(name)", rows("ddout_id"), 1
' A field is an object; its value is meant.
Expect "a field as an argument", ksef.Base64EncodeSS(rows("ddout_id")), "MQ=="
rows("numer_ksef") = "VBS"
rows.Fields("numer_ksef").Value = rows.Fields("numer_ksef") & "-1"
rows.UpdateBatch
rows.Close

On Error Resume Next
ksef.TimestampToUnixMs "bad"
Expect "number of an error is set", Err.Number <> 0, True
Expect "source of an error", InStr(Err.Source, "KseF_comm") > 0, True
Err.Clear
ksef.NieMa
Expect "number of a missing method", Err.Number, 438
On Error GoTo 0
connection.Close
WScript.Echo "KONIEC"
