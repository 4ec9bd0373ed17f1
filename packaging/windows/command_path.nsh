; Puts the folder "command", which holds nothing but varkelctl's starter, on the path and takes it off again. The path is
; that of all users or of this one, as the shell context, SHCTX, says.
!define USER_PATH "Environment"
!define MACHINE_PATH "SYSTEM\CurrentControlSet\Control\Session Manager\Environment"
!include WinMessages.nsh
!include StrFunc.nsh
${Using:StrFunc} StrStr
${Using:StrFunc} UnStrRep

; Texts of NSIS hold 1023 characters: a path that is about that long is left alone, not cut off.
!define LONGEST_PATH 800

; $0 becomes the path between semicolons (";" when there is none), $1 where it is, $2 empty when it may be changed.
!macro ReadPath
  StrCpy $1 "${USER_PATH}"
  ${If} $MultiUser.InstallMode == "AllUsers"
    StrCpy $1 "${MACHINE_PATH}"
  ${EndIf}
  StrCpy $2 ""
  ClearErrors
  ReadRegStr $0 SHCTX $1 "Path"
  ${If} ${Errors}
    ; There is none, or it is longer than a text.
    StrCpy $3 0
    ${Do}
      EnumRegValue $4 SHCTX $1 $3
      ${If} $4 == "Path"
        StrCpy $2 "too long"
      ${EndIf}
      IntOp $3 $3 + 1
    ${LoopUntil} $4 == ""
  ${EndIf}
  StrLen $3 $0
  ${If} $3 > ${LONGEST_PATH}
    StrCpy $2 "too long"
  ${EndIf}
  StrCpy $0 ";$0"
  ${If} $0 != ";"
    StrCpy $0 "$0;"
  ${EndIf}
!macroend

; $0 goes where $1 says, without the semicolons around it.
!macro WritePath
  StrCpy $0 $0 -1 1
  ${If} $0 == ""
    DeleteRegValue SHCTX $1 "Path"
  ${Else}
    WriteRegExpandStr SHCTX $1 "Path" $0
  ${EndIf}
  SendMessage ${HWND_BROADCAST} ${WM_WININICHANGE} 0 "STR:Environment" /TIMEOUT=2000
!macroend

Function AddToPath
  !insertmacro ReadPath
  ${StrStr} $3 $0 ";$INSTDIR\command;"
  ${If} $3 != ""
    Return
  ${EndIf}
  ${If} $2 != ""
    DetailPrint "The path is too long for setup to change. Add $INSTDIR\command to it yourself."
    Return
  ${EndIf}
  StrCpy $0 "$0$INSTDIR\command;"
  !insertmacro WritePath
FunctionEnd

Function un.RemoveFromPath
  !insertmacro ReadPath
  ${UnStrRep} $3 $0 ";$INSTDIR\command;" ";"
  ${If} $3 == $0
  ${OrIf} $2 != ""
    Return
  ${EndIf}
  StrCpy $0 $3
  !insertmacro WritePath
FunctionEnd
