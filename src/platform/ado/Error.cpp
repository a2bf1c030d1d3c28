#include "platform/ado/Error.h"

#include <utility>

namespace ado {

Error::Error(int number, QString text, QString statement, QString sqlState)
    : m_number(number)
    , m_text(std::move(text))
    , m_statement(std::move(statement))
    , m_sqlState(std::move(sqlState))
    , m_what((m_statement.isEmpty() ? m_text : m_text + QStringLiteral("\n") + m_statement).toUtf8())
{}

} // namespace ado
