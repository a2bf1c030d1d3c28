; The installer. make_installer gives VERSAO, PACOTE (the folder that is packed, with arquivos.nsh beside it), TAMANHO_KB
; and SAIDA. Silently: setup.exe /S [/DADOS=folder] [/ARQUIVO=file.mdb] [/D=program folder, last and without quotes].
Unicode true
SetCompressor /SOLID lzma
!include MUI2.nsh
!include LogicLib.nsh
!include FileFunc.nsh
!include WinVer.nsh
!include nsDialogs.nsh

!define PRODUTO "Planilha de Bombas"
!define CHAVE "Software\Microsoft\Windows\CurrentVersion\Uninstall\PlanilhaDeBombas"

Name "${PRODUTO}"
OutFile "${SAIDA}"
InstallDir "$PROGRAMFILES32\${PRODUTO}"
InstallDirRegKey HKLM "${CHAVE}" "InstallLocation"
RequestExecutionLevel admin
ManifestSupportedOS Win10
VIProductVersion "${VERSAO}.0"
VIAddVersionKey /LANG=1046 "ProductName" "${PRODUTO}"
VIAddVersionKey /LANG=1046 "ProductVersion" "${VERSAO}"
VIAddVersionKey /LANG=1046 "FileVersion" "${VERSAO}"
VIAddVersionKey /LANG=1046 "FileDescription" "Instalador da ${PRODUTO}"
VIAddVersionKey /LANG=1046 "LegalCopyright" "Licença MIT"

!define MUI_ICON "${ICONE}"
!define MUI_UNICON "${ICONE}"
!define MUI_ABORTWARNING
!define MUI_FINISHPAGE_RUN
!define MUI_FINISHPAGE_RUN_TEXT "Abrir a ${PRODUTO}"
!define MUI_FINISHPAGE_RUN_FUNCTION AbrirPrograma
!insertmacro MUI_PAGE_WELCOME
!insertmacro MUI_PAGE_LICENSE "${PACOTE}\LICENSE.txt"
!insertmacro MUI_PAGE_DIRECTORY
Page custom PaginaDados SairDaPaginaDados
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "PortugueseBR"

Var Dados    ; the folder of the settings file, and of the demonstration station
Var Arquivo  ; the station's data file; empty: the demonstration station
Var Existente
Var CampoArquivo
Var BotaoProcurar

Function .onInit
    ${IfNot} ${AtLeastWin10}
        MessageBox MB_OK|MB_ICONSTOP "A ${PRODUTO} precisa do Windows 10 ou 11." /SD IDOK
        SetErrorLevel 3
        Quit
    ${EndIf}
    SetShellVarContext all
    ${GetParameters} $R0
    ClearErrors
    ${GetOptions} $R0 "/DADOS=" $Dados
    ${If} $Dados == ""
        ReadRegStr $Dados HKLM "${CHAVE}" "Dados"
    ${EndIf}
    ${If} $Dados == ""
        StrCpy $Dados "$APPDATA\${PRODUTO}"
    ${EndIf}
    ${GetOptions} $R0 "/ARQUIVO=" $Arquivo
    ${If} $Arquivo != ""
    ${AndIfNot} ${FileExists} $Arquivo
        MessageBox MB_OK|MB_ICONSTOP "O arquivo $Arquivo não existe." /SD IDOK
        SetErrorLevel 4
        Quit
    ${EndIf}
FunctionEnd

