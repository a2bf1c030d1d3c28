#pragma once

#include <QString>

namespace EntryGrid {
struct Line;
}
struct Services;

// What closing a sheet writes for one of its lines.
namespace Closing {

/// Stores the reading, moves the pump's last reading and date forward and, if `deduct`, takes the litres from the
/// general stock item `stockCode`. `dateTime` is the sheet's date as Dialect::SqlDateTime writes it. There is no
/// transaction: on an error (ado::Error, vb::Error) what was written stays written.
void write(const Services& services, const EntryGrid::Line& line, const QString& dateTime, double stockCode,
           bool deduct);

} // namespace Closing
