#include "accessfile/sql/Messages.h"
#include "accessfile/sql/Parser.h"

#include <algorithm>
#include <array>
#include <charconv>

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
        failConstruct();
}

void Parser::expectWord(std::string_view upper)
{
    if (!acceptWord(upper))
        failConstruct();
}

bool Parser::atName() const
{
    return m_token.type == Token::Type::Name || m_token.type == Token::Type::QuotedName;
}

std::string Parser::name()
{
    if (!atName())
        failConstruct();
    std::string result = m_token.text;
    advance();
    return result;
}

std::string Parser::optionalAlias()
{
    static constexpr std::array<std::string_view, 17> following{
        "WHERE", "ORDER", "GROUP", "HAVING", "SET",     "VALUES", "UNION", "SELECT", "INNER",
        "LEFT",  "RIGHT", "FULL",  "CROSS",  "NATURAL", "JOIN",   "LIMIT", "ON"};
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
    failConstruct();
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
    else {
        if (acceptSymbol("("))
            refuseSelect();
        refuseUnserved();
        throw invalidStatement();
    }
    expectEnd();
    return result;
}

void Parser::failConstruct() const
{
    refuseUnserved();
    throw syntaxError(m_construct);
}

/// A statement that stops being understood at one of these words uses what other speakers of SQL have.
void Parser::refuseUnserved() const
{
    static constexpr std::array<std::pair<std::string_view, std::string_view>, 32> words{
        {{"JOIN", "JOIN"},
         {"INNER", "JOIN"},
         {"LEFT", "JOIN"},
         {"RIGHT", "JOIN"},
         {"FULL", "JOIN"},
         {"CROSS", "JOIN"},
         {"NATURAL", "JOIN"},
         {"OUTER", "JOIN"},
         {"UNION", "UNION"},
         {"INTERSECT", "INTERSECT"},
         {"EXCEPT", "EXCEPT"},
         {"MINUS", "MINUS"},
         {"INTO", "SELECT INTO"},
         {"LIMIT", "LIMIT"},
         {"OFFSET", "OFFSET"},
         {"FETCH", "FETCH"},
         {"CASE", "CASE"},
         {"WHEN", "CASE"},
         {"OVER", "OVER"},
         {"WITH", "WITH"},
         {"PIVOT", "PIVOT"},
         {"TRANSFORM", "TRANSFORM"},
         {"DISTINCT", "DISTINCT inside of a function"},
         {"PARAMETERS", "PARAMETERS"},
         {"EXECUTE", "EXECUTE"},
         {"EXEC", "EXECUTE"},
         {"PROCEDURE", "PROCEDURE"},
         {"BEGIN", "BEGIN"},
         {"COMMIT", "COMMIT"},
         {"ROLLBACK", "ROLLBACK"},
         {"GRANT", "GRANT"},
         {"REVOKE", "REVOKE"}}};
    for (const auto& [word, what] : words) {
        if (m_token.isWord(word))
            throw notServed(what);
    }
}

/// Behind an opening bracket.
void Parser::refuseSelect() const
{
    if (m_token.isWord("SELECT"))
        throw notServed("SELECT inside of another statement");
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
    selectRange(result);
    selectItems(result);
    if (acceptWord("FROM")) {
        m_construct = "FROM clause";
        m_clause = 0;
        if (acceptSymbol("(")) {
            refuseSelect();
            throw notServed("JOIN");
        }
        result.table = name();
        result.alias = optionalAlias();
        if (m_token.isSymbol(","))
            throw notServed("FROM with several tables");
    }
    if (acceptWord("WHERE"))
        result.where = clause();
    groupItems(result);
    if (acceptWord("ORDER")) {
        m_construct = "ORDER BY clause";
        m_clause = 0;
        expectWord("BY");
        orderItems(result);
    }
    return result;
}

/// Which of the rows: of one table DISTINCTROW asks for all of them.
void Parser::selectRange(SelectStatement& select)
{
    if (acceptWord("DISTINCT"))
        select.distinct = true;
    else if (!acceptWord("ALL"))
        static_cast<void>(acceptWord("DISTINCTROW"));
    if (!m_token.isWord("TOP") || peek().type != Token::Type::Number)
        return;
    advance();
    TopClause top;
    const char* const last = m_token.text.data() + m_token.text.size();
    if (const auto read = std::from_chars(m_token.text.data(), last, top.count);
        read.ec != std::errc() || read.ptr != last)
        failConstruct();
    advance();
    top.percent = acceptWord("PERCENT");
    if (top.percent && top.count > 100)
        failConstruct();
    select.top = top;
}

void Parser::groupItems(SelectStatement& select)
{
    if (acceptWord("GROUP")) {
        m_construct = "GROUP BY clause";
        m_clause = 0;
        expectWord("BY");
        do
            select.group.push_back(clause());
        while (acceptSymbol(","));
    }
    if (acceptWord("HAVING"))
        select.having = clause();
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
        refuseSelect();
        do {
            std::string column = name();
            if (acceptSymbol("."))
                column = name();
            result.columns.push_back(std::move(column));
        } while (acceptSymbol(","));
        expectSymbol(")");
    }
    if (acceptWord("SELECT")) {
        result.source = select();
        return result;
    }
    expectWord("VALUES");
    expectSymbol("(");
    refuseSelect();
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
    if (m_token.isSymbol(","))
        throw notServed("UPDATE of several tables");
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
    if (atName() && peek().isSymbol(".")) {
        static_cast<void>(name());
        expectSymbol(".");
        expectSymbol("*");
    } else {
        static_cast<void>(acceptSymbol("*"));
    }
    expectWord("FROM");
    result.table = name();
    if (m_token.isSymbol(","))
        throw notServed("DELETE with several tables");
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
