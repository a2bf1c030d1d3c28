#pragma once

#include <QDate>
#include <QString>

#include <functional>
#include <optional>

namespace ado {
class Recordset;
}
namespace platform {
class FlexGrid;
}
struct Services;

// The pump grid: one row per pump with its last reading and the price of its product.
namespace PumpGrid {

enum Column { Number, Description, Reading, Date, Price, StockCode, Selected, Tank, Spare, Columns };

/// Resets the grid to its header.
void formata(platform::FlexGrid& flex);

/// Fills the grid from the register of pumps. Every error is ignored, step by step: a cell that cannot be read stays
/// empty, a price that cannot be found is 0. Lets events run after each row and stops when `goesOn` says no.
/// Returns the last reading's date of the first pump, if it has one: the next sheet is dated so by default.
std::optional<QDate> carrega_planilha(platform::FlexGrid& flex, const Services& services,
                                      const std::function<bool()>& goesOn);

} // namespace PumpGrid
