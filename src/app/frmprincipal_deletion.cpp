#include "app/frmprincipal.h"
#include "ui_frmprincipal.h"

#include "app/HistoryRows.h"
#include "platform/ado/Connection.h"
#include "platform/ado/Recordset.h"
#include "platform/ui/Boundary.h"
#include "platform/ui/InputQueue.h"
#include "platform/vb/Conversion.h"
#include "platform/vb/Format.h"
#include "shared/ListFill.h"
#include "shared/Module1.h"
#include "shared/Services.h"
#include "shared/SupervisorGate.h"

#include <QKeyEvent>

// Deleting marked readings, and the log of what was deleted.

namespace {

constexpr int LogDescription = 20;

QString logLine(const QString& description, const QString& date, const vb::Variant& litres, const vb::Variant& total)
{
    return (description + QString(LogDescription, u'.')).left(LogDescription) + u' ' + date + u' ' +
           vb::Format(litres, u"@@@@@@@@@@@@@") + u' ' + vb::Format(total, u"@@@@@@@@@@@@@");
}

} // namespace

void frmprincipal::flex2Key(QKeyEvent& event)
{
    if (event.key() == Qt::Key_Space) {
        event.accept();
        flex2Click(); // Marks the row, as a click does.
        return;
    }
    if (event.key() != Qt::Key_Delete || m_ui->flex2->Rows() < 2)
        return;
    event.accept();
    // A list that is being filled is not on the screen yet: there is nothing that could have been marked.
    if (m_historyFills > 0)
        return;
    m_services.events.DoEvents();
    if (m_senhaExclusao != u"sim") {
        if (m_gate.RequireSupervisor())
            return;
        m_senhaExclusao = QStringLiteral("sim");
    }
    exclui_leituras();
    platform::carryOn([this] { exec_t(); });
}

void frmprincipal::exclui_leituras()
{
    platform::FlexGrid& flex2 = *m_ui->flex2;
    if (flex2.Rows() < 2)
        return;
    // The operator reads the characters "& vbcrlf", too: they are part of the text in use.
    const auto answer = m_services.messages.MsgBox(
        QStringLiteral("Deseja mesmo excluir os itens selecionados?\r\n"
                       " Esta operação não podera ser revertida.  & vbcrlf"
                       " Caso sim devera ser editado manualmente a leitura anterior tambem, alem de que  \r\n"
                       "não altera o cadastro de estoque por medidas de segurança"),
        platform::vbYesNo);
    if (answer == platform::MsgBoxResult::No)
        return;
    for (int row = 1; row < flex2.Rows(); ++row) {
        if (flex2.CellBackColor(row, 0) != Module1::MarkColour)
            continue;
        m_services.DataConnection.Execute(QStringLiteral("Delete from Leitura where codigoI = ") +
                                          vb::CStr(vb::CDbl(flex2.TextMatrix(row, HistoryRows::Key))));
        // The log's column `total` holds the unit price; its listing shows it under "TotalR$".
        m_services.DataConnection.Execute(
            QStringLiteral("Insert into ExcluidosLeituraBomba(produto, DataE, leitura, total) values ('") +
            flex2.TextMatrix(row, HistoryRows::Description) + QStringLiteral("','") +
            vb::shortDate(m_services.clock.today()) + QStringLiteral("','") +
            flex2.TextMatrix(row, HistoryRows::Litres) + QStringLiteral("','") +
            flex2.TextMatrix(row, HistoryRows::Price) + QStringLiteral("');"));
    }
    lista_do_dia(m_ui->DTP->Value());
}

void frmprincipal::mostra_excluidos()
{
    const platform::InputQueue::GoingOn shown; // Escape leaves the log, and not the program
    shared::Fill fill(*m_ui->List1, m_services.events);
    m_ui->List1->clear();
    ado::Recordset log;
    log.Open(QStringLiteral("Select * from ExcluidosLeituraBomba order by dataE;"), m_services.DataConnection);
    m_ui->List1->addItem(logLine(QStringLiteral("Descritivo"), QStringLiteral("Data    "), QStringLiteral("Leitura"),
                                 QStringLiteral("TotalR$")));
    for (; !log.Eof(); log.MoveNext()) {
        m_ui->List1->addItem(logLine(log.Fields(u"produto").textOrEmpty(),
                                     vb::Format(log.Fields(u"DataE"), u"DD/MM/YY"), log.Fields(u"leitura"),
                                     log.Fields(u"total")));
        if (!fill.goesOn())
            return;
    }
    log.Close();
    m_ui->pilha->setCurrentWidget(m_ui->Frame4);
    m_ui->List1->setFocus();
}

void frmprincipal::esconde_excluidos()
{
    m_ui->pilha->setCurrentWidget(m_ui->flex2);
    m_ui->flex2->setFocus();
}
