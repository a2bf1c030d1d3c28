#pragma once

#include "accessfile/Database.h"
#include "accessfile/sql/Evaluator.h"
#include "accessfile/sql/Syntax.h"

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace accessfile::sql {

/// Whether two bound expressions are the same one, however they are written.
[[nodiscard]] bool sameExpression(const Expression& a, const Expression& b);

/// Makes every part of a bound expression that is a group's key refer to it, counted from `firstSlot` of the group's
/// results. A column that is neither part of a key nor inside of a total has no single value and is an error, quoted
/// from `source`.
void referToKeys(Expression& expression, const std::vector<ExpressionPointer>& keys, std::size_t firstSlot,
                 std::string_view source);

/// Sum, count or extreme of the rows of one group; Nulls take no part.
class Accumulator
{
public:
    explicit Accumulator(const Expression& call)
        : m_call(&call)
    {}

    void add(Evaluator& evaluator, const RegionalConversions& regional);
    [[nodiscard]] Value result() const;

private:
    const Expression* m_call;
    std::int64_t m_count = 0;
    double m_sum = 0;
    Value m_value;
};

/// The rows of a SELECT gathered by their keys.
class Groups
{
public:
    /// Without keys all rows are one group, which is there without a row too.
    Groups(const std::vector<ExpressionPointer>& keys, const std::vector<Expression*>& totals,
           const RegionalConversions& regional);

    /// Takes the row on which the evaluator stands.
    void add(Evaluator& evaluator);

    [[nodiscard]] std::size_t size() const { return m_groups.size(); }
    /// The groups' places in the order of their keys.
    [[nodiscard]] std::vector<std::size_t> ordered() const;
    /// The totals of a group, then its keys as its first row had them.
    [[nodiscard]] std::vector<Value> results(std::size_t group) const;

private:
    struct Group
    {
        std::vector<Value> keys;
        std::vector<Accumulator> totals;
    };

    Group& addGroup(std::vector<Value> keys);

    const std::vector<ExpressionPointer>& m_keys;
    const std::vector<Expression*>& m_totals;
    const RegionalConversions& m_regional;
    std::unordered_map<std::string, std::size_t> m_places; ///< By the bytes of the keys.
    std::vector<Group> m_groups;
    std::string m_key; ///< Kept between rows.
};

} // namespace accessfile::sql
