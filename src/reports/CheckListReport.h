#pragma once

#include "reports/ReportPrinting.h"

#include <QDate>

namespace platform {
class FlexGrid;
}

namespace reports {

/// Prints the check-list: the pumps with their last readings and room for the hand-written check, then the
/// miscellaneous items with balance and issues. The dates are the period that the note on the issues names. False when
/// the user cancelled. Raises platform::PrintError.
bool imprime_conferencia(const platform::FlexGrid& pumps, const platform::FlexGrid& items, QDate first, QDate last,
                         const ReportServices& services);

} // namespace reports
