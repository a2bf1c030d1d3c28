#pragma once

#include "reports/ReportPrinting.h"

namespace platform {
class FlexGrid;
}

namespace reports {

/// Prints the reading sheet: the listed readings of a grid in the sheet layout (number, description, previous and
/// current reading, date, litres, unit price, value) and their totals. False when the user cancelled. Raises
/// platform::PrintError.
bool imprime_planilha(const platform::FlexGrid& readings, const QString& totalValue, const QString& totalLitres,
                      const ReportServices& services);

} // namespace reports
