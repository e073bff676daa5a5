; Tavrix-VERSION-setup.exe and the uninstaller inside it. tools/package.sh gives VERSION, STAGE (the folder with what is
; installed), FILES (the list of it, from file_list.py) and OUTPUT. What each exit code means, instalacja.txt tells.
Unicode true
ManifestDPIAware true
ManifestSupportedOS all
RequestExecutionLevel highest
SetCompressor /SOLID lzma
CRCCheck on
Name "Tavrix ${VERSION}"
OutFile "${OUTPUT}"
BrandingText "Tavrix ${VERSION}"

!include MUI2.nsh
!include LogicLib.nsh
!include x64.nsh
!include WinVer.nsh
!include FileFunc.nsh
!include WinMessages.nsh
!include StrFunc.nsh
${StrLoc}
!include "${FILES}"

!define FAILED_RIGHTS 3    ; no administrator, and /CurrentUser was not asked for
!define FAILED_FOLDER 4    ; the folder cannot be made or written to, or holds files of others
!define FAILED_IN_USE 5    ; another program holds a file
!define FAILED_SPACE 6     ; not enough room on the disk
!define FAILED_SECOND 7    ; another setup is at work
!define FAILED_ELSEWHERE 8 ; installed in another folder
!define FAILED_COPY 9      ; a file could not be written; everything was put back
!define FAILED_REGISTER 10 ; regsvr32 refused; everything was put back
!define FAILED_ABSENT 11   ; the uninstaller finds nothing installed here

!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\Tavrix"
!define FONTS_KEY "Software\Microsoft\Windows NT\CurrentVersion\Fonts"

Var Place       ; machine or user: what DllInstall is told, too
Var Trouble     ; first file that cannot be changed
Var TroubleCode ; and the system's error number
Var Updating    ; 1 when a version was there before
Var Changing    ; 1 while there is something to put back
Var OldVersion  ; what the entry said before the update
Var OldSize
Var FontFolder

!define MUI_ABORTWARNING
!define MUI_FINISHPAGE_NOAUTOCLOSE
!insertmacro MUI_PAGE_LICENSE "${STAGE}/LICENSE.txt"
!define MUI_PAGE_CUSTOMFUNCTION_PRE SkipFolderPage
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
; The first language is that of systems which speak neither.
!insertmacro MUI_LANGUAGE Polish
!insertmacro MUI_LANGUAGE English

VIProductVersion "${VERSION}.0"
!macro VersionText LANGUAGE DESCRIPTION
  VIAddVersionKey /LANG=${LANGUAGE} ProductName "Tavrix"
  VIAddVersionKey /LANG=${LANGUAGE} CompanyName "Tavrix"
  VIAddVersionKey /LANG=${LANGUAGE} FileDescription "${DESCRIPTION}"
  VIAddVersionKey /LANG=${LANGUAGE} FileVersion "${VERSION}"
  VIAddVersionKey /LANG=${LANGUAGE} ProductVersion "${VERSION}"
  VIAddVersionKey /LANG=${LANGUAGE} LegalCopyright "© 2026 Tavrix, MIT"
!macroend
!insertmacro VersionText ${LANG_POLISH} "Instalator składników Tavrix"
!insertmacro VersionText ${LANG_ENGLISH} "Setup of the Tavrix components"

!macro Text NAME POLISH ENGLISH
  LangString ${NAME} ${LANG_POLISH} "${POLISH}"
  LangString ${NAME} ${LANG_ENGLISH} "${ENGLISH}"
!macroend
!insertmacro Text NoRights "Instalacja dla wszystkich użytkowników wymaga uprawnień administratora: uruchom ten program jako administrator. Instalacja tylko dla bieżącego użytkownika: uruchom go z parametrem /CurrentUser." \
  "Installing for all users needs administrator rights: run this program as administrator. For the current user alone, run it with /CurrentUser."
