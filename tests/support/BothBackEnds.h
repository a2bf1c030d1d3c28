#pragma once

#include "platform/ado/Connection.h"
#include "platform/ado/Error.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <functional>

namespace support {

/// A fresh, empty database on one of the two back ends, with the program's own connection to it.
class BothBackEnds
{
public:
    /// Makes one data row per back end for a test function: column "backEnd" with "access" and "mysql".
    static void addRows();
    /// Why a back end cannot be had here; empty when it can.
    [[nodiscard]] static QString missing(const QString& backEnd);

    /// Raises std::runtime_error or ado::Error when the database cannot be made.
    explicit BothBackEnds(const QString& backEnd);

    [[nodiscard]] bool isMySql() const { return m_isMySql; }
    [[nodiscard]] ado::Connection& connection() { return m_connection; }
    [[nodiscard]] const QString& connectionString() const { return m_connectionString; }
    /// Access: path of the file. MySQL: name of the database.
    [[nodiscard]] const QString& database() const { return m_database; }

    /// Runs statements one by one over the connection.
    void script(const QStringList& statements);
    /// The rows of a table in stored order, read from outside the program (mdb-export, or the server's own client):
    /// the named columns as texts, "NULL" for Null, dates as yyyy-mm-dd hh:mm:ss.
    [[nodiscard]] QList<QStringList> table(const QString& name, const QStringList& columns) const;
    /// The same with "|" between the cells of a row; columns separated by a blank.
    [[nodiscard]] QStringList rows(const QString& name, const QString& columns) const;

private:
    bool m_isMySql;
    QTemporaryDir m_folder;
    QString m_database;
    QString m_connectionString;
    ado::Connection m_connection;
};

/// The same for an Access file that exists already.
[[nodiscard]] QList<QStringList> readAccessTable(const QString& file, const QString& name, const QStringList& columns);

/// The error that an operation raises; its number is 0 when it raises none.
[[nodiscard]] ado::Error errorOf(const std::function<void()>& operation);

} // namespace support

/// First line of a test function over both back ends: the database, or a skip where that back end cannot be had.
#define FRESH_DATABASE(variable)                                                                                       \
    QFETCH(QString, backEnd);                                                                                          \
    if (const QString missing = support::BothBackEnds::missing(backEnd); !missing.isEmpty()) {                         \
        QSKIP(qPrintable(missing));                                                                                    \
    }                                                                                                                  \
    support::BothBackEnds variable(backEnd)
