#pragma once

#include "platform/vb/Currency.h"
#include "platform/vb/Decimal.h"
#include "platform/vb/Variant.h"

#include <string>

namespace vb {

/// Litres or money added up without any rounding: what is shown of it is rounded once. Four decimals in 64 bits hold
/// nearly every amount; the digits of the others are kept beside them.
class ExactSum
{
public:
    ExactSum() = default;
    explicit ExactSum(const Decimal& amount);
    /// Errors as of CDec.
    explicit ExactSum(const Variant& amount);
    explicit ExactSum(Currency amount)
        : m_plain(amount)
    {}

    ExactSum& operator+=(const ExactSum& other);
    [[nodiscard]] Decimal toDecimal() const;
    /// Appends the sum as "##,#0.00".
    void appendTo(std::string& utf8) const;

private:
    Currency m_plain;
    Decimal m_rest;
};

} // namespace vb
