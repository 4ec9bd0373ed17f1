; The setup for Windows, which package.sh makes with makensis. It hands over:
;   VERSION, SOURCE   what to pack, and the folder that holds it
;   OUTPUT            the setup's own file
;   FILES             a script with one function, un.RemoveFiles, that deletes each file of SOURCE and the empty folders
;   WITH_COMMAND      defined when varkelctl is there
; Silent: Varkel-setup.exe /S [/AllUsers | /CurrentUser] [/Path] [/D=FOLDER]; /Path puts varkelctl on the path. It ends
; with 2 when Varkel runs.
Unicode true
Target amd64-unicode
SetCompressor /SOLID lzma
Name "Varkel"
OutFile "${OUTPUT}"
ManifestDPIAware true
BrandingText "Varkel ${VERSION}"
!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\Varkel"

; For one user or for all, who may choose: an administrator chooses, all others install for themselves.
!define MULTIUSER_EXECUTIONLEVEL Highest
!define MULTIUSER_MUI
!define MULTIUSER_INSTALLMODE_COMMANDLINE
!define MULTIUSER_INSTALLMODE_INSTDIR "Varkel"
!define MULTIUSER_INSTALLMODE_DEFAULT_REGISTRY_KEY "${UNINSTALL_KEY}"
!define MULTIUSER_INSTALLMODE_DEFAULT_REGISTRY_VALUENAME "UninstallString"
!define MULTIUSER_INSTALLMODE_INSTDIR_REGISTRY_KEY "${UNINSTALL_KEY}"
!define MULTIUSER_INSTALLMODE_INSTDIR_REGISTRY_VALUENAME "InstallLocation"
!define MULTIUSER_USE_PROGRAMFILES64
!include MultiUser.nsh
!include MUI2.nsh
!include FileFunc.nsh
!include LogicLib.nsh

!define MUI_ICON "${ICON}"
!define MUI_UNICON "${ICON}"
!define MUI_FINISHPAGE_RUN "$INSTDIR\bin\varkel.exe"
!define MUI_FINISHPAGE_RUN_TEXT "Start Varkel"
!insertmacro MUI_PAGE_WELCOME
!insertmacro MULTIUSER_PAGE_INSTALLMODE
!ifdef WITH_COMMAND
!insertmacro MUI_PAGE_COMPONENTS
!endif
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE English

VIProductVersion "${VERSION}.0"
VIAddVersionKey ProductName "Varkel"
VIAddVersionKey CompanyName "QuarnTech"
VIAddVersionKey FileDescription "Varkel setup"
VIAddVersionKey FileVersion "${VERSION}"
VIAddVersionKey ProductVersion "${VERSION}"
VIAddVersionKey LegalCopyright "QuarnTech"

; A running program can't be opened for writing: nothing is touched before all of them have ended.
!macro RefuseWhileRunning un
Function ${un}RefuseWhileRunning
  again:
  StrCpy $R1 ""
  !insertmacro TestProgram varkel.exe
  !insertmacro TestProgram varkel-sim.exe
  !insertmacro TestProgram varkelctl.exe
  StrCmp $R1 "" free
  MessageBox MB_RETRYCANCEL|MB_ICONINFORMATION "$R1 is running. Close it, then choose Retry." /SD IDCANCEL IDRETRY again
  SetErrorLevel 2
  Quit
  free:
FunctionEnd
!macroend
!macro TestProgram name
  ${If} ${FileExists} "$INSTDIR\bin\${name}"
    ClearErrors
    FileOpen $R0 "$INSTDIR\bin\${name}" a
    ${If} ${Errors}
      StrCpy $R1 "${name}"
    ${Else}
      FileClose $R0
    ${EndIf}
  ${EndIf}
!macroend
!insertmacro RefuseWhileRunning ""
!insertmacro RefuseWhileRunning "un."

Function un.onInit
  !insertmacro MULTIUSER_UNINIT
  Call un.RefuseWhileRunning
FunctionEnd

