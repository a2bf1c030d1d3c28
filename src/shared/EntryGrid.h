#pragma once

#include "platform/vb/Currency.h"

#include <QString>

namespace platform {
class FlexGrid;
}

// The entry grid: one line per reading that has been entered since the sheet was last closed.
namespace EntryGrid {

enum Column { Date, Pump, Previous, Current, Litres, Price, Value, Tank, Calibration, Columns };

/// One line, its cells as shown.
struct Line
{
    QString date; ///< Day and month; the closing takes the sheet's date instead.
    QString pump;
    QString previous;
    QString current;
    QString litres;
    QString price;
    QString value;
    QString tank;
    QString calibration;
};

void add(platform::FlexGrid& flexG, const Line& line);
[[nodiscard]] Line lineAt(const platform::FlexGrid& flexG, int row);
/// Sum of the lines' values in R$.
[[nodiscard]] vb::Currency total(const platform::FlexGrid& flexG);

} // namespace EntryGrid

namespace Module1 {

/// Resets the entry grid to its header.
void formata_flexG(platform::FlexGrid& flexG);

} // namespace Module1
