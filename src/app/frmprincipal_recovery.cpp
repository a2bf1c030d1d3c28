#include "app/frmprincipal.h"
#include "ui_frmprincipal.h"

#include "platform/ui/Seams.h"
#include "platform/vb/Format.h"
#include "shared/Services.h"

#include <QScopedValueRollback>

// Lines that outlived a power cut.

using EntryRecords::Entry;

namespace {

QString linesLeft(const EntryRecords::Sheet& sheet)
{
    const auto count = sheet.lines(Entry::Open).size();
    return (count == 1 ? QStringLiteral("Há 1 leitura lançada que não foi fechada")
                       : QStringLiteral("Há %1 leituras lançadas que não foram fechadas").arg(count)) +
           QStringLiteral(": planilha de ") + vb::shortDate(sheet.day) + QStringLiteral(", última digitação em ") +
           sheet.last.toString(QStringLiteral("dd/MM/yyyy HH:mm")) + QStringLiteral(".\r\nDeseja recuperar?");
}

QString linesToCheck(const EntryRecords::Sheet& sheet)
{
    QString text =
        QStringLiteral("O programa terminou durante o fechamento da planilha de ") + vb::shortDate(sheet.day) +
        QStringLiteral(".\r\nConfira no histórico se esta leitura foi gravada; se foi, confira também a última "
                       "leitura da bomba e o estoque; se não foi, lance de novo:");
    for (const EntryGrid::Line& line : sheet.lines(Entry::Begun))
        text += QStringLiteral("\r\nBomba ") + line.pump + QStringLiteral(": de ") + line.previous +
                QStringLiteral(" a ") + line.current + QStringLiteral(", ") + line.litres + QStringLiteral(" litros");
    return text;
}

} // namespace

void frmprincipal::oferece_linhas()
{
    for (EntryMirror::Left& left : m_mirror.left()) {
        if (!left.sheet.lines(Entry::Begun).empty())
            m_services.messages.MsgBox(linesToCheck(left.sheet), platform::vbExclamation);
        if (left.sheet.lines(Entry::Open).empty()) {
            EntryMirror::forget(left);
            continue;
        }
        const auto answer =
            m_services.messages.MsgBox(linesLeft(left.sheet), platform::vbYesNoLater + platform::vbQuestion);
        if (answer == platform::MsgBoxResult::No) {
            EntryMirror::forget(left);
        } else if (answer == platform::MsgBoxResult::Yes) {
            retoma(std::move(left));
            return; // One sheet at a time: what is left besides is offered at the next start.
        }
    }
}

void frmprincipal::retoma(EntryMirror::Left left)
{
    platform::FlexGrid& flexG = *m_ui->flexG;
    for (const EntryGrid::Line& line : left.sheet.lines(Entry::Open))
        EntryGrid::add(flexG, line);
    {
        // The date comes back without a listing of its own.
        const QScopedValueRollback<bool> quiet(m_loading, true);
        m_ui->DTP->setValue(left.sheet.day);
    }
    m_mirror.takeOver(std::move(left));
    flexG.setRow(flexG.Rows() - 1);
    mostra_total();
}
