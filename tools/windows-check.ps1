<#
.SYNOPSIS
Pierwsza godzina Tavriksa na prawdziwym Windows: instaluje, sprawdza, odinstalowuje i pisze jeden raport.
.DESCRIPTION
Windows PowerShell 5.1. Połóż ten plik obok Tavrix-WERSJA-setup.exe i uruchom:

    powershell -ExecutionPolicy Bypass -File windows-check.ps1

Jako administrator instaluje dla wszystkich użytkowników, inaczej tylko dla bieżącego. Niczego nie robi, gdy Tavrix jest już
zainstalowany albo zarejestrowany. Raport nie zawiera nazwy użytkownika ani komputera. com_test.exe obok tego pliku, razem z
tym, co leży przy nim po zbudowaniu, też zostanie uruchomiony.

Kod wyjścia: 0 wszystko dobrze, 1 coś się nie udało, 2 nie można było zacząć.
#>
param(
    # Domyślnie jedyny Tavrix-*-setup.exe obok tego pliku.
    [string] $Setup = '',
    # Domyślnie windows-check-raport.txt obok tego pliku.
    [string] $Report = '',
    # Bez nich: test, który zmienia ustawienia ekranu użytkownika, i te, które liczą na stan z Wine.
    [string] $ComFilter = '-Forms.AreReadable*:Forms.LeaveNothingBehind*'
)
#requires -Version 5.1
Set-StrictMode -Version 2
$ErrorActionPreference = 'Stop'

$here = Split-Path -Parent $MyInvocation.MyCommand.Path
if ($Report -eq '') { $Report = Join-Path $here 'windows-check-raport.txt' }
$work = Join-Path ([IO.Path]::GetTempPath()) ('tavrix-check-' + [Guid]::NewGuid().ToString('N').Substring(0, 8))
$lines = New-Object System.Collections.ArrayList
$steps = New-Object System.Collections.ArrayList
$wide = [Environment]::Is64BitOperatingSystem
$elevated = (New-Object Security.Principal.WindowsPrincipal([Security.Principal.WindowsIdentity]::GetCurrent())).IsInRole(
    [Security.Principal.WindowsBuiltInRole]::Administrator)
# Co jest do sprzątnięcia; wypełniają to kroki.
$state = @{ Folder = ''; Sandbox = $null; Address = ''; Settings = @{}; Before = $null; FilesBefore = $null; Installed = @{}; FilesInstalled = @{}; Invoice = ''; Database = '' }

# --- Raport ---

