#include "platform/ado/OdbcSession.h"

#include "platform/ado/IgnoredErrors.h"
#include "platform/ado/OdbcDrivers.h"

#include <array>
#include <chrono>
#include <clocale>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace ado {

namespace odbc {

namespace {

std::unique_ptr<Link> connect(const OpenRequest& request)
{
    auto link = std::make_unique<Link>();
    QString connectionString = request.connectionString;
    if (!request.user.isEmpty()) {
        connectionString += QStringLiteral(";UID=%1;PWD=%2").arg(request.user, request.password);
    }
    if (request.connectionTimeout > 0) {
        SQLSetConnectAttrW(link->connection.get(), SQL_ATTR_LOGIN_TIMEOUT,
                           asPointer(static_cast<SQLULEN>(request.connectionTimeout)), 0);
    }
    const SQLRETURN result =
        SQLDriverConnectW(link->connection.get(), nullptr, wide(connectionString),
                          static_cast<SQLSMALLINT>(connectionString.size()), nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT);
    if (!SQL_SUCCEEDED(result)) {
        throw diagnosis(SQL_HANDLE_DBC, link->connection.get());
    }
    link->isConnected = true;
    return link;
}

std::unique_ptr<OdbcSession> open(const OpenRequest& request)
{
    return std::make_unique<OdbcSession>(connect(request), request.commandTimeout);
}

/// What the connecting thread and the waiting one share. The one that comes last frees it.
struct Attempt
{
    std::mutex mutex;
    std::condition_variable ended;
    bool isEnded = false;
    std::unique_ptr<OdbcSession> session;
    std::exception_ptr error;
};

/// Opens a session, but waits no longer than the limit: drivers accept a limit without keeping it. A thread that still
/// hangs is left to itself; what it gets in the end is closed unseen.
std::unique_ptr<OdbcSession> openInTime(const OpenRequest& request)
{
    const auto attempt = std::make_shared<Attempt>();
    std::thread([attempt, request] {
        std::unique_ptr<OdbcSession> session;
        std::exception_ptr error;
        try {
            session = open(request);
        } catch (...) {
            error = std::current_exception();
        }
        const std::lock_guard lock(attempt->mutex);
        attempt->session = std::move(session);
        attempt->error = error;
        attempt->isEnded = true;
        attempt->ended.notify_one();
    }).detach();

    std::unique_lock lock(attempt->mutex);
    if (!attempt->ended.wait_for(lock, std::chrono::seconds(request.connectionTimeout),
                                 [&attempt] { return attempt->isEnded; })) {
        constexpr int TimeoutExpired = -2147217871;
        throw Error(TimeoutExpired, QStringLiteral("Tempo limite de conexão expirado: o servidor não respondeu em %1 "
                                                   "segundos.")
                                        .arg(request.connectionTimeout));
    }
    if (attempt->error) {
        std::rethrow_exception(attempt->error);
    }
    return std::move(attempt->session);
}

} // namespace

OdbcSession::OdbcSession(std::unique_ptr<Link> link, int commandTimeout)
    : m_link(std::move(link))
    , m_commandTimeout(commandTimeout)
{
    const QString product = information(SQL_DBMS_NAME);
    m_dialect.isMySql = product.contains(QLatin1StringView("mysql"), Qt::CaseInsensitive) ||
                        product.contains(QLatin1StringView("mariadb"), Qt::CaseInsensitive);
    m_dialect.identifierQuote = information(SQL_IDENTIFIER_QUOTE_CHAR);
    if (m_dialect.isMySql) {
        // The longest that every server takes, 24 days: the connection outlives idle days and holidays.
        ask(QStringLiteral("SET SESSION wait_timeout = 2147483"));
        if (m_commandTimeout > 0) {
            ask(QStringLiteral("SET SESSION max_statement_time = %1").arg(m_commandTimeout));
        }
    }
}

void OdbcSession::ask(const QString& statement) const
{
    try {
        (void)run(statement);
    } catch (const Error& error) {
        platform::noteIgnored(error);
    }
}

Error OdbcSession::failureOf(const Statement& statement, const QString& text) const
{
    constexpr int NoSuchTable = 1146;
    const Error error = diagnosis(SQL_HANDLE_STMT, statement.get(), text);
    if (error.number() != NoSuchTable || !m_dialect.isMySql) {
        return error;
    }
    const QString question = QStringLiteral("SELECT @@lower_case_table_names");
    const Statement setting = makeStatement();
    if (!SQL_SUCCEEDED(SQLExecDirectW(setting.get(), wide(question), static_cast<SQLINTEGER>(question.size())))) {
        return error;
    }
    const RowSet answer = fetchRows(setting, question);
    if (answer.rowCount() == 0 || answer.value(0, 0).textOrEmpty() != u"0") {
        return error;
    }
    return {error.number(),
            error.text() + QStringLiteral("\n\nO servidor distingue maiúsculas de minúsculas nos nomes das tabelas. "
                                          "Configure nele lower_case_table_names=1."),
            error.statement(), error.sqlState()};
}

QString OdbcSession::information(SQLUSMALLINT kind) const
{
    std::array<SQLWCHAR, 128> text{};
    SQLSMALLINT length = 0;
    const SQLRETURN result = SQLGetInfoW(m_link->connection.get(), kind, text.data(),
                                         static_cast<SQLSMALLINT>(text.size() * sizeof(SQLWCHAR)), &length);
    return SQL_SUCCEEDED(result) ? QString::fromUtf16(reinterpret_cast<const char16_t*>(text.data())) : QString();
}

Statement OdbcSession::makeStatement() const
{
    Statement statement(m_link->connection.get());
    if (m_commandTimeout > 0) { // As far as the driver grants it.
        SQLSetStmtAttrW(statement.get(), SQL_ATTR_QUERY_TIMEOUT, asPointer(static_cast<SQLULEN>(m_commandTimeout)), 0);
    }
    return statement;
}

Statement OdbcSession::run(const QString& text) const
{
    Statement statement = makeStatement();
    const SQLRETURN result = SQLExecDirectW(statement.get(), wide(text), static_cast<SQLINTEGER>(text.size()));
    if (!SQL_SUCCEEDED(result) && result != SQL_NO_DATA) {
        throw failureOf(statement, text);
    }
    return statement;
}

RowSet OdbcSession::query(const QString& select)
{
    return fetchRows(run(select), select);
}

void OdbcSession::execute(const QString& statement)
{
    (void)run(statement);
}

} // namespace odbc

std::unique_ptr<Session> openOdbcSession(const OpenRequest& request)
{
    odbc::registerDrivers();
    // A decimal comma in the C library breaks number reading inside drivers; all our own reading is independent of it.
    std::setlocale(LC_NUMERIC, "C");
    if (request.connectionTimeout > 0) {
        return odbc::openInTime(request);
    }
    return odbc::open(request);
}

} // namespace ado
