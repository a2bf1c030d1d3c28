#pragma once

#include <QString>

#include <memory>

namespace ado {

class Session;

enum CursorLocation { adUseServer = 2, adUseClient = 3 };
enum CommandOption { adOptionUnspecified = -1, adCmdText = 1 };

/// One connection to a data source. The connection string alone decides which provider serves it. Statements reach the
/// source to the letter. Every statement is appended to the file named by PLANILHA_SQL_TRACE, if that is set.
class Connection
{
public:
    Connection();
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// Seconds; 0 leaves the driver's default. Set before Open. The connection limit is kept even where the driver
    /// ignores it; the command limit is asked of the server as far as it grants one.
    void setConnectionTimeout(int seconds) { m_connectionTimeout = seconds; }
    void setCommandTimeout(int seconds) { m_commandTimeout = seconds; }
    void setCursorLocation(CursorLocation location) { m_cursorLocation = location; }

    /// Opens the source. Raises ado::Error when it cannot.
    void Open(const QString& connectionString, const QString& user = {}, const QString& password = {},
              int options = adOptionUnspecified);
    [[nodiscard]] bool isOpen() const { return m_session != nullptr; }

    /// What the operator should know about the source, as sentences.
    [[nodiscard]] QStringList warnings() const;

    /// Runs a statement that returns no rows. Raises ado::Error, also on a closed connection.
    void Execute(const QString& statement, int options = adOptionUnspecified);

private:
    friend class Recordset;
    friend class Turn;
    [[nodiscard]] Session& session(const QString& statement) const;

    int m_connectionTimeout = 0;
    int m_commandTimeout = 0;
    CursorLocation m_cursorLocation = adUseServer;
    std::unique_ptr<Session> m_session;
};

/// Statements that follow on each other without another program's in between, where the source is a file that programs
/// take turns at. No transaction: each statement is written as it is run. Raises ado::Error when the turn is not to be
/// had in time; nothing has been written then.
class Turn
{
public:
    explicit Turn(Connection& connection);
    ~Turn() { giveBack(); }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;
    /// Before anything that waits for the operator.
    void giveBack() noexcept;

private:
    Session* m_session;
};

} // namespace ado