# Raport idzie do obcych: ścieżki i nazwy użytkownika nie są nikomu potrzebne.
function Hide-Personal([string] $text) {
    $temporary = [IO.Path]::GetTempPath().TrimEnd('\')
    foreach ($pair in @(@($temporary, '%TEMP%'), @($env:USERPROFILE, '%USERPROFILE%'), @($env:COMPUTERNAME, '%COMPUTERNAME%'),
            @($env:USERNAME, '%USERNAME%'))) {
        if ($pair[0] -and $pair[0].Length -gt 2) {
            $pattern = '(?<!\w)' + [Text.RegularExpressions.Regex]::Escape($pair[0]) + '(?!\w)'
            $text = [Text.RegularExpressions.Regex]::Replace($text, $pattern, $pair[1], [Text.RegularExpressions.RegexOptions]::IgnoreCase)
        }
    }
    return $text
}

function Write-Report([string] $text) {
    $text = Hide-Personal $text
    [void] $lines.Add($text)
    Write-Host $text
    # Po każdym wierszu: raport ma zostać także wtedy, gdy coś przerwie skrypt.
    [IO.File]::WriteAllLines($Report, [string[]] $lines.ToArray([string]), (New-Object Text.UTF8Encoding($true)))
}

function Skip-Step([string] $why) { throw (New-Object OperationCanceledException($why)) }

# Wykonuje krok, mierzy go i idzie dalej, cokolwiek się stało. Co krok wypisze, trafia do raportu. Blok kroku widzi zmienne tej
# funkcji przed zmiennymi skryptu, dlatego mają nazwy, których nikt inny nie używa.
function Invoke-Step([string] $stepTitle, [scriptblock] $stepBody) {
    Write-Report ''
    Write-Report ('== ' + $stepTitle)
    $stepWatch = [Diagnostics.Stopwatch]::StartNew()
    $stepResult = 'DOBRZE'
    try {
        & $stepBody | ForEach-Object { Write-Report ('   ' + $_) }
    }
    catch {
        $stepCause = $_.Exception
        while ($null -ne $stepCause.InnerException) { $stepCause = $stepCause.InnerException }
        if ($stepCause -is [OperationCanceledException]) { $stepResult = 'POMINIĘTO' } else { $stepResult = 'BŁĄD' }
        Write-Report ('   ' + $stepCause.Message)
    }
    $stepWatch.Stop()
    $stepSeconds = $stepWatch.Elapsed.TotalSeconds.ToString('0.0', [Globalization.CultureInfo]::InvariantCulture)
    [void] $steps.Add(('{0,-10} {1,7} s  {2}' -f $stepResult, $stepSeconds, $stepTitle))
    Write-Report ('   -> {0}, {1} s' -f $stepResult, $stepSeconds)
}

# --- Programy ---

function Join-Arguments([string[]] $arguments) {
    $quoted = foreach ($argument in $arguments) {
        if ($argument -match '[\s;=]' -or $argument -eq '') { '"' + $argument + '"' } else { $argument }
    }
    return [string]::Join(' ', [string[]] @($quoted))
}

# Program konsolowy z limitem czasu; wynik ma ExitCode i Output.
function Invoke-Program([string] $file, [string[]] $arguments, [int] $limitSeconds) {
    $start = New-Object Diagnostics.ProcessStartInfo
    $start.FileName = $file
    $start.Arguments = Join-Arguments $arguments
    $start.WorkingDirectory = $work
    $start.UseShellExecute = $false
    $start.CreateNoWindow = $true
    $start.RedirectStandardOutput = $true
    $start.RedirectStandardError = $true
    $process = [Diagnostics.Process]::Start($start)
    try {
        # Oba naraz: program, którego nikt nie czyta, stanąłby.
        $output = $process.StandardOutput.ReadToEndAsync()
        $errors = $process.StandardError.ReadToEndAsync()
        if (-not $process.WaitForExit($limitSeconds * 1000)) {
            $process.Kill()
            throw ('program nie skończył w ciągu {0} s: {1}' -f $limitSeconds, (Split-Path -Leaf $file))
        }
        [void] $output.Wait(10000)
        [void] $errors.Wait(10000)
        $text = ''
        if ($output.IsCompleted) { $text += $output.Result }
        if ($errors.IsCompleted) { $text += $errors.Result }
        return New-Object PSObject -Property @{ ExitCode = $process.ExitCode; Output = $text.Trim() }
    }
    finally { $process.Dispose() }
}

# Instalator i deinstalator: bez okna i bez pytania o uprawnienia, których ten skrypt nie ma.
function Invoke-Setup([string] $file, [string] $arguments, [int] $limitSeconds) {
    $before = $env:__COMPAT_LAYER
    try {
        if (-not $elevated) { $env:__COMPAT_LAYER = 'RunAsInvoker' }
        $process = Start-Process -FilePath $file -ArgumentList $arguments -PassThru
        # Bez tego PowerShell 5.1 nie zna potem kodu wyjścia.
        $null = $process.Handle
        if (-not $process.WaitForExit($limitSeconds * 1000)) { throw ('instalator nie skończył w ciągu {0} s' -f $limitSeconds) }
        return $process.ExitCode
    }
    finally { $env:__COMPAT_LAYER = $before }
}

# Program systemowy o danej liczbie bitów; pusty napis, gdy system takiego nie ma.
function Get-SystemProgram([string] $name, [int] $bits) {
    if ($bits -eq 64 -and -not $wide) { return '' }
    $folder = 'System32'
    if ($bits -eq 32 -and $wide) { $folder = 'SysWOW64' }
    if ($bits -eq 64 -and -not [Environment]::Is64BitProcess) { $folder = 'Sysnative' }
    return Join-Path (Join-Path $env:SystemRoot $folder) $name
}

function Find-Installed([string] $filter) {
    $found = @(Get-ChildItem -LiteralPath $state.Folder -Recurse -Filter $filter -ErrorAction SilentlyContinue | Where-Object { -not $_.PSIsContainer })
    if ($found.Count -eq 0) { return '' }
    return $found[0].FullName
}

# Skrypt PowerShella w procesie o danej liczbie bitów.
function Invoke-PowerShell([int] $bits, [string] $script, [string[]] $arguments) {
    $program = Get-SystemProgram 'WindowsPowerShell\v1.0\powershell.exe' $bits
    return Invoke-Program $program (@('-NoProfile', '-NonInteractive', '-ExecutionPolicy', 'Bypass', '-File', $script) + $arguments) 180
}

# --- Rejestr i pliki ---

function Get-Views {
    if ($wide) { return @('Registry64', 'Registry32') }
    return @('Default')
}

# Nazwy kluczy, które rejestracja i instalator mogą dodać, i czcionki z wartościami. Tablica nazw jako zbiór.
function Get-RegistryNames {
    $names = @{}
    foreach ($hive in @('LocalMachine', 'CurrentUser')) {
        foreach ($view in Get-Views) {
            $root = [Microsoft.Win32.RegistryKey]::OpenBaseKey([Microsoft.Win32.RegistryHive] $hive, [Microsoft.Win32.RegistryView] $view)
            foreach ($path in @('Software', 'Software\Classes', 'Software\Classes\CLSID', 'Software\Classes\Interface', 'Software\Classes\TypeLib',
                    'Software\Classes\AppID', 'Software\Microsoft\Windows\CurrentVersion\Uninstall',
                    'Software\Microsoft\Windows NT\CurrentVersion\Fonts', 'Software\Microsoft\Windows\CurrentVersion\SharedDLLs')) {
                $key = $root.OpenSubKey($path)
                if ($null -eq $key) { continue }
                foreach ($name in $key.GetSubKeyNames()) { $names["$hive $view $path\$name"] = $true }
                if ($path -like '*Fonts' -or $path -like '*SharedDLLs') {
                    foreach ($name in $key.GetValueNames()) { $names["$hive $view $path : $name = $($key.GetValue($name))"] = $true }
                }
                $key.Close()
            }
            $root.Close()
        }
    }
    return $names
}

function Get-PlacedFiles {
    $names = @{}
    $folders = @([Environment]::GetFolderPath('CommonPrograms'), [Environment]::GetFolderPath('Programs'))
    $folders += [Environment]::GetFolderPath('CommonDesktopDirectory')
    $folders += [Environment]::GetFolderPath('DesktopDirectory')
    foreach ($folder in $folders) {
        if (-not $folder) { continue }
        foreach ($file in Get-ChildItem -LiteralPath $folder -Recurse -ErrorAction SilentlyContinue) { $names[$file.FullName] = $true }
    }
    $fonts = @((Join-Path $env:SystemRoot 'Fonts'))
    if ($env:LOCALAPPDATA) { $fonts += Join-Path $env:LOCALAPPDATA 'Microsoft\Windows\Fonts' }
    foreach ($folder in $fonts) {
        foreach ($file in Get-ChildItem -LiteralPath $folder -ErrorAction SilentlyContinue) { $names[$file.FullName] = $true }
    }
    return $names
}

function Compare-Names($before, $after) {
    $added = @($after.Keys | Where-Object { -not $before.ContainsKey($_) } | Sort-Object)
    $gone = @($before.Keys | Where-Object { -not $after.ContainsKey($_) } | Sort-Object)
    return New-Object PSObject -Property @{ Added = $added; Gone = $gone }
}

# Obok pracują inne programy, więc nowe nazwy, których instalacja nie dodała, są tylko wymienione.
function Assert-AsBefore([string] $what, $before, $after, $installed) {
    $difference = Compare-Names $before $after
    $left = @($difference.Added | Where-Object { $installed.ContainsKey($_) -or $_ -like '*Tavrix*' })
    $left | Select-Object -First 40 | ForEach-Object { 'pozostało: ' + $_ }
    $difference.Gone | Select-Object -First 40 | ForEach-Object { 'ubyło: ' + $_ }
    $difference.Added | Where-Object { $left -notcontains $_ } | Select-Object -First 10 | ForEach-Object { 'obce, nowe: ' + $_ }
    if ($left.Count + $difference.Gone.Count -gt 0) {
        throw ('{0}: {1} pozostało, {2} ubyło' -f $what, $left.Count, $difference.Gone.Count)
    }
    "${what}: jak przedtem"
}

function Get-UninstallEntry {
    foreach ($hive in @('LocalMachine', 'CurrentUser')) {
        foreach ($view in Get-Views) {
            $root = [Microsoft.Win32.RegistryKey]::OpenBaseKey([Microsoft.Win32.RegistryHive] $hive, [Microsoft.Win32.RegistryView] $view)
            $key = $root.OpenSubKey('Software\Microsoft\Windows\CurrentVersion\Uninstall\Tavrix')
            if ($null -ne $key) {
                $entry = New-Object PSObject -Property @{ Where = "$hive $view"; Folder = [string] $key.GetValue('InstallLocation')
                    Version = [string] $key.GetValue('DisplayVersion') }
                $key.Close()
                return $entry
            }
        }
    }
    return $null
}

# --- Piaskownica ---

function Get-SandboxText([string] $path) {
    $client = New-Object Net.WebClient
    try {
        # Serwer pośredniczący nie ma czego szukać na tym komputerze.
        $client.Proxy = $null
        $client.Encoding = [Text.Encoding]::UTF8
        return $client.DownloadString($state.Address + $path)
    }
    finally { $client.Dispose() }
}

# Kolejny dokument pod własnym numerem: drugi o tym samym byłby duplikatem.
function New-Invoice([string] $number) {
    if ($state.Invoice -eq '') { Skip-Step 'nie ma przykładowej faktury XML' }
    $bytes = [Text.Encoding]::GetEncoding(28591)
    $xml = [IO.File]::ReadAllText($state.Invoice, $bytes)
    $xml = [Text.RegularExpressions.Regex]::Replace($xml, '<P_2>[^<]*</P_2>', "<P_2>$number</P_2>")
    $file = Join-Path $work ($number.Replace('/', '-') + '.xml')
    [IO.File]::WriteAllText($file, $xml, $bytes)
    return $file
}

# Przykład z instalacji; kod 0 znaczy: numer i UPO są w wierszu.
function Invoke-Example([string] $pattern, [int] $id, [scriptblock] $run) {
    if ($state.Address -eq '') { Skip-Step 'piaskownica nie działa' }
    if ($state.Database -eq '') { Skip-Step 'nie ma bazy' }
    $script = Find-Installed $pattern
    if ($script -eq '') { Skip-Step "w zainstalowanych plikach nie ma $pattern" }
    $invoice = New-Invoice "PROBA/$id"
    $done = & $run $script $invoice $id
    $done.Output -split "`r?`n"
    if ($done.ExitCode -ne 0) { throw "kod wyjścia $($done.ExitCode)" }
    $count = [Text.RegularExpressions.Regex]::Matches((Get-SandboxText '/sandbox/state?pageSize=1000'), '"ksefNumber":"[0-9]').Count
    "faktur z numerem KSeF w piaskownicy: $count"
}

# --- Przebieg ---

if ($Setup -eq '') {
    $candidates = @(Get-ChildItem -LiteralPath $here -Filter 'Tavrix-*-setup.exe')
    if ($candidates.Count -eq 1) { $Setup = $candidates[0].FullName }
}
if ($Setup -eq '' -or -not (Test-Path -LiteralPath $Setup)) {
    Write-Host 'Nie ma jednego pliku Tavrix-*-setup.exe obok skryptu; podaj go parametrem -Setup.'
    exit 2
}
$Setup = (Resolve-Path -LiteralPath $Setup).ProviderPath
$entry = Get-UninstallEntry
if ($null -ne $entry -or $null -ne [Type]::GetTypeFromProgID('Tavrix.KseF_comm')) {
    Write-Host 'Tavrix jest już zainstalowany albo zarejestrowany. Odinstaluj go i uruchom skrypt jeszcze raz; niczego nie zmieniono.'
    exit 2
}
[void] (New-Item -ItemType Directory -Path $work)

try {
    Write-Report ('Tavrix na Windows: raport z {0} (UTC)' -f [DateTime]::UtcNow.ToString('yyyy-MM-dd HH:mm'))

    Invoke-Step 'System' {
        $system = Get-CimInstance -ClassName Win32_OperatingSystem
        '{0}, {1}, kompilacja {2}, {3}' -f $system.Caption, $system.Version, $system.BuildNumber, $system.OSArchitecture
        'PowerShell {0}, .NET {1}, procesów 64-bitowych: {2}' -f $PSVersionTable.PSVersion, [Environment]::Version, $wide
        'Język {0}, strona kodowa {1}, administrator: {2}' -f [Globalization.CultureInfo]::CurrentCulture.Name, [Text.Encoding]::Default.CodePage, $elevated
        'Procesor: {0}' -f $env:PROCESSOR_IDENTIFIER
        try {
            $guards = @(Get-CimInstance -Namespace 'root\SecurityCenter2' -ClassName AntiVirusProduct | ForEach-Object { $_.displayName })
            'Ochrona: {0}' -f [string]::Join(', ', [string[]] $guards)
        }
        catch { 'Ochrona: nie wiadomo' }
    }

    Invoke-Step 'Plik instalatora' {
        $file = Get-Item -LiteralPath $Setup
        '{0}, {1} B' -f $file.Name, $file.Length
        'SHA-256 {0}' -f (Get-FileHash -LiteralPath $Setup -Algorithm SHA256).Hash
        'Podpis: {0}' -f (Get-AuthenticodeSignature -LiteralPath $Setup).Status
    }

    Invoke-Step 'Stan przed instalacją' {
        $state.Before = Get-RegistryNames
        $state.FilesBefore = Get-PlacedFiles
        'nazw w rejestrze: {0}, plików: {1}' -f $state.Before.Count, $state.FilesBefore.Count
    }

    Invoke-Step 'Instalacja' {
        $arguments = '/S'
        if (-not $elevated) { $arguments = '/CurrentUser /S' }
        $code = Invoke-Setup $Setup $arguments 300
        "parametry $arguments, kod wyjścia $code"
        if ($code -ne 0) {
            $log = Join-Path ([IO.Path]::GetTempPath()) 'Tavrix-setup.log'
            if (Test-Path -LiteralPath $log) { [IO.File]::ReadAllText($log).Trim() }
            throw 'instalator odmówił'
        }
        $entry = Get-UninstallEntry
        if ($null -eq $entry) { throw 'nie ma wpisu wśród zainstalowanych programów' }
        $state.Folder = $entry.Folder.Trim('"')
        'wersja {0}, {1}, folder {2}' -f $entry.Version, $entry.Where, $state.Folder
        $files = @(Get-ChildItem -LiteralPath $state.Folder -Recurse | Where-Object { -not $_.PSIsContainer })
        'plików: {0}, razem {1} B' -f $files.Count, ($files | Measure-Object -Property Length -Sum).Sum
    }

    if ($state.Folder -ne '') {
        Invoke-Step 'Co przybyło' {
            $difference = Compare-Names $state.Before (Get-RegistryNames)
            'w rejestrze: {0} przybyło, {1} ubyło' -f $difference.Added.Count, $difference.Gone.Count
            foreach ($added in $difference.Added) { $state.Installed[$added] = $true }
            $difference.Added | Where-Object { $_ -like '*Tavrix*' -or $_ -like '*Fonts*' } | Select-Object -First 60
            $difference = Compare-Names $state.FilesBefore (Get-PlacedFiles)
            foreach ($added in $difference.Added) { $state.FilesInstalled[$added] = $true }
            $difference.Added | Select-Object -First 20
        }

        foreach ($name in @('tavrix.exe', 'tavrix-sandbox.exe')) {
            Invoke-Step "$name --version" {
                $program = Find-Installed $name
                if ($program -eq '') { throw 'nie ma takiego pliku' }
                if (-not $wide) { Skip-Step 'program jest 64-bitowy' }
                $done = Invoke-Program $program @('--version') 30
                $done.Output
                if ($done.ExitCode -ne 0) { throw "kod wyjścia $($done.ExitCode)" }
            }
        }

        $probe = Join-Path $work 'klasy.ps1'
        [IO.File]::WriteAllText($probe, @'
$ErrorActionPreference = 'Stop'
try {
    $info = New-Object -ComObject Tavrix.CInfo
    "bitow $([IntPtr]::Size * 8), wersja $($info.VersjaLib())"
    $code = New-Object -ComObject Tavrix.Drk_Wyd_Ean_cls128
    $symbol = [string] $code.Code128_Str('TAVRIX 2026')
    "znakow symbolu Code 128: $($symbol.Length)"
    if ($symbol.Length -lt 13) { exit 1 }
    $null = New-Object -ComObject Tavrix.KseF_comm
    exit 0
} catch { $_.Exception.Message; exit 1 }
'@, [Text.Encoding]::ASCII)
        foreach ($bits in @(32, 64)) {
            Invoke-Step "Klasy COM, proces $bits-bitowy" {
                if ($bits -eq 64 -and -not $wide) { Skip-Step 'system jest 32-bitowy' }
                $done = Invoke-PowerShell $bits $probe @()
                $done.Output -split "`r?`n"
                if ($done.ExitCode -ne 0) { throw "kod wyjścia $($done.ExitCode)" }
            }
        }

        Invoke-Step 'Piaskownica na wolnym porcie' {
            if (-not $wide) { Skip-Step 'program jest 64-bitowy' }
            $program = Find-Installed 'tavrix-sandbox.exe'
            if ($program -eq '') { throw 'nie ma takiego pliku' }
            $portFile = Join-Path $work 'port.txt'
            $state.Sandbox = Start-Process -FilePath $program -PassThru -WindowStyle Hidden -WorkingDirectory $work `
                -ArgumentList (Join-Arguments @('--port', '0', '--quiet', '--port-file', $portFile))
            $null = $state.Sandbox.Handle
            $port = 0
            $watch = [Diagnostics.Stopwatch]::StartNew()
            while ($port -eq 0 -and $watch.Elapsed.TotalSeconds -lt 60) {
                if ($state.Sandbox.HasExited) { throw "skończyła się z kodem $($state.Sandbox.ExitCode)" }
                if (Test-Path -LiteralPath $portFile) {
                    $text = [IO.File]::ReadAllText($portFile).Trim()
                    if ($text -match '^\d+$') { $port = [int] $text }
                }
                if ($port -eq 0) { Start-Sleep -Milliseconds 100 }
            }
            if ($port -eq 0) { throw 'nie podała portu w ciągu 60 s' }
            $state.Address = "http://127.0.0.1:$port"
            'słucha po {0} ms' -f [int] $watch.Elapsed.TotalMilliseconds
            if ((Get-SandboxText '/').IndexOf('Piaskownica') -lt 0) { throw 'strona jest inna, niż powinna' }
        }

        Invoke-Step 'Ustawienia: środowisko testowe w piaskownicy' {
            if ($state.Address -eq '') { Skip-Step 'piaskownica nie działa' }
            foreach ($library in Get-ChildItem -LiteralPath $state.Folder -Recurse -Filter 'Tavrix.dll') {
                $file = Join-Path $library.DirectoryName 'Tavrix.json'
                $old = $null
                if (Test-Path -LiteralPath $file) { $old = [IO.File]::ReadAllBytes($file) }
                $state.Settings[$file] = $old
                [IO.File]::WriteAllText($file, '{"ksef": {"test": "' + $state.Address + '", "path_root": "/v2"}}', (New-Object Text.UTF8Encoding($false)))
                $file
            }
        }

        Invoke-Step 'Baza i dokumenty do prób' {
            $candidates = @(Get-ChildItem -LiteralPath $state.Folder -Recurse -Filter '*.xml') + @(Get-ChildItem -LiteralPath $here -Filter '*.xml')
            foreach ($file in $candidates) {
                if ($state.Invoice -eq '' -and [IO.File]::ReadAllText($file.FullName) -match '<Faktura[\s>]') { $state.Invoice = $file.FullName }
            }
            'faktura: {0}' -f $state.Invoice
            [IO.File]::WriteAllText((Join-Path $work 'token.txt'), 'proba|nip-5265877635|proba', [Text.Encoding]::ASCII)
            # Jet jest w każdym Windows, ale tylko 32-bitowy.
            $maker = Join-Path $work 'baza.ps1'
            [IO.File]::WriteAllText($maker, @'
param([string] $File)
$ErrorActionPreference = 'Stop'
try {
    $catalog = New-Object -ComObject ADOX.Catalog
    $null = $catalog.Create("Provider=Microsoft.Jet.OLEDB.4.0;Data Source=$File")
    $connection = $catalog.ActiveConnection
    $null = $connection.Execute('create table dok_fak (ddout_id integer primary key, ddout_numer text(100), ddout_data_wyst datetime, ' +
        'numer_ksef text(50), NumerRef_ksef text(50), HashFaktury text(50), status_ksef text(10), StatusStr_ksef memo, UPO_ksef memo, ' +
        'Export_Opis_bledu_ksef memo, DATA_OPERACJI datetime, xml_ksef memo, ksef_qrcode2 memo)')
    foreach ($id in 1001..1003) {
        $null = $connection.Execute("insert into dok_fak (ddout_id, ddout_numer, ddout_data_wyst) values ($id, 'PROBA/$id', now())")
    }
    $connection.Close()
    'utworzona'
    exit 0
} catch { $_.Exception.Message; exit 1 }
'@, [Text.Encoding]::ASCII)
            $file = Join-Path $work 'firma.mdb'
            $done = Invoke-PowerShell 32 $maker @($file)
            'baza: {0}' -f $done.Output
            if ($done.ExitCode -ne 0) { throw 'nie ma bazy do prób' }
            $state.Database = "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=$file"
        }

        $token = Join-Path $work 'token.txt'
        foreach ($example in @(@('vbs', 1001), @('js', 1002))) {
            Invoke-Step "Przykład wyslij_fakture.$($example[0]), cscript 32-bitowy" {
                Invoke-Example "wyslij_fakture.$($example[0])" $example[1] {
                    param($script, $invoice, $id)
                    Invoke-Program (Get-SystemProgram 'cscript.exe' 32) @('//nologo', $script, $state.Database, '5265877635', $token, $invoice,
                        'dok_fak', [string] $id, '2') 300
                }
            }
        }
        Invoke-Step 'Przykład Wyslij-Fakture.ps1, PowerShell 32-bitowy' {
            Invoke-Example 'Wyslij-Fakture.ps1' 1003 {
                param($script, $invoice, $id)
                Invoke-PowerShell 32 $script @('-Connection', $state.Database, '-Nip', '5265877635', '-TokenFile', $token, '-XmlFile', $invoice,
                    '-Table', 'dok_fak', '-Id', [string] $id, '-Environment', '2')
            }
        }

        # W procesie, który się kończy: biblioteka zostaje załadowana na zawsze, a załadowanej nie da się odinstalować.
        $printing = Join-Path $work 'druk.ps1'
        [IO.File]::WriteAllText($printing, @'
param([string] $FontFile, [string] $Pdf)
$ErrorActionPreference = 'Stop'
try {
    Add-Type -AssemblyName System.Drawing
    $printer = 'Microsoft Print to PDF'
    if (@([System.Drawing.Printing.PrinterSettings]::InstalledPrinters) -notcontains $printer) { "nie ma drukarki $printer"; exit 77 }
    $class = New-Object -ComObject Tavrix.Drk_Wyd_Ean_cls128
    $symbol = [string] $class.Code128_Str('TAVRIX 2026')
    $font = New-Object System.Drawing.Font('CODE 128', 48)
    if ($font.FontFamily.Name -ne 'CODE 128') {
        'czcionki nie ma w systemie, jest z pliku'
        $collection = New-Object System.Drawing.Text.PrivateFontCollection
        $collection.AddFontFile($FontFile)
        $font = New-Object System.Drawing.Font($collection.Families[0], 48)
    }
    $document = New-Object System.Drawing.Printing.PrintDocument
    $document.PrinterSettings.PrinterName = $printer
    $document.PrinterSettings.PrintToFile = $true
    $document.PrinterSettings.PrintFileName = $Pdf
    $document.PrintController = New-Object System.Drawing.Printing.StandardPrintController
    $document.add_PrintPage({
        param($source, $page)
        $page.Graphics.DrawString($script:symbol, $script:font, [System.Drawing.Brushes]::Black, 60, 60)
        $page.HasMorePages = $false
    })
    $document.Print()
    exit 0
} catch { $_.Exception.Message; exit 1 }
'@, [Text.Encoding]::ASCII)
        Invoke-Step 'Kod kreskowy na drukarce PDF' {
            $fontFile = Find-Installed 'code128.ttf'
            $pdf = [IO.Path]::ChangeExtension($Report, '.pdf')
            if (Test-Path -LiteralPath $pdf) { Remove-Item -LiteralPath $pdf }
            $bits = 32
            if ($wide) { $bits = 64 }
            $done = Invoke-PowerShell $bits $printing @('-FontFile', $fontFile, '-Pdf', $pdf)
            if ($done.ExitCode -eq 77) { Skip-Step $done.Output }
            $done.Output -split "`r?`n"
            if ($done.ExitCode -ne 0) { throw "kod wyjścia $($done.ExitCode)" }
            $wait = [Diagnostics.Stopwatch]::StartNew()
            # Plik zapisuje bufor wydruku, gdy program już skończył.
            while ($wait.Elapsed.TotalSeconds -lt 60 -and -not ((Test-Path -LiteralPath $pdf) -and (Get-Item -LiteralPath $pdf).Length -gt 0)) {
                Start-Sleep -Milliseconds 200
            }
            if (-not (Test-Path -LiteralPath $pdf)) { throw 'plik PDF nie powstał w ciągu 60 s' }
            'plik {0}, {1} B: dołącz go do raportu' -f (Split-Path -Leaf $pdf), (Get-Item -LiteralPath $pdf).Length
        }
    }
}
finally {
    # Także po Ctrl+C: nic nie zostaje na komputerze.
    if ($null -ne $state.Sandbox) {
        Invoke-Step 'Koniec piaskownicy' {
            if ($state.Sandbox.HasExited) { throw "skończyła się sama, z kodem $($state.Sandbox.ExitCode)" }
            $state.Sandbox.Kill()
            if (-not $state.Sandbox.WaitForExit(10000)) { throw 'nie kończy się' }
        }
    }
    foreach ($file in @($state.Settings.Keys)) {
        Invoke-Step ('Poprzednie ustawienia: ' + (Split-Path -Leaf (Split-Path -Parent $file))) {
            if ($null -eq $state.Settings[$file]) { Remove-Item -LiteralPath $file }
            else { [IO.File]::WriteAllBytes($file, $state.Settings[$file]) }
        }
    }
    if ($state.Folder -ne '') {
        Invoke-Step 'Odinstalowanie' {
            $program = Join-Path $state.Folder 'Uninstall.exe'
            $code = Invoke-Setup $program '/S' 300
            "kod wyjścia $code"
            $watch = [Diagnostics.Stopwatch]::StartNew()
            # Deinstalator kończy pracę w kopii samego siebie.
            while ((Test-Path -LiteralPath $state.Folder) -and $watch.Elapsed.TotalSeconds -lt 120) { Start-Sleep -Milliseconds 250 }
            if (Test-Path -LiteralPath $state.Folder) {
                Get-ChildItem -LiteralPath $state.Folder -Recurse | Select-Object -First 20 | ForEach-Object { $_.FullName }
                throw 'folder pozostał'
            }
        }
        Invoke-Step 'Rejestr po odinstalowaniu' { Assert-AsBefore 'rejestr' $state.Before (Get-RegistryNames) $state.Installed }
        Invoke-Step 'Pliki po odinstalowaniu' { Assert-AsBefore 'menu, pulpit i czcionki' $state.FilesBefore (Get-PlacedFiles) $state.FilesInstalled }
    }
}

# Po odinstalowaniu: te testy rejestrują biblioteki leżące obok siebie.
$comTest = Join-Path $here 'com_test.exe'
if ((Test-Path -LiteralPath $comTest) -and $null -ne $state.Before) {
    Invoke-Step 'com_test.exe' {
        $done = Invoke-Program $comTest @("--gtest_filter=$ComFilter", '--gtest_brief=1') 1800
        $done.Output -split "`r?`n" | Select-Object -Last 200
        if ($done.ExitCode -ne 0) { throw "kod wyjścia $($done.ExitCode)" }
    }
    Invoke-Step 'Wyrejestrowanie bibliotek testów' {
        $reader = New-Object IO.BinaryReader([IO.File]::OpenRead($comTest))
        try {
            # Nagłówek PE mówi, ile bitów ma program: 0x14C to 32.
            [void] $reader.BaseStream.Seek(0x3C, [IO.SeekOrigin]::Begin)
            [void] $reader.BaseStream.Seek($reader.ReadInt32() + 4, [IO.SeekOrigin]::Begin)
            $bits = 64
            if ($reader.ReadUInt16() -eq 0x14C) { $bits = 32 }
        }
        finally { $reader.Close() }
        foreach ($name in @('Tavrix.dll', 'TavrixDevAdo.dll', 'TavrixDevCdo.dll')) {
            $file = Join-Path $here $name
            if (-not (Test-Path -LiteralPath $file)) { continue }
            '{0}: kod {1}' -f $name, (Invoke-Program (Get-SystemProgram 'regsvr32.exe' $bits) @('/s', '/u', $file) 60).ExitCode
        }
        Assert-AsBefore 'rejestr' $state.Before (Get-RegistryNames) $state.Installed
    }
}

try { Remove-Item -LiteralPath $work -Recurse -Force } catch { Write-Report ('Pozostał folder roboczy: ' + $work) }
Write-Report ''
Write-Report '== Podsumowanie'
foreach ($step in @($steps)) { Write-Report $step }
$failed = @($steps | Where-Object { $_ -like 'BŁĄD*' }).Count
Write-Report ''
Write-Report ('Błędów: {0} z {1} kroków. Raport: {2}' -f $failed, $steps.Count, $Report)
if ($failed -gt 0) { exit 1 }
exit 0
