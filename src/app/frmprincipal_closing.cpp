#include "app/frmprincipal.h"
#include "ui_frmprincipal.h"

#include "app/Closing.h"
#include "data/StationDatabase.h"
#include "platform/ado/Connection.h"
#include "platform/ui/InputQueue.h"
#include "platform/ui/Seams.h"
#include "platform/vb/Conversion.h"
#include "platform/vb/Format.h"
#include "shared/EntryGrid.h"
#include "shared/Services.h"
#include "shared/StockHelpers.h"
#include "shared/SupervisorGate.h"

#include <QKeyEvent>
#include <QScopedValueRollback>

// Closing the sheet.

void frmprincipal::fecha_com_senha()
{
    if (!m_gate.RequireSupervisor())
        fecha_l();
}

void frmprincipal::fecha_l()
{
    // Events run between the rows: a second closing started meanwhile would write every reading twice.
    if (m_ui->flexG->Rows() < 2 || m_fechando)
        return;
    const auto answer = m_services.messages.MsgBox(
        QStringLiteral("Certifique-se que o lançamento esta totalmente correto antes de fechar a lista.\r\n"
                       "Confirma o fechamento/Leitura da lista?"),
        platform::vbYesNo + platform::vbExclamation, QStringLiteral("A T E N Ç Ã O"));
    if (answer == platform::MsgBoxResult::No)
        return;

    const QDate day = m_ui->DTP->Value();
    bool closed = false;
    m_closeAfterwards = false;
    {
        const QScopedValueRollback<bool> closing(m_fechando, true);
        const platform::InputQueue::Dropping again([this](const QEvent& event) { return closesAgain(event); });
        closed = fecha_linhas(day);
    }
    if (!closed)
        return;
    esvazia_flexG();
    mostra_total();
    lista_do_dia(day);
    if (m_closeAfterwards)
        close();
}

/// The closing's own key and button, pressed once more while it runs.
bool frmprincipal::closesAgain(const QEvent& event) const
{
    if (event.type() == QEvent::MouseButtonPress || event.type() == QEvent::MouseButtonDblClick) {
        const QPoint place = static_cast<const QMouseEvent&>(event).globalPosition().toPoint();
        return m_ui->btf->rect().contains(m_ui->btf->mapFromGlobal(place));
    }
    if (event.type() != QEvent::KeyPress)
        return false;
    const int key = static_cast<const QKeyEvent&>(event).key();
    return key == Qt::Key_F4 ||
           (m_ui->btf->hasFocus() && (key == Qt::Key_Space || key == Qt::Key_Return || key == Qt::Key_Enter));
}

bool frmprincipal::fecha_linhas(QDate day)
{
    // On a data file that other programs have open too: all rows in one turn. Where it is not to be had nothing has
    // been written, and the lines stay.
    ado::Turn turn(m_services.DataConnection);
    const platform::FlexGrid& flexG = *m_ui->flexG;
    const QString dateTime = m_services.dialect.SqlDateTime(vb::shortDate(day), QString());
    // Only "nao", to the letter, keeps the stock as it is.
    const bool deduct = m_database.BaixarDoEstoque() != u"nao";
    for (int row = 1; row < flexG.Rows(); ++row) {
        const EntryGrid::Line line = EntryGrid::lineAt(flexG, row);
        const double product = vb::CDbl(Module1::prod_vinculado(m_services.DataConnection, line.pump));
        if (product == 0) {
            // The rows before this one stay closed, and all rows stay in the grid: closing again writes them again.
            turn.giveBack();
            m_services.messages.MsgBox(
                QStringLiteral("Nao foi identificado o codigo do produto do cadastro de Estoque para os produtos "
                               "desta lista\r\n"
                               "- Vá em (cadastro de produtos) e insira o codigo dos produtos utilizados nesta "
                               "planilha\r\n"
                               "- Após inseridos tente novamente fechar o lançamento"));
            return false;
        }
        m_mirror.begin(row);
        Closing::write(m_services, line, dateTime, product, deduct);
        m_mirror.stored(row);
        m_services.events.DoEvents();
    }
    return true;
}
