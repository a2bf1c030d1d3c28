#include "accessfile/sql/Select.h"

#include "accessfile/sql/Binder.h"
#include "accessfile/sql/Grouping.h"
#include "accessfile/sql/Lexer.h"
#include "accessfile/sql/Messages.h"
#include "accessfile/sql/Operators.h"

#include <algorithm>

namespace accessfile::sql {

namespace {

/// Name of a result column that has none, numbered from 1000.
std::string unnamed(int number)
{
    return "Expr" + std::to_string(1000 + number);
}

} // namespace

Selection::Selection(SelectStatement& statement, const Table* table, std::string_view source,
                     const RegionalConversions& regional)
    : m_statement(statement)
    , m_table(table)
    , m_source(source)
    , m_regional(regional)
{
    Binder binder(table, statement.alias, source, regional);
    bindItems(binder);
    if (statement.where != nullptr)
        binder.bind(statement.where);
    for (ExpressionPointer& key : statement.group)
        binder.bind(key);
    if (statement.having != nullptr)
        binder.bind(statement.having, &m_totals);
    m_grouped = !m_totals.empty() || !statement.group.empty() || statement.having != nullptr;
    bindOrder(binder);
    binder.finish();
    if (m_grouped)
        bindGroups();
    else if (statement.distinct)
        requireListedOrder();
}

/// Sees that every item, the filter and the order of groups have one value per group.
void Selection::bindGroups()
{
    for (const ExpressionPointer& key : m_statement.group)
        requireComparable(key->kind);
    if (m_statement.distinct)
        requireListedOrder();
    const auto refer = [&](Expression& expression) {
        referToKeys(expression, m_statement.group, m_totals.size(), m_source);
    };
    for (const SelectItem& item : m_statement.items) {
        if (item.everything)
            throw Error(ErrorKind::Syntax, "Cannot group on fields selected with '*'.");
        refer(*item.expression);
    }
    if (m_statement.having != nullptr)
        refer(*m_statement.having);
    for (const OrderItem& item : m_statement.order) {
        // Without keys there is one row, whose order means nothing.
        if (item.output < 0 && !m_statement.group.empty())
            refer(*item.expression);
    }
}

/// Rows that are told apart by their items have no value of anything else.
void Selection::requireListedOrder()
{
    for (const ResultColumn& column : m_columns)
        requireComparable(kindOf(column.type));
    for (OrderItem& item : m_statement.order) {
        for (std::size_t i = 0; i < m_outputs.size() && item.output < 0; ++i) {
            const Output& output = m_outputs[i];
            const bool same = output.expression != nullptr ? sameExpression(*output.expression, *item.expression)
                                                           : item.expression->form == Expression::Form::Name &&
                                                                 item.expression->column == output.column;
            if (same)
                item.output = static_cast<int>(i);
        }
        if (item.output < 0)
            throw orderConflict(m_source.substr(item.expression->at, item.expression->end - item.expression->at));
    }
}

void Selection::requireComparable(Kind kind)
{
    if (kind == Kind::Binary)
        throw Error(ErrorKind::TypeMismatch, "Cannot sort on Memo or OLE Object.");
}

void Selection::addColumn(int column, const Expression* name)
{
    const Column& definition = m_table->columns()[static_cast<std::size_t>(column)];
    m_columns.push_back({definition.name, definition.type});
    m_outputs.push_back({name, column});
}

void Selection::bindItems(Binder& binder)
{
    for (SelectItem& item : m_statement.items) {
        if (!item.everything) {
            binder.bind(item.expression, &m_totals);
            addOutput(*item.expression, item.alias);
            continue;
        }
        if (m_table == nullptr || (!item.qualifier.empty() && !binder.isTable(item.qualifier)))
            throw syntaxError("query");
        for (std::size_t i = 0; i < m_table->columns().size(); ++i)
            addColumn(static_cast<int>(i), nullptr);
    }
}

void Selection::addOutput(const Expression& expression, const std::string& alias)
{
    if (expression.form == Expression::Form::Name && expression.column >= 0) {
        addColumn(expression.column, &expression);
        if (!alias.empty())
            m_columns.back().name = alias;
        return;
    }
    m_columns.push_back({alias.empty() ? unnamed(m_unnamed++) : alias, columnTypeOf(expression.kind)});
    m_outputs.push_back({&expression, -1});
}

/// ORDER BY an alias or a number means that item of the list.
void Selection::bindOrder(Binder& binder)
{
    for (OrderItem& item : m_statement.order) {
        Expression& expression = *item.expression;
        const bool constant = expression.form == Expression::Form::Literal;
        if (const auto* position = constant ? std::get_if<std::int32_t>(&expression.literal) : nullptr) {
            const auto size = static_cast<std::int32_t>(m_outputs.size());
            if (*position < 1 || *position > size)
                throw syntaxError("ORDER BY clause");
            item.output = *position - 1;
            continue;
        }
        const bool known = expression.form == Expression::Form::Name && m_table != nullptr &&
                           m_table->columnIndex(expression.name) >= 0;
        if (expression.form == Expression::Form::Name && expression.qualifier.empty() && !known) {
            for (std::size_t i = 0; i < m_columns.size() && item.output < 0; ++i) {
                if (sameName(m_columns[i].name, expression.name))
                    item.output = static_cast<int>(i);
            }
            if (item.output >= 0)
                continue;
        }
        binder.bind(item.expression, m_grouped ? &m_totals : nullptr);
    }
    for (const OrderItem& item : m_statement.order)
        requireComparable(item.output < 0 ? item.expression->kind
                                          : kindOf(m_columns[static_cast<std::size_t>(item.output)].type));
}

} // namespace accessfile::sql
