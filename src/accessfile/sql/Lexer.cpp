#include "accessfile/sql/Lexer.h"

#include "accessfile/format/Utf8.h"
#include "accessfile/sql/Messages.h"
#include "accessfile/sql/TextOrdering.h"

#include <algorithm>

namespace accessfile::sql {

namespace {

/// The longest statement that is looked at; a long text column holds far less than this.
constexpr std::size_t maximumStatement = 1U << 20U;

bool isSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool startsName(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' || static_cast<unsigned char>(c) >= 0x80;
}

bool continuesName(char c)
{
    return startsName(c) || isDigit(c) || c == '$';
}

} // namespace

bool Token::isWord(std::string_view upperCase) const
{
    return type == Type::Name && std::equal(text.begin(), text.end(), upperCase.begin(), upperCase.end(),
                                            [](char a, char b) { return (a >= 'a' && a <= 'z' ? a - 32 : a) == b; });
}

bool sameName(std::string_view a, std::string_view b)
{
    return a == b || foldCase(a) == foldCase(b);
}

Lexer::Lexer(std::string_view statement)
    : m_statement(statement)
{
    if (statement.size() > maximumStatement)
        throw tooComplex();
    if (!isValidUtf8(statement) || statement.find('\0') != std::string_view::npos)
        throw invalidStatement();
}

Token Lexer::next()
{
    while (m_position < m_statement.size() && isSpace(m_statement[m_position]))
        ++m_position;
    Token token;
    token.at = m_position;
    token.end = m_position;
    if (m_position == m_statement.size())
        return token;

    const char c = m_statement[m_position];
    if (startsName(c)) {
        std::size_t end = m_position;
        while (end < m_statement.size() && continuesName(m_statement[end]))
            ++end;
        token.type = Token::Type::Name;
        token.text = m_statement.substr(m_position, end - m_position);
        m_position = end;
    } else if (c == '[') {
        token = name(']');
    } else if (c == '`') {
        token = name('`');
    } else if (c == '\'' || c == '"') {
        token = text(c);
    } else if (c == '#') {
        token = date();
    } else if (isDigit(c) ||
               (c == '.' && m_position + 1 < m_statement.size() && isDigit(m_statement[m_position + 1]))) {
        token = number();
    } else {
        const std::string_view pair = m_statement.substr(m_position, 2);
        const bool two = pair == "<>" || pair == "<=" || pair == ">=" || pair == "!=";
        token.type = Token::Type::Symbol;
        token.text = two ? pair : pair.substr(0, 1);
        m_position += token.text.size();
    }
    token.end = m_position;
    return token;
}

Token Lexer::name(char closing)
{
    Token token;
    token.type = Token::Type::QuotedName;
    token.at = m_position;
    const std::size_t end = m_statement.find(closing, m_position + 1);
    if (end == std::string_view::npos || end == m_position + 1)
        throw expressionSyntax(m_statement.substr(m_position));
    token.text = m_statement.substr(m_position + 1, end - m_position - 1);
    m_position = end + 1;
    return token;
}

Token Lexer::text(char quote)
{
    Token token;
    token.type = Token::Type::Text;
    token.at = m_position;
    std::size_t position = m_position + 1;
    for (;;) {
        const std::size_t end = m_statement.find(quote, position);
        if (end == std::string_view::npos)
            throw textSyntax(m_statement.substr(m_position));
        token.text += m_statement.substr(position, end - position);
        position = end + 1;
        if (position == m_statement.size() || m_statement[position] != quote)
            break;
        token.text += quote;
        ++position;
    }
    m_position = position;
    return token;
}

Token Lexer::date()
{
    Token token;
    token.type = Token::Type::Date;
    token.at = m_position;
    const std::size_t end = m_statement.find('#', m_position + 1);
    if (end == std::string_view::npos)
        throw dateSyntax(m_statement.substr(m_position));
    token.text = m_statement.substr(m_position + 1, end - m_position - 1);
    m_position = end + 1;
    return token;
}

Token Lexer::number()
{
    Token token;
    token.type = Token::Type::Number;
    token.at = m_position;
    std::size_t end = m_position;
    const auto digits = [&] {
        while (end < m_statement.size() && isDigit(m_statement[end]))
            ++end;
    };
    digits();
    if (end < m_statement.size() && m_statement[end] == '.') {
        ++end;
        digits();
    }
    if (end < m_statement.size() && (m_statement[end] == 'e' || m_statement[end] == 'E')) {
        std::size_t exponent = end + 1;
        if (exponent < m_statement.size() && (m_statement[exponent] == '+' || m_statement[exponent] == '-'))
            ++exponent;
        if (exponent < m_statement.size() && isDigit(m_statement[exponent])) {
            end = exponent;
            digits();
        }
    }
    token.text = m_statement.substr(m_position, end - m_position);
    m_position = end;
    return token;
}

} // namespace accessfile::sql