Section "Varkel" main
  SectionIn RO
  Call RefuseWhileRunning
  ; An older version goes first, with files that this one has no more. It leaves whatever is the user's.
  ${If} ${FileExists} "$INSTDIR\uninstall.exe"
    ExecWait '"$INSTDIR\uninstall.exe" /S /Upgrade /$MultiUser.InstallMode _?=$INSTDIR'
  ${EndIf}
  SetOutPath "$INSTDIR"
  ClearErrors
  File /r "${SOURCE}/*"
  ${If} ${Errors}
    MessageBox MB_OK|MB_ICONSTOP "The files could not be written to $INSTDIR." /SD IDOK
    SetErrorLevel 3
    Abort
  ${EndIf}
  WriteUninstaller "$INSTDIR\uninstall.exe"
  SetOutPath "$INSTDIR\bin"  ; where the programs start
  CreateDirectory "$SMPROGRAMS\Varkel"
  CreateShortCut "$SMPROGRAMS\Varkel\Varkel.lnk" "$INSTDIR\bin\varkel.exe"
  CreateShortCut "$SMPROGRAMS\Varkel\Licences.lnk" "$INSTDIR\licences\third-party.txt"
  CreateShortCut "$SMPROGRAMS\Varkel\Uninstall Varkel.lnk" "$INSTDIR\uninstall.exe" "/$MultiUser.InstallMode"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" DisplayName "Varkel"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" DisplayVersion "${VERSION}"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" DisplayIcon "$INSTDIR\bin\varkel.exe"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" Publisher "QuarnTech"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" InstallLocation "$INSTDIR"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" UninstallString '"$INSTDIR\uninstall.exe" /$MultiUser.InstallMode'
  WriteRegStr SHCTX "${UNINSTALL_KEY}" QuietUninstallString '"$INSTDIR\uninstall.exe" /$MultiUser.InstallMode /S'
  WriteRegDWORD SHCTX "${UNINSTALL_KEY}" NoModify 1
  WriteRegDWORD SHCTX "${UNINSTALL_KEY}" NoRepair 1
  ${GetSize} "$INSTDIR" "/S=0K" $0 $1 $2
  WriteRegDWORD SHCTX "${UNINSTALL_KEY}" EstimatedSize $0
SectionEnd

!ifdef WITH_COMMAND
!include "command_path.nsh"
Section /o "varkelctl on the path" command
  Call AddToPath
SectionEnd
!insertmacro MUI_FUNCTION_DESCRIPTION_BEGIN
  !insertmacro MUI_DESCRIPTION_TEXT ${main} "The window, the simulated sensor and the models' tables."
  !insertmacro MUI_DESCRIPTION_TEXT ${command} "Lets command prompts find varkelctl."
!insertmacro MUI_FUNCTION_DESCRIPTION_END
!endif

Function .onInit
  !insertmacro MULTIUSER_INIT
!ifdef WITH_COMMAND
  ${GetParameters} $0
  ClearErrors
  ${GetOptions} $0 "/Path" $1
  ${IfNot} ${Errors}
    SectionSetFlags ${command} ${SF_SELECTED}
  ${EndIf}
!endif
FunctionEnd

!include "${FILES}"

Section Uninstall
  Call un.RemoveFiles
  Delete "$INSTDIR\uninstall.exe"
  RMDir "$INSTDIR"
  Delete "$SMPROGRAMS\Varkel\Varkel.lnk"
  Delete "$SMPROGRAMS\Varkel\Licences.lnk"
  Delete "$SMPROGRAMS\Varkel\Uninstall Varkel.lnk"
  RMDir "$SMPROGRAMS\Varkel"
  ; An upgrade keeps the following: the choice of the path, and the tool's own log and notes.
  ${GetParameters} $0
  ClearErrors
  ${GetOptions} $0 "/Upgrade" $1
  ${If} ${Errors}
!ifdef WITH_COMMAND
    Call un.RemoveFromPath
!endif
    DeleteRegKey SHCTX "${UNINSTALL_KEY}"
    SetShellVarContext current
    Delete "$APPDATA\QuarnTech\varkel\varkel*.log"
    Delete "$APPDATA\QuarnTech\varkel\varkel*.log.lock"
    RMDir "$APPDATA\QuarnTech\varkel"
    RMDir "$APPDATA\QuarnTech"
    Delete "$LOCALAPPDATA\QuarnTech\varkel\recent-addresses.txt"
    Delete "$LOCALAPPDATA\QuarnTech\varkel\window.ini"
    RMDir "$LOCALAPPDATA\QuarnTech\varkel"
    RMDir "$LOCALAPPDATA\QuarnTech"
  ${EndIf}
SectionEnd
