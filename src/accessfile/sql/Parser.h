#pragma once

#include "accessfile/sql/Lexer.h"
#include "accessfile/sql/Syntax.h"

#include <optional>
#include <string>
#include <string_view>

namespace accessfile::sql {

/// Recursive descent with a bound on nesting. Raises Error (Syntax) with the place in the statement.
class Parser
{
public:
    explicit Parser(std::string_view text);

    [[nodiscard]] Statement statement();
    /// A lone expression, such as a stored default; a leading = is no part of it.
    [[nodiscard]] ExpressionPointer loneExpression();

private:
    [[nodiscard]] SelectStatement select();
    void selectRange(SelectStatement& select);
    void selectItems(SelectStatement& select);
    void groupItems(SelectStatement& select);
    void orderItems(SelectStatement& select);
    [[nodiscard]] InsertStatement insert();
    [[nodiscard]] UpdateStatement update();
    [[nodiscard]] DeleteStatement deleteRows();
    [[nodiscard]] Statement create();
    [[nodiscard]] CreateTableStatement createTable();
    [[nodiscard]] CreateIndexStatement createIndex(bool unique);
    [[nodiscard]] AddColumnStatement alter();
    [[nodiscard]] DropTableStatement drop();

    // DefinitionParser.cpp
    [[nodiscard]] ColumnDefinition columnDefinition();
    void columnType(Column& column);
    void tableConstraint(CreateTableStatement& statement);
    [[nodiscard]] std::vector<std::pair<std::string, bool>> indexColumns();
    [[nodiscard]] std::string defaultExpression();

    // ExpressionParser.cpp
    [[nodiscard]] ExpressionPointer clause();
    [[nodiscard]] ExpressionPointer expression();
    [[nodiscard]] ExpressionPointer junction(Expression::Form form);
    [[nodiscard]] ExpressionPointer negation();
    [[nodiscard]] ExpressionPointer comparison();
    [[nodiscard]] ExpressionPointer arithmetic(int level);
    [[nodiscard]] ExpressionPointer unary();
    [[nodiscard]] ExpressionPointer primary();
    [[nodiscard]] ExpressionPointer nameOrCall();
    [[nodiscard]] ExpressionPointer call(const Token& name);
    [[nodiscard]] ExpressionPointer make(Expression::Form form, std::size_t at) const;
    void adopt(Expression& parent, ExpressionPointer operand);
    [[nodiscard]] std::optional<Operator> comparisonOperator();
    [[noreturn]] void failExpression() const;
    [[noreturn]] void failConstruct() const;
    void refuseUnserved() const;
    void refuseSelect() const;

    void advance();
    [[nodiscard]] const Token& peek();
    [[nodiscard]] bool acceptSymbol(std::string_view symbol);
    [[nodiscard]] bool acceptWord(std::string_view upper);
    void expectSymbol(std::string_view symbol);
    void expectWord(std::string_view upper);
    [[nodiscard]] std::string name();
    [[nodiscard]] bool atName() const;
    [[nodiscard]] std::string optionalAlias();
    void expectEnd();

    Lexer m_lexer;
    Token m_token;
    std::optional<Token> m_next;
    std::size_t m_lastEnd = 0; ///< End of the token before the current one.
    std::size_t m_clause = 0;  ///< Begin of the expression in work, for messages.
    std::string m_construct;   ///< Where a misplaced token is reported.
    int m_nesting = 0;
};

} // namespace accessfile::sql
