#include "shared/StockHelpers.h"

#include "data/Dialect.h"
#include "platform/ado/Recordset.h"
#include "platform/ui/Seams.h"
#include "platform/vb/Conversion.h"
#include "shared/Services.h"

#include <QComboBox>
#include <QPointer>

namespace Module1 {

namespace {

ado::Recordset pumpByNumber(ado::Connection& connection, const QString& pumpNumber)
{
    ado::Recordset pump;
    pump.Open(QStringLiteral("Select * from planilhaposto where numerodispositivo = ") + vb::CStr(vb::CDbl(pumpNumber)),
              connection);
    return pump;
}

} // namespace

vb::Variant prod_vinculado(ado::Connection& connection, const QString& pumpNumber)
{
    const ado::Recordset pump = pumpByNumber(connection, pumpNumber);
    return pump.Eof() ? vb::Variant(0) : pump.Fields(u"prodvinculado");
}

vb::Variant valor_produto(ado::Connection& connection, const QString& stockCode)
{
    ado::Recordset product;
    product.Open(QStringLiteral("Select * from cadprodcomb where codigoestoque = ") + vb::CStr(vb::CLng(stockCode)),
                 connection);
    const vb::Variant price = product.Eof() ? vb::Variant(0) : product.Fields(u"valor");
    return price.isNull() ? vb::Variant(0) : price;
}

QString descritivo_bomba(ado::Connection& connection, const QString& pumpNumber)
{
    const ado::Recordset pump = pumpByNumber(connection, pumpNumber);
    return pump.Eof() ? QString() : pump.Fields(u"Descritivo").textOrEmpty();
}

void carrega_fornece(const Services& services, QComboBox& box)
{
    const QPointer<QComboBox> alive = &box;
    ado::Recordset suppliers;
    suppliers.Open(QStringLiteral("Select * from Fornece order by razao;"), services.DataConnection);
    if (suppliers.RecordCount() == 0)
        return;
    while (!suppliers.Eof()) {
        box.addItem(suppliers.Fields(u"razao").textOrEmpty().toUpper());
        suppliers.MoveNext();
        services.events.DoEvents();
        if (!alive)
            return;
    }
    box.setCurrentIndex(0);
}

void lanca_controle(const Services& services, const QString& productCode, const QString& description,
                    const QString& quantity, const QString& invoiceNumber, const QString& kind)
{
    const QString ownMovement = QStringLiteral("OperEmpresa");
    shared::addLedgerRow(services, {productCode, description, quantity, kind != u"deb", ownMovement, invoiceNumber});
}

vb::Variant soma_deb_dia(const Services& services, const QString& productCode)
{
    ado::Recordset sum;
    sum.Open(QStringLiteral("Select sum(deb) from ControleProdComb where codProd = ") +
                 vb::CStr(vb::CDbl(productCode)) + QStringLiteral(" and dataOP = ") +
                 services.dialect.dateLiteral(services.clock.today()),
             services.DataConnection);
    const vb::Variant total = sum.Fields(0);
    return total.isNull() ? vb::Variant(0) : total;
}

} // namespace Module1

void shared::addLedgerRow(const Services& services, const LedgerRow& row)
{
    ado::Recordset ledger;
    ledger.OpenToAdd(QStringLiteral("Select * from ControleProdComb;"), services.DataConnection);
    ledger.AddNew();
    ledger.SetField(u"CodProd", vb::CDbl(row.product));
    ledger.SetField(u"DataOP", vb::Date::fromQDate(services.clock.today()));
    ledger.SetField(u"descritivo", row.description);
    const double quantity = vb::CDbl(row.quantity);
    ledger.SetField(u"cred", row.isCredit ? quantity : 0.0);
    ledger.SetField(u"deb", row.isCredit ? 0.0 : quantity);
    ledger.SetField(u"fornecedor", row.supplier);
    ledger.SetField(u"NumeroNota", row.invoiceNumber);
    ledger.Update();
}
