#pragma once

#include "platform/vb/Currency.h"
#include "platform/vb/Date.h"

#include <QString>

#include <variant>

namespace vb {

/// A value as a field or a control holds it: Null, whole number, double, Currency, date or text.
/// Booleans of a database arrive as the whole numbers -1 and 0.
class Variant
{
public:
    struct NullType
    {
        bool operator==(const NullType&) const = default;
    };

    Variant() = default; ///< Null.
    Variant(int value)
        : m_value(static_cast<qint64>(value))
    {}
    Variant(qint64 value)
        : m_value(value)
    {}
    Variant(double value)
        : m_value(value)
    {}
    Variant(Currency value)
        : m_value(value)
    {}
    Variant(Date value)
        : m_value(value)
    {}
    Variant(QString value)
        : m_value(std::move(value))
    {}

    [[nodiscard]] bool isNull() const { return std::holds_alternative<NullType>(m_value); }
    [[nodiscard]] bool isText() const { return std::holds_alternative<QString>(m_value); }
    [[nodiscard]] bool isDate() const { return std::holds_alternative<Date>(m_value); }

    /// The value joined to an empty text: Null becomes "", numbers and dates their plain regional text.
    [[nodiscard]] QString textOrEmpty() const;
    /// The same, but Null raises vb::Error 94.
    [[nodiscard]] QString text() const;

    [[nodiscard]] const std::variant<NullType, qint64, double, Currency, Date, QString>& value() const
    {
        return m_value;
    }
    bool operator==(const Variant&) const = default;

private:
    std::variant<NullType, qint64, double, Currency, Date, QString> m_value;
};

} // namespace vb
