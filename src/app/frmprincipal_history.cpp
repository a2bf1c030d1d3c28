#include "app/frmprincipal.h"
#include "ui_frmprincipal.h"

#include "app/HistoryRows.h"
#include "data/Dialect.h"
#include "platform/ado/Recordset.h"
#include "platform/ui/Boundary.h"
#include "platform/ui/WaitCursor.h"
#include "platform/vb/Conversion.h"
#include "platform/vb/Format.h"
#include "shared/ListFill.h"
#include "shared/Module1.h"
#include "shared/Services.h"
#include "shared/StockHelpers.h"

#include <QHash>
#include <QScopedValueRollback>

// History of closed readings: the expanded and the consolidated list.

void frmprincipal::carrega_flex1(const QString& sql)
{
    const platform::WaitCursor wait;
    if (m_ui->opt_1->isChecked()) {
        carrega_flex1Consolidado();
        return;
    }
    ado::Recordset readings;
    readings.Open(sql + QStringLiteral("  order by  DataLT, cdgBomba "), m_services.DataConnection);
    // Without rows the list on the screen stays, and one that is being filled goes on.
    if (readings.RecordCount() > 0)
        carrega_flex1Expandido(readings);
}

void frmprincipal::carrega_flex1Expandido(ado::Recordset& readings)
{
    const QScopedValueRollback<int> filling(m_historyFills, m_historyFills + 1);
    platform::FlexGrid& flex2 = *m_ui->flex2;
    shared::Fill fill(flex2, m_services.events, readings.RecordCount());
    fill.ifItFails([this] { esvazia_flex2(); });
    HistoryRows::formataflex2(flex2);

    HistoryRows::Reading reading(readings);
    HistoryRows::Totals totals;
    QHash<double, QByteArray> descriptions; // UTF-8, asked once per pump and list.
    const auto descriptionOf = [&](const vb::Variant& pump) {
        const double number = pump.isNull() ? vb::CDbl(QString()) : vb::CDbl(pump);
        auto known = descriptions.constFind(number);
        if (known == descriptions.cend()) {
            const QString text = Module1::descritivo_bomba(m_services.DataConnection, pump.textOrEmpty());
            known = descriptions.insert(number, text.toUtf8());
        }
        return *known;
    };
    for (; !readings.Eof(); readings.MoveNext()) {
        const HistoryRows::Totals row = reading.totals();
        HistoryRows::add(flex2, reading.line(descriptionOf(reading.pump()), row));
        totals += row;
        if (!fill.goesOn())
            return;
    }
    mostra_totais(totals);
}

void frmprincipal::carrega_flex1Consolidado()
{
    const QScopedValueRollback<int> filling(m_historyFills, m_historyFills + 1);
    platform::FlexGrid& flex2 = *m_ui->flex2;
    shared::Fill fill(flex2, m_services.events);
    fill.ifItFails([this] { esvazia_flex2(); });
    HistoryRows::formataflex2(flex2);

    const QString period = QStringLiteral("Select * from leitura where DataLT >= ") +
                           m_services.dialect.dateLiteral(m_ui->dtpI_0->Value()) + QStringLiteral(" and DataLT <= ") +
                           m_services.dialect.dateLiteral(m_ui->dtpI_1->Value()) + QStringLiteral(" and  cdgbomba = ");
    HistoryRows::Totals totals;
    ado::Recordset pumps;
    pumps.Open(QStringLiteral("Select * from PlanilhaPosto order by numerodispositivo"), m_services.DataConnection);
    qsizetype done = 0;
    for (; !pumps.Eof(); pumps.MoveNext()) {
        flex2.setProgress(done++, pumps.RecordCount());
        const QString pump = pumps.Fields(u"numerodispositivo").textOrEmpty();
        ado::Recordset readings;
        readings.Open(period + pump + QStringLiteral(" order by cdgBomba, dataLT asc"), m_services.DataConnection);
        if (readings.Eof())
            continue;
        const HistoryRows::Reading reading(readings);
        HistoryRows::PumpSum sum;
        for (; !readings.Eof(); readings.MoveNext()) {
            sum.add(reading);
            if (!fill.goesOn())
                return;
        }
        HistoryRows::add(flex2, sum.cells(pump, Module1::descritivo_bomba(m_services.DataConnection, pump)));
        flex2.setRowToolTip(flex2.Rows() - 1, sum.toolTip());
        totals += sum.totals;
    }
    mostra_totais(totals);
}

void frmprincipal::esvazia_flex2()
{
    HistoryRows::formataflex2(*m_ui->flex2);
    mostra_totais({});
}

void frmprincipal::mostra_totais(const HistoryRows::Totals& totals)
{
    const QString litres = vb::Format(totals.litres.toDecimal(), u"##,#0.00");
    const QString value = vb::Format(totals.value.toDecimal(), u"##,#0.00");
    m_ui->Label10->setText(litres);
    m_ui->Label17->setText(value);
    // The same for the printed sheet.
    m_ui->Label14->setText(value);
    m_ui->Label15->setText(litres);
}

void frmprincipal::exec_t()
{
    carrega_flex1(QStringLiteral("Select * from Leitura where cdgbomba > 0 and DataLT >= ") +
                  m_services.dialect.dateLiteral(m_ui->dtpI_0->Value()) + QStringLiteral(" and DataLT <= ") +
                  m_services.dialect.dateLiteral(m_ui->dtpI_1->Value()));
}

void frmprincipal::lista_do_dia(QDate day)
{
    carrega_flex1(QStringLiteral("Select * from Leitura where DataLT = ") + m_services.dialect.dateLiteral(day));
}

void frmprincipal::flex2Click()
{
    platform::FlexGrid& flex2 = *m_ui->flex2;
    Module1::marca_linha(flex2);
    // Looked up as in every list of pumps; nothing is shown of it.
    platform::leaveQuietly([&] {
        static_cast<void>(
            Module1::prod_vinculado(m_services.DataConnection, flex2.TextMatrix(flex2.Row(), HistoryRows::Pump)));
    });
}
