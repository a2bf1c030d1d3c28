#pragma once

#include <QtGlobal>

#include <compare>

namespace vb {

/// Fixed-point number of four decimals in 64 bits. Money and litres that are subtracted are of this type.
/// Addition and subtraction raise vb::Error 6 (overflow) instead of wrapping.
class Currency
{
public:
    static constexpr qint64 Scale = 10'000;

    constexpr Currency() = default;
    [[nodiscard]] static constexpr Currency fromScaled(qint64 tenThousandths) { return Currency(tenThousandths); }

    [[nodiscard]] constexpr qint64 scaled() const { return m_scaled; }
    [[nodiscard]] double toDouble() const;

    [[nodiscard]] Currency operator+(Currency other) const;
    [[nodiscard]] Currency operator-(Currency other) const;
    [[nodiscard]] Currency operator-() const;
    Currency& operator+=(Currency other) { return *this = *this + other; }
    Currency& operator-=(Currency other) { return *this = *this - other; }
    constexpr auto operator<=>(const Currency&) const = default;

private:
    explicit constexpr Currency(qint64 scaled)
        : m_scaled(scaled)
    {}

    qint64 m_scaled = 0;
};

} // namespace vb
