#pragma once

#include "platform/vb/Variant.h"

#include <QString>

namespace platform {
class FlexGrid;
}
struct Services;

// What closing a sheet writes for one of its lines.
namespace Closing {

/// One line of the entry grid, as shown.
struct Line
{
    QString pump;
    QString previous;
    QString current;
    QString litres;
    QString unitPrice;
    QString tank;
    QString calibration;
};

[[nodiscard]] Line lineOf(const platform::FlexGrid& flexG, int row);

/// Stores the reading, moves the pump's last reading and date forward and, if `deduct`, takes the litres from the
/// general stock item `stockCode`. `dateTime` is the sheet's date as Dialect::SqlDateTime writes it. There is no
/// transaction: on an error (ado::Error, vb::Error) what was written stays written.
void write(const Services& services, const Line& line, const QString& dateTime, double stockCode, bool deduct);

} // namespace Closing
