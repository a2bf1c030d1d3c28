#pragma once

#include "accessfile/Database.h"
#include "accessfile/sql/Syntax.h"

#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace accessfile::sql {

/// Finds the columns and kinds of a statement's expressions. Names that are no columns are counted as parameters
/// without value; finish() raises the error for them, so that all of a statement's expressions are counted first.
class Binder
{
public:
    /// `table` may be nullptr: then no name is known. `alias` is the table's other name, or empty.
    Binder(const Table* table, std::string_view alias, std::string_view statement, const RegionalConversions& regional);

    /// `aggregates` receives the aggregate calls of the expression; without it they are refused.
    void bind(ExpressionPointer& expression, std::vector<Expression*>* aggregates = nullptr);
    /// Position of the column that a name means; -1, and counted, when there is none.
    int column(const Expression& name);
    void finish() const;
    /// Whether a qualifier means the table.
    [[nodiscard]] bool isTable(std::string_view qualifier) const;

private:
    void bindOperands(Expression& expression, std::vector<Expression*>* aggregates);
    void bindName(Expression& expression);
    void bindAggregate(Expression& expression, std::vector<Expression*>& aggregates);
    void bindComparison(Expression& expression) const;
    void foldConstant(Expression& expression) const;

    const Table* m_table;
    std::string m_alias;
    std::string_view m_statement;
    const RegionalConversions& m_regional;
    std::set<std::string> m_unknown;
    bool m_insideAggregate = false;
};

} // namespace accessfile::sql
