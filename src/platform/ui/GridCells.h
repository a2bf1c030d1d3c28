#pragma once

namespace platform {

/// Stands between the cells of a FlexGrid row that is handed over as one text. No stored text holds it, and one that
/// does gets a blank in its place: a tab or line break inside a cell never shifts the columns.
inline constexpr char CellSeparator = '\x1F';

} // namespace platform
