#pragma once

#include <QByteArray>
#include <QString>

#include <exception>

namespace vb {

/// Run-time error of a conversion or of a record access. `number` follows the language runtime whose rules the
/// program keeps: 6 overflow, 13 type mismatch, 94 invalid use of Null, 3021 no current record.
class Error : public std::exception
{
public:
    enum Number { Overflow = 6, TypeMismatch = 13, InvalidUseOfNull = 94, NoCurrentRecord = 3021 };

    explicit Error(Number number);

    [[nodiscard]] int number() const noexcept { return m_number; }
    /// The runtime's own text for the number, in Portuguese.
    [[nodiscard]] QString description() const;
    [[nodiscard]] const char* what() const noexcept override;

private:
    Number m_number;
    QByteArray m_what;
};

} // namespace vb
