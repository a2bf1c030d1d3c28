#include "accessfile/sql/Planner.h"

#include "accessfile/sql/Operators.h"

#include <cmath>
#include <limits>
#include <map>
#include <memory>
#include <utility>
#include <vector>

namespace accessfile::sql {

namespace {

using Form = Expression::Form;

/// What the clause says about one column.
struct Bounds
{
    std::optional<Value> lower;
    bool lowerInclusive = true;
    std::optional<Value> upper;
    bool upperInclusive = true;
    bool equality = false;
    bool empty = false;
};

class Collector
{
public:
    explicit Collector(const Table& table)
        : m_table(table)
    {}

    void collect(const Expression& expression)
    {
        if (expression.form == Form::And) {
            for (const ExpressionPointer& operand : expression.operands)
                collect(*operand);
        } else if (expression.form == Form::Compare && isColumn(*expression.operands[0]) &&
                   isBound(*expression.operands[1])) {
            const int column = expression.operands[0]->column;
            const Value& value = expression.operands[1]->literal;
            switch (expression.operation) {
            case Operator::Equal:
                lower(column, value, true);
                upper(column, value, true);
                m_bounds[column].equality = true;
                break;
            case Operator::Less:
            case Operator::LessEqual:
                upper(column, value, expression.operation == Operator::LessEqual);
                break;
            case Operator::Greater:
            case Operator::GreaterEqual:
                lower(column, value, expression.operation == Operator::GreaterEqual);
                break;
            default:
                break;
            }
        } else if (expression.form == Form::Between && !expression.negated && isColumn(*expression.operands[0])) {
            if (isBound(*expression.operands[1]))
                lower(expression.operands[0]->column, expression.operands[1]->literal, true);
            if (isBound(*expression.operands[2]))
                upper(expression.operands[0]->column, expression.operands[2]->literal, true);
        } else if (expression.form == Form::Literal &&
                   (isNull(expression.literal) || toDouble(expression.literal) == 0)) {
            m_empty = true;
        }
    }

    [[nodiscard]] bool empty() const { return m_empty; }
    [[nodiscard]] const std::map<int, Bounds>& bounds() const { return m_bounds; }

private:
    static bool isColumn(const Expression& expression) { return expression.form == Form::Name; }
    static bool isBound(const Expression& expression)
    {
        return expression.form == Form::Literal && !expression.truthLiteral && !isNull(expression.literal);
    }

    /// The bound in the column's own type, widened to it where the constant lies between two of its values; nullopt
    /// where the index cannot help.
    [[nodiscard]] std::optional<Value> inColumnType(int column, const Value& value, bool isLower, bool& inclusive) const
    {
        const Column& definition = m_table.columns()[static_cast<std::size_t>(column)];
        if (kindOf(definition.type) == Kind::Text) {
            const std::string* text = std::get_if<std::string>(&value);
            return text != nullptr && textSortKey(*text) ? std::optional<Value>(value) : std::nullopt;
        }
        if (std::holds_alternative<std::string>(value) || std::holds_alternative<Guid>(value) ||
            std::holds_alternative<Bytes>(value))
            return std::nullopt;
        const double number = toDouble(value);
        const auto whole = [&](double least, double most) -> std::optional<Value> {
            const double widened = isLower ? std::floor(number) : std::ceil(number);
            if (!(widened >= least && widened <= most))
                return std::nullopt;
            inclusive = inclusive || widened != number;
            return static_cast<std::int32_t>(widened);
        };
        switch (definition.type) {
        case ColumnType::Byte:
            return whole(0, 255);
        case ColumnType::Int:
            return whole(-32768, 32767);
        case ColumnType::Long:
            return whole(std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max());
        case ColumnType::Double:
            return number;
        case ColumnType::Date:
            return DateTime{number};
        case ColumnType::Money: {
            if (const Money* money = std::get_if<Money>(&value))
                return *money;
            constexpr double limit = 1e14;
            if (!(std::abs(number) < limit))
                return std::nullopt;
            // One step of the type to the safe side: the product is rounded.
            inclusive = true;
            const double scaled = number * 10'000;
            return Money{static_cast<std::int64_t>(isLower ? std::floor(scaled) - 1 : std::ceil(scaled) + 1)};
        }
        default:
            return std::nullopt;
        }
    }