!insertmacro Text NoFolder "Nie można utworzyć folderu albo w nim zapisywać: $INSTDIR" "The folder cannot be made or written to: $INSTDIR"
!insertmacro Text NotOurs "W folderze $INSTDIR jest już plik, który nie należy do zainstalowanego Tavrix: $Trouble$\r$\n$\r$\nWskaż inny folder. Niczego nie zmieniono." \
  "The folder $INSTDIR has a file that belongs to no installed Tavrix: $Trouble$\r$\n$\r$\nChoose another folder. Nothing was changed."
!insertmacro Text OtherPlace "W folderze $INSTDIR jest Tavrix zainstalowany inaczej: dla wszystkich użytkowników albo tylko dla jednego. Najpierw odinstaluj go." \
  "$INSTDIR has Tavrix installed in the other way, for all users or for one alone. Remove it first."
!insertmacro Text InUse "Plik jest używany przez inny program: $Trouble$\r$\n$\r$\nZamknij programy, które korzystają z Tavrix, i spróbuj ponownie. Niczego nie zmieniono." \
  "Another program is using this file: $Trouble$\r$\n$\r$\nClose the programs that use Tavrix and try again. Nothing was changed."
!insertmacro Text NoRightToFile "Nie ma prawa do zmiany pliku: $Trouble$\r$\n$\r$\nNiczego nie zmieniono." \
  "There is no right to change this file: $Trouble$\r$\n$\r$\nNothing was changed."
!insertmacro Text NoSpace "Za mało miejsca na dysku: potrzeba ${NEEDED_KB} KB. Niczego nie zmieniono." "Not enough room on the disk: ${NEEDED_KB} KB are needed. Nothing was changed."
!insertmacro Text Second "Inny instalator Tavrix jest już uruchomiony." "Another setup of Tavrix is at work."
!insertmacro Text Elsewhere "Tavrix jest już zainstalowany w innym folderze: $R1$\r$\n$\r$\nNajpierw odinstaluj go albo zainstaluj w tym samym folderze." \
  "Tavrix is installed in another folder: $R1$\r$\n$\r$\nRemove it first, or install into that folder."
!insertmacro Text NoCopy "Nie udało się zapisać plików w folderze $INSTDIR. Przywrócono poprzedni stan." "The files could not be written to $INSTDIR. Everything was put back."
!insertmacro Text NoRegistration "Nie udało się zarejestrować biblioteki (regsvr32: $R2). Przywrócono poprzedni stan." "The library could not be registered (regsvr32: $R2). Everything was put back."
!insertmacro Text NoUnregistration "Nie udało się wyrejestrować biblioteki (regsvr32: $R2). Pliki zostały na miejscu. Jeśli biblioteka jest uszkodzona, zainstaluj tę samą wersję ponownie, a potem ją usuń." \
  "The library could not be unregistered (regsvr32: $R2). The files were left in place. If the library is damaged, install the same version again and then remove it."
!insertmacro Text Absent "Tavrix nie jest zainstalowany w folderze $INSTDIR." "Tavrix is not installed in $INSTDIR."
; Whoever removes it may see another language than whoever installed it.
!macro EachShortcutText ACTION
  !insertmacro ${ACTION} Documentation "Dokumentacja Tavrix" "Tavrix documentation"
  !insertmacro ${ACTION} Sandbox "Piaskownica KSeF" "KSeF sandbox"
  !insertmacro ${ACTION} Removal "Odinstaluj Tavrix" "Remove Tavrix"
!macroend
!macro DeleteShortcut NAME POLISH ENGLISH
  Delete "$SMPROGRAMS\Tavrix\${POLISH}.lnk"
  Delete "$SMPROGRAMS\Tavrix\${ENGLISH}.lnk"
!macroend
!insertmacro EachShortcutText Text

; What setup and uninstaller share. An uninstaller's functions have names of their own.
!macro Shared UN

; Text and exit code on the stack. /S shows no box, so the text is in a file as well.
Function ${UN}Fail
  Pop $0
  Pop $1
  MessageBox MB_OK|MB_ICONSTOP "$1" /SD IDOK
  FileOpen $2 "$TEMP\Tavrix-setup.log" w
  FileWriteUTF16LE /BOM $2 "$1$\r$\n"
  FileClose $2
  SetErrorLevel $0
  Quit
