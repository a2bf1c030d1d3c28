#pragma once

#include "reports/ReportPrinting.h"

#include <QDate>

namespace platform {
class FlexGrid;
}

namespace reports {

/// Prints the fuel stock ledger as listed: eight columns (key, product number, date, description, credit, debit,
/// invoice number, supplier) of one product over a period, with the two totals. False when the user cancelled. Raises
/// platform::PrintError.
bool imprime_controle(const platform::FlexGrid& movements, const QString& product, QDate first, QDate last,
                      const QString& totalCredit, const QString& totalDebit, const ReportServices& services);

} // namespace reports
