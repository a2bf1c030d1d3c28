#include "platform/vb/Decimal.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace vb {

namespace {

constexpr int DoubleDigits = 15;
constexpr int LargestExactPower = 22;
constexpr std::array<double, LargestExactPower + 1> PowersOfTen = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                                   1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                                                   1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

/// Digit at a place counted from the point: 0 is the first behind it, -1 the last before it.
int digitAt(const Decimal& decimal, int place)
{
    const int index = decimal.point + place;
    return index >= 0 && index < decimal.digits.size() ? decimal.digits[index] - '0' : 0;
}

/// The first digits are zeros after a sum or product that did not carry so far; nothing has no sign.
void dropLeadingZeros(Decimal& decimal)
{
    const auto first = std::find_if(decimal.digits.cbegin(), decimal.digits.cend(), [](char d) { return d != '0'; });
    const auto zeros = static_cast<int>(first - decimal.digits.cbegin());
    decimal.digits.remove(0, zeros);
    decimal.point -= zeros;
    decimal.dropTrailingZeros();
    decimal.negative = decimal.negative && !decimal.isZero();
}

/// Compares without regard to the signs.
bool isSmaller(const Decimal& one, const Decimal& other)
{
    if (one.isZero() || other.isZero())
        return !other.isZero();
    if (one.point != other.point)
        return one.point < other.point;
    return std::lexicographical_compare(one.digits.cbegin(), one.digits.cend(), other.digits.cbegin(),
                                        other.digits.cend());
}

} // namespace

void Decimal::dropTrailingZeros()
{
    while (!digits.isEmpty() && digits.back() == '0')
        digits.removeLast();
    if (digits.isEmpty())
        point = 0;
}

Decimal Decimal::fromDouble(double value)
{
    Decimal decimal;
    if (value == 0.0) // -0.0 as well: it has no sign to show
        return decimal;
    std::array<char, 32> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), std::abs(value),
                                   std::chars_format::scientific, DoubleDigits - 1)
                         .ptr;
    const char* const exponent = text.data() + DoubleDigits + 2; // "d.dddddddddddddde-05": behind the e
    decimal.negative = value < 0;
    decimal.digits.append(text[0]);
    decimal.digits.append(text.data() + 2, DoubleDigits - 1);
    std::from_chars(*exponent == '+' ? exponent + 1 : exponent, end, decimal.point);
    ++decimal.point;
    decimal.dropTrailingZeros();
    return decimal;
}

Decimal Decimal::fromUnsigned(quint64 value)
{
    Decimal decimal;
    if (value == 0)
        return decimal;
    std::array<char, 24> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
    decimal.point = static_cast<int>(end - text.data());
    decimal.digits.append(text.data(), decimal.point);
    decimal.dropTrailingZeros();
    return decimal;
}

Decimal Decimal::fromInteger(qint64 value, int decimals)
{
    const auto bits = static_cast<quint64>(value);
    Decimal decimal = fromUnsigned(value < 0 ? 0 - bits : bits);
    decimal.negative = value < 0;
    if (!decimal.isZero())
        decimal.point -= decimals;
    return decimal;
}

double Decimal::toDouble() const
{
    if (digits.isEmpty())
        return 0.0;
    const auto count = static_cast<int>(digits.size());
    const int power = point - count;
    // Both the digits and the power of ten are exact doubles, so that one operation rounds correctly.
    if (count <= DoubleDigits && power >= -LargestExactPower && power <= LargestExactPower) {
        qint64 whole = 0;
        for (const char digit : digits)
            whole = whole * 10 + (digit - '0');
        const auto exact = static_cast<double>(negative ? -whole : whole);
        return power < 0 ? exact / PowersOfTen[static_cast<std::size_t>(-power)]
                         : exact * PowersOfTen[static_cast<std::size_t>(power)];
    }
    QVarLengthArray<char, 64> text;
    text.append(digits.data(), digits.size());
    text.append('e');
    std::array<char, 16> exponent{};
    const auto end = std::to_chars(exponent.data(), exponent.data() + exponent.size(), power).ptr;
    text.append(exponent.data(), end - exponent.data());
    double value = 0;
    if (std::from_chars(text.data(), text.data() + text.size(), value).ec == std::errc::result_out_of_range)
        value = point > 0 ? std::numeric_limits<double>::infinity() : 0.0;
    return negative ? -value : value;
}

void Decimal::roundHalfAway(int decimals)
{
    const int kept = point + decimals;
    if (kept >= static_cast<int>(digits.size()))
        return;
    if (kept < 0) {
        digits.clear();
        point = 0;
        return;
    }
    const bool up = digits[kept] >= '5';
    digits.resize(kept);
    if (up) {
        while (!digits.isEmpty() && digits.back() == '9')
            digits.removeLast();
        if (digits.isEmpty()) {
            digits.append('1');
            ++point;
        } else {
            ++digits.back();
        }
    }
    dropTrailingZeros();
}

std::optional<qint64> Decimal::toScaledHalfEven(int decimals) const
{
    constexpr int MostDigits = 19;
    const int kept = point + decimals;
    if (kept > MostDigits)
        return isZero() ? std::optional<qint64>(0) : std::nullopt;
    if (kept < 0)
        return 0;
    quint64 whole = 0;
    for (int i = 0; i < kept; ++i)
        whole = whole * 10 + static_cast<quint64>(i < digits.size() ? digits[i] - '0' : 0);
    if (kept < digits.size()) {
        const bool tie = digits[kept] == '5' && kept + 1 == digits.size();
        if (tie ? whole % 2 != 0 : digits[kept] >= '5')
            ++whole;
    }
    const auto limit = static_cast<quint64>(std::numeric_limits<qint64>::max()) + (negative ? 1 : 0);
    if (whole > limit)
        return std::nullopt;
    return static_cast<qint64>(negative ? 0 - whole : whole);
}

Decimal operator*(const Decimal& one, const Decimal& other)
{
    Decimal product;
    product.negative = one.negative != other.negative;
    product.point = one.point + other.point;
    QVarLengthArray<int, 64> sums(one.digits.size() + other.digits.size(), 0);
    for (qsizetype i = 0; i < one.digits.size(); ++i) {
        for (qsizetype j = 0; j < other.digits.size(); ++j)
            sums[i + j + 1] += (one.digits[i] - '0') * (other.digits[j] - '0');
    }
    for (qsizetype i = sums.size() - 1; i > 0; --i) {
        sums[i - 1] += sums[i] / 10;
        sums[i] %= 10;
    }
    for (const int digit : sums)
        product.digits.append(static_cast<char>('0' + digit));
    dropLeadingZeros(product);
    return product;
}

Decimal operator+(const Decimal& one, const Decimal& other)
{
    const bool smaller = isSmaller(one, other);
    const Decimal& large = smaller ? other : one;
    const Decimal& small = smaller ? one : other;
    if (small.isZero())
        return large;
    const int sign = large.negative == small.negative ? 1 : -1;
    const int behindPoint =
        static_cast<int>(qMax(large.digits.size() - large.point, small.digits.size() - small.point));
    Decimal sum;
    sum.negative = large.negative;
    sum.point = large.point + 1;
    sum.digits.resize(sum.point + behindPoint);
    int carry = 0;
    for (int place = behindPoint - 1; place >= -sum.point; --place) {
        int digit = digitAt(large, place) + sign * digitAt(small, place) + carry;
        carry = digit > 9 ? 1 : digit < 0 ? -1 : 0;
        digit -= 10 * carry;
        sum.digits[sum.point + place] = static_cast<char>('0' + digit);
    }
    dropLeadingZeros(sum);
    return sum;
}

} // namespace vb
