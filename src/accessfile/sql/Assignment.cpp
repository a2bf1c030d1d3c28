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

/// magnitude * 10 + digit; false when the 128 bits do not hold it.
bool appendDigit(std::array<std::uint32_t, 4>& magnitude, std::uint32_t digit)
{
    std::uint64_t carry = digit;
    for (std::size_t i = magnitude.size(); i-- > 0;) {
        carry += std::uint64_t{magnitude.at(i)} * 10;
        magnitude.at(i) = static_cast<std::uint32_t>(carry);
        carry >>= 32U;
    }
    return carry == 0;
}

/// The decimal digits of a number, surplus decimals cut off.
Numeric numeric(double value, const Column& column)
{
    std::array<char, 400> buffer{};
    // Fifteen digits are what a double holds of a decimal number.
    std::array<char, 40> shortened{};
    const auto general =
        std::to_chars(shortened.data(), shortened.data() + shortened.size(), value, std::chars_format::scientific, 14);
    double clean = value;
    std::from_chars(shortened.data(), general.ptr, clean);
    const auto fixed = std::to_chars(buffer.data(), buffer.data() + buffer.size(), clean, std::chars_format::fixed);
    if (!std::isfinite(value) || fixed.ec != std::errc())
        throw overflow();

    Numeric result;
    result.scale = column.scale;
    int digits = 0;
    int decimals = -1;
    const auto append = [&](std::uint32_t digit) {
        digits += digits > 0 || digit != 0 ? 1 : 0;
        if (digits > column.precision || !appendDigit(result.magnitude, digit))
            throw overflow();
    };
    for (const char* c = buffer.data(); c != fixed.ptr && decimals < column.scale; ++c) {
        if (*c == '-') {
            result.negative = true;
        } else if (*c == '.') {
            decimals = 0;
        } else {
            append(static_cast<std::uint32_t>(*c - '0'));
            decimals += decimals >= 0 ? 1 : 0;
        }
    }
    for (int missing = std::max(decimals, 0); missing < column.scale; ++missing)
        append(0);
    result.negative = result.negative && digits > 0;
    return result;
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
        return std::holds_alternative<Money>(value) ? value : Value(toMoney(number(value, regional)));
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
        return numeric(number(value, regional), column);
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
