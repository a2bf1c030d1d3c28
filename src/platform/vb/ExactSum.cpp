#include "platform/vb/ExactSum.h"

#include "platform/vb/Amount.h"
#include "platform/vb/Conversion.h"
#include "platform/vb/Format.h"

#include <limits>

namespace vb {

namespace {

constexpr int CurrencyDecimals = 4;

Decimal decimalOf(Currency amount)
{
    return Decimal::fromInteger(amount.scaled(), CurrencyDecimals);
}

/// Two of them can be added.
bool isSmall(Currency amount)
{
    constexpr qint64 Limit = std::numeric_limits<qint64>::max() / 2;
    return amount.scaled() < Limit && amount.scaled() > -Limit;
}

} // namespace

ExactSum::ExactSum(const Decimal& amount)
{
    const std::optional<qint64> scaled = amount.toScaledHalfEven(CurrencyDecimals);
    if (scaled && amount.digits.size() - amount.point <= CurrencyDecimals)
        m_plain = Currency::fromScaled(*scaled);
    else
        m_rest = amount;
}

ExactSum::ExactSum(const Variant& amount)
    : ExactSum(CDec(amount))
{}

ExactSum& ExactSum::operator+=(const ExactSum& other)
{
    if (isSmall(m_plain) && isSmall(other.m_plain)) {
        m_plain += other.m_plain;
    } else {
        m_rest = m_rest + decimalOf(m_plain) + decimalOf(other.m_plain);
        m_plain = {};
    }
    if (!other.m_rest.isZero())
        m_rest = m_rest + other.m_rest;
    return *this;
}

Decimal ExactSum::toDecimal() const
{
    return decimalOf(m_plain) + m_rest;
}

void ExactSum::appendTo(std::string& utf8) const
{
    if (m_rest.isZero())
        appendAmount(utf8, m_plain);
    else
        utf8 += Format(toDecimal(), u"##,#0.00").toStdString();
}

} // namespace vb
