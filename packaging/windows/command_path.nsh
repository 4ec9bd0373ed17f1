; Puts the folder "command", which holds nothing but varkelctl's starter, on the path and takes it off again.
!define USER_PATH "Environment"
!define MACHINE_PATH "SYSTEM\CurrentControlSet\Control\Session Manager\Environment"
!include WinMessages.nsh
!include StrFunc.nsh
${StrStr}
${UnStrRep}

; Texts of NSIS end after 1023 characters: a path that is about that long is left alone, not cut off.
!define LONGEST_PATH 800

Function AddToPath
  ${If} $MultiUser.InstallMode == "AllUsers"
    ReadRegStr $0 HKLM "${MACHINE_PATH}" "Path"
  ${Else}
    ReadRegStr $0 HKCU "${USER_PATH}" "Path"
  ${EndIf}
  ${StrStr} $1 "$0;" "$INSTDIR\command;"
  StrLen $2 $0
  ${If} $1 != ""
    Return
  ${EndIf}
  ${If} $2 > ${LONGEST_PATH}
    DetailPrint "The path is too long for setup to change. Add $INSTDIR\command to it yourself."
    Return
  ${EndIf}
  ${If} $0 != ""
    StrCpy $0 "$0;"
  ${EndIf}
  ${If} $MultiUser.InstallMode == "AllUsers"
    WriteRegExpandStr HKLM "${MACHINE_PATH}" "Path" "$0$INSTDIR\command"
  ${Else}
    WriteRegExpandStr HKCU "${USER_PATH}" "Path" "$0$INSTDIR\command"
  ${EndIf}
  SendMessage ${HWND_BROADCAST} ${WM_WININICHANGE} 0 "STR:Environment" /TIMEOUT=2000
FunctionEnd

Function un.RemoveFromPath
  ${If} $MultiUser.InstallMode == "AllUsers"
    ReadRegStr $0 HKLM "${MACHINE_PATH}" "Path"
  ${Else}
    ReadRegStr $0 HKCU "${USER_PATH}" "Path"
  ${EndIf}
  StrLen $2 $0
  ${If} $2 > 1000
    Return
  ${EndIf}
  ${UnStrRep} $1 "$0" ";$INSTDIR\command" ""
  ${If} $1 == $0
    ${UnStrRep} $1 "$0" "$INSTDIR\command" ""
  ${EndIf}
  ${If} $1 == $0
    Return
  ${EndIf}
  ${If} $MultiUser.InstallMode == "AllUsers"
    WriteRegExpandStr HKLM "${MACHINE_PATH}" "Path" "$1"
  ${Else}
    WriteRegExpandStr HKCU "${USER_PATH}" "Path" "$1"
  ${EndIf}
  SendMessage ${HWND_BROADCAST} ${WM_WININICHANGE} 0 "STR:Environment" /TIMEOUT=2000
FunctionEnd
