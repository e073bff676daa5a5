' Sends one invoice to KSeF the way a host application does: it opens its database, reads the XML,
' lets Tavrix.KseF_comm send it and looks at the document's row before and after.
'
'   cscript //nologo send_invoice.vbs DATABASE NIP TOKEN XML TABLE ID ENVIRONMENT
'
'   DATABASE     an ADO connection string, or the path of a SQLite file (development provider)
'   NIP, TOKEN   the company's tax number and its KSeF token
'   XML          the invoice, UTF-8
'   TABLE, ID    the document's table and its ddout_id
'   ENVIRONMENT  1 production, 0 demo, anything else test
'
' The last line is KONIEC; the script host reports no unhandled error, so its absence is the failure.
' The exit code is 0 when the row says that KSeF accepted the invoice, 1 otherwise.
Option Explicit

Const ForReading = 1
Const AnsiBytes = 0
Const UseClient = 3
Const OpenStatic = 3
Const LockBatchOptimistic = 4

' One character for each byte, through the system's code page, as file functions of hosts read.
Function ReadBytesAsCharacters(path)
    Dim files, stream
    Set files = WScript.CreateObject("Scripting.FileSystemObject")
    Set stream = files.OpenTextFile(path, ForReading, False, AnsiBytes)
    ReadBytesAsCharacters = stream.ReadAll
    stream.Close
End Function

Function OpenDatabase(database)
    Dim connection
    Set connection = WScript.CreateObject("ADODB.Connection")
    If InStr(database, "=") > 0 Then
        connection.Open database
    Else
        connection.Open "Data Source=" & database
    End If
    Set OpenDatabase = connection
End Function

Function OpenRow(connection, table, id)
    Dim rows
    Set rows = WScript.CreateObject("ADODB.Recordset")
    rows.CursorLocation = UseClient
    rows.Open "select top 1 ddout_data_wyst,numer_ksef,NumerRef_ksef,HashFaktury,status_ksef," & _
        "StatusStr_ksef,Export_Opis_bledu_ksef,DATA_OPERACJI,UPO_ksef from " & table & _
        " where ddout_id=" & id, connection, OpenStatic, LockBatchOptimistic
    Set OpenRow = rows
End Function

Sub PrintRow(rows)
    Dim column
    If rows.EOF Then
        WScript.Echo "  (no row)"
        Exit Sub
    End If
    For Each column In rows.Fields
        If column.Name <> "UPO_ksef" Then WScript.Echo "  " & column.Name & ": " & ("" & column.Value)
    Next
End Sub

Dim arguments, connection, ksef, result, rows, exitCode
Set arguments = WScript.Arguments
If arguments.Count <> 7 Then
    WScript.Echo "usage: send_invoice.vbs DATABASE NIP TOKEN XML TABLE ID ENVIRONMENT"
    WScript.Quit 2
End If

Set connection = OpenDatabase(arguments(0))
WScript.Echo "Row before:"
Set rows = OpenRow(connection, arguments(4), arguments(5))
PrintRow rows
rows.Close

Set ksef = WScript.CreateObject("Tavrix.KseF_comm")
result = ksef.SendInvoiceToKSeF(connection, arguments(1), arguments(2), _
    ReadBytesAsCharacters(arguments(3)), "FA (3)", "1-0E", "FA", CLng(arguments(6)), _
    arguments(4), CLng(arguments(5)))
WScript.Echo "Returned: " & result

exitCode = 1
WScript.Echo "Row after:"
Set rows = OpenRow(connection, arguments(4), arguments(5))
PrintRow rows
If Not rows.EOF Then
    WScript.Echo "UPO:"
    WScript.Echo "" & rows("UPO_ksef")
    If "" & rows("numer_ksef") <> "" And "" & rows("status_ksef") = "200" Then exitCode = 0
End If
rows.Close
connection.Close
WScript.Echo "KONIEC"
WScript.Quit exitCode
