#pragma once

#include "accessfile/Storage.h"
#include "accessfile/sql/Syntax.h"

#include <memory>
#include <optional>

namespace accessfile::sql {

/// How the rows of a table are reached. The WHERE clause is tested on every row whatever the way.
struct Plan
{
    int index = -1; ///< -1: the whole table is scanned.
    KeyRange range;
    bool empty = false; ///< The clause holds for no row at all.

    [[nodiscard]] std::unique_ptr<Cursor> open(const Table& table) const;
};

/// The narrowest index range that a bound WHERE clause (may be nullptr) allows.
[[nodiscard]] Plan planRows(const Table& table, const Expression* where);

} // namespace accessfile::sql