FunctionEnd

; In all sessions of the computer. A mutex that another user made may not be opened, which is as good an answer.
Function ${UN}BeAlone
  System::Call 'kernel32::CreateMutexW(p 0, i 0, w "Global\TavrixSetup") p .r0 ?e'
  Pop $0
  ${If} $0 = 183
  ${OrIf} $0 = 5
    Push $(Second)
    Push ${FAILED_SECOND}
    Call ${UN}Fail
  ${EndIf}
  Delete "$TEMP\Tavrix-setup.log"
FunctionEnd

; A path on the stack. What looks through new and old files may hold one for a moment.
Function ${UN}DeleteFile
  Exch $0
  Push $1
  StrCpy $1 0
  ${Do}
    ClearErrors
    Delete $0
    IntOp $1 $1 + 1
    ${IfNot} ${Errors}
    ${OrIf} $1 > 10
      ${ExitDo}
    ${EndIf}
    Sleep 300
  ${Loop}
  ${If} ${FileExists} $0
    Delete /REBOOTOK $0
  ${EndIf}
  Pop $1
  Pop $0
FunctionEnd

; A path on the stack. Asks for the right to write and changes nothing; a file that is not there is no trouble.
Function ${UN}TestFile
  Exch $0
  Push $1
  Push $2
  ${If} $Trouble == ""
  ${AndIf} ${FileExists} "$0"
    ; GENERIC_READ and GENERIC_WRITE, others may read, OPEN_EXISTING.
    System::Call 'kernel32::CreateFileW(w r0, i 0xC0000000, i 1, p 0, i 3, i 0x80, p 0) p .r1 ?e'
    Pop $2
    ${If} $1 = -1
      StrCpy $Trouble $0
      StrCpy $TroubleCode $2
    ${Else}
      System::Call 'kernel32::CloseHandle(p r1)'
    ${EndIf}
  ${EndIf}
  Pop $2
  Pop $1
  Pop $0
FunctionEnd

; Two paths on the stack; leaves 1 when both files can be read and hold the same bytes, otherwise 0.
Function ${UN}SameContent
  Exch $1
  Exch
  Exch $0
  Push $2
  Push $3
  Push $4
  Push $5
  Push $6
  Push $7
  Push $8
  StrCpy $8 0
  ClearErrors
  FileOpen $2 $0 r
  FileOpen $3 $1 r
  ${IfNot} ${Errors}
    FileSeek $2 0 END $4
    FileSeek $3 0 END $5
    ${If} $4 = $5
      FileSeek $2 0
      FileSeek $3 0
      System::Alloc $4
      Pop $6
      System::Alloc $4
      Pop $7
      System::Call 'kernel32::ReadFile(p r2, p r6, i r4, *i .r5, p 0)'
      System::Call 'kernel32::ReadFile(p r3, p r7, i r4, *i .r5, p 0)'
      System::Call 'ntdll::RtlCompareMemory(p r6, p r7, p r4) p .r5'
      ${If} $4 = $5
        StrCpy $8 1
      ${EndIf}
      System::Free $6
      System::Free $7
    ${EndIf}
  ${EndIf}
  FileClose $2
  FileClose $3
  StrCpy $0 $8
  Pop $8
  Pop $7
  Pop $6
  Pop $5
  Pop $4
  Pop $3
  Pop $2
  Exch $0
  Exch
  Pop $1
FunctionEnd

