#pragma once

#include "accessfile/Value.h"

#include <optional>
#include <string_view>

namespace accessfile::sql {

/// Days from 1899-12-30 to a day of the calendar; nullopt for a day that does not exist or lies outside the years 100
/// to 9999.
[[nodiscard]] std::optional<double> dayNumber(int year, int month, int day);

/// Body of a #date#: month first, day first where that is impossible, year first where the first number is one; with or
/// without a time. Blanks around it mean nothing.
[[nodiscard]] std::optional<DateTime> parseDateLiteral(std::string_view text);

/// Rounded to whole seconds, so that equal-looking values are equal; nullopt outside the years 100 to 9999.
[[nodiscard]] std::optional<DateTime> wholeSeconds(double serial);

[[nodiscard]] DateTime now();
[[nodiscard]] DateTime today();
[[nodiscard]] DateTime timeOfDay();

} // namespace accessfile::sql
