#pragma once

#include "accessfile/Storage.h"
#include "accessfile/sql/Evaluator.h"
#include "accessfile/sql/Syntax.h"

#include <memory>
#include <optional>
#include <type_traits>

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

/// Visits the rows that satisfy the clause; the evaluator stands on the visited row. A visit that gives a bool ends
/// with the first false.
template <typename Visit>
void forEachRow(const Table& table, const Expression* where, Evaluator& evaluator, Visit visit)
{
    const Plan plan = planRows(table, where);
    if (plan.empty)
        return;
    const std::unique_ptr<Cursor> cursor = plan.open(table);
    evaluator.setRow(cursor.get());
    while (cursor->next()) {
        if (where != nullptr && evaluator.test(*where) != Truth::True)
            continue;
        if constexpr (std::is_same_v<decltype(visit(*cursor)), bool>) {
            if (!visit(*cursor))
                break;
        } else {
            visit(*cursor);
        }
    }
    evaluator.setRow(nullptr);
}

} // namespace accessfile::sql
