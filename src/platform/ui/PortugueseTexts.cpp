#include "platform/ui/PortugueseTexts.h"

#include <QHash>

namespace platform {

namespace {

using Texts = QHash<QByteArray, QString>;

const Texts& texts()
{
    static const Texts table{
        {"OK", QStringLiteral("OK")},
        {"&OK", QStringLiteral("&OK")},
        {"Cancel", QStringLiteral("Cancelar")},
        {"&Cancel", QStringLiteral("&Cancelar")},
        {"&Yes", QStringLiteral("&Sim")},
        {"Yes", QStringLiteral("Sim")},
        {"&No", QStringLiteral("&Não")},
        {"No", QStringLiteral("Não")},
        {"Close", QStringLiteral("Fechar")},
        {"&Close", QStringLiteral("&Fechar")},
        {"Apply", QStringLiteral("Aplicar")},
        {"Help", QStringLiteral("Ajuda")},
        {"Save", QStringLiteral("Salvar")},
        {"&Save", QStringLiteral("&Salvar")},
        {"Open", QStringLiteral("Abrir")},
        {"Discard", QStringLiteral("Descartar")},
        {"Reset", QStringLiteral("Redefinir")},
        {"Retry", QStringLiteral("Repetir")},
        {"Ignore", QStringLiteral("Ignorar")},
        {"Abort", QStringLiteral("Abortar")},
        {"&Undo", QStringLiteral("&Desfazer")},
        {"&Redo", QStringLiteral("&Refazer")},
        {"Cu&t", QStringLiteral("Recor&tar")},
        {"&Copy", QStringLiteral("&Copiar")},
        {"&Paste", QStringLiteral("Co&lar")},
        {"Delete", QStringLiteral("Excluir")},
        {"Select All", QStringLiteral("Selecionar tudo")},
        {"&Select All", QStringLiteral("&Selecionar tudo")},
        {"&Step up", QStringLiteral("&Aumentar")},
        {"Step &down", QStringLiteral("Di&minuir")},
        {"Show Details...", QStringLiteral("Mostrar detalhes...")},
        {"Hide Details...", QStringLiteral("Ocultar detalhes...")},
        // Print dialog and the choice of its file
        {"Print", QStringLiteral("Imprimir")},
        {"&Print", QStringLiteral("&Imprimir")},
        {"Printer", QStringLiteral("Impressora")},
        {"&Name:", QStringLiteral("&Nome:")},
        {"P&roperties", QStringLiteral("P&ropriedades")},
        {"Print to File (PDF)", QStringLiteral("Imprimir em arquivo (PDF)")},
        {"Print To File ...", QStringLiteral("Imprimir em arquivo ...")},
        {"Local file", QStringLiteral("Arquivo local")},
        {"Location:", QStringLiteral("Local:")},
        {"Preview", QStringLiteral("Visualizar")},
        {"Type:", QStringLiteral("Tipo:")},
        {"Write PDF file", QStringLiteral("Gravar arquivo PDF")},
        {"Output &file:", QStringLiteral("&Arquivo:")},
        {"Copies", QStringLiteral("Cópias")},
        {"Copies:", QStringLiteral("Cópias:")},
        {"Options", QStringLiteral("Opções")},
        {"&Options >>", QStringLiteral("&Opções >>")},
        {"&Options <<", QStringLiteral("&Opções <<")},
        {"Color Mode", QStringLiteral("Cores")},
        {"Color", QStringLiteral("Colorido")},
        {"Grayscale", QStringLiteral("Tons de cinza")},
        {"Double Sided Printing", QStringLiteral("Frente e verso")},
        {"Off", QStringLiteral("Desligado")},
        {"Long side binding", QStringLiteral("Pela borda longa")},
        {"Short side binding", QStringLiteral("Pela borda curta")},
        {"Print range", QStringLiteral("Intervalo de impressão")},
        {"Print all", QStringLiteral("Imprimir tudo")},
        {"Pages from", QStringLiteral("Páginas de")},
        {"to", QStringLiteral("até")},
        {"Pages", QStringLiteral("Páginas")},
        {"Current Page", QStringLiteral("Página atual")},
        {"Selection", QStringLiteral("Seleção")},
        {"Page Set:", QStringLiteral("Páginas:")},
        {"All Pages", QStringLiteral("Todas as páginas")},
        {"Odd Pages", QStringLiteral("Páginas ímpares")},
        {"Even Pages", QStringLiteral("Páginas pares")},
        {"Output Settings", QStringLiteral("Saída")},
        {"Collate", QStringLiteral("Agrupar")},
        {"Reverse", QStringLiteral("Ordem inversa")},
        {"Page Setup", QStringLiteral("Configurar página")},
        {"Page setup", QStringLiteral("Configurar página")},
        {"Printer Properties", QStringLiteral("Propriedades da impressora")},
        {"Job Options", QStringLiteral("Opções do trabalho")},
        {"Advanced", QStringLiteral("Avançado")},
        {"Paper", QStringLiteral("Papel")},
        {"Page size:", QStringLiteral("Tamanho:")},
        {"Width:", QStringLiteral("Largura:")},
        {"Height:", QStringLiteral("Altura:")},
        {"Paper source:", QStringLiteral("Origem do papel:")},
        {"Orientation", QStringLiteral("Orientação")},
        {"Portrait", QStringLiteral("Retrato")},
        {"Landscape", QStringLiteral("Paisagem")},
        {"Reverse landscape", QStringLiteral("Paisagem invertida")},
        {"Reverse portrait", QStringLiteral("Retrato invertido")},
        {"Margins", QStringLiteral("Margens")},
        {"top margin", QStringLiteral("margem superior")},
        {"left margin", QStringLiteral("margem esquerda")},
        {"right margin", QStringLiteral("margem direita")},
        {"bottom margin", QStringLiteral("margem inferior")},
        {"Page Layout", QStringLiteral("Disposição")},
        {"Page order:", QStringLiteral("Ordem das páginas:")},
        {"Pages per sheet:", QStringLiteral("Páginas por folha:")},
        {"Millimeters (mm)", QStringLiteral("Milímetros (mm)")},
        {"Inches (in)", QStringLiteral("Polegadas (in)")},
        {"Points (pt)", QStringLiteral("Pontos (pt)")},
        {"Save As", QStringLiteral("Salvar como")},
        {"Look in:", QStringLiteral("Pasta:")},
        {"Back", QStringLiteral("Voltar")},
        {"Forward", QStringLiteral("Avançar")},
        {"Parent Directory", QStringLiteral("Pasta acima")},
        {"Create New Folder", QStringLiteral("Criar pasta")},
        {"List View", QStringLiteral("Lista")},
        {"Detail View", QStringLiteral("Detalhes")},
        {"File &name:", QStringLiteral("&Nome do arquivo:")},
        {"Files of type:", QStringLiteral("Tipos de arquivo:")},
    };
    return table;
}

} // namespace

QString PortugueseTexts::translate(const char*, const char* sourceText, const char*, int) const
{
    return texts().value(QByteArray::fromRawData(sourceText, static_cast<qsizetype>(qstrlen(sourceText))));
}

} // namespace platform
