#include "platform/ado/Connection.h"

#include "platform/ado/Error.h"
#include "platform/ado/Session.h"
#include "platform/ado/Trace.h"

namespace ado {

Connection::Connection() = default;
Connection::~Connection() = default;

void Connection::Open(const QString& connectionString, const QString& user, const QString& password, int)
{
    if (m_session) {
        throw Error(3705, QStringLiteral("A operação não é permitida quando o objeto está aberto."));
    }
    m_session = openSession({connectionString, user, password, m_connectionTimeout, m_commandTimeout});
}

QStringList Connection::warnings() const
{
    return m_session ? m_session->warnings() : QStringList();
}

void Connection::Execute(const QString& statement, int)
{
    traceExecute(statement);
    session(statement).execute(statement);
}

Session& Connection::session(const QString& statement) const
{
    if (!m_session) {
        throw Error(3704, QStringLiteral("A operação não é permitida quando o objeto está fechado."), statement);
    }
    return *m_session;
}

Turn::Turn(Connection& connection)
    : m_session(&connection.session({}))
{
    m_session->takeTurn();
}

void Turn::giveBack() noexcept
{
    if (m_session)
        m_session->giveTurnBack();
    m_session = nullptr;
}

} // namespace ado
