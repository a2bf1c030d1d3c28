#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace accessfile {

/// Currency of the file format: 64-bit, four decimals.
struct Money
{
    std::int64_t scaled = 0; ///< Value times 10,000.
    auto operator<=>(const Money&) const = default;
};

/// Days since 1899-12-30; the fraction points away from midnight of its day (-1.25 is 1899-12-29 06:00).
struct DateTime
{
    double serial = 0;
    bool operator==(const DateTime&) const = default;
};

/// Exact decimal of the file format: magnitude in 128 bits, most significant word first, with `scale` decimals.
struct Numeric
{
    bool negative = false;
    std::array<std::uint32_t, 4> magnitude{};
    std::uint8_t scale = 0;
    bool operator==(const Numeric&) const = default;
};

struct Guid
{
    std::array<std::uint8_t, 16> bytes{}; ///< In text order.
    bool operator==(const Guid&) const = default;
};

using Bytes = std::vector<std::uint8_t>;
using Null = std::monostate;

/// A cell. Texts are UTF-8. BYTE, INT and LONG columns give std::int32_t.
using Value = std::variant<Null, bool, std::int32_t, float, double, Money, DateTime, Numeric, Guid, std::string, Bytes>;

[[nodiscard]] inline bool isNull(const Value& value)
{
    return std::holds_alternative<Null>(value);
}

/// What a column holds, by its number in the file.
enum class ColumnType : std::uint8_t {
    Bool = 0x01,
    Byte = 0x02,
    Int = 0x03,
    Long = 0x04,
    Money = 0x05,
    Float = 0x06,
    Double = 0x07,
    Date = 0x08,
    Binary = 0x09,
    Text = 0x0A,
    Ole = 0x0B,
    Memo = 0x0C,
    Guid = 0x0F,
    Numeric = 0x10,
    BigBinary = 0x11
};

/// Stable address of a row: it survives updates that move the row's bytes.
struct RowId
{
    std::uint32_t page = 0;
    std::uint8_t slot = 0;
    auto operator<=>(const RowId&) const = default;
};

/// The machine's clock as the file counts it: days since 1899-12-30, to the millisecond.
[[nodiscard]] double localTime();
/// The same to the second, as dates in rows are kept: equal-looking dates are then equal.
[[nodiscard]] double localSecond();

/// All digits with a point, as many decimals as the scale; never an exponent.
[[nodiscard]] std::string decimalText(const Numeric& decimal);
/// Sign, digits, a point and an exponent, each but the digits optional; nullopt for any other text and for a number
/// that 38 digits do not hold exactly.
[[nodiscard]] std::optional<Numeric> parseDecimal(std::string_view plain);
/// The same number with another count of decimals, surplus ones cut off; nullopt when 38 digits do not hold it.
[[nodiscard]] std::optional<Numeric> withScale(Numeric decimal, int scale);
/// -1, 0, 1; whatever the scales.
[[nodiscard]] int compareDecimals(const Numeric& a, const Numeric& b);

/// Digits before and behind the point, leading zeros not counted.
[[nodiscard]] int digitCount(const Numeric& decimal);

[[nodiscard]] double toDouble(const Numeric& decimal); ///< The nearest double.
[[nodiscard]] Numeric toDecimal(Money money);
/// Half to even at the fourth decimal; nullopt beyond the type.
[[nodiscard]] std::optional<Money> toMoney(const Numeric& decimal);

} // namespace accessfile