; regsvr32 of the DLL's own bits, which runs in a process of its own: $R2 is its exit code, 0 for a DLL that is absent, -1
; when it could not be started. "/i:..." alone on the stack registers, "/u /i:..." unregisters. This program is one of 32
; bits, so $SYSDIR is its system folder and Sysnative the other one, whose regsvr32 reads a DLL of its processor alone.
Function ${UN}Regsvr32
  Pop $0
  StrCpy $R2 0
  ${If} ${FileExists} "$INSTDIR\x86\Tavrix.dll"
    ClearErrors
    ExecWait '"$SYSDIR\regsvr32.exe" /s /n $0:$Place "$INSTDIR\x86\Tavrix.dll"' $R2
    ${If} ${Errors}
      StrCpy $R2 -1
    ${EndIf}
  ${EndIf}
  ${If} ${IsNativeAMD64}
  ${AndIf} $R2 = 0
  ${AndIf} ${FileExists} "$INSTDIR\x64\Tavrix.dll"
    ClearErrors
    ExecWait '"$WINDIR\Sysnative\regsvr32.exe" /s /n $0:$Place "$INSTDIR\x64\Tavrix.dll"' $R2
    ${If} ${Errors}
      StrCpy $R2 -1
    ${EndIf}
  ${EndIf}
FunctionEnd

Function ${UN}UsePlace
  ${If} ${RunningX64}
    SetRegView 64
  ${EndIf}
  ${If} $Place == user
    SetShellVarContext current
    StrCpy $FontFolder "$LOCALAPPDATA\Microsoft\Windows\Fonts"
  ${Else}
    SetShellVarContext all
    StrCpy $FontFolder $FONTS
  ${EndIf}
FunctionEnd

Function ${UN}NeedRights
  ${If} $Place == machine
    UserInfo::GetAccountType
    Pop $0
    ${If} $0 != Admin
      Push $(NoRights)
      Push ${FAILED_RIGHTS}
      Call ${UN}Fail
    ${EndIf}
  ${EndIf}
FunctionEnd

; Everything that is about to change is asked for first: half an update is worse than none.
Function ${UN}TestAllFiles
  StrCpy $Trouble ""
  !insertmacro EachFile ${UN}AskForFile
  Push "$INSTDIR\x86\Tavrix.json"
  Call ${UN}TestFile
  Push "$INSTDIR\x64\Tavrix.json"
  Call ${UN}TestFile
  !if "${UN}" == ""
    ; The uninstaller may be running where it stands.
    Push "$INSTDIR\Uninstall.exe"
    Call TestFile
    Push "$INSTDIR\install.ini"
    Call TestFile
  !endif
  ${If} $Trouble != ""
    ${If} $TroubleCode = 5
      Push $(NoRightToFile)
    ${Else}
      Push $(InUse)
    ${EndIf}
    Push ${FAILED_IN_USE}
    Call ${UN}Fail
  ${EndIf}
FunctionEnd

Function ${UN}TellOfFonts
  SendMessage ${HWND_BROADCAST} ${WM_FONTCHANGE} 0 0 /TIMEOUT=2000
FunctionEnd

; Name of a font's file on the stack. Takes it out where it was this program that put it in.
Function ${UN}RemoveFont
  Pop $0
  Pop $1
  ReadRegStr $2 SHCTX "${UNINSTALL_KEY}" "Font $0"
  ${If} $2 != ""
    StrCpy $3 0
    ${Do}
      System::Call 'gdi32::RemoveFontResourceW(w "$FontFolder\$0") i .r4'
      IntOp $3 $3 + 1
      ; Once for each program that loaded it; the bound is for a system that never says so.
      ${If} $3 > 20
        StrCpy $4 0
      ${EndIf}
    ${LoopUntil} $4 = 0
    ReadRegStr $4 SHCTX "${FONTS_KEY}" "$1 (TrueType)"
    ${If} $4 == $2
      DeleteRegValue SHCTX "${FONTS_KEY}" "$1 (TrueType)"
    ${EndIf}
    Delete /REBOOTOK "$FontFolder\$0"
    DeleteRegValue SHCTX "${UNINSTALL_KEY}" "Font $0"
  ${EndIf}
FunctionEnd

Function ${UN}RemoveShortcuts
  !insertmacro EachShortcutText DeleteShortcut
  RMDir "$SMPROGRAMS\Tavrix"
FunctionEnd

