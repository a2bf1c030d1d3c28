#include "app/Closing.h"

#include "platform/ado/Connection.h"
#include "platform/ado/Recordset.h"
#include "platform/ado/Retry.h"
#include "platform/vb/Conversion.h"
#include "platform/vb/Format.h"
#include "shared/EntryGrid.h"
#include "shared/Services.h"

namespace Closing {

namespace {

/// The column's text is stored as shown, with thousands points.
QString shown(const QString& number)
{
    return vb::Format(vb::CDec(number), u"##,#0.00");
}

void deductFromStock(ado::Connection& connection, double stockCode, const QString& litres)
{
    ado::againOnConflict([&] {
        ado::Recordset stock;
        stock.Open(QStringLiteral("Select quantidade, codigo from estoque where codigo = ") + vb::CStr(stockCode),
                   connection);
        if (stock.RecordCount() > 0) {
            stock.SetField(u"quantidade", vb::CCur(stock.Fields(u"quantidade")) - vb::CCur(litres));
            stock.Update();
        }
        stock.Close();
    });
}

} // namespace

void write(const Services& services, const EntryGrid::Line& line, const QString& dateTime, double stockCode,
           bool deduct)
{
    const QString previous = shown(line.previous);
    const QString current = shown(line.current);
    const QString litres = shown(line.litres);
    const QString unitPrice = shown(line.price);

    // Every value, numbers included, is a quoted text; the unit price is kept in the column Obs.
    services.DataConnection.Execute(
        QStringLiteral("Insert into Leitura(") +
        QStringLiteral("DataLT,cdgBomba,LeitAnt,LeitAtu,Saldo,Obs,tanq, afericao") + QStringLiteral(")values('") +
        dateTime + QStringLiteral("','") + line.pump + QStringLiteral("','") + previous + QStringLiteral("','") +
        current + QStringLiteral("','") + litres + QStringLiteral("','") + unitPrice + QStringLiteral("','") +
        line.tank + QStringLiteral("','") + line.calibration + QStringLiteral("');"));
    services.DataConnection.Execute(QStringLiteral("Update planilhaPosto set DataInsert = '") + dateTime +
                                    QStringLiteral("', Leitura = '") + vb::CStr(vb::CDbl(current)) +
                                    QStringLiteral("' where numerodispositivo = ") + vb::CStr(vb::CDbl(line.pump)));
    if (deduct)
        deductFromStock(services.DataConnection, stockCode, litres);
}

} // namespace Closing
