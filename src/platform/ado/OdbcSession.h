#pragma once

#include "platform/ado/OdbcHandles.h"
#include "platform/ado/OdbcStatements.h"
#include "platform/ado/Session.h"

namespace ado::odbc {

/// A source behind an ODBC driver. Statements go to the driver to the letter, one statement handle each.
class OdbcSession : public Session
{
public:
    /// `commandTimeout` in seconds, 0 for the driver's default.
    OdbcSession(std::unique_ptr<Link> link, int commandTimeout);

    [[nodiscard]] RowSet query(const QString& select) override;
    void execute(const QString& statement) override;
    void prepareToAdd(const QString& select) override;
    void addRow(const QString& select, const std::vector<FieldValue>& values) override;
    void updateRow(const QString& select, const RowSet& rows, qsizetype row,
                   const std::vector<FieldValue>& changes) override;

private:
    /// What a SELECT reads, known without reading a row.
    struct Description
    {
        std::vector<ResultColumn> columns;
        QString storedTable; ///< The table's name as the source keeps it; empty where the driver does not say.
    };

    [[nodiscard]] Statement makeStatement() const;
    /// Executes and returns the handle, its rows not fetched yet.
    [[nodiscard]] Statement run(const QString& text) const;
    [[nodiscard]] Description describe(const QString& select) const;
    /// Columns of the primary key, else of a unique key, that the description holds whole; empty without one.
    [[nodiscard]] QStringList keyColumns(const QStringList& table, const Description& description) const;
    [[nodiscard]] QString information(SQLUSMALLINT kind) const;
    /// Asks a MySQL server for something that not every one grants.
    void ask(const QString& statement) const;
    /// The error of a statement that failed. A table that is not there because the server tells capitals apart is named
    /// so, with the setting that helps.
    [[nodiscard]] Error failureOf(const Statement& statement, const QString& text) const;

    std::unique_ptr<Link> m_link;
    int m_commandTimeout;
    Dialect m_dialect;
};

} // namespace ado::odbc
