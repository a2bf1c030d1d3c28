#include "accessfile/sql/Grouping.h"

#include "accessfile/sql/Lexer.h"
#include "accessfile/sql/Messages.h"
#include "accessfile/sql/Operators.h"
#include "accessfile/sql/SortKey.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace accessfile::sql {

using Form = Expression::Form;

namespace {

/// Half to even at the fourth decimal.
Money quotient(Money sum, std::int64_t count)
{
    std::int64_t whole = sum.scaled / count;
    const std::int64_t rest = std::abs(sum.scaled % count);
    const std::int64_t other = count - rest;
    if (rest > other || (rest == other && whole % 2 != 0))
        whole += sum.scaled < 0 ? -1 : 1;
    return Money{whole};
}

} // namespace

bool sameExpression(const Expression& a, const Expression& b)
{
    if (a.form != b.form || a.negated != b.negated || a.operands.size() != b.operands.size())
        return false;
    switch (a.form) {
    case Form::Literal:
        return a.literal == b.literal && a.truthLiteral == b.truthLiteral;
    case Form::Name:
        return a.column == b.column;
    case Form::Arithmetic:
    case Form::Compare:
        if (a.operation != b.operation)
            return false;
        break;
    case Form::Call:
        if (a.function != b.function)
            return false;
        break;
    case Form::Aggregate:
        if (a.aggregate != b.aggregate)
            return false;
        break;
    default:
        break;
    }
    return std::equal(
        a.operands.begin(), a.operands.end(), b.operands.begin(),
        [](const ExpressionPointer& left, const ExpressionPointer& right) { return sameExpression(*left, *right); });
}

void referToKeys(Expression& expression, const std::vector<ExpressionPointer>& keys, std::size_t firstSlot,
                 std::string_view source)
{
    const auto key = std::find_if(keys.begin(), keys.end(),
                                  [&](const ExpressionPointer& each) { return sameExpression(*each, expression); });
    if (key != keys.end()) {
        expression.form = Form::GroupKey;
        expression.slot = firstSlot + static_cast<std::size_t>(key - keys.begin());
        expression.operands.clear();
    } else if (expression.form == Form::Name) {
        throw notAggregated(source.substr(expression.at, expression.end - expression.at));
    } else if (expression.form != Form::Aggregate) {
        for (const ExpressionPointer& operand : expression.operands)
            referToKeys(*operand, keys, firstSlot, source);
    }
}

void Accumulator::add(Evaluator& evaluator, const RegionalConversions& regional)
{
    if (m_call->operands.empty()) {
        ++m_count;
        return;
    }
    Value value = evaluator.value(*m_call->operands[0]);
    if (isNull(value))
        return;
    ++m_count;
    switch (m_call->aggregate) {
    case Aggregate::Count:
        break;
    case Aggregate::Sum:
    case Aggregate::Average:
        if (const Money* money = std::get_if<Money>(&value))
            m_value = calculate(Operator::Add, isNull(m_value) ? Value(Money{}) : m_value, *money, regional);
        else
            m_sum += toDouble(value);
        break;
    default: {
        const int relation = isNull(m_value) ? 0 : compareValues(value, m_value).value_or(0);
        if (isNull(m_value) || (m_call->aggregate == Aggregate::Minimum ? relation < 0 : relation > 0))
            m_value = std::move(value);
    }
    }
}

Value Accumulator::result() const
{
    switch (m_call->aggregate) {
    case Aggregate::Count:
        if (m_count > std::numeric_limits<std::int32_t>::max())
            throw overflow();
        return static_cast<std::int32_t>(m_count);
    case Aggregate::Sum:
    case Aggregate::Average: {
        if (m_count == 0)
            return Null{};
        const bool average = m_call->aggregate == Aggregate::Average;
        if (m_call->kind == Kind::Money)
            return average ? Value(quotient(std::get<Money>(m_value), m_count)) : m_value;
        return average ? m_sum / static_cast<double>(m_count) : m_sum;
    }
    default:
        return m_value;
    }
}

Groups::Groups(const std::vector<ExpressionPointer>& keys, const std::vector<Expression*>& totals,
               const RegionalConversions& regional)
    : m_keys(keys)
    , m_totals(totals)
    , m_regional(regional)
{
    if (keys.empty())
        addGroup({});
}

Groups::Group& Groups::addGroup(std::vector<Value> keys)
{
    Group& group = m_groups.emplace_back();
    group.keys = std::move(keys);
    group.totals.reserve(m_totals.size());
    for (const Expression* call : m_totals)
        group.totals.emplace_back(*call);
    return group;
}

void Groups::add(Evaluator& evaluator)
{
    Group* group = m_keys.empty() ? &m_groups.front() : nullptr;
    if (group == nullptr) {
        std::vector<Value> keys;
        keys.reserve(m_keys.size());
        m_key.clear();
        for (const ExpressionPointer& key : m_keys) {
            keys.push_back(evaluator.value(*key));
            appendSortKey(keys.back(), true, m_key);
        }
        const auto [place, added] = m_places.try_emplace(m_key, m_groups.size());
        group = added ? &addGroup(std::move(keys)) : &m_groups[place->second];
    }
    for (Accumulator& total : group->totals)
        total.add(evaluator, m_regional);
}

std::vector<std::size_t> Groups::ordered() const
{
    if (m_keys.empty())
        return {0};
    std::vector<std::pair<std::string_view, std::size_t>> places(m_places.begin(), m_places.end());
    std::sort(places.begin(), places.end());
    std::vector<std::size_t> result;
    result.reserve(places.size());
    for (const auto& [key, place] : places)
        result.push_back(place);
    return result;
}

std::vector<Value> Groups::results(std::size_t group) const
{
    const Group& chosen = m_groups[group];
    std::vector<Value> results;
    results.reserve(chosen.totals.size() + chosen.keys.size());
    for (const Accumulator& total : chosen.totals)
        results.push_back(total.result());
    results.insert(results.end(), chosen.keys.begin(), chosen.keys.end());
    return results;
}

} // namespace accessfile::sql
