; The installer for Windows. tools/windows/package.sh defines
;   VERSION  the version, as 1.2.3.4
;   FILES    the folder of the files that are installed
;   SIZE     their size in KiB
;   REMOVAL  a file with the commands that remove these files again
;   OUTPUT   the installer to be made
;   ICON     the picture of the program, if there is a window
;
; Options of the installer and the uninstaller: /S asks nothing; /AllUsers or /CurrentUser says for whom, else
; administrators install for all users and others for themselves. /D=folder, as the last option and without
; quotation marks, says where. The exit status of the installer is 0 when the program is installed. The
; uninstaller goes on in a copy of itself, so its own exit status says nothing.

Unicode true
Target amd64-unicode
SetCompressor /SOLID lzma
ManifestDPIAware true
ManifestSupportedOS all
AllowSkipFiles off

!define NAME "MXF Quorvan"
!define PROGRAM "$INSTDIR\mxf-quorvan.exe"
!define UNINSTALLER "$INSTDIR\uninstall.exe"
!define ENTRY "Software\Microsoft\Windows\CurrentVersion\Uninstall\${NAME}"
!define MENU "$SMPROGRAMS\${NAME}"
!define PLACEMENT "software\MXF_Quorvan"

!define MULTIUSER_EXECUTIONLEVEL Highest
!define MULTIUSER_MUI
!define MULTIUSER_INSTALLMODE_COMMANDLINE
!define MULTIUSER_INSTALLMODE_INSTDIR "${NAME}"
!define MULTIUSER_USE_PROGRAMFILES64
!define MULTIUSER_INSTALLMODE_INSTDIR_REGISTRY_KEY "${ENTRY}"
!define MULTIUSER_INSTALLMODE_INSTDIR_REGISTRY_VALUENAME InstallLocation
!define MULTIUSER_INSTALLMODE_DEFAULT_REGISTRY_KEY "${ENTRY}"
!define MULTIUSER_INSTALLMODE_DEFAULT_REGISTRY_VALUENAME InstallLocation
!include MultiUser.nsh
!include MUI2.nsh
!include FileFunc.nsh

Name "${NAME}"
BrandingText "${NAME} ${VERSION}"
OutFile "${OUTPUT}"
VIProductVersion "${VERSION}"
VIAddVersionKey ProductName "${NAME}"
VIAddVersionKey ProductVersion "${VERSION}"
VIAddVersionKey FileVersion "${VERSION}"
VIAddVersionKey FileDescription "${NAME}"
VIAddVersionKey CompanyName "${NAME}"
VIAddVersionKey LegalCopyright ""

!ifdef ICON
  !define MUI_ICON "${ICON}"
  !define MUI_UNICON "${ICON}"
!endif
!define MUI_ABORTWARNING
!insertmacro MULTIUSER_PAGE_INSTALLMODE
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
; The first language is for systems in other languages.
!insertmacro MUI_LANGUAGE "English"
!insertmacro MUI_LANGUAGE "Japanese"

LangString RUNNING ${LANG_ENGLISH} "${NAME} is running. Close it and try again."
LangString RUNNING ${LANG_JAPANESE} "${NAME} が起動しています。終了してから、もう一度お試しください。"
LangString NOT_ADMINISTRATOR ${LANG_ENGLISH} "${NAME} was installed for all users. Only an administrator can remove it."
LangString NOT_ADMINISTRATOR ${LANG_JAPANESE} "${NAME} はすべてのユーザー用にインストールされています。アンインストールには管理者の権限が必要です。"

; Ends unless the window is closed: its files could not be replaced.
!macro WAIT_UNTIL_CLOSED
  ${Do}
    System::Call 'kernel32::OpenMutex(i 0x00100000, i 0, t "QVN-70") p.r0'  ; SYNCHRONIZE
    ${If} $0 P= 0
      ${ExitDo}
    ${EndIf}
    System::Call 'kernel32::CloseHandle(p r0)'
    MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION "$(RUNNING)" /SD IDCANCEL IDRETRY +3
      SetErrorLevel 2
      Quit
  ${Loop}
!macroend