; The files of this version, and nothing that it did not bring.
Function ${UN}RemoveFiles
  !insertmacro EachFile ${UN}DeleteInstalled
  Delete "$INSTDIR\install.ini"
  Delete "$INSTDIR\Uninstall.exe.old"
  Delete "$INSTDIR\Uninstall.exe"
  !insertmacro EachFolder RemoveFolder
  RMDir "$INSTDIR"
FunctionEnd
!macroend

!macro AskForFile SOURCE PATH
  Push "$INSTDIR\${PATH}"
  Call TestFile
!macroend
!macro un.AskForFile SOURCE PATH
  Push "$INSTDIR\${PATH}"
  Call un.TestFile
!macroend
; An update that was interrupted leaves the older version's files under their other names.
!macro DeleteInstalled SOURCE PATH
  Push "$INSTDIR\${PATH}"
  Call DeleteFile
  Delete "$INSTDIR\${PATH}.old"
!macroend
!macro un.DeleteInstalled SOURCE PATH
  Push "$INSTDIR\${PATH}"
  Call un.DeleteFile
  Delete "$INSTDIR\${PATH}.old"
!macroend
!macro DeleteNew SOURCE PATH
  Push "$INSTDIR\${PATH}"
  Call DeleteFile
!macroend
!macro AskWhetherThere SOURCE PATH
  ${If} $Trouble == ""
  ${AndIf} ${FileExists} "$INSTDIR\${PATH}"
    StrCpy $Trouble "${PATH}"
  ${EndIf}
!macroend
!macro PutFile SOURCE PATH
  File "/oname=$INSTDIR\${PATH}" "${STAGE}/${SOURCE}"
!macroend
!macro MakeFolder PATH
  CreateDirectory "$INSTDIR\${PATH}"
!macroend
!macro RemoveFolder PATH
  RMDir "$INSTDIR\${PATH}"
!macroend

!insertmacro Shared ""
!insertmacro Shared "un."

Function .onInit
  Call BeAlone
  StrCpy $Place machine
  ${GetParameters} $R0
  ClearErrors
  ${GetOptions} $R0 "/CurrentUser" $R1
  ${IfNot} ${Errors}
    StrCpy $Place user
  ${EndIf}
  Call NeedRights
  Call UsePlace
  ; $INSTDIR is what /D= said; an update goes where the older version is.
  ReadRegStr $R1 SHCTX "${UNINSTALL_KEY}" InstallLocation
  ${If} $R1 != ""
  ${AndIf} ${FileExists} "$R1\install.ini"
    StrCpy $Updating 1
    ${If} $INSTDIR == ""
      StrCpy $INSTDIR $R1
    ${ElseIf} $INSTDIR != $R1
      Push $(Elsewhere)
      Push ${FAILED_ELSEWHERE}
      Call Fail
    ${EndIf}
  ${EndIf}
  ${If} $INSTDIR == ""
    ${If} $Place == user
      StrCpy $INSTDIR "$LOCALAPPDATA\Programs\Tavrix"
    ${ElseIf} ${RunningX64}
      StrCpy $INSTDIR "$PROGRAMFILES64\Tavrix"
    ${Else}
      StrCpy $INSTDIR "$PROGRAMFILES\Tavrix"
    ${EndIf}
  ${EndIf}
FunctionEnd

Function SkipFolderPage
  ${If} $Updating = 1
    Abort
  ${EndIf}
FunctionEnd

; Two names on the stack: the second one's file gets the first one's place, if it is there.
Function Replace
  Exch $1
  Exch
  Exch $0
  ${If} ${FileExists} $1
    Delete $0
    Rename $1 $0
  ${EndIf}
  Pop $0
  Pop $1
FunctionEnd

; "away", "back" or "forget" on the stack, for one file of $INSTDIR in $1.
Function MoveOne
  ${If} $3 == away
    Push "$INSTDIR\$1.old"
    Push "$INSTDIR\$1"
    Call Replace
  ${ElseIf} $3 == back
    Push "$INSTDIR\$1"
    Push "$INSTDIR\$1.old"
    Call Replace
  ${Else}
    Delete "$INSTDIR\$1.old"
  ${EndIf}
