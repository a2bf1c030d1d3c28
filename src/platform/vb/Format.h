#pragma once

#include "platform/vb/Decimal.h"
#include "platform/vb/Variant.h"

namespace vb {

/// Text of `value` by `pattern`: number patterns ("##,#0.00", "##,#0.000", "000", "00000"), placeholder patterns of
/// '@' (right-aligned in that many characters, longer text kept whole), date and time patterns (d, dd, mm, yy, yyyy,
/// hh, nn, ss, any case; "mm" right after hours is minutes) and "Long Date". In a pattern "," and "." mean the regional
/// thousands and decimal separators; "/" and ":" the regional date and time separators. Half away from zero at the
/// last shown decimal of the value's decimal text, of which a text may have 28 digits. A text that is no number (or no
/// date) passes through unchanged; Null gives "", and so does "" but for a placeholder pattern, which pads it. Never
/// raises.
[[nodiscard]] QString Format(const Variant& value, QStringView pattern);
/// The same for a number pattern, with all digits of the number: one rounding, at the last shown decimal.
[[nodiscard]] QString Format(Decimal number, QStringView numberPattern);

/// The regional short form of a day, "dd/mm/yyyy".
[[nodiscard]] QString shortDate(QDate date);

} // namespace vb
