#include "app/PumpGrid.h"

#include "platform/ado/Recordset.h"
#include "platform/ui/Boundary.h"
#include "platform/ui/FlexGrid.h"
#include "platform/vb/Conversion.h"
#include "platform/vb/Format.h"
#include "shared/ListFill.h"
#include "shared/Services.h"
#include "shared/StockHelpers.h"

#include <QStringList>

namespace PumpGrid {

namespace {

QString price(ado::Connection& connection, const vb::Variant& stockCode)
{
    vb::Variant value = 0;
    platform::carryOn([&] { value = Module1::valor_produto(connection, stockCode.textOrEmpty()); });
    return vb::Format(value, u"##,#0.00");
}

/// The one character behind "TANQUE_": tank 12 shows as 1.
QString tankDigit(const QString& tank)
{
    return tank.mid(7, 1);
}

QStringList line(const ado::Recordset& pumps, ado::Connection& connection)
{
    QStringList cells;
    for (int i = 0; i < Columns; ++i)
        cells << QString();
    const auto step = [&](Column column, const std::function<QString()>& read) {
        platform::carryOn([&] { cells[column] = read(); });
    };
    step(Number, [&] { return vb::Format(pumps.Fields(u"numerodispositivo"), u"000"); });
    step(Description, [&] { return pumps.Fields(u"descritivo").textOrEmpty(); });
    step(Reading, [&] { return vb::Format(pumps.Fields(u"leitura"), u"##,#0.00"); });
    step(Date, [&] { return vb::Format(pumps.Fields(u"datainsert"), u"dd/mm/yy"); });
    step(Price, [&] { return price(connection, pumps.Fields(u"prodvinculado")); });
    step(StockCode, [&] { return pumps.Fields(u"prodvinculado").textOrEmpty(); });
    step(Tank, [&] { return tankDigit(pumps.Fields(u"tanq").textOrEmpty()); });
    return cells;
}

} // namespace

void formata(platform::FlexGrid& flex)
{
    constexpr int widths[Columns] = {400, 2000, 1200, 800, 700, 0, 250, 500, 0};
    flex.clearRows();
    flex.setCols(Columns);
    flex.FormatString(QStringLiteral("NºDispos|Descritivo|LeituraAnter|DatLeitura|R$Unt||X|TNQ|"));
    for (int column = 0; column < Columns; ++column)
        flex.setColWidth(column, widths[column]);
}

std::optional<QDate> carrega_planilha(platform::FlexGrid& flex, const Services& services)
{
    shared::Fill fill(flex, services.events);
    formata(flex);
    std::optional<QDate> firstDate;
    platform::leaveQuietly([&] {
        ado::Recordset pumps;
        pumps.Open(QStringLiteral("Select * from PlanilhaPosto order by numerodispositivo"), services.DataConnection);
        if (pumps.Eof())
            return;
        platform::carryOn([&] {
            const QDate date = vb::CDate(pumps.Fields(u"datainsert")).date();
            if (date.isValid())
                firstDate = date;
        });
        for (; !pumps.Eof(); pumps.MoveNext()) {
            flex.AddItem(line(pumps, services.DataConnection));
            if (!fill.goesOn()) {
                firstDate.reset();
                return;
            }
        }
    });
    return firstDate;
}

} // namespace PumpGrid