FunctionEnd

; Line by line what the older version installed; "away", "back" or "forget" on the stack. A file that is renamed can be
; put back whatever happens to its successor. The list lies where others may have changed it: it names nothing outside.
Function MoveOlder
  Pop $3
  ${If} $Updating <> 1
    Return
  ${EndIf}
  ClearErrors
  ${If} $3 == away
    FileOpen $0 "$INSTDIR\files.txt" r
  ${Else}
    FileOpen $0 "$INSTDIR\files.txt.old" r
  ${EndIf}
  ${If} ${Errors}
    Return
  ${EndIf}
  ${Do}
    ClearErrors
    FileReadUTF16LE $0 $1
    ${If} ${Errors}
      ${ExitDo}
    ${EndIf}
    ${Do}
      StrCpy $2 $1 1 -1
      ${If} $2 != "$\r"
      ${AndIf} $2 != "$\n"
        ${ExitDo}
      ${EndIf}
      StrCpy $1 $1 -1
    ${Loop}
    ${StrLoc} $2 "\$1" "\.." ">"
    ${StrLoc} $4 "$1" ":" ">"
    ${If} $1 != ""
    ${AndIf} $1 != "files.txt"
    ${AndIf} $2 == ""
    ${AndIf} $4 == ""
      Call MoveOne
    ${EndIf}
  ${Loop}
  FileClose $0
  StrCpy $1 Uninstall.exe
  Call MoveOne
  StrCpy $1 files.txt
  Call MoveOne
FunctionEnd

; As it was before: the older version, or nothing.
Function PutBack
  StrCpy $Changing 0
  Push "/u /i"
  Call Regsvr32
  ${If} $Updating = 1
    ; Settings that came with the new version go with it, and the older version's come back.
    Push x86
    Call RemoveSettings
    Push x64
    Call RemoveSettings
    !insertmacro EachFile DeleteNew
    Push back
    Call MoveOlder
    Push x86
    Call PutSettings
    Push x64
    Call PutSettings
    WriteRegStr SHCTX "${UNINSTALL_KEY}" DisplayVersion $OldVersion
    WriteRegDWORD SHCTX "${UNINSTALL_KEY}" EstimatedSize $OldSize
    Push "/i"
    Call Regsvr32
  ${Else}
    Call RemoveAllFonts
    Call RemoveShortcuts
    DeleteRegKey SHCTX "${UNINSTALL_KEY}"
    Push x86
    Call RemoveSettings
    Push x64
    Call RemoveSettings
    Call RemoveFiles
  ${EndIf}
FunctionEnd

!macro RemoveFontOf UN FILE NAME
  Push "${NAME}"
  Push "${FILE}"
  Call ${UN}RemoveFont
!macroend
!macro FontsAndSettings UN
Function ${UN}RemoveAllFonts
  !insertmacro EachFont RemoveFontOf "${UN}"
  Call ${UN}TellOfFonts
FunctionEnd

; Settings that nobody changed go with the version that brought them.
Function ${UN}RemoveSettings
  Pop $3
  Push "$INSTDIR\$3\Tavrix.json"
  Push "$INSTDIR\Tavrix.default.json"
  Call ${UN}SameContent
  Pop $4
  ${If} $4 = 1
    Delete "$INSTDIR\$3\Tavrix.json"
  ${EndIf}
FunctionEnd
!macroend
!insertmacro FontsAndSettings ""
!insertmacro FontsAndSettings "un."

; Folder of a DLL on the stack: its settings, unless somebody made them his own.
Function PutSettings
  Pop $3
  Push "$INSTDIR\$3\Tavrix.json"
  Push "$INSTDIR\Tavrix.default.json.old"
  Call SameContent
  Pop $4
  ${If} $4 = 1
    Delete "$INSTDIR\$3\Tavrix.json"
  ${EndIf}
  ; 1: fails where there is one.
  System::Call 'kernel32::CopyFileW(w "$INSTDIR\Tavrix.default.json", w "$INSTDIR\$3\Tavrix.json", i 1)'
