#pragma once

#include "platform/vb/Decimal.h"
#include "platform/vb/Variant.h"

#include <optional>

// Conversions between texts and values under Brazilian Portuguese settings (comma decimals, point thousands,
// dd/mm/yyyy, "R$"), whatever the machine's settings are. The texts that stations have stored rest on these
// rules: halves round to even in CCur and CLng; a text that is no number is error 13.
namespace vb {

/// True for a number and for a text that CDbl takes as a number (thousands points anywhere before the comma, one
/// sign before or after, brackets for negative, "R$", exponent e or d, &H and &O). Dates, Null and "" are not numeric.
[[nodiscard]] bool IsNumeric(const Variant& value);

/// Leading numeric part of a text with a POINT decimal, blanks skipped; 0 when there is none. Never raises.
[[nodiscard]] double Val(const QString& text);
/// Leading numeric part of a text by the regional settings (comma decimal, points skipped, blanks skipped); 0 when
/// there is none. Never raises. The rule for boxes and list entries whose text begins with a number.
[[nodiscard]] double leadingNumber(const QString& text);

[[nodiscard]] double CDbl(const Variant& value);   ///< Errors 13, 94, 6.
[[nodiscard]] qint32 CLng(const Variant& value);   ///< Half to even. Errors 13, 94, 6 (32 bits).
[[nodiscard]] Currency CCur(const Variant& value); ///< Half to even at the fourth decimal. Errors 13, 94, 6.
/// Every digit of a text or whole number, the 15 of a double; at most 28 of them. Errors 13, 94, 6.
[[nodiscard]] Decimal CDec(const Variant& value);
[[nodiscard]] Date CDate(const Variant& value);   ///< A number, in a text too, is a serial. Errors 13, 94, 6.
[[nodiscard]] QString CStr(const Variant& value); ///< Plain text: no thousands, comma decimal, 15 digits. Error 94.

/// The text to number step of CDbl alone, without error: nullopt when the text is no number.
[[nodiscard]] std::optional<double> parseNumber(QStringView text);
/// The same for CCur: nullopt also where the number does not fit.
[[nodiscard]] std::optional<Currency> parseCurrency(QStringView text);
/// The text to date step of CDate alone: day/month order, then month/day, then year first; two-digit years 00-29 are
/// 2000-2029; a bare number is no date.
[[nodiscard]] std::optional<Date> parseDate(QStringView text);

/// Plain decimal form of a number for a statement: point decimal, no thousands, no exponent for |x| < 1e15.
[[nodiscard]] QString plainDecimal(double value);

} // namespace vb
