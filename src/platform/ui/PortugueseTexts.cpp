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
    };
    return table;
}

} // namespace

QString PortugueseTexts::translate(const char*, const char* sourceText, const char*, int) const
{
    return texts().value(QByteArray::fromRawData(sourceText, static_cast<qsizetype>(qstrlen(sourceText))));
}

} // namespace platform
