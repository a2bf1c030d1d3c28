#pragma once

#include <QByteArray>
#include <QString>

#include <exception>

namespace ado {

/// Failure of a data source: the driver's or engine's number and text, and the statement that was refused.
class Error : public std::exception
{
public:
    /// An Update found its row changed or gone since it was read; nothing was written. Open, change and Update may be
    /// tried again.
    static constexpr int Conflict = 3197;

    Error(int number, QString text, QString statement = {}, QString sqlState = {});

    [[nodiscard]] int number() const noexcept { return m_number; }
    [[nodiscard]] const QString& text() const noexcept { return m_text; }
    /// Empty when the failure belongs to no statement (connecting).
    [[nodiscard]] const QString& statement() const noexcept { return m_statement; }
    /// The five characters of a driver's diagnosis; empty where there is none.
    [[nodiscard]] const QString& sqlState() const noexcept { return m_sqlState; }
    [[nodiscard]] const char* what() const noexcept override { return m_what.constData(); }

private:
    int m_number;
    QString m_text;
    QString m_statement;
    QString m_sqlState;
    QByteArray m_what;
};

} // namespace ado
