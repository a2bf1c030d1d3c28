#pragma once

#include "accessfile/format/TableDefinition.h"
#include "accessfile/table/TableSpace.h"

#include <span>

// A new table: its definition, then its pages.
namespace accessfile {

/// Definition of a table that has no pages yet. Raises what keeps the columns and indexes from being declared.
[[nodiscard]] TableDefinition declareTable(std::span<const Column> columns, std::span<const Index> indexes,
                                           bool system);

/// Adds an index without pages, its columns named by their position in `columns`.
void declareIndex(TableDefinition& definition, const Index& index);

/// Raises what keeps a column from joining: its name, or a second autonumber.
void checkNewColumn(const TableDefinition& definition, const Column& column);

/// Maps for a long-value column.
void giveMaps(TableSpace& space, ColumnDefinition& column, PageNumber& mapPage);

/// Map and empty root page for an index of the table whose definition is on page `owner`.
void giveRoot(TableSpace& space, PageNumber owner, PhysicalIndex& index, PageNumber& mapPage);

/// Maps and index roots for a declared table; `page` is its definition's first page, which is taken already. The maps
/// go to `*mapPage` while it has room.
void giveTablePages(TableSpace& space, TableDefinition& definition, PageNumber page, PageNumber& mapPage);

} // namespace accessfile
