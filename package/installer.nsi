; SPDX-License-Identifier: MIT
; The Windows installer. package/make runs it with VERSION, FILE_VERSION (four numbers), OUTPUT, KILOBYTES and the
; folder FILES, in which it writes install.nsh and uninstall.nsh: the lines that copy and delete each file.
Unicode true
!include "MUI2.nsh"
!include "LogicLib.nsh"
!include "x64.nsh"

!define PRODUCT "Kestrel FX"
!define MAKER "Quorvane Labs"
!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\KestrelFX"

Name "${PRODUCT} ${VERSION}"
OutFile "${OUTPUT}"
InstallDir "$PROGRAMFILES64\${PRODUCT}"
InstallDirRegKey HKLM "${UNINSTALL_KEY}" "InstallLocation"
RequestExecutionLevel admin
SetCompressor /SOLID lzma
BrandingText "${MAKER}"
ManifestSupportedOS all
ManifestDPIAware true

VIProductVersion "${FILE_VERSION}"
VIAddVersionKey "ProductName" "${PRODUCT} #1"
VIAddVersionKey "CompanyName" "${MAKER}"
VIAddVersionKey "FileDescription" "${PRODUCT} #1 set-up"
VIAddVersionKey "FileVersion" "${VERSION}"
VIAddVersionKey "ProductVersion" "${VERSION}"
VIAddVersionKey "LegalCopyright" "Copyright (c) 2026 ${MAKER}"

!define MUI_ABORTWARNING
!define MUI_FINISHPAGE_RUN "$INSTDIR\kestrel-stage.exe"
!define MUI_FINISHPAGE_RUN_TEXT "Open Stage, the window for your animations"
!insertmacro MUI_PAGE_LICENSE "${FILES}\LICENSE.txt"
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "English"

Function .onInit
  ${IfNot} ${RunningX64}
    MessageBox MB_ICONSTOP "${PRODUCT} needs a 64-bit Windows." /SD IDOK
    Abort
  ${EndIf}
  SetRegView 64
FunctionEnd

Function un.onInit
  SetRegView 64
FunctionEnd

; Ends the installation while a file of an earlier one runs or is loaded: it could not be replaced.
!macro RefuseWhileUsed FILE
  ${If} ${FileExists} "$INSTDIR\${FILE}"
    ClearErrors
    FileOpen $0 "$INSTDIR\${FILE}" a
    ${If} ${Errors}
      MessageBox MB_ICONSTOP "${FILE} is in use. Close Stage, kestrel and the editors that have loaded the plug-in, then try again." /SD IDOK
      SetErrorLevel 2
      Abort "${FILE} is in use."
    ${EndIf}
    FileClose $0
  ${EndIf}
!macroend

Section "Files"
  SetShellVarContext all
  !insertmacro RefuseWhileUsed "kfxplug1.dll"
  !insertmacro RefuseWhileUsed "kestrel-stage.exe"
  !insertmacro RefuseWhileUsed "kestrel.exe"
  ; Files of an earlier version that this one no longer has go with its own uninstaller.
  ${If} ${FileExists} "$INSTDIR\uninstall.exe"
    ExecWait '"$INSTDIR\uninstall.exe" /S _?=$INSTDIR'
  ${EndIf}
  ClearErrors
  !include "${FILES}.install.nsh"
  ${If} ${Errors}
    MessageBox MB_ICONSTOP "Not every file could be written to $INSTDIR. Is the disk full?" /SD IDOK
    SetErrorLevel 3
    Abort "Not every file could be written."
  ${EndIf}
  SetOutPath "$INSTDIR"
  WriteUninstaller "$INSTDIR\uninstall.exe"
  CreateDirectory "$SMPROGRAMS\${PRODUCT}"
  CreateShortcut "$SMPROGRAMS\${PRODUCT}\Stage.lnk" "$INSTDIR\kestrel-stage.exe"
  CreateShortcut "$SMPROGRAMS\${PRODUCT}\Help.lnk" "$INSTDIR\KFXPLUG1.HTML"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayName" "${PRODUCT} #1"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayIcon" "$INSTDIR\kestrel-stage.exe"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "Publisher" "${MAKER}"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\uninstall.exe"'
  WriteRegStr HKLM "${UNINSTALL_KEY}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
  WriteRegDWORD HKLM "${UNINSTALL_KEY}" "EstimatedSize" ${KILOBYTES}
  WriteRegDWORD HKLM "${UNINSTALL_KEY}" "NoModify" 1
  WriteRegDWORD HKLM "${UNINSTALL_KEY}" "NoRepair" 1
SectionEnd

; Only what was installed is deleted: files that somebody has put beside them stay, and so do the settings.
Section "Uninstall"
  SetShellVarContext all
  !include "${FILES}.uninstall.nsh"
  Delete "$SMPROGRAMS\${PRODUCT}\Stage.lnk"
  Delete "$SMPROGRAMS\${PRODUCT}\Help.lnk"
  RMDir "$SMPROGRAMS\${PRODUCT}"
  DeleteRegKey HKLM "${UNINSTALL_KEY}"
  Delete "$INSTDIR\uninstall.exe"
  RMDir "$INSTDIR"
SectionEnd
