#include "accessfile/sql/Evaluator.h"

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

} // namespace

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
    case Form::GroupKey:
        return m_results->at(expression.slot);
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