FunctionEnd

; File and name of a font on the stack. A file that somebody else put there stays, whatever it holds.
Function PutFont
  Pop $0
  Pop $1
  ${If} $Place == user
    ; Older systems take a user's fonts for one session only; there the file beside the DLL has to do.
    ${IfNot} ${AtLeastBuild} 17763
      Return
    ${EndIf}
    CreateDirectory $FontFolder
    StrCpy $5 "$FontFolder\$0"
  ${Else}
    StrCpy $5 $0
  ${EndIf}
  Push "$FontFolder\$0"
  Push "$INSTDIR\x86\$0"
  Call SameContent
  Pop $4
  ${If} $4 = 1
    Return
  ${EndIf}
  Push $1
  Push $0
  Call RemoveFont
  System::Call 'kernel32::CopyFileW(w "$INSTDIR\x86\$0", w "$FontFolder\$0", i 1) i .r4'
  ${If} $4 <> 0
    WriteRegStr SHCTX "${UNINSTALL_KEY}" "Font $0" $5
    ReadRegStr $4 SHCTX "${FONTS_KEY}" "$1 (TrueType)"
    ${If} $4 == ""
      WriteRegStr SHCTX "${FONTS_KEY}" "$1 (TrueType)" $5
    ${EndIf}
    System::Call 'gdi32::AddFontResourceW(w "$FontFolder\$0")'
  ${EndIf}
FunctionEnd
!macro PutFontOf UNUSED FILE NAME
  Push "${NAME}"
  Push "${FILE}"
  Call PutFont
!macroend

; What the disk has for this user, where the folder will be: another disk may be mounted below the drive's root.
Function TestSpace
  StrCpy $0 $INSTDIR
  ${Do}
    ${If} ${FileExists} "$0\*.*"
      ${ExitDo}
    ${EndIf}
    ${GetParent} $0 $0
  ${LoopUntil} $0 == ""
  System::Call 'kernel32::GetDiskFreeSpaceExW(w "$0\", *l .r1, p 0, p 0) i .r2'
  ${If} $2 <> 0
    System::Int64Op $1 / 1024
    Pop $1
    System::Int64Op $1 < ${NEEDED_KB}
    Pop $1
    ${If} $1 = 1
      Push $(NoSpace)
      Push ${FAILED_SPACE}
      Call Fail
    ${EndIf}
  ${EndIf}
FunctionEnd

; Whose the folder is: ours to update, or a new one in which nothing of others is overwritten.
Function KnowFolder
  ReadINIStr $0 "$INSTDIR\install.ini" Tavrix Place
  ${If} $0 == $Place
    StrCpy $Updating 1
    Return
  ${ElseIf} $0 != ""
    Push $(OtherPlace)
    Push ${FAILED_ELSEWHERE}
    Call Fail
  ${EndIf}
  StrCpy $Updating 0
  StrCpy $Trouble ""
  !insertmacro EachFile AskWhetherThere
  ; No part of the list, and names that many programs have.
  !insertmacro AskWhetherThere "" Uninstall.exe
  !insertmacro AskWhetherThere "" install.ini
  ${If} $Trouble != ""
    Push $(NotOurs)
    Push ${FAILED_FOLDER}
    Call Fail
  ${EndIf}
FunctionEnd

; First of all: an installation that is interrupted can then be removed, or repeated.
Function WriteEntry
  WriteINIStr "$INSTDIR\install.ini" Tavrix Place $Place
  WriteUninstaller "$INSTDIR\Uninstall.exe"
  StrCpy $0 '"$INSTDIR\Uninstall.exe"'
  WriteRegStr SHCTX "${UNINSTALL_KEY}" DisplayName "Tavrix"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" DisplayVersion "${VERSION}"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" Publisher "Tavrix"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" InstallLocation $INSTDIR
  WriteRegStr SHCTX "${UNINSTALL_KEY}" DisplayIcon "$INSTDIR\Uninstall.exe"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" UninstallString $0
  WriteRegStr SHCTX "${UNINSTALL_KEY}" QuietUninstallString "$0 /S"
  WriteRegDWORD SHCTX "${UNINSTALL_KEY}" EstimatedSize ${NEEDED_KB}
  WriteRegDWORD SHCTX "${UNINSTALL_KEY}" NoModify 1
  WriteRegDWORD SHCTX "${UNINSTALL_KEY}" NoRepair 1
