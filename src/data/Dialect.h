#pragma once

#include <QDate>
#include <QString>

namespace data {

/// How dates are written into SQL text on the back end in use. Every window that filters on a date or
/// stores one asks here.
class Dialect
{
public:
    /// `connectionType` is the settings value as read. Only "mysql", to the letter, selects MySQL.
    explicit Dialect(const QString& connectionType = {});

    [[nodiscard]] bool isMySql() const { return m_isMySql; }

    /// Delimiter, date, delimiter: the literal of every filter on a date column.
    [[nodiscard]] QString dateLiteral(QDate date) const;

    /// Text of a date and a time for a statement that stores them, without the quotes. An empty text is "no date" or
    /// "no time". Access gets the day first, although its filter literals are month first.
    [[nodiscard]] QString SqlDateTime(const QString& dateText, const QString& timeText) const;

private:
    bool m_isMySql;
    QString m_dateDelimiter; ///< The blanks around it are part of the statements' text.
    QString m_dateFormat;
};

} // namespace data
