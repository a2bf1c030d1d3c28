#include "accessfile/Value.h"

#include <algorithm>
#include <charconv>
#include <limits>

// Decimals by their digits: they are rare, and texts are what they come from and go to.
namespace accessfile {

namespace {

constexpr std::size_t mostDigits = 38;
constexpr int moneyScale = 4;

using Magnitude = std::array<std::uint32_t, 4>;

std::string digitsOf(Magnitude magnitude)
{
    std::string digits;
    while (magnitude != Magnitude{}) {
        std::uint64_t rest = 0;
        for (std::uint32_t& word : magnitude) {
            rest = rest << 32U | word;
            word = static_cast<std::uint32_t>(rest / 10);
            rest %= 10;
        }
        digits += static_cast<char>('0' + static_cast<char>(rest));
    }
    std::reverse(digits.begin(), digits.end());
    return digits;
}

/// The decimal of at most 38 digits; nullopt for more.
std::optional<Numeric> fromDigits(bool negative, std::string_view digits, std::size_t scale)
{
    digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size()));
    if (digits.size() > mostDigits || scale > mostDigits)
        return std::nullopt;
    Numeric result;
    result.scale = static_cast<std::uint8_t>(scale);
    result.negative = negative && !digits.empty();
    for (const char digit : digits) {
        std::uint64_t carry = static_cast<std::uint64_t>(digit - '0');
        for (std::size_t i = result.magnitude.size(); i-- > 0;) {
            carry += std::uint64_t{result.magnitude[i]} * 10;
            result.magnitude[i] = static_cast<std::uint32_t>(carry);
            carry >>= 32U;
        }
    }
    return result;
}

} // namespace

std::string decimalText(const Numeric& decimal)
{
    std::string digits = digitsOf(decimal.magnitude);
    const std::size_t least = std::size_t{decimal.scale} + 1;
    digits.insert(0, digits.size() < least ? least - digits.size() : 0, '0');
    if (decimal.scale > 0)
        digits.insert(digits.size() - decimal.scale, ".");
    return decimal.negative ? '-' + digits : digits;
}

std::optional<Numeric> parseDecimal(std::string_view plain)
{
    const bool negative = plain.starts_with('-');
    if (negative || plain.starts_with('+'))
        plain.remove_prefix(1);
    int exponent = 0;
    if (const std::size_t mark = plain.find_first_of("eE"); mark != std::string_view::npos) {
        std::string_view power = plain.substr(mark + 1);
        if (power.starts_with('+'))
            power.remove_prefix(1);
        const auto read = std::from_chars(power.data(), power.data() + power.size(), exponent);
        if (read.ec != std::errc() || read.ptr != power.data() + power.size() || exponent < -100 || exponent > 100)
            return std::nullopt;
        plain = plain.substr(0, mark);
    }
    const std::size_t point = std::min(plain.find('.'), plain.size());
    std::string digits(plain.substr(0, point));
    if (point < plain.size())
        digits += plain.substr(point + 1);
    if (digits.empty() || digits.find_first_not_of("0123456789") != std::string::npos)
        return std::nullopt;

    int scale = static_cast<int>(digits.size()) - static_cast<int>(point) - exponent;
    while (scale > 0 && digits.size() > 1 && digits.back() == '0') {
        digits.pop_back();
        --scale;
    }
    for (; scale < 0; ++scale)
        digits += '0';
    return fromDigits(negative, digits, static_cast<std::size_t>(scale));
}

std::optional<Numeric> withScale(Numeric decimal, int scale)
{
    std::string digits = digitsOf(decimal.magnitude);
    if (scale >= decimal.scale)
        digits.append(static_cast<std::size_t>(scale - decimal.scale), '0');
    else
        digits.erase(digits.size() - std::min(digits.size(), static_cast<std::size_t>(decimal.scale - scale)));
    return fromDigits(decimal.negative, digits, static_cast<std::size_t>(scale));
}

int compareDecimals(const Numeric& a, const Numeric& b)
{
    const int scale = std::max(a.scale, b.scale);
    const auto aligned = [&](const Numeric& decimal) {
        std::string digits = digitsOf(decimal.magnitude);
        if (!digits.empty())
            digits.append(static_cast<std::size_t>(scale - decimal.scale), '0');
        return digits;
    };
    const std::string digitsA = aligned(a);
    const std::string digitsB = aligned(b);
    const bool belowA = a.negative && !digitsA.empty();
    const bool belowB = b.negative && !digitsB.empty();
    if (belowA != belowB)
        return belowA ? -1 : 1;
    int order =
        digitsA.size() != digitsB.size() ? (digitsA.size() < digitsB.size() ? -1 : 1) : digitsA.compare(digitsB);
    order = belowA ? -order : order;
    return order < 0 ? -1 : order > 0 ? 1 : 0;
}

int digitCount(const Numeric& decimal)
{
    return static_cast<int>(digitsOf(decimal.magnitude).size());
}

double toDouble(const Numeric& decimal)
{
    const std::string text = decimalText(decimal);
    double number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

Numeric toDecimal(Money money)
{
    const bool negative = money.scaled < 0;
    const auto magnitude =
        negative ? 0 - static_cast<std::uint64_t>(money.scaled) : static_cast<std::uint64_t>(money.scaled);
    return {negative,
            {0, 0, static_cast<std::uint32_t>(magnitude >> 32U), static_cast<std::uint32_t>(magnitude)},
            moneyScale};
}

std::optional<Money> toMoney(const Numeric& decimal)
{
    std::string digits = digitsOf(decimal.magnitude);
    if (decimal.scale <= moneyScale)
        digits.append(static_cast<std::size_t>(moneyScale - decimal.scale), '0');
    const auto surplus = static_cast<std::size_t>(std::max(0, decimal.scale - moneyScale));
    digits.insert(0, digits.size() < surplus ? surplus - digits.size() : 0, '0');
    const std::string rest = digits.substr(digits.size() - surplus);
    digits.erase(digits.size() - surplus);

    std::uint64_t magnitude = 0;
    const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), magnitude);
    constexpr auto most = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    if (!digits.empty() && read.ec != std::errc())
        return std::nullopt;
    const std::string half = '5' + std::string(rest.empty() ? 0 : rest.size() - 1, '0');
    if (!rest.empty() && (rest > half || (rest == half && magnitude % 2 == 1)))
        ++magnitude;
    if (magnitude > most + (decimal.negative ? 1 : 0))
        return std::nullopt;
    return Money{static_cast<std::int64_t>(decimal.negative ? 0 - magnitude : magnitude)};
}

} // namespace accessfile
