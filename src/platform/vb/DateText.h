#pragma once

#include "platform/vb/Date.h"

#include <QString>

namespace vb {

/// True when the day lies in the years 100 to 9999, the range of a date.
[[nodiscard]] bool isDateSerial(double serial);

/// Portuguese names; `day` 1 (Monday) to 7, `month` 1 to 12.
[[nodiscard]] QString dayName(int day);
[[nodiscard]] QString monthName(int month);

/// "dd/mm/yyyy", with " hh:mm:ss" when there is a time; the time alone on day 0.
[[nodiscard]] QString dateText(Date date);

/// Writes `value`, which is not negative, with at least `width` digits.
void appendPadded(QString& text, int value, int width);

} // namespace vb
