#include "support/BothBackEnds.h"

#include "accessfile/Storage.h"
#include "support/MariaDbServer.h"
#include "support/OutsideProgram.h"

#include <QRegularExpression>
#include <QTest>

#include <algorithm>
#include <stdexcept>

namespace support {

namespace {

/// Rows of a text with tab between cells and quotes (doubled inside) around texts.
QList<QStringList> parseCells(const QString& text)
{
    QList<QStringList> rows;
    QStringList row;
    QString cell;
    bool isQuoted = false;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar character = text[i];
        if (character == QLatin1Char('"')) {
            if (isQuoted && i + 1 < text.size() && text[i + 1] == QLatin1Char('"')) {
                cell += character;
                ++i;
            } else {
                isQuoted = !isQuoted;
            }
        } else if (!isQuoted && (character == QLatin1Char('\t') || character == QLatin1Char('\n'))) {
            row << std::exchange(cell, QString());
            if (character == QLatin1Char('\n')) {
                rows << std::exchange(row, QStringList());
            }
        } else {
            cell += character;
        }
    }
    return rows;
}

} // namespace

void BothBackEnds::addRows()
{
    QTest::addColumn<QString>("backEnd");
    QTest::newRow("access") << QStringLiteral("access");
    QTest::newRow("mysql") << QStringLiteral("mysql");
}

QString BothBackEnds::missing(const QString& backEnd)
{
    if (backEnd == QLatin1StringView("mysql") && !MariaDbServer::isInstalled()) {
        return QStringLiteral("no MariaDB server is installed");
    }
    return {};
}

BothBackEnds::BothBackEnds(const QString& backEnd)
    : m_isMySql(backEnd == QLatin1StringView("mysql"))
{
    if (m_isMySql) {
        MariaDbServer& server = MariaDbServer::shared();
        m_database = server.makeDatabase();
        m_connectionString = server.connectionString(m_database);
        m_connection.setConnectionTimeout(60);
        m_connection.setCommandTimeout(400);
        m_connection.setCursorLocation(ado::adUseClient);
    } else {
        m_database = m_folder.filePath(QStringLiteral("posto.mdb"));
        m_connectionString = QStringLiteral("Driver={Microsoft Access Driver (*.mdb)};Dbq=") + m_database +
                             QStringLiteral(";Uid=Admin;Pwd=8282;");
        accessfile::Storage::create(m_database.toStdString(), "8282");
    }
    m_connection.Open(m_connectionString);
}

void BothBackEnds::script(const QStringList& statements)
{
    for (const QString& statement : statements) {
        m_connection.Execute(statement);
    }
}

QList<QStringList> BothBackEnds::table(const QString& name, const QStringList& columns) const
{
    if (m_isMySql) {
        return MariaDbServer::shared().run(
            QStringLiteral("SELECT %1 FROM %2").arg(columns.join(QLatin1Char(',')), name), m_database);
    }
    return readAccessTable(m_database, name, columns);
}

QStringList BothBackEnds::rows(const QString& name, const QString& columns) const
{
    QStringList lines;
    for (const QStringList& row : table(name, columns.split(u' '))) {
        lines << row.join(u'|');
    }
    return lines;
}

QList<QStringList> readAccessTable(const QString& file, const QString& name, const QStringList& columns)
{
    const Outcome outcome = runOutside(
        QStringLiteral("mdb-export"),
        {QStringLiteral("-d"), QStringLiteral("\t"), QStringLiteral("-0"), QStringLiteral("NULL"), QStringLiteral("-D"),
         QStringLiteral("%Y-%m-%d %H:%M:%S"), QStringLiteral("-T"), QStringLiteral("%Y-%m-%d %H:%M:%S"), file, name});
    if (!outcome.succeeded()) {
        throw std::runtime_error("mdb-export: " + outcome.errors.toStdString());
    }
    const QList<QStringList> all = parseCells(QString::fromUtf8(outcome.output));
    QList<QStringList> rows;
    for (qsizetype i = 1; i < all.size(); ++i) {
        QStringList row;
        for (const QString& column : columns) {
            const qsizetype position = all.first().indexOf(
                QRegularExpression(QRegularExpression::escape(column), QRegularExpression::CaseInsensitiveOption));
            if (position < 0) {
                throw std::runtime_error("mdb-export: no column " + column.toStdString());
            }
            row << all[i].value(position);
        }
        rows << row;
    }
    return rows;
}

ado::Error errorOf(const std::function<void()>& operation)
{
    try {
        operation();
    } catch (const ado::Error& error) {
        return error;
    }
    return ado::Error(0, QStringLiteral("no error"));
}

} // namespace support
