#pragma once

#include "accessfile/Database.h"
#include "accessfile/sql/Syntax.h"

#include <string>
#include <vector>

namespace accessfile::sql {

/// True, false, or unknown where a Null decides.
enum class Truth { False, True, Unknown };

/// Values of bound expressions for the row that a cursor stands on.
class Evaluator
{
public:
    explicit Evaluator(const RegionalConversions& regional)
        : m_regional(regional)
    {}

    /// nullptr for expressions without columns.
    void setRow(const Cursor* row) { m_row = row; }
    /// Results of the aggregate calls and group keys by their slots.
    void setResults(const std::vector<Value>* results) { m_results = results; }

    [[nodiscard]] Value value(const Expression& expression);
    [[nodiscard]] Truth test(const Expression& expression);

private:
    [[nodiscard]] Truth compare(const Expression& expression);
    [[nodiscard]] Truth like(const Expression& expression);
    [[nodiscard]] Truth between(const Expression& expression);
    [[nodiscard]] Truth in(const Expression& expression);
    [[nodiscard]] Truth junction(const Expression& expression);
    [[nodiscard]] Truth exclusive(const Expression& expression);
    [[nodiscard]] Truth isNullTest(const Expression& expression);

    const RegionalConversions& m_regional;
    const Cursor* m_row = nullptr;
    const std::vector<Value>* m_results = nullptr;
    std::string m_text; ///< Kept between rows, so that a text column costs no allocation.
};

// Functions.cpp
/// Finds a call's function and the kind of its result; raises an error for a function that is not served or wrong
/// arguments.
void bindFunction(Expression& call);
[[nodiscard]] bool isVolatile(const Expression& call);
[[nodiscard]] Value callFunction(const Expression& call, Evaluator& evaluator, const RegionalConversions& regional);

} // namespace accessfile::sql