FunctionEnd

Function PutShortcuts
  Call RemoveShortcuts
  CreateDirectory "$SMPROGRAMS\Tavrix"
  CreateShortcut "$SMPROGRAMS\Tavrix\$(Documentation).lnk" "$INSTDIR\docs\index.html"
  ${If} ${RunningX64}
  ${AndIf} ${FileExists} "$INSTDIR\bin\tavrix-sandbox.exe"
    CreateShortcut "$SMPROGRAMS\Tavrix\$(Sandbox).lnk" "$INSTDIR\bin\tavrix-sandbox.exe"
  ${EndIf}
  CreateShortcut "$SMPROGRAMS\Tavrix\$(Removal).lnk" "$INSTDIR\Uninstall.exe"
FunctionEnd

; A file that cannot be written ends the work here, without a word to what comes after it.
Function .onInstFailed
  ${If} $Changing = 1
    Call PutBack
    Push $(NoCopy)
    Push ${FAILED_COPY}
    Call Fail
  ${EndIf}
FunctionEnd

Section
  Call KnowFolder
  Call TestAllFiles
  Call TestSpace
  ClearErrors
  CreateDirectory $INSTDIR
  FileOpen $0 "$INSTDIR\install.ini" a
  ${If} ${Errors}
    Push $(NoFolder)
    Push ${FAILED_FOLDER}
    Call Fail
  ${EndIf}
  FileClose $0
  ; What an interrupted update left.
  ${If} ${FileExists} "$INSTDIR\files.txt.old"
    Push back
    Call MoveOlder
  ${EndIf}
  ReadRegStr $OldVersion SHCTX "${UNINSTALL_KEY}" DisplayVersion
  ReadRegDWORD $OldSize SHCTX "${UNINSTALL_KEY}" EstimatedSize
  StrCpy $Changing 1
  Push away
  Call MoveOlder
  ClearErrors
  Call WriteEntry
  !insertmacro EachFolderDown MakeFolder
  !insertmacro EachFile PutFile
  ${If} ${Errors}
    Call PutBack
    Push $(NoCopy)
    Push ${FAILED_COPY}
    Call Fail
  ${EndIf}
  Push x86
  Call PutSettings
  Push x64
  Call PutSettings
  Push "/i"
  Call Regsvr32
  ${If} $R2 <> 0
    StrCpy $R3 $R2
    Call PutBack
    StrCpy $R2 $R3
    Push $(NoRegistration)
    Push ${FAILED_REGISTER}
    Call Fail
  ${EndIf}
  !insertmacro EachFont PutFontOf ""
  Call TellOfFonts
  Call PutShortcuts
  StrCpy $Changing 0
  Push forget
  Call MoveOlder
SectionEnd

Function un.onInit
  Call un.BeAlone
  ReadINIStr $Place "$INSTDIR\install.ini" Tavrix Place
  ${If} $Place == ""
    Push $(Absent)
    Push ${FAILED_ABSENT}
    Call un.Fail
  ${EndIf}
  Call un.NeedRights
  Call un.UsePlace
FunctionEnd

Section un.
  Call un.TestAllFiles
  Push "/u /i"
  Call un.Regsvr32
  ${If} $R2 <> 0
    Push $(NoUnregistration)
    Push ${FAILED_REGISTER}
    Call un.Fail
  ${EndIf}
  Call un.RemoveAllFonts
  Call un.RemoveShortcuts
  Push x86
  Call un.RemoveSettings
  Push x64
  Call un.RemoveSettings
  DeleteRegKey SHCTX "${UNINSTALL_KEY}"
  SetOutPath $TEMP
  Call un.RemoveFiles
SectionEnd