; A station that has been set up already stays as it is.
Function PaginaDados
    ${If} ${FileExists} "$Dados\ConfigINI.ini"
        Abort
    ${EndIf}
    !insertmacro MUI_HEADER_TEXT "Dados do posto" "Com que dados a ${PRODUTO} vai trabalhar?"
    nsDialogs::Create 1018
    Pop $0
    ${NSD_CreateRadioButton} 0 0 100% 12u "Estação de &demonstração, para conhecer o programa (senha 1234)"
    Pop $0
    ${NSD_OnClick} $0 EscolherDados
    ${If} $Arquivo == ""
        ${NSD_Check} $0
    ${EndIf}
    ${NSD_CreateRadioButton} 0 18u 100% 12u "Arquivo de dados do posto (.&mdb), que já existe:"
    Pop $Existente
    ${NSD_OnClick} $Existente EscolherDados
    ${NSD_CreateFileRequest} 12u 34u 200u 12u "$Arquivo"
    Pop $CampoArquivo
    ${NSD_CreateBrowseButton} 216u 33u 60u 14u "&Procurar..."
    Pop $BotaoProcurar
    ${NSD_OnClick} $BotaoProcurar ProcurarArquivo
    ${NSD_CreateLabel} 0 60u 100% 36u "A configuração fica em $Dados, onde todos os usuários deste computador podem gravar. Para trabalhar com um servidor MySQL, escolha a demonstração e veja o manual."
    Pop $0
    ${If} $Arquivo != ""
        ${NSD_Check} $Existente
    ${EndIf}
    Call EscolherDados
    nsDialogs::Show
FunctionEnd

Function EscolherDados
    ${NSD_GetState} $Existente $1
    EnableWindow $CampoArquivo $1
    EnableWindow $BotaoProcurar $1
FunctionEnd

Function ProcurarArquivo
    ${NSD_GetText} $CampoArquivo $1
    nsDialogs::SelectFileDialog open "$1" "Arquivos de dados (*.mdb)|*.mdb|Todos|*.*"
    Pop $1
    ${If} $1 != ""
        ${NSD_SetText} $CampoArquivo "$1"
    ${EndIf}
FunctionEnd

Function SairDaPaginaDados
    StrCpy $Arquivo ""
    ${NSD_GetState} $Existente $1
    ${If} $1 == ${BST_CHECKED}
        ${NSD_GetText} $CampoArquivo $Arquivo
        ${IfNot} ${FileExists} $Arquivo
            MessageBox MB_OK|MB_ICONEXCLAMATION "Escolha um arquivo que exista."
            Abort
        ${EndIf}
    ${EndIf}
FunctionEnd

; From the desktop's own process: the program must not run with the installer's rights.
Function AbrirPrograma
    Exec '"$WINDIR\explorer.exe" "$SMPROGRAMS\${PRODUTO}.lnk"'
FunctionEnd

!macro ProgramaFechado un
Function ${un}ProgramaFechado
    ${Do}
        ClearErrors
        ${IfNot} ${FileExists} "$INSTDIR\planilha.exe"
            Return
        ${EndIf}
        FileOpen $0 "$INSTDIR\planilha.exe" a
        ${IfNot} ${Errors}
            FileClose $0
            Return
        ${EndIf}
        MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION "Feche a ${PRODUTO} e tente de novo." /SD IDCANCEL IDRETRY +3
        SetErrorLevel 5
        Abort "A ${PRODUTO} está aberta."
    ${Loop}
FunctionEnd
!macroend
!insertmacro ProgramaFechado ""
!insertmacro ProgramaFechado "un."

