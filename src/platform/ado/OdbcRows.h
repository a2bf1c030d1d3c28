#pragma once

#include "platform/ado/OdbcHandles.h"
#include "platform/ado/RowSet.h"

#include <vector>

namespace ado::odbc {

/// Column of an executed or prepared SELECT as the driver describes it.
struct ResultColumn
{
    Field field;
    SQLSMALLINT sqlType = 0;
    SQLULEN size = 0; ///< Characters or digits.
    bool isUnsigned = false;
};

/// Columns of the statement's result; empty when it has none. `text` is the statement, for the error.
[[nodiscard]] std::vector<ResultColumn> describeColumns(const Statement& statement, const QString& text);

/// All rows of an executed statement.
[[nodiscard]] RowSet fetchRows(const Statement& statement, const QString& text);

} // namespace ado::odbc
