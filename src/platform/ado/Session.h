#pragma once

#include "platform/ado/RowSet.h"

#include <QString>

#include <memory>
#include <vector>

namespace ado {

/// A value to be written to a column, as the program assigned it.
struct FieldValue
{
    QString name;
    vb::Variant value;
};

/// An open data source: the back ends implement it, Connection and Recordset are its only users.
/// All members raise ado::Error.
class Session
{
public:
    virtual ~Session() = default;

    /// Rows of a SELECT.
    [[nodiscard]] virtual RowSet query(const QString& select) = 0;
    /// A statement without rows.
    virtual void execute(const QString& statement) = 0;
    /// Checks that a SELECT names an existing table and columns, without reading a row.
    virtual void prepareToAdd(const QString& select) = 0;
    /// Adds a row to the one table that the SELECT reads. Columns that are not named get their default.
    virtual void addRow(const QString& select, const std::vector<FieldValue>& values) = 0;
    /// Changes one row of `rows` (which came from the SELECT) in its table; `row` is its position. Error::Conflict
    /// where it is not the row any more that was read.
    virtual void updateRow(const QString& select, const RowSet& rows, qsizetype row,
                           const std::vector<FieldValue>& changes) = 0;

    /// Keeps other programs from writing until giveTurnBack, where the source is a file that they take turns at.
    /// Raises ado::Error when one of them does not leave it in time.
    virtual void takeTurn() {}
    virtual void giveTurnBack() noexcept {}
    /// What the operator should know about the source, as sentences.
    [[nodiscard]] virtual QStringList warnings() const { return {}; }
};

/// What a provider is told when a source is opened.
struct OpenRequest
{
    QString connectionString;
    QString user;
    QString password;
    int connectionTimeout = 0; ///< Seconds, 0 = driver's default.
    int commandTimeout = 0;    ///< Of a data file: how long a statement waits for other programs.
};

/// Opens the source by the provider that the connection string asks for: the ODBC driver of that name where one is
/// installed, else the Access engine for Access strings. Raises ado::Error.
[[nodiscard]] std::unique_ptr<Session> openSession(const OpenRequest& request);

/// Whether an ODBC driver of the name in the program's Access string is installed, and so serves the data file.
[[nodiscard]] bool hasAccessDriver();

/// The two providers behind openSession.
[[nodiscard]] std::unique_ptr<Session> openOdbcSession(const OpenRequest& request);
[[nodiscard]] std::unique_ptr<Session> openAccessSession(const OpenRequest& request);

} // namespace ado