Section "Programa"
    Call ProgramaFechado
    SetOutPath "$INSTDIR"
    File /r "${PACOTE}\*.*"
    WriteUninstaller "$INSTDIR\desinstalar.exe"

    ; Every user of the machine keeps the same station; what is made in the folder takes over its rights.
    SetOutPath "$Dados"
    nsExec::ExecToLog '"$SYSDIR\icacls.exe" "$Dados" /grant *S-1-5-32-545:(OI)(CI)M'
    Pop $0
    ${If} $0 != 0
        DetailPrint "As permissões de $Dados não foram mudadas ($0)."
    ${EndIf}
    ${IfNot} ${FileExists} "$Dados\ConfigINI.ini"
        Call ConfigurarPosto
    ${EndIf}

    CreateShortCut "$SMPROGRAMS\${PRODUTO}.lnk" "$INSTDIR\planilha.exe" '--pasta "$Dados"'
    CreateShortCut "$DESKTOP\${PRODUTO}.lnk" "$INSTDIR\planilha.exe" '--pasta "$Dados"'
    CreateShortCut "$SMPROGRAMS\${PRODUTO} - Manual.lnk" "$INSTDIR\manual\manual.html"

    WriteRegStr HKLM "${CHAVE}" "DisplayName" "${PRODUTO}"
    WriteRegStr HKLM "${CHAVE}" "DisplayVersion" "${VERSAO}"
    WriteRegStr HKLM "${CHAVE}" "DisplayIcon" "$INSTDIR\planilha.exe"
    WriteRegStr HKLM "${CHAVE}" "Publisher" "${PRODUTO}"
    WriteRegStr HKLM "${CHAVE}" "InstallLocation" "$INSTDIR"
    WriteRegStr HKLM "${CHAVE}" "Dados" "$Dados"
    WriteRegStr HKLM "${CHAVE}" "UninstallString" '"$INSTDIR\desinstalar.exe"'
    WriteRegStr HKLM "${CHAVE}" "QuietUninstallString" '"$INSTDIR\desinstalar.exe" /S'
    WriteRegDWORD HKLM "${CHAVE}" "EstimatedSize" ${TAMANHO_KB}
    WriteRegDWORD HKLM "${CHAVE}" "NoModify" 1
    WriteRegDWORD HKLM "${CHAVE}" "NoRepair" 1
SectionEnd

Function ConfigurarPosto
    ${If} $Arquivo == ""
        StrCpy $Arquivo "$Dados\estacao.mdb"
        ${IfNot} ${FileExists} $Arquivo
            DetailPrint "Criando a estação de demonstração..."
            nsExec::ExecToLog '"$SYSDIR\cmd.exe" /c ""$INSTDIR\mdbsql.exe" "$Arquivo" --create --password 8282 < "$INSTDIR\demonstracao.sql""'
            Pop $0
            ${If} $0 != 0
                MessageBox MB_OK|MB_ICONSTOP "A estação de demonstração não pôde ser criada em $Dados ($0)." /SD IDOK
                Delete $Arquivo
                SetErrorLevel 6
                Abort "A estação de demonstração não pôde ser criada."
            ${EndIf}
        ${EndIf}
    ${EndIf}
    WriteINIStr "$Dados\ConfigINI.ini" "Geral" "TipoConexao_BD" "access"
    WriteINIStr "$Dados\ConfigINI.ini" "Geral" "Caminho" "$Arquivo"
    ; The settings file has the code page's letters only.
    ReadINIStr $0 "$Dados\ConfigINI.ini" "Geral" "Caminho"
    ${If} $0 != $Arquivo
        MessageBox MB_OK|MB_ICONEXCLAMATION "O caminho $Arquivo tem letras que o arquivo de configuração não guarda. Mude o nome da pasta ou do arquivo e corrija Caminho em $Dados\ConfigINI.ini." /SD IDOK
    ${EndIf}
FunctionEnd

Section "Uninstall"
    SetShellVarContext all
    Call un.ProgramaFechado
    ReadRegStr $Dados HKLM "${CHAVE}" "Dados"
    Delete "$SMPROGRAMS\${PRODUTO}.lnk"
    Delete "$DESKTOP\${PRODUTO}.lnk"
    Delete "$SMPROGRAMS\${PRODUTO} - Manual.lnk"
    ; Only what was installed: somebody may keep files of his own in the folder.
    !include "${PACOTE}.nsh"
    Delete "$INSTDIR\desinstalar.exe"
    RMDir "$INSTDIR"
    DeleteRegKey HKLM "${CHAVE}"
    MessageBox MB_OK|MB_ICONINFORMATION "Os dados do posto ficaram em $Dados." /SD IDOK
SectionEnd
