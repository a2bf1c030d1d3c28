#include "accessfile/sql/Calendar.h"
#include "accessfile/sql/Evaluator.h"
#include "accessfile/sql/Lexer.h"
#include "accessfile/sql/Messages.h"
#include "accessfile/sql/Operators.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace accessfile::sql {

namespace {

enum class Function { Date, Now, Time, IsNull, If, Absolute, Floor, Truncate, Length };

struct Signature
{
    std::string_view name;
    Function function;
    std::size_t arguments;
};

constexpr std::array<Signature, 9> functions{{{"date", Function::Date, 0},
                                              {"now", Function::Now, 0},
                                              {"time", Function::Time, 0},
                                              {"isnull", Function::IsNull, 1},
                                              {"iif", Function::If, 3},
                                              {"abs", Function::Absolute, 1},
                                              {"int", Function::Floor, 1},
                                              {"fix", Function::Truncate, 1},
                                              {"len", Function::Length, 1}}};

const Signature& signatureOf(const Expression& call)
{
    const auto* const found = std::find_if(functions.begin(), functions.end(),
                                           [&](const Signature& each) { return sameName(each.name, call.name); });
    if (found == functions.end())
        throw undefinedFunction(call.name);
    if (found->arguments != call.operands.size())
        throw Error(ErrorKind::Syntax,
                    "Wrong number of arguments used with function in query expression '" + call.name + "'.", -3102);
    return *found;
}

} // namespace

Kind functionKind(const Expression& call)
{
    const auto operand = [&](std::size_t i) { return call.operands[i]->kind; };
    const Function function = signatureOf(call).function;
    switch (function) {
    case Function::Date:
    case Function::Now:
    case Function::Time:
        return Kind::Date;
    case Function::IsNull:
        return Kind::Bool;
    case Function::If:
        if (operand(0) != Kind::Null && !isNumber(operand(0)))
            throw typeMismatch();
        if (operand(1) == Kind::Null || operand(1) == operand(2))
            return operand(2);
        if (operand(2) == Kind::Null)
            return operand(1);
        if (isNumber(operand(1)) && isNumber(operand(2)))
            return Kind::Double;
        throw typeMismatch();
    case Function::Absolute:
    case Function::Floor:
    case Function::Truncate:
        if (operand(0) != Kind::Null && !isNumber(operand(0)))
            throw typeMismatch();
        return operand(0) == Kind::Bool ? Kind::Integer : operand(0);
    default:
        if (operand(0) == Kind::Binary)
            throw typeMismatch();
        return Kind::Integer;
    }
}

bool isVolatile(const Expression& call)
{
    const Function function = signatureOf(call).function;
    return function == Function::Date || function == Function::Now || function == Function::Time;
}

Value callFunction(const Expression& call, Evaluator& evaluator, const RegionalConversions& regional)
{
    const Function function = signatureOf(call).function;
    switch (function) {
    case Function::Date:
        return today();
    case Function::Now:
        return now();
    case Function::Time:
        return timeOfDay();
    case Function::If: {
        const bool chosen = evaluator.test(*call.operands[0]) == Truth::True;
        Value result = evaluator.value(*call.operands[chosen ? 1 : 2]);
        const Kind kind = call.operands[chosen ? 1 : 2]->kind;
        // Both branches give a result of one kind.
        if (call.kind == Kind::Double && kind != Kind::Double && !isNull(result))
            return toDouble(result);
        return result;
    }
    default:
        break;
    }
    const Value argument = evaluator.value(*call.operands[0]);
    if (function == Function::IsNull)
        return isNull(argument);
    if (isNull(argument))
        return argument;
    switch (function) {
    case Function::Absolute:
        return toDouble(argument) < 0                   ? negate(argument, regional)
               : std::holds_alternative<bool>(argument) ? Value(std::int32_t{0})
                                                        : argument;
    case Function::Floor:
    case Function::Truncate: {
        const bool down = function == Function::Floor;
        if (const Money* money = std::get_if<Money>(&argument)) {
            std::int64_t whole = money->scaled / 10'000;
            if (down && money->scaled < whole * 10'000)
                --whole;
            return Money{whole * 10'000};
        }
        if (const bool* truth = std::get_if<bool>(&argument))
            return std::int32_t{*truth ? -1 : 0};
        if (std::holds_alternative<std::int32_t>(argument))
            return argument;
        const double number = toDouble(argument);
        const double whole = down ? std::floor(number) : std::trunc(number);
        if (std::holds_alternative<DateTime>(argument))
            return DateTime{std::trunc(number)};
        return std::holds_alternative<float>(argument) ? Value(static_cast<float>(whole)) : Value(whole);
    }
    default:
        return static_cast<std::int32_t>(utf16Length(toText(argument, regional)));
    }
}

} // namespace accessfile::sql
