#include "app/frmprincipal.h"
#include "ui_frmprincipal.h"

#include "platform/ado/Recordset.h"
#include "platform/ado/Retry.h"
#include "platform/ui/Seams.h"
#include "platform/ui/WaitCursor.h"
#include "platform/vb/Conversion.h"
#include "platform/vb/Format.h"
#include "shared/ListFill.h"
#include "shared/Services.h"
#include "shared/StockHelpers.h"

// The miscellaneous items and their issue, which is written at once.

namespace {

enum ItemColumn { Code, Description, Balance, Issues, ItemColumns };

} // namespace

void frmprincipal::formata_flexD()
{
    constexpr int widths[ItemColumns] = {700, 2500, 850, 850};
    platform::FlexGrid& flexD = *m_ui->FlexD;
    flexD.clearRows();
    flexD.setCols(ItemColumns);
    flexD.FormatString(QStringLiteral("Codigo|Descritivo|SaldAnt|Baixas*"));
    for (int column = 0; column < ItemColumns; ++column)
        flexD.setColWidth(column, widths[column]);
}

void frmprincipal::carrega_flexD()
{
    const platform::WaitCursor wait;
    platform::FlexGrid& flexD = *m_ui->FlexD;
    shared::Fill fill(flexD, m_services.events);
    fill.ifItFails([this] { formata_flexD(); });
    formata_flexD();
    ado::Recordset items;
    items.Open(QStringLiteral("Select * from EstoqueDiversos order by discriminacao;"), m_services.DataConnection);
    for (; !items.Eof(); items.MoveNext()) {
        const QString code = items.Fields(u"codigo").textOrEmpty();
        flexD.AddItem(QStringList{code, items.Fields(u"Discriminacao").textOrEmpty(),
                                  vb::Format(items.Fields(u"quantidade"), u"##,#0.00"),
                                  Module1::soma_deb_dia(m_services, code).textOrEmpty()});
        if (!fill.goesOn())
            return;
    }
    items.Close();
    // The note names the period of the history, although the column sums today's issues.
    m_ui->Label22->setText(QStringLiteral("* Baixas = Saidas no intervalo da data: ") +
                           vb::shortDate(m_ui->dtpI_0->Value()) + QStringLiteral("<>") +
                           vb::shortDate(m_ui->dtpI_1->Value()));
    mostra_item();
}

void frmprincipal::mostra_item()
{
    const platform::FlexGrid& flexD = *m_ui->FlexD;
    const QString item = flexD.Row() >= 1 ? flexD.TextMatrix(flexD.Row(), Description) : QString();
    m_ui->produtoBaixa->setText(item);
    m_ui->produtoBaixa->setToolTip(item);
}

void frmprincipal::baixa_item()
{
    const QString typed = m_ui->Text2->text();
    if (!vb::IsNumeric(typed)) {
        m_ui->Text2->setFocus();
        return;
    }
    platform::FlexGrid& flexD = *m_ui->FlexD;
    const int row = flexD.Row();
    if (row < 1)
        return;
    const QString code = flexD.TextMatrix(row, Code);
    Module1::lanca_controle(m_services, code, flexD.TextMatrix(row, Description), typed, QString(),
                            QStringLiteral("deb"));

    ado::againOnConflict([&] {
        ado::Recordset item;
        item.Open(QStringLiteral("Select codigo, quantidade from EstoqueDiversos where codigo = ") +
                      vb::CStr(vb::CDbl(code)),
                  m_services.DataConnection);
        item.SetField(u"quantidade", vb::Format(vb::CCur(item.Fields(u"quantidade")) - vb::CCur(typed), u"##,#0.00"));
        item.Update();
        item.Close();
    });

    // The header and this one line: the row leaves the grid, which is read again by its button only.
    if (flexD.Rows() < 3)
        formata_flexD();
    else
        flexD.RemoveItem(row);
    flexD.viewport()->update();
    mostra_item();
    m_ui->Text2->selectAll();
}
