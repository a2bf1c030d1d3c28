#include "accessfile/sql/Assignment.h"

#include "accessfile/sql/Calendar.h"
#include "accessfile/sql/Messages.h"
#include "accessfile/sql/Operators.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace accessfile::sql {

namespace {

double number(const Value& value, const RegionalConversions& regional)
{
    if (const std::string* text = std::get_if<std::string>(&value)) {
        const std::optional<double> read = regional.toNumber(*text);
        if (!read)
            throw typeMismatch();
        return *read;
    }
    return toDouble(value);
}

std::int32_t integer(double value, double least, double most)
{
    const double rounded = std::nearbyint(value);
    if (!(rounded >= least && rounded <= most))
        throw overflow();
    return static_cast<std::int32_t>(rounded);
}

bool truth(const Value& value, const RegionalConversions& regional)
{
    if (const std::string* text = std::get_if<std::string>(&value)) {
        const std::string word = foldCase(*text);
        if (word == "true" || word == "yes" || word == "on")
            return true;
        if (word == "false" || word == "no" || word == "off")
            return false;
    }
    return number(value, regional) != 0;
}

DateTime date(const Value& value, const RegionalConversions& regional)
{
    std::optional<double> serial;
    if (const std::string* text = std::get_if<std::string>(&value))
        serial = regional.toDate(*text);
    else
        serial = toDouble(value);
    if (!serial)
        throw typeMismatch();
    const std::optional<DateTime> rounded = wholeSeconds(*serial);
    if (!rounded)
        throw overflow();
    return *rounded;
}

/// The value with all its digits; nullopt for one that no decimal holds exactly.
std::optional<Numeric> exact(const Value& value, const RegionalConversions& regional)
{
    if (const std::string* text = std::get_if<std::string>(&value))
        return regional.toDecimal(*text);
    if (const Numeric* decimal = std::get_if<Numeric>(&value))
        return *decimal;
    if (const Money* money = std::get_if<Money>(&value))
        return toDecimal(*money);
    if (const std::int32_t* integer = std::get_if<std::int32_t>(&value))
        return toDecimal(Money{std::int64_t{*integer} * 10'000});
    return std::nullopt;
}

/// The fifteen digits that a double holds of a decimal number.
std::optional<Numeric> shortDecimal(double value)
{
    std::array<char, 400> digits{};
    char* const last = digits.data() + digits.size();
    const auto shortened = std::to_chars(digits.data(), last, value, std::chars_format::scientific, 14);
    double clean = value;
    std::from_chars(digits.data(), shortened.ptr, clean);
    const auto fixed = std::to_chars(digits.data(), last, clean, std::chars_format::fixed);
    if (!std::isfinite(value) || fixed.ec != std::errc())
        return std::nullopt;
    constexpr std::size_t mostDecimals = 28;
    const std::string_view text(digits.data(), fixed.ptr);
    return parseDecimal(text.substr(0, std::min(text.find('.'), text.size()) + 1 + mostDecimals));
}

Money money(const Value& value, const RegionalConversions& regional)
{
    const std::optional<Numeric> decimal = exact(value, regional);
    if (!decimal)
        return toMoney(number(value, regional));
    const std::optional<Money> result = toMoney(*decimal);
    if (!result)
        throw overflow();
    return *result;
}

/// Surplus decimals are cut off.
Numeric numeric(const Value& value, const Column& column, const RegionalConversions& regional)
{
    std::optional<Numeric> decimal = exact(value, regional);
    if (!decimal)
        decimal = shortDecimal(number(value, regional));
    if (decimal)
        decimal = withScale(*decimal, column.scale);
    if (!decimal || digitCount(*decimal) > column.precision)
        throw overflow();
    return *decimal;
}

Guid guid(const Value& value)
{
    if (const Guid* same = std::get_if<Guid>(&value))
        return *same;
    const std::string* text = std::get_if<std::string>(&value);
    if (text == nullptr)
        throw typeMismatch();
    Guid result;
    std::size_t nibbles = 0;
    for (const char c : *text) {
        const char lower = c >= 'A' && c <= 'F' ? static_cast<char>(c + 32) : c;
        const bool digit = lower >= '0' && lower <= '9';
        if (digit || (lower >= 'a' && lower <= 'f')) {
            if (nibbles == 32)
                throw typeMismatch();
            const auto nibble = static_cast<std::uint8_t>(digit ? lower - '0' : lower - 'a' + 10);
            result.bytes.at(nibbles / 2) = static_cast<std::uint8_t>(result.bytes.at(nibbles / 2) << 4U | nibble);
            ++nibbles;
        } else if (c != '{' && c != '}' && c != '-') {
            throw typeMismatch();
        }
    }
    if (nibbles != 32)
        throw typeMismatch();
    return result;
}

} // namespace

Value assign(const Value& value, const Column& column, const RegionalConversions& regional)
{
    if (isNull(value))
        return value;
    switch (column.type) {
    case ColumnType::Bool:
        return truth(value, regional);
    case ColumnType::Byte:
        return integer(number(value, regional), 0, 255);
    case ColumnType::Int:
        return integer(number(value, regional), -32768, 32767);
    case ColumnType::Long:
        return integer(number(value, regional), std::numeric_limits<std::int32_t>::min(),
                       std::numeric_limits<std::int32_t>::max());
    case ColumnType::Money:
        return std::holds_alternative<Money>(value) ? value : Value(money(value, regional));
    case ColumnType::Float: {
        const double wide = number(value, regional);
        if (!(std::abs(wide) <= static_cast<double>(std::numeric_limits<float>::max())))
            throw overflow();
        return static_cast<float>(wide);
    }
    case ColumnType::Double: {
        const double wide = number(value, regional);
        if (!std::isfinite(wide))
            throw overflow();
        return wide;
    }
    case ColumnType::Numeric:
        return numeric(value, column, regional);
    case ColumnType::Date:
        return date(value, regional);
    case ColumnType::Guid:
        return guid(value);
    case ColumnType::Text:
    case ColumnType::Memo: {
        if (std::holds_alternative<Bytes>(value))
            throw typeMismatch();
        std::string text = toText(value, regional);
        if (column.type == ColumnType::Text && utf16Length(text) > static_cast<std::size_t>(column.length))
            throw fieldTooSmall();
        return text;
    }
    default:
        if (!std::holds_alternative<Bytes>(value))
            throw typeMismatch();
        return value;
    }
}

} // namespace accessfile::sql