; Ends unless nobody runs the program FILE, also in another sign-in: it could not be replaced.
!macro WAIT_UNTIL_FREE FILE
  ${Do}
    ${IfNot} ${FileExists} "${FILE}"
      ${ExitDo}
    ${EndIf}
    ClearErrors
    FileOpen $1 "${FILE}" a
    ${IfNot} ${Errors}
      FileClose $1
      ${ExitDo}
    ${EndIf}
    MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION "$(RUNNING)" /SD IDCANCEL IDRETRY +3
      SetErrorLevel 2
      Quit
  ${Loop}
!macroend

Function .onInit
  StrCpy $R9 $INSTDIR  ; the folder of the option /D
  !insertmacro MULTIUSER_INIT
  ${If} $R9 != ""
    StrCpy $INSTDIR $R9
  ${EndIf}
  !insertmacro WAIT_UNTIL_CLOSED
FunctionEnd

; The uninstaller removes the installation in whose folder it lies, whoever starts it.
Function un.onInit
  StrCpy $R9 $INSTDIR
  !insertmacro MULTIUSER_UNINIT
  ReadRegStr $0 HKLM "${ENTRY}" InstallLocation
  ${If} $0 == $R9
    Call un.MultiUser.InstallMode.AllUsers
    ${If} $MultiUser.InstallMode != AllUsers
      MessageBox MB_OK|MB_ICONSTOP "$(NOT_ADMINISTRATOR)" /SD IDOK
      SetErrorLevel 2
      Quit
    ${EndIf}
  ${Else}
    Call un.MultiUser.InstallMode.CurrentUser
  ${EndIf}
  StrCpy $INSTDIR $R9
  !insertmacro WAIT_UNTIL_CLOSED
  !insertmacro WAIT_UNTIL_FREE "$INSTDIR\mxf-quorvan.exe"
  !insertmacro WAIT_UNTIL_FREE "$INSTDIR\mxf-quorvan-cli.exe"
FunctionEnd

Section
  ; An earlier version goes first, except for the placement of its window.
  ReadRegStr $0 SHCTX "${ENTRY}" InstallLocation
  ${If} $0 != ""
  ${AndIf} ${FileExists} "$0\uninstall.exe"
    !insertmacro WAIT_UNTIL_FREE "$0\mxf-quorvan.exe"
    !insertmacro WAIT_UNTIL_FREE "$0\mxf-quorvan-cli.exe"
    ExecWait '"$0\uninstall.exe" /S /Update _?=$0'
    Delete "$0\uninstall.exe"
    RMDir "$0"
  ${EndIf}

  SetOutPath "$INSTDIR"
  File /r "${FILES}/*"
  WriteUninstaller "${UNINSTALLER}"
  CreateDirectory "${MENU}"
!ifdef ICON
  CreateShortCut "${MENU}\${NAME}.lnk" "${PROGRAM}"
  WriteRegStr SHCTX "${ENTRY}" DisplayIcon "${PROGRAM}"
!endif
  CreateShortCut "${MENU}\${NAME} マニュアル.lnk" "$INSTDIR\manual.html"
  WriteRegStr SHCTX "${ENTRY}" DisplayName "${NAME}"
  WriteRegStr SHCTX "${ENTRY}" DisplayVersion "${VERSION}"
  WriteRegStr SHCTX "${ENTRY}" Publisher "${NAME}"
  WriteRegStr SHCTX "${ENTRY}" InstallLocation "$INSTDIR"
  WriteRegStr SHCTX "${ENTRY}" UninstallString '"${UNINSTALLER}"'
  WriteRegStr SHCTX "${ENTRY}" QuietUninstallString '"${UNINSTALLER}" /S'
  WriteRegDWORD SHCTX "${ENTRY}" EstimatedSize ${SIZE}
  WriteRegDWORD SHCTX "${ENTRY}" NoModify 1
  WriteRegDWORD SHCTX "${ENTRY}" NoRepair 1
SectionEnd

; Removes what was installed and nothing else that may lie in the folder.
Section Uninstall
  !include "${REMOVAL}"
  Delete "${UNINSTALLER}"
  RMDir "$INSTDIR"
  Delete "${MENU}\${NAME}.lnk"
  Delete "${MENU}\${NAME} マニュアル.lnk"
  RMDir "${MENU}"
  DeleteRegKey SHCTX "${ENTRY}"
  ${GetParameters} $0
  ClearErrors
  ${GetOptions} $0 "/Update" $1
  ${If} ${Errors}
    DeleteRegKey HKCU "${PLACEMENT}"
  ${EndIf}
SectionEnd
