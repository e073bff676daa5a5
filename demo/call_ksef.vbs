' Calls one method of Tavrix.KseF_comm the way a host application does and prints what it returned.
'
'   cscript //nologo call_ksef.vbs DATABASE NIP TOKEN METHOD [ARGUMENT...]
'
'   SendBach PACKAGE          sends a package of invoices, test environment
'   GetUpo                    asks what became of packages, demo environment: the method knows no test
'   GetFaktury                fetches purchase invoices, test environment
'   GetQr2 SERIAL TABLE ID    signs the link of an invoice issued offline, with the key of user 7; production alone
'
' DATABASE, NIP and TOKEN are those of send_invoice.vbs. The last line is KONIEC; the script host reports no unhandled
' error, so its absence is the failure.
Option Explicit

Const TestEnvironment = 2
Const UserWithKey = "7"

Dim arguments, connection, ksef, nip, token, result
Set arguments = WScript.Arguments
nip = arguments(1)
token = arguments(2)

Set connection = WScript.CreateObject("ADODB.Connection")
If InStr(arguments(0), "=") > 0 Then
    connection.Open arguments(0)
Else
    connection.Open "Data Source=" & arguments(0)
End If

Set ksef = WScript.CreateObject("Tavrix.KseF_comm")
Select Case arguments(3)
Case "SendBach"
    result = ksef.SendBach(connection, arguments(4), "FA (3)", "1-0E", "FA", token, "", TestEnvironment)
Case "GetUpo"
    result = ksef.GetUpo(connection, nip, token, False)
Case "GetFaktury"
    result = ksef.GetFaktury(connection, nip, token, 0, TestEnvironment, "Subject2")
Case "GetQr2"
    result = ksef.GetQr2(connection, arguments(4), arguments(5) & "," & token & "," & UserWithKey, _
        CLng(arguments(6)), nip)
End Select
connection.Close
WScript.Echo arguments(3) & " returned: """ & result & """"
WScript.Echo "KONIEC"
