#pragma once

#include <QRegularExpression>
#include <QString>
#include <QStringList>

namespace support {

/// Statements that insert rows into a table. A row is the values of the columns as literals; @2026-03-14@ is a day as
/// the back end takes it.
inline QStringList inserts(bool isMySql, const QString& table, const QString& columns, const QStringList& rows)
{
    const QRegularExpression day(QStringLiteral("@(\\d+)-(\\d+)-(\\d+)@"));
    const QString literal = isMySql ? QStringLiteral("'\\1-\\2-\\3'") : QStringLiteral("#\\2/\\3/\\1#");
    QStringList statements;
    for (const QString& row : rows)
        statements << QStringLiteral("INSERT INTO %1 (%2) VALUES (%3)")
                          .arg(table, columns, QString(row).replace(day, literal));
    return statements;
}

} // namespace support
