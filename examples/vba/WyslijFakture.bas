Attribute VB_Name = "TavrixFaktury"
' Wysylanie faktury do KSeF z VBA i VB6: plik importuje sie do projektu. Bez polskich liter, bo edytor czyta go w stronie
' kodowej systemu. W VB6 i 32-bitowym Office trzeba zarejestrowac 32-bitowa Tavrix.dll, w 64-bitowym Office 64-bitowa.
'
' Przyklad w oknie Immediate:
'   ?WyslijFakture("Provider=SQLOLEDB;Data Source=serwer;Initial Catalog=firma;Integrated Security=SSPI", _
'       "5265877635", "C:\firma\token.txt", "C:\firma\faktura.xml", "dok_fak", 1001, 2)
Option Explicit

' Numer KSeF faktury. Kiedy go nie ma, podnosi blad z powodem. Srodowisko: 1 produkcja, 0 demo, 2 test.
Public Function WyslijFakture(ByVal Polaczenie As String, ByVal Nip As String, ByVal PlikTokenu As String, _
        ByVal PlikXml As String, ByVal Tabela As String, ByVal Id As Long, ByVal Srodowisko As Long) As String
    Dim Baza As Object, KseF As Object
    Dim Xml As String, Token As String, WersjaSchematu As String, KodFormularza As String
    Dim Wynik As String, Numer As String, Opis As String, NumerBledu As Long
    On Error GoTo Blad
    Token = Trim$(Replace(Replace(CzytajBajty(PlikTokenu), vbCr, ""), vbLf, ""))
    ' Notatnik bywa, ze zaczyna plik trzema bajtami znacznika UTF-8.
    If AscW(Token & " ") > 127 Then Token = Mid$(Token, 4)
    Xml = CzytajBajty(PlikXml)
    Set Baza = CreateObject("ADODB.Connection")
    Baza.Open Polaczenie
    ' Dokument, ktory ma juz numer, jest w KSeF: drugie wyslanie byloby duplikatem.
    Numer = Kolumna(Baza, "numer_ksef", Tabela, Id)
    If Numer = "" Then
        Set KseF = CreateObject("Tavrix.KseF_comm")
        WersjaSchematu = "1-0E"
        KodFormularza = "FA"
        Wynik = KseF.SendInvoiceToKSeF(Baza, Nip, Token, Xml, "FA (3)", WersjaSchematu, KodFormularza, Srodowisko, Tabela, Id)
        ' O przyjeciu mowi wiersz, nie tekst: przyjeta bywa takze wtedy, gdy UPO jeszcze nie ma.
        Numer = Kolumna(Baza, "numer_ksef", Tabela, Id)
        If Wynik <> "" Then Debug.Print "KSeF: " & Wynik
    End If
    Baza.Close
    If Numer = "" Then Err.Raise vbObjectError + 1, "WyslijFakture", Wynik
    WyslijFakture = Numer
    Exit Function
Blad:
    NumerBledu = Err.Number
    Opis = Err.Description
    On Error Resume Next
    If Not Baza Is Nothing Then If Baza.State <> 0 Then Baza.Close
    On Error GoTo 0
    Err.Raise NumerBledu, "WyslijFakture", Opis
End Function

' Jeden znak na kazdy bajt pliku, bez dekodowania.
Private Function CzytajBajty(ByVal Plik As String) As String
    Dim Bajty() As Byte, I As Long, Uchwyt As Integer, Tekst As String
    Uchwyt = FreeFile
    Open Plik For Binary Access Read As #Uchwyt
    If LOF(Uchwyt) > 0 Then
        ReDim Bajty(LOF(Uchwyt) - 1)
        Get #Uchwyt, , Bajty
        Tekst = Space$(UBound(Bajty) + 1)
        For I = 0 To UBound(Bajty)
            Mid$(Tekst, I + 1, 1) = ChrW$(Bajty(I))
        Next
    End If
    Close #Uchwyt
    CzytajBajty = Tekst
End Function

Private Function Kolumna(ByVal Baza As Object, ByVal Nazwa As String, ByVal Tabela As String, ByVal Id As Long) As String
    Dim Wiersze As Object
    Set Wiersze = Baza.Execute("select " & Nazwa & " from " & Tabela & " where ddout_id=" & Id)
    If Not Wiersze.EOF Then Kolumna = "" & Wiersze.Fields(0).Value
    Wiersze.Close
End Function
