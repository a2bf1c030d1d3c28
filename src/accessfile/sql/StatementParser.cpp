#include "accessfile/sql/Messages.h"
#include "accessfile/sql/Parser.h"

#include <algorithm>
#include <array>

namespace accessfile::sql {

Parser::Parser(std::string_view text)
    : m_lexer(text)
{
    m_token = m_lexer.next();
}

void Parser::advance()
{
    m_lastEnd = m_token.end;
    if (m_next) {
        m_token = *std::move(m_next);
        m_next.reset();
    } else {
        m_token = m_lexer.next();
    }
}

const Token& Parser::peek()
{
    if (!m_next)
        m_next = m_lexer.next();
    return *m_next;
}

bool Parser::acceptSymbol(std::string_view symbol)
{
    if (!m_token.isSymbol(symbol))
        return false;
    advance();
    return true;
}

bool Parser::acceptWord(std::string_view upper)
{
    if (!m_token.isWord(upper))
        return false;
    advance();
    return true;
}

void Parser::expectSymbol(std::string_view symbol)
{
    if (!acceptSymbol(symbol))
        throw syntaxError(m_construct);
}

void Parser::expectWord(std::string_view upper)
{
    if (!acceptWord(upper))
        throw syntaxError(m_construct);
}

bool Parser::atName() const
{
    return m_token.type == Token::Type::Name || m_token.type == Token::Type::QuotedName;
}

std::string Parser::name()
{
    if (!atName())
        throw syntaxError(m_construct);
    std::string result = m_token.text;
    advance();
    return result;
}

std::string Parser::optionalAlias()
{
    static constexpr std::array<std::string_view, 8> following{"WHERE", "ORDER",  "GROUP", "HAVING",
                                                               "SET",   "VALUES", "UNION", "SELECT"};
    if (acceptWord("AS"))
        return name();
    const bool keyword =
        std::any_of(following.begin(), following.end(), [&](std::string_view word) { return m_token.isWord(word); });
    return atName() && !keyword ? name() : std::string();
}

void Parser::expectEnd()
{
    bool ended = false;
    while (acceptSymbol(";"))
        ended = true;
    if (m_token.type == Token::Type::End)
        return;
    if (ended)
        throw trailingCharacters();
    if (m_clause != 0)
        failExpression();
    throw syntaxError(m_construct);
}

Statement Parser::statement()
{
    Statement result;
    if (acceptWord("SELECT"))
        result = select();
    else if (acceptWord("INSERT"))
        result = insert();
    else if (acceptWord("UPDATE"))
        result = update();
    else if (acceptWord("DELETE"))
        result = deleteRows();
    else if (acceptWord("CREATE"))
        result = create();
    else if (acceptWord("ALTER"))
        result = alter();
    else if (acceptWord("DROP"))
        result = drop();
    else
        throw invalidStatement();
    expectEnd();
    return result;
}

ExpressionPointer Parser::loneExpression()
{
    static_cast<void>(acceptSymbol("="));
    ExpressionPointer result = clause();
    if (m_token.type != Token::Type::End)
        failExpression();
    return result;
}

SelectStatement Parser::select()
{
    m_construct = "query";
    SelectStatement result;
    static_cast<void>(acceptWord("ALL"));
    if (m_token.isWord("DISTINCT") || m_token.isWord("TOP"))
        throw notServed("SELECT " + m_token.text);
    selectItems(result);
    if (acceptWord("FROM")) {
        m_construct = "FROM clause";
        m_clause = 0;
        result.table = name();
        result.alias = optionalAlias();
        if (m_token.isSymbol(",") || m_token.isWord("INNER") || m_token.isWord("LEFT"))
            throw notServed("several tables");
    }
    if (acceptWord("WHERE"))
        result.where = clause();
    if (m_token.isWord("GROUP") || m_token.isWord("HAVING") || m_token.isWord("UNION"))
        throw notServed(m_token.text);
    if (acceptWord("ORDER")) {
        m_construct = "ORDER BY clause";
        m_clause = 0;
        expectWord("BY");
        orderItems(result);
    }
    return result;
}

void Parser::selectItems(SelectStatement& select)
{
    do {
        SelectItem item;
        if (acceptSymbol("*")) {
            item.everything = true;
        } else {
            item.expression = clause();
            item.everything = item.expression->form == Expression::Form::Name && item.expression->name == "*";
            if (item.everything)
                item.qualifier = item.expression->qualifier;
            else if (acceptWord("AS"))
                item.alias = name();
        }
        select.items.push_back(std::move(item));
    } while (acceptSymbol(","));
}

void Parser::orderItems(SelectStatement& select)
{
    do {
        OrderItem item;
        item.expression = clause();
        if (acceptWord("DESC"))
            item.ascending = false;
        else
            static_cast<void>(acceptWord("ASC"));
        select.order.push_back(std::move(item));
    } while (acceptSymbol(","));
}

InsertStatement Parser::insert()
{
    m_construct = "INSERT INTO statement";
    InsertStatement result;
    expectWord("INTO");
    result.table = name();
    if (acceptSymbol("(")) {
        do {
            std::string column = name();
            if (acceptSymbol("."))
                column = name();
            result.columns.push_back(std::move(column));
        } while (acceptSymbol(","));
        expectSymbol(")");
    }
    expectWord("VALUES");
    expectSymbol("(");
    do
        result.values.push_back(clause());
    while (acceptSymbol(","));
    expectSymbol(")");
    m_clause = 0;
    return result;
}

UpdateStatement Parser::update()
{
    m_construct = "UPDATE statement";
    UpdateStatement result;
    result.table = name();
    result.alias = optionalAlias();
    expectWord("SET");
    do {
        ExpressionPointer target = make(Expression::Form::Name, m_token.at);
        target->name = name();
        if (acceptSymbol(".")) {
            target->qualifier = std::move(target->name);
            target->name = name();
        }
        target->end = m_lastEnd;
        expectSymbol("=");
        result.changes.emplace_back(std::move(target), clause());
    } while (acceptSymbol(","));
    if (acceptWord("WHERE"))
        result.where = clause();
    return result;
}

DeleteStatement Parser::deleteRows()
{
    m_construct = "FROM clause";
    DeleteStatement result;
    static_cast<void>(acceptSymbol("*"));
    expectWord("FROM");
    result.table = name();
    if (acceptWord("WHERE"))
        result.where = clause();
    return result;
}

Statement Parser::create()
{
    if (acceptWord("TABLE"))
        return createTable();
    const bool unique = acceptWord("UNIQUE");
    if (acceptWord("INDEX"))
        return createIndex(unique);
    throw notServed("CREATE " + m_token.text);
}

DropTableStatement Parser::drop()
{
    m_construct = "DROP TABLE or DROP INDEX";
    if (!m_token.isWord("TABLE"))
        throw notServed("DROP " + m_token.text);
    advance();
    return {name()};
}

AddColumnStatement Parser::alter()
{
    m_construct = "ALTER TABLE statement";
    AddColumnStatement result;
    expectWord("TABLE");
    result.table = name();
    if (!m_token.isWord("ADD"))
        throw notServed("ALTER TABLE " + m_token.text);
    advance();
    if (m_token.isWord("CONSTRAINT"))
        throw notServed("ALTER TABLE ADD CONSTRAINT");
    static_cast<void>(acceptWord("COLUMN"));
    do
        result.columns.push_back(columnDefinition());
    while (acceptSymbol(","));
    return result;
}

} // namespace accessfile::sql
