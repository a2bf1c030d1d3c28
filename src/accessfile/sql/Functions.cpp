#include "accessfile/sql/Calendar.h"
#include "accessfile/sql/Evaluator.h"
#include "accessfile/sql/Lexer.h"
#include "accessfile/sql/Messages.h"
#include "accessfile/sql/Operators.h"
#include "accessfile/sql/TextOrdering.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace accessfile::sql {

namespace {

enum class Function {
    Date,
    Now,
    Time,
    IsNull,
    If,
    NotNull,
    Absolute,
    Floor,
    Truncate,
    Year,
    Month,
    Day,
    Format,
    LeadingNumber,
    Length,
    Upper,
    Lower,
    Left,
    Middle,
    Right,
    Trim,
    TrimLeft,
    TrimRight
};

struct Signature
{
    std::string_view name;
    Function function;
    std::size_t least; ///< Arguments.
    std::size_t most;
};

constexpr std::array<Signature, 23> functions{
    {{"date", Function::Date, 0, 0},      {"now", Function::Now, 0, 0},
     {"time", Function::Time, 0, 0},      {"isnull", Function::IsNull, 1, 1},
     {"iif", Function::If, 3, 3},         {"nz", Function::NotNull, 1, 2},
     {"abs", Function::Absolute, 1, 1},   {"int", Function::Floor, 1, 1},
     {"fix", Function::Truncate, 1, 1},   {"year", Function::Year, 1, 1},
     {"month", Function::Month, 1, 1},    {"day", Function::Day, 1, 1},
     {"format", Function::Format, 1, 2},  {"val", Function::LeadingNumber, 1, 1},
     {"len", Function::Length, 1, 1},     {"ucase", Function::Upper, 1, 1},
     {"lcase", Function::Lower, 1, 1},    {"left", Function::Left, 2, 2},
     {"mid", Function::Middle, 2, 3},     {"right", Function::Right, 2, 2},
     {"trim", Function::Trim, 1, 1},      {"ltrim", Function::TrimLeft, 1, 1},
     {"rtrim", Function::TrimRight, 1, 1}}};

Function functionOf(const Expression& call)
{
    return functions.at(call.function).function;
}

/// Kind of a value that is one of two.
Kind commonKind(Kind a, Kind b)
{
    if (a == Kind::Null || a == b)
        return b;
    if (b == Kind::Null)
        return a;
    if (isNumber(a) && isNumber(b))
        return Kind::Double;
    throw typeMismatch();
}

/// A number where it stands in for the value of another kind of number.
Value inKind(Value value, Kind own, Kind common)
{
    return common == Kind::Double && own != Kind::Double && !isNull(value) ? Value(toDouble(value)) : value;
}

void requireNumber(Kind kind)
{
    if (kind != Kind::Null && !isNumber(kind))
        throw typeMismatch();
}

Value whole(const Value& argument, bool down)
{
    if (const Money* money = std::get_if<Money>(&argument)) {
        std::int64_t units = money->scaled / 10'000;
        if (down && money->scaled < units * 10'000)
            --units;
        return Money{units * 10'000};
    }
    if (const bool* truth = std::get_if<bool>(&argument))
        return std::int32_t{*truth ? -1 : 0};
    if (std::holds_alternative<std::int32_t>(argument))
        return argument;
    const double number = toDouble(argument);
    const double result = down ? std::floor(number) : std::trunc(number);
    if (std::holds_alternative<DateTime>(argument))
        return DateTime{std::trunc(number)};
    return std::holds_alternative<float>(argument) ? Value(static_cast<float>(result)) : Value(result);
}

Value absolute(const Value& argument, const RegionalConversions& regional)
{
    if (toDouble(argument) < 0)
        return negate(argument, regional);
    return std::holds_alternative<bool>(argument) ? Value(std::int32_t{0}) : argument;
}

Value datePart(Function function, const Value& argument, const RegionalConversions& regional)
{
    const std::optional<CalendarDay> day = regional.day(withoutNoise(argument));
    if (!day)
        throw typeMismatch();
    return std::int32_t{function == Function::Year ? day->year : function == Function::Month ? day->month : day->day};
}

/// A count or a place of characters, counted from `least`.
std::size_t countOf(const Value& value, int least)
{
    const double number = std::nearbyint(toDouble(value));
    if (!(number >= least))
        throw Error(ErrorKind::TypeMismatch, "Invalid procedure call.");
    constexpr double enough = 1e9;
    return static_cast<std::size_t>(std::min(number, enough));
}

std::string part(Function function, const std::string& text, const std::vector<Value>& numbers)
{
    if (function == Function::Left)
        return sliceUnits(text, 0, countOf(numbers[0], 0));
    if (function == Function::Right) {
        const std::size_t count = countOf(numbers[0], 0);
        const std::size_t length = utf16Length(text);
        return sliceUnits(text, length - std::min(length, count), count);
    }
    return sliceUnits(text, countOf(numbers[0], 1) - 1, numbers.size() > 1 ? countOf(numbers[1], 0) : text.size());
}

std::string trimmed(Function function, std::string_view text)
{
    if (function != Function::TrimRight)
        text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    if (function != Function::TrimLeft)
        text = text.substr(0, text.find_last_not_of(' ') + 1);
    return std::string(text);
}

/// What stands for Null where no other value is given.
Value emptyOf(Kind kind)
{
    switch (kind) {
    case Kind::Bool:
    case Kind::Integer:
        return std::int32_t{0};
    case Kind::Float:
        return 0.0F;
    case Kind::Double:
        return 0.0;
    case Kind::Money:
        return Money{};
    case Kind::Date:
        return DateTime{};
    default:
        return std::string();
    }
}

Value notNull(const Expression& call, Evaluator& evaluator, const RegionalConversions& regional)
{
    std::size_t chosen = 0;
    Value value = evaluator.value(*call.operands[chosen]);
    if (isNull(value)) {
        if (call.operands.size() == 1)
            return emptyOf(call.kind);
        value = evaluator.value(*call.operands[++chosen]);
    }
    if (call.kind == Kind::Text && !isNull(value))
        return toText(value, regional);
    return inKind(std::move(value), call.operands[chosen]->kind, call.kind);
}

} // namespace

void bindFunction(Expression& call)
{
    const auto* const found = std::find_if(functions.begin(), functions.end(),
                                           [&](const Signature& each) { return sameName(each.name, call.name); });
    if (found == functions.end())
        throw undefinedFunction(call.name);
    if (call.operands.size() < found->least || call.operands.size() > found->most)
        throw Error(ErrorKind::Syntax,
                    "Wrong number of arguments used with function in query expression '" + call.name + "'.", -3102);
    call.function = static_cast<std::size_t>(found - functions.begin());
    const auto operand = [&](std::size_t i) { return call.operands[i]->kind; };
    if (found->function != Function::IsNull && found->function != Function::If && found->most > 0 &&
        operand(0) == Kind::Binary)
        throw typeMismatch();
    switch (found->function) {
    case Function::Date:
    case Function::Now:
    case Function::Time:
        call.kind = Kind::Date;
        break;
    case Function::IsNull:
        call.kind = Kind::Bool;
        break;
    case Function::If:
        requireNumber(operand(0));
        call.kind = commonKind(operand(1), operand(2));
        break;
    case Function::NotNull: {
        const Kind other = call.operands.size() > 1 ? operand(1) : Kind::Null;
        const bool text =
            operand(0) == Kind::Text || other == Kind::Text || (operand(0) == Kind::Null && other == operand(0));
        call.kind = text ? Kind::Text : commonKind(operand(0), other);
        break;
    }
    case Function::Absolute:
    case Function::Floor:
    case Function::Truncate:
        requireNumber(operand(0));
        call.kind = operand(0) == Kind::Bool ? Kind::Integer : operand(0);
        break;
    case Function::Year:
    case Function::Month:
    case Function::Day:
    case Function::Length:
        call.kind = Kind::Integer;
        break;
    case Function::LeadingNumber:
        call.kind = Kind::Double;
        break;
    default:
        call.kind = Kind::Text;
        for (std::size_t i = 1; i < call.operands.size() && found->function != Function::Format; ++i)
            requireNumber(operand(i));
    }
}

bool isVolatile(const Expression& call)
{
    const Function function = functionOf(call);
    return function == Function::Date || function == Function::Now || function == Function::Time;
}

Value callFunction(const Expression& call, Evaluator& evaluator, const RegionalConversions& regional)
{
    const Function function = functionOf(call);
    switch (function) {
    case Function::Date:
        return today();
    case Function::Now:
        return now();
    case Function::Time:
        return timeOfDay();
    case Function::If: {
        const std::size_t chosen = evaluator.test(*call.operands[0]) == Truth::True ? 1 : 2;
        return inKind(evaluator.value(*call.operands[chosen]), call.operands[chosen]->kind, call.kind);
    }
    case Function::NotNull:
        return notNull(call, evaluator, regional);
    default:
        break;
    }

    const Value argument = evaluator.value(*call.operands[0]);
    if (function == Function::IsNull)
        return isNull(argument);
    std::vector<Value> others;
    for (std::size_t i = 1; i < call.operands.size(); ++i)
        others.push_back(evaluator.value(*call.operands[i]));
    if (function == Function::Format)
        return others.empty() || isNull(others[0])
                   ? toText(argument, regional)
                   : regional.format(withoutNoise(argument), toText(others[0], regional));
    if (isNull(argument) || std::any_of(others.begin(), others.end(), isNull))
        return Null{};
    switch (function) {
    case Function::Absolute:
        return absolute(argument, regional);
    case Function::Floor:
    case Function::Truncate:
        return whole(argument, function == Function::Floor);
    case Function::Year:
    case Function::Month:
    case Function::Day:
        return datePart(function, argument, regional);
    case Function::LeadingNumber:
        return regional.leadingNumber(toText(argument, regional));
    case Function::Length:
        return static_cast<std::int32_t>(utf16Length(toText(argument, regional)));
    case Function::Upper:
        return regional.upperCase(toText(argument, regional));
    case Function::Lower:
        return regional.lowerCase(toText(argument, regional));
    case Function::Left:
    case Function::Middle:
    case Function::Right:
        return part(function, toText(argument, regional), others);
    default:
        return trimmed(function, toText(argument, regional));
    }
}

} // namespace accessfile::sql
