#pragma once

#include <QVarLengthArray>
#include <QtGlobal>

#include <optional>

namespace vb {

/// A number as the decimal digits that stand for it, the form in which numbers are rounded and written.
/// Value: 0.d1d2d3... times ten to the power of `point`. No leading and no trailing zeros; no digits is zero.
struct Decimal
{
    bool negative = false;
    int point = 0;
    QVarLengthArray<char, 32> digits;

    /// The 15 significant digits of a finite double.
    [[nodiscard]] static Decimal fromDouble(double value);
    /// All digits of a whole number, divided by ten to the power of `decimals`.
    [[nodiscard]] static Decimal fromInteger(qint64 value, int decimals);
    [[nodiscard]] static Decimal fromUnsigned(quint64 value);

    [[nodiscard]] bool isZero() const { return digits.isEmpty(); }
    /// Nearest double; infinite when it is too large.
    [[nodiscard]] double toDouble() const;
    /// Keeps `decimals` decimals, halves away from zero. The sign stays even when no digit does.
    void roundHalfAway(int decimals);
    /// The value times ten to the power of `decimals`, halves to even; nullopt when it does not fit.
    [[nodiscard]] std::optional<qint64> toScaledHalfEven(int decimals) const;
    void dropTrailingZeros();
};

/// Exact, with as many digits as it takes.
[[nodiscard]] Decimal operator*(const Decimal& one, const Decimal& other);
[[nodiscard]] Decimal operator+(const Decimal& one, const Decimal& other);

} // namespace vb
