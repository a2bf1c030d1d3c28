#pragma once

#include "accessfile/Value.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <vector>

namespace bench {

/// One row of a bulk fill, a value per named column; each of the column's own type on Access.
using BulkRow = std::vector<accessfile::Value>;

/// Puts many rows into a table past the SQL layer: through the storage of an Access file, or by long inserts through
/// the server's own client.
class BulkRows
{
public:
    /// Access: path of a file that nobody has open. MySQL: name of a database of the shared server.
    BulkRows(bool isMySql, QString database);

    void add(const QString& table, const QStringList& columns, int count, const std::function<BulkRow(int)>& row);

private:
    void addToFile(const QString& table, const QStringList& columns, int count,
                   const std::function<BulkRow(int)>& row) const;
    void addToServer(const QString& table, const QStringList& columns, int count,
                     const std::function<BulkRow(int)>& row) const;

    bool m_isMySql;
    QString m_database;
};

} // namespace bench
