#pragma once

#include "platform/vb/Variant.h"

#include <QString>

class QComboBox;

namespace ado {
class Connection;
}
namespace platform {
class EventPump;
}
struct Services;

// Statements on pumps, products, suppliers and the ledger that several windows use. All raise ado::Error and vb::Error.
namespace Module1 {

/// Stock code of the product that a pump dispenses; 0 without such a pump, Null where the pump has none.
[[nodiscard]] vb::Variant prod_vinculado(ado::Connection& connection, const QString& pumpNumber);

/// Unit price in R$ of the product with a stock code; 0 without such a product or price.
[[nodiscard]] vb::Variant valor_produto(ado::Connection& connection, const QString& stockCode);

/// Description of a pump; empty without such a pump.
[[nodiscard]] QString descritivo_bomba(ado::Connection& connection, const QString& pumpNumber);

/// Adds the suppliers in upper case to a box, without clearing it, and selects the first.
void carrega_fornece(const Services& services, QComboBox& box);

/// Writes one ledger row dated today. `kind` "deb" debits the quantity, anything else credits it.
void lanca_controle(const Services& services, const QString& productCode, const QString& description,
                    const QString& quantity, const QString& invoiceNumber, const QString& kind);

/// Sum of today's debits of a product; 0 when there are none.
[[nodiscard]] vb::Variant soma_deb_dia(const Services& services, const QString& productCode);

} // namespace Module1

namespace shared {

/// A row of the ledger. Product and quantity are read as numbers when it is written.
struct LedgerRow
{
    vb::Variant product;
    QString description;
    vb::Variant quantity;
    bool isCredit = false;
    QString supplier;
    QString invoiceNumber;
};

/// Adds it, dated today.
void addLedgerRow(const Services& services, const LedgerRow& row);

} // namespace shared
