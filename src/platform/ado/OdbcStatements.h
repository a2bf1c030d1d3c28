#pragma once

#include "platform/ado/OdbcRows.h"
#include "platform/ado/Session.h"

#include <QString>
#include <QStringList>

#include <vector>

// Texts of the statements that AddNew and Update make up. The program's own statements never pass here.
namespace ado::odbc {

/// How a source writes names and values.
struct Dialect
{
    bool isMySql = false;
    QString identifierQuote; ///< Empty where names cannot be quoted.
};

/// The first table that a SELECT names, as written there (with its database in front, if it has one), quotes removed.
/// Empty when there is none.
[[nodiscard]] QStringList tableOf(const QString& select);

[[nodiscard]] QString quoted(const Dialect& dialect, const QString& identifier);
[[nodiscard]] QString quoted(const Dialect& dialect, const QStringList& path);

/// A value as literal: numbers with a point, dates as 'YYYY-MM-DD[ hh:mm:ss]', texts safe against quotes and
/// backslashes whatever the server's mode is. `value` is of a field's type or Null.
[[nodiscard]] QString literal(const Dialect& dialect, const vb::Variant& value);

/// Condition that a row still has this value in that column, never false for the value as the column gave it. Empty for
/// bytes, which a text does not hold.
[[nodiscard]] QString sameValue(const Dialect& dialect, const ResultColumn& column, const vb::Variant& value);

[[nodiscard]] QString insertStatement(const Dialect& dialect, const QStringList& table,
                                      const std::vector<FieldValue>& values);
/// `conditions` are joined by AND. `isOneRow` limits the change to one row where the source can.
[[nodiscard]] QString updateStatement(const Dialect& dialect, const QStringList& table,
                                      const std::vector<FieldValue>& changes, const QStringList& conditions,
                                      bool isOneRow);

} // namespace ado::odbc
