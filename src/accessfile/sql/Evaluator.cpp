#include "accessfile/sql/Evaluator.h"

#include "accessfile/sql/Lexer.h"
#include "accessfile/sql/Messages.h"
#include "accessfile/sql/Operators.h"

#include <algorithm>

namespace accessfile::sql {

namespace {

using Form = Expression::Form;

Truth truthOf(bool value)
{
    return value ? Truth::True : Truth::False;
}

Truth opposite(Truth truth)
{
    return truth == Truth::Unknown ? truth : truthOf(truth == Truth::False);
}

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
        expression.kind = functionKind(expression);
        return;
    }
    expression.column = column(expression);
    if (expression.column >= 0)
        expression.kind = kindOf(m_table->columns()[static_cast<std::size_t>(expression.column)].type);
}

void Binder::bindFunction(Expression& expression)
{
    expression.kind = functionKind(expression);
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

Value Evaluator::value(const Expression& expression)
{
    switch (expression.form) {
    case Form::Literal:
        return expression.literal;
    case Form::Name:
        return m_row == nullptr ? Value() : m_row->value(expression.column);
    case Form::Negate:
        return negate(value(*expression.operands[0]), m_regional);
    case Form::Arithmetic:
        return calculate(expression.operation, value(*expression.operands[0]), value(*expression.operands[1]),
                         m_regional);
    case Form::Call:
        return callFunction(expression, *this, m_regional);
    case Form::Aggregate:
        return m_aggregates->at(expression.slot);
    default: {
        const Truth truth = test(expression);
        return truth == Truth::Unknown ? Value() : Value(truth == Truth::True);
    }
    }
}

Truth Evaluator::test(const Expression& expression)
{
    switch (expression.form) {
    case Form::Compare:
        return compare(expression);
    case Form::And:
    case Form::Or:
        return junction(expression);
    case Form::Xor:
        return exclusive(expression);
    case Form::Not:
        return opposite(test(*expression.operands[0]));
    case Form::Like:
        return like(expression);
    case Form::IsNull:
        return isNullTest(expression);
    case Form::Between:
        return between(expression);
    case Form::In:
        return in(expression);
    default: {
        const Value result = value(expression);
        if (isNull(result))
            return Truth::Unknown;
        return truthOf(toDouble(result) != 0);
    }
    }
}

Truth Evaluator::junction(const Expression& expression)
{
    const Truth decisive = truthOf(expression.form == Form::Or);
    Truth result = opposite(decisive);
    for (const ExpressionPointer& operand : expression.operands) {
        const Truth truth = test(*operand);
        if (truth == decisive)
            return decisive;
        if (truth == Truth::Unknown)
            result = truth;
    }
    return result;
}

Truth Evaluator::exclusive(const Expression& expression)
{
    bool odd = false;
    for (const ExpressionPointer& operand : expression.operands) {
        const Truth truth = test(*operand);
        if (truth == Truth::Unknown)
            return truth;
        odd ^= truth == Truth::True;
    }
    return truthOf(odd);
}

Truth Evaluator::compare(const Expression& expression)
{
    const Expression& left = *expression.operands[0];
    const Expression& right = *expression.operands[1];
    if (left.truthLiteral != right.truthLiteral) {
        // Against the words True and False the question is whether a value is zero; True itself would be -1.
        const Expression& word = left.truthLiteral ? left : right;
        const Value other = value(left.truthLiteral ? right : left);
        if (isNull(other))
            return Truth::Unknown;
        if (expression.operation == Operator::Equal || expression.operation == Operator::NotEqual)
            return truthOf(((toDouble(other) != 0) == std::get<bool>(word.literal)) ==
                           (expression.operation == Operator::Equal));
    }
    if (right.compared && left.form == Form::Name && m_row != nullptr) {
        m_text.clear();
        if (!m_row->appendText(left.column, m_text))
            return Truth::Unknown;
        if (expression.operation == Operator::Equal || expression.operation == Operator::NotEqual)
            return truthOf(right.compared->equals(m_text) == (expression.operation == Operator::Equal));
        return truthOf(satisfies(expression.operation, right.compared->order(m_text)));
    }
    const std::optional<int> relation = compareValues(value(left), value(right));
    return relation ? truthOf(satisfies(expression.operation, *relation)) : Truth::Unknown;
}

Truth Evaluator::like(const Expression& expression)
{
    const Value subject = value(*expression.operands[0]);
    if (isNull(subject))
        return Truth::Unknown;
    bool matches = false;
    if (expression.pattern) {
        matches = expression.pattern->matches(toText(subject, m_regional));
    } else {
        const Value pattern = value(*expression.operands[1]);
        if (isNull(pattern))
            return Truth::Unknown;
        matches = Pattern(toText(pattern, m_regional)).matches(toText(subject, m_regional));
    }
    return truthOf(matches != expression.negated);
}

Truth Evaluator::isNullTest(const Expression& expression)
{
    return truthOf(isNull(value(*expression.operands[0])) != expression.negated);
}

Truth Evaluator::between(const Expression& expression)
{
    const Value subject = value(*expression.operands[0]);
    const std::optional<int> lower = compareValues(subject, value(*expression.operands[1]));
    const std::optional<int> upper = compareValues(subject, value(*expression.operands[2]));
    Truth inside = Truth::Unknown;
    if ((lower && *lower < 0) || (upper && *upper > 0))
        inside = Truth::False;
    else if (lower && upper)
        inside = Truth::True;
    return expression.negated ? opposite(inside) : inside;
}

Truth Evaluator::in(const Expression& expression)
{
    const Value subject = value(*expression.operands[0]);
    if (isNull(subject))
        return Truth::Unknown;
    Truth found = Truth::False;
    for (std::size_t i = 1; i < expression.operands.size() && found != Truth::True; ++i) {
        const Expression& member = *expression.operands[i];
        const std::string* text = std::get_if<std::string>(&subject);
        if (member.compared && text != nullptr) {
            if (member.compared->equals(*text))
                found = Truth::True;
            continue;
        }
        const std::optional<int> relation = compareValues(subject, value(member));
        if (!relation)
            found = Truth::Unknown;
        else if (*relation == 0)
            found = Truth::True;
    }
    return expression.negated ? opposite(found) : found;
}

} // namespace accessfile::sql
