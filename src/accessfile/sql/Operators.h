#pragma once

#include "accessfile/Database.h"
#include "accessfile/sql/Syntax.h"

#include <optional>

// What values do with each other, rows and columns left aside.
namespace accessfile::sql {

[[nodiscard]] bool isNumber(Kind kind); ///< Bool, the numbers and Date.
[[nodiscard]] Kind kindOf(ColumnType type);
[[nodiscard]] ColumnType columnTypeOf(Kind kind);

/// A number of any type, a date as its day value, True as -1. Not for texts and Null.
[[nodiscard]] double toDouble(const Value& value);
/// Half to even at the fourth decimal; Overflow beyond the type.
[[nodiscard]] Money toMoney(double number);

/// A single as the number that its seven digits show; other values as they are.
[[nodiscard]] Value withoutNoise(const Value& value);

/// The text of a value by the regional settings, for & and LIKE; Null is "".
[[nodiscard]] std::string toText(const Value& value, const RegionalConversions& regional);
[[nodiscard]] std::string guidText(const Guid& guid);

/// Whether two kinds can stand on the sides of a comparison.
[[nodiscard]] bool comparable(Kind a, Kind b);
/// -1, 0, 1; nullopt with Null (or a value that is not a number) on either side.
[[nodiscard]] std::optional<int> compareValues(const Value& a, const Value& b);
[[nodiscard]] bool satisfies(Operator operation, int order);

/// Kind of the result; raises a type mismatch.
[[nodiscard]] Kind arithmeticKind(Operator operation, Kind a, Kind b);
[[nodiscard]] Value calculate(Operator operation, const Value& a, const Value& b, const RegionalConversions& regional);
[[nodiscard]] Value negate(const Value& value, const RegionalConversions& regional);

} // namespace accessfile::sql
