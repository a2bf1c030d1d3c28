#include "platform/vb/Currency.h"

#include "platform/vb/Error.h"

#include <limits>

namespace vb {

namespace {

constexpr qint64 Lowest = std::numeric_limits<qint64>::min();
constexpr qint64 Highest = std::numeric_limits<qint64>::max();

} // namespace

double Currency::toDouble() const
{
    return static_cast<double>(m_scaled) / static_cast<double>(Scale);
}

Currency Currency::operator+(Currency other) const
{
    const bool overflows =
        other.m_scaled > 0 ? m_scaled > Highest - other.m_scaled : m_scaled < Lowest - other.m_scaled;
    if (overflows)
        throw Error(Error::Overflow);
    return Currency(m_scaled + other.m_scaled);
}

Currency Currency::operator-(Currency other) const
{
    const bool overflows =
        other.m_scaled > 0 ? m_scaled < Lowest + other.m_scaled : m_scaled > Highest + other.m_scaled;
    if (overflows)
        throw Error(Error::Overflow);
    return Currency(m_scaled - other.m_scaled);
}

Currency Currency::operator-() const
{
    return Currency() - *this;
}

} // namespace vb
