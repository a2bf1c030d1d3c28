#include "accessfile/sql/Binder.h"

#include "accessfile/sql/Evaluator.h"
#include "accessfile/sql/Lexer.h"
#include "accessfile/sql/Messages.h"
#include "accessfile/sql/Operators.h"

#include <algorithm>

namespace accessfile::sql {

namespace {

using Form = Expression::Form;

Operator mirrored(Operator operation)
{
    switch (operation) {
    case Operator::Less:
        return Operator::Greater;
    case Operator::LessEqual:
        return Operator::GreaterEqual;
    case Operator::Greater:
        return Operator::Less;
    case Operator::GreaterEqual:
        return Operator::LessEqual;
    default:
        return operation;
    }
}

bool isConstant(const Expression& expression)
{
    return expression.form == Form::Literal;
}

} // namespace

Binder::Binder(const Table* table, std::string_view alias, std::string_view statement,
               const RegionalConversions& regional)
    : m_table(table)
    , m_alias(alias)
    , m_statement(statement)
    , m_regional(regional)
{}

bool Binder::isTable(std::string_view qualifier) const
{
    return m_table != nullptr &&
           (sameName(qualifier, m_table->name()) || (!m_alias.empty() && sameName(qualifier, m_alias)));
}

int Binder::column(const Expression& name)
{
    const bool known = m_table != nullptr && (name.qualifier.empty() || isTable(name.qualifier));
    const int position = known ? m_table->columnIndex(name.name) : -1;
    if (position < 0)
        m_unknown.insert(foldCase(name.qualifier + "." + name.name));
    return position;
}

void Binder::finish() const
{
    if (!m_unknown.empty())
        throw tooFewParameters(m_unknown.size());
}

void Binder::bind(ExpressionPointer& expression, std::vector<Expression*>* aggregates)
{
    Expression& node = *expression;
    switch (node.form) {
    case Form::Literal:
        return;
    case Form::Name:
        bindName(node);
        return;
    case Form::Aggregate:
        if (aggregates == nullptr || m_insideAggregate)
            throw Error(ErrorKind::Syntax, "Cannot have aggregate function in expression.");
        bindAggregate(node, *aggregates);
        return;
    default:
        bindOperands(node, aggregates);
    }
    // A parameter has no value and no kind: what it makes of an expression is not looked into.
    if (!m_unknown.empty())
        return;
    switch (node.form) {
    case Form::Negate:
        node.kind = node.operands[0]->kind == Kind::Text ? Kind::Double : node.operands[0]->kind;
        if (node.kind == Kind::Bool)
            node.kind = Kind::Integer;
        if (node.kind == Kind::Guid || node.kind == Kind::Binary)
            throw typeMismatch();
        break;
    case Form::Arithmetic:
        node.kind = arithmeticKind(node.operation, node.operands[0]->kind, node.operands[1]->kind);
        break;
    case Form::Call:
        bindFunction(node);
        break;
    case Form::And:
    case Form::Or:
    case Form::Xor:
    case Form::Not:
        node.kind = Kind::Bool;
        for (const ExpressionPointer& operand : node.operands) {
            if (operand->kind != Kind::Null && !isNumber(operand->kind))
                throw typeMismatch();
        }
        break;
    default:
        node.kind = Kind::Bool;
        bindComparison(node);
    }
    foldConstant(node);
}

void Binder::bindOperands(Expression& expression, std::vector<Expression*>* aggregates)
{
    for (ExpressionPointer& operand : expression.operands)
        bind(operand, aggregates);
}

void Binder::bindName(Expression& expression)
{
    const bool known = m_table != nullptr && (expression.qualifier.empty() || isTable(expression.qualifier));
    const int position = known ? m_table->columnIndex(expression.name) : -1;
    if (position < 0 && expression.qualifier.empty() && sameName(expression.name, "now")) {
        // The one function that works without its brackets.
        expression.form = Form::Call;
        bindFunction(expression);
        return;
    }
    expression.column = column(expression);
    if (expression.column >= 0)
        expression.kind = kindOf(m_table->columns()[static_cast<std::size_t>(expression.column)].type);
}

void Binder::bindAggregate(Expression& expression, std::vector<Expression*>& aggregates)
{
    m_insideAggregate = true;
    for (ExpressionPointer& operand : expression.operands)
        bind(operand, nullptr);
    m_insideAggregate = false;
    const Kind operand = expression.operands.empty() ? Kind::Null : expression.operands[0]->kind;
    switch (expression.aggregate) {
    case Aggregate::Count:
        expression.kind = Kind::Integer;
        break;
    case Aggregate::Sum:
    case Aggregate::Average:
        if (operand != Kind::Null && !isNumber(operand))
            throw typeMismatch();
        expression.kind = operand == Kind::Money ? Kind::Money : Kind::Double;
        break;
    default:
        if (operand == Kind::Binary)
            throw typeMismatch();
        expression.kind = operand;
    }
    expression.slot = aggregates.size();
    aggregates.push_back(&expression);
}

void Binder::bindComparison(Expression& expression) const
{
    if (expression.form == Form::IsNull)
        return;
    if (expression.form == Form::Compare && isConstant(*expression.operands[0])) {
        std::swap(expression.operands[0], expression.operands[1]);
        expression.operation = mirrored(expression.operation);
    }
    const Kind first = expression.operands[0]->kind;
    if (expression.form == Form::Like) {
        for (const ExpressionPointer& operand : expression.operands) {
            if (operand->kind == Kind::Binary)
                throw typeMismatch();
        }
        const Expression& pattern = *expression.operands[1];
        if (isConstant(pattern) && !isNull(pattern.literal))
            expression.pattern.emplace(toText(pattern.literal, m_regional));
        return;
    }
    for (std::size_t i = 1; i < expression.operands.size(); ++i) {
        const Expression& other = *expression.operands[i];
        if (!comparable(first, other.kind))
            throw typeMismatch();
        if (first == Kind::Text && isConstant(other) && std::holds_alternative<std::string>(other.literal))
            expression.operands[i]->compared.emplace(std::get<std::string>(other.literal));
    }
}

/// Replaces what no row can change by its value. An error in it waits for the first row, as it would with a column.
void Binder::foldConstant(Expression& expression) const
{
    const bool constant = std::all_of(expression.operands.begin(), expression.operands.end(),
                                      [](const ExpressionPointer& operand) { return isConstant(*operand); });
    if (!constant || (expression.form == Form::Call && isVolatile(expression)))
        return;
    try {
        Evaluator evaluator(m_regional);
        expression.literal = evaluator.value(expression);
    } catch (const Error&) {
        return;
    }
    expression.form = Form::Literal;
    expression.operands.clear();
    expression.pattern.reset();
}

} // namespace accessfile::sql
