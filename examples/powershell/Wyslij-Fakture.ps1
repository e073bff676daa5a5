<#
.SYNOPSIS
Wysyła jedną fakturę do KSeF i mówi, jaki dostała numer. Windows PowerShell 5.1 i nowsze.
.DESCRIPTION
32-bitowa Tavrix.dll chce 32-bitowego PowerShella (C:\Windows\SysWOW64\WindowsPowerShell\v1.0\powershell.exe), 64-bitowa 64-bitowego.
Kod wyjścia: 0 numer i UPO są w wierszu, 1 numeru nie ma, 3 błąd programu, 4 numer jest, UPO nie.
Przy 1 KSeF odrzucił fakturę albo nie wiadomo (przerwane połączenie); ponownie wysyła się te same bajty, nie fakturę zrobioną od nowa.
.EXAMPLE
.\Wyslij-Fakture.ps1 -Connection 'Provider=SQLOLEDB;Data Source=serwer;Initial Catalog=firma;Integrated Security=SSPI' `
    -Nip 5265877635 -TokenFile token.txt -XmlFile faktura.xml -Table dok_fak -Id 1001 -Environment 2
#>
param(
    [Parameter(Mandatory)] [string] $Connection,
    [Parameter(Mandatory)] [string] $Nip,
    [Parameter(Mandatory)] [string] $TokenFile,
    [Parameter(Mandatory)] [string] $XmlFile,
    [Parameter(Mandatory)] [string] $Table,
    [Parameter(Mandatory)] [int] $Id,
    # 1 produkcja, 0 demo, 2 test
    [ValidateSet(0, 1, 2)] [int] $Environment = 2
)
$ErrorActionPreference = 'Stop'

function Get-ColumnText($Database, [string] $Column) {
    $rows = $Database.Execute("select $Column from $Table where ddout_id=$Id")
    try {
        if ($rows.EOF) { return '' }
        return "$($rows.Fields.Item(0).Value)"
    }
    finally { $rows.Close() }
}

$database = $null
try {
    $token = [IO.File]::ReadAllText((Resolve-Path $TokenFile)).Trim()
    # Jeden znak na każdy bajt: Latin-1 oddaje każdy bajt takim, jaki był. Nie Get-Content, bo ten dekoduje.
    $xml = [Text.Encoding]::GetEncoding(28591).GetString([IO.File]::ReadAllBytes((Resolve-Path $XmlFile)))
    $database = New-Object -ComObject ADODB.Connection
    $database.Open($Connection)
    # Dokument, który ma już numer, jest w KSeF: drugie wysłanie byłoby duplikatem.
    $number = Get-ColumnText $database 'numer_ksef'
    if ($number) {
        "Dokument ma już numer: $number"
        exit 0
    }
    $ksef = New-Object -ComObject Tavrix.KseF_comm
    $answer = $ksef.SendInvoiceToKSeF($database, $Nip, $token, $xml, 'FA (3)', '1-0E', 'FA', $Environment, $Table, $Id)
    # O przyjęciu mówi wiersz, nie tekst: przyjęta bywa także wtedy, gdy UPO jeszcze nie ma.
    $number = Get-ColumnText $database 'numer_ksef'
    "wynik: $answer"
    "numer_ksef: $number"
    if (-not $number) { exit 1 }
    if ($answer) { exit 4 }
    exit 0
}
catch {
    [Console]::Error.WriteLine($_.Exception.Message)
    exit 3
}
finally {
    if ($database -and $database.State) { $database.Close() }
}