    void lower(int column, const Value& value, bool inclusive)
    {
        const std::optional<Value> bound = inColumnType(column, value, true, inclusive);
        if (!bound)
            return;
        Bounds& bounds = m_bounds[column];
        const int order = bounds.lower ? compareValues(*bound, *bounds.lower).value_or(0) : 1;
        if (order > 0) {
            bounds.lower = bound;
            bounds.lowerInclusive = inclusive;
        } else if (order == 0) {
            bounds.lowerInclusive = bounds.lowerInclusive && inclusive;
        }
        checkEmpty(bounds);
    }

    void upper(int column, const Value& value, bool inclusive)
    {
        const std::optional<Value> bound = inColumnType(column, value, false, inclusive);
        if (!bound)
            return;
        Bounds& bounds = m_bounds[column];
        const int order = bounds.upper ? compareValues(*bound, *bounds.upper).value_or(0) : -1;
        if (order < 0) {
            bounds.upper = bound;
            bounds.upperInclusive = inclusive;
        } else if (order == 0) {
            bounds.upperInclusive = bounds.upperInclusive && inclusive;
        }
        checkEmpty(bounds);
    }

    void checkEmpty(Bounds& bounds)
    {
        if (!bounds.lower || !bounds.upper)
            return;
        const int order = compareValues(*bounds.lower, *bounds.upper).value_or(0);
        if (order > 0 || (order == 0 && !(bounds.lowerInclusive && bounds.upperInclusive)))
            m_empty = true;
    }

    const Table& m_table;
    std::map<int, Bounds> m_bounds;
    bool m_empty = false;
};

/// A higher number promises fewer rows.
enum Promise { OpenRange = 1, ClosedRange, Equality, OneRow };

Promise promise(const Bounds& bounds, const Index& index)
{
    if (bounds.equality && bounds.lower && bounds.upper)
        return index.unique && index.columns.size() == 1 ? OneRow : Equality;
    return bounds.lower && bounds.upper ? ClosedRange : OpenRange;
}

/// A way to the rows by one index.
struct Candidate
{
    int index = 0;
    KeyRange range;
    Promise promise = OpenRange;
};

/// Lets the candidates that are bounded on both sides run side by side for a few rows: the first to end is the
/// shortest. Without an end the best promise is taken. A day of a table of ten years is so found by its date, however
/// the other columns are bound.
const Candidate& shortest(const Table& table, const std::vector<Candidate>& candidates)
{
    constexpr int LongestRun = 64;
    const Candidate* best = &candidates.front();
    for (const Candidate& candidate : candidates)
        best = candidate.promise > best->promise ? &candidate : best;
    std::vector<std::pair<const Candidate*, std::unique_ptr<Cursor>>> runners;
    for (const Candidate& candidate : candidates) {
        if (candidate.promise >= ClosedRange)
            runners.emplace_back(&candidate, nullptr);
    }
    if (best->promise == OneRow || runners.size() < 2)
        return *best;
    for (auto& [candidate, cursor] : runners)
        cursor = table.range(candidate->index, candidate->range);
    for (int row = 0; row < LongestRun; ++row) {
        for (const auto& [candidate, cursor] : runners) {
            if (!cursor->next())
                return *candidate;
        }
    }
    return *best;
}

} // namespace

std::unique_ptr<Cursor> Plan::open(const Table& table) const
{
    return index < 0 ? table.scan() : table.range(index, range);
}

Plan planRows(const Table& table, const Expression* where)
{
    Plan plan;
    if (where == nullptr)
        return plan;
    Collector collector(table);
    collector.collect(*where);
    plan.empty = collector.empty();
    std::vector<Candidate> candidates;
    for (std::size_t i = 0; i < table.indexes().size() && !plan.empty; ++i) {
        const Index& index = table.indexes()[i];
        const auto found =
            index.columns.empty() ? collector.bounds().end() : collector.bounds().find(index.columns.front().column);
        if (found == collector.bounds().end() || (!found->second.lower && !found->second.upper))
            continue;
        if (!table.usableForRange(static_cast<int>(i)))
            continue;
        const Bounds& bounds = found->second;
        candidates.push_back({static_cast<int>(i),
                              {bounds.lower, bounds.lowerInclusive, bounds.upper, bounds.upperInclusive},
                              promise(bounds, index)});
    }
    if (candidates.empty())
        return plan;
    const Candidate& chosen = shortest(table, candidates);
    plan.index = chosen.index;
    plan.range = chosen.range;
    return plan;
}

} // namespace accessfile::sql
