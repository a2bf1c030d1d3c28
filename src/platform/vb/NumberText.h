#pragma once

#include "platform/vb/Decimal.h"

#include <QString>

namespace vb {

enum class NumberStatus { Ok, NotANumber, Overflow };

struct NumberText
{
    NumberStatus status = NumberStatus::NotANumber;
    Decimal decimal;
    /// The bits of a text in base 16 or 8, which whole numbers take as two's complement; otherwise nothing.
    std::optional<quint64> bits;
};

/// Blank as the number and date texts see it, the non-breaking blank included.
[[nodiscard]] inline bool isBlank(QChar character)
{
    const char16_t code = character.unicode();
    return code == u' ' || (code >= 9 && code <= 13) || code == 0xA0;
}

[[nodiscard]] inline bool isDigit(QChar character)
{
    return character >= u'0' && character <= u'9';
}

/// Reads a whole text as a number by the regional settings.
[[nodiscard]] NumberText readNumber(QStringView text);

/// Leading numeric part of a text; blanks are skipped everywhere and `skipped` (when not null) inside the whole part.
[[nodiscard]] double leadingPart(QStringView text, char16_t decimalPoint, char16_t skipped);

/// Plain text of a number: up to 15 digits, exponent form ("1E+15") where those do not hold it.
[[nodiscard]] QString plainText(const Decimal& decimal, char16_t decimalPoint);
/// The same, never in exponent form below 1e15.
[[nodiscard]] QString fixedText(const Decimal& decimal, char16_t decimalPoint);

} // namespace vb
