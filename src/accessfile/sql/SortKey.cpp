#include "accessfile/sql/SortKey.h"

#include "accessfile/sql/Operators.h"
#include "accessfile/sql/TextOrdering.h"

#include <bit>
#include <cstdint>

namespace accessfile::sql {

namespace {

constexpr std::uint64_t top = 1ULL << 63U;

void appendBigEndian(std::uint64_t bits, std::string& key)
{
    for (int shift = 56; shift >= 0; shift -= 8)
        key += static_cast<char>(static_cast<unsigned char>(bits >> static_cast<unsigned>(shift)));
}

/// An end mark below every continuation keeps the next column out of this one's order.
void appendEnded(std::string_view bytes, std::string& key)
{
    for (const char c : bytes) {
        key += c;
        if (c == '\0')
            key += '\xFF';
    }
    key.append(2, '\0');
}

void appendDouble(double number, std::string& key)
{
    const auto bits = std::bit_cast<std::uint64_t>(number + 0.0); // -0 and 0 are one value.
    appendBigEndian((bits & top) != 0 ? ~bits : bits | top, key);
}

/// Decimals that one double stands for are told apart by their digits.
void appendDecimal(const Numeric& decimal, std::string& key)
{
    appendDouble(toDouble(decimal), key);
    constexpr int mostDecimals = 38;
    std::string digits = decimalText(decimal);
    if (decimal.scale == 0)
        digits += '.';
    digits.append(static_cast<std::size_t>(mostDecimals - std::min<int>(decimal.scale, mostDecimals)), '0');
    // Within one double the count of whole digits differs at a power of ten only, where '9...' would come behind
    // '1...'.
    digits.insert(0, 1, static_cast<char>(digits.find('.')));
    if (decimal.negative) {
        for (char& digit : digits)
            digit = static_cast<char>(~digit);
    }
    appendEnded(digits, key);
}

} // namespace

void appendSortKey(const Value& value, bool ascending, std::string& key)
{
    const std::size_t begin = key.size();
    if (isNull(value)) {
        key += '\0';
    } else {
        key += '\1';
        if (const std::string* text = std::get_if<std::string>(&value))
            appendEnded(orderingKey(*text), key);
        else if (const Guid* guid = std::get_if<Guid>(&value))
            appendEnded(orderingKey(guidText(*guid)), key);
        else if (const Money* money = std::get_if<Money>(&value))
            appendBigEndian(static_cast<std::uint64_t>(money->scaled) ^ top, key);
        else if (const Numeric* decimal = std::get_if<Numeric>(&value))
            appendDecimal(*decimal, key);
        else
            appendDouble(toDouble(value), key);
    }
    if (!ascending) {
        for (std::size_t i = begin; i < key.size(); ++i)
            key[i] = static_cast<char>(~key[i]);
    }
}

} // namespace accessfile::sql
