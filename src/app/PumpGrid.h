#pragma once

#include <QDate>
#include <QString>

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
/// empty, a price that cannot be found is 0. Events run after each row; a newer fill or the closing of the window ends
/// it. Returns the last reading's date of the first pump, if it has one and the fill was not ended: the next sheet is
/// dated so by default.
std::optional<QDate> carrega_planilha(platform::FlexGrid& flex, const Services& services);

} // namespace PumpGrid
