#include "accessfile/sql/Operators.h"

#include "accessfile/sql/Messages.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace accessfile::sql {

namespace {

Value checked(double number)
{
    if (!std::isfinite(number))
        throw overflow();
    return number;
}

Value checkedInteger(std::int64_t number)
{
    if (number < std::numeric_limits<std::int32_t>::min() || number > std::numeric_limits<std::int32_t>::max())
        throw overflow();
    return static_cast<std::int32_t>(number);
}

DateTime checkedDate(double serial)
{
    constexpr double first = -657434;
    constexpr double behindLast = 2958466;
    if (!(serial >= first && serial < behindLast))
        throw overflow();
    return DateTime{serial};
}

bool isInteger(const Value& value)
{
    return std::holds_alternative<std::int32_t>(value) || std::holds_alternative<bool>(value);
}

std::int64_t integer(const Value& value)
{
    if (const bool* truth = std::get_if<bool>(&value))
        return *truth ? -1 : 0;
    return std::get<std::int32_t>(value);
}

/// Money of a value that is exact in it.
std::optional<std::int64_t> scaledMoney(const Value& value)
{
    if (const Money* money = std::get_if<Money>(&value))
        return money->scaled;
    if (isInteger(value))
        return integer(value) * 10'000;
    return std::nullopt;
}

Money addMoney(std::int64_t a, std::int64_t b)
{
    constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
    constexpr std::int64_t least = std::numeric_limits<std::int64_t>::min();
    if ((b > 0 && a > most - b) || (b < 0 && a < least - b))
        throw overflow();
    return Money{a + b};
}

/// Half to even, as far as \ and MOD reach.
std::int64_t rounded(const Value& value)
{
    const double number = std::nearbyint(toDouble(value));
    if (!(std::abs(number) <= std::numeric_limits<std::int32_t>::max()))
        throw overflow();
    return static_cast<std::int64_t>(number);
}

Value toNumber(const Value& value, const RegionalConversions& regional)
{
    const std::string* text = std::get_if<std::string>(&value);
    if (text == nullptr)
        return value;
    const std::optional<double> number = regional.toNumber(*text);
    if (!number)
        throw typeMismatch();
    return *number;
}

Value addOrSubtract(Operator operation, const Value& a, const Value& b)
{
    const bool subtract = operation == Operator::Subtract;
    if (isInteger(a) && isInteger(b))
        return checkedInteger(subtract ? integer(a) - integer(b) : integer(a) + integer(b));
    const std::optional<std::int64_t> moneyA = scaledMoney(a);
    const std::optional<std::int64_t> moneyB = scaledMoney(b);
    if (moneyA && moneyB) {
        if (subtract && *moneyB == std::numeric_limits<std::int64_t>::min())
            throw overflow();
        return addMoney(*moneyA, subtract ? -*moneyB : *moneyB);
    }
    const double result = subtract ? toDouble(a) - toDouble(b) : toDouble(a) + toDouble(b);
    const bool dateA = std::holds_alternative<DateTime>(a);
    const bool dateB = std::holds_alternative<DateTime>(b);
    if (dateA != dateB && !(subtract && dateB))
        return checkedDate(result);
    return checked(result);
}

/// Decimal of a value that is exact in it.
std::optional<Numeric> exactDecimal(const Value& value)
{
    if (const Numeric* decimal = std::get_if<Numeric>(&value))
        return *decimal;
    if (const Money* money = std::get_if<Money>(&value))
        return toDecimal(*money);
    if (isInteger(value))
        return toDecimal(Money{integer(value) * 10'000});
    return std::nullopt;
}

int order(double a, double b)
{
    return a < b ? -1 : a > b ? 1 : 0;
}

} // namespace

bool isNumber(Kind kind)
{
    return kind >= Kind::Bool && kind <= Kind::Date;
}

Kind kindOf(ColumnType type)
{
    switch (type) {
    case ColumnType::Bool:
        return Kind::Bool;
    case ColumnType::Byte:
    case ColumnType::Int:
    case ColumnType::Long:
        return Kind::Integer;
    case ColumnType::Money:
        return Kind::Money;
    case ColumnType::Float:
        return Kind::Float;
    case ColumnType::Double:
    case ColumnType::Numeric:
        return Kind::Double;
    case ColumnType::Date:
        return Kind::Date;
    case ColumnType::Text:
    case ColumnType::Memo:
        return Kind::Text;
    case ColumnType::Guid:
        return Kind::Guid;
    default:
        return Kind::Binary;
    }
}

ColumnType columnTypeOf(Kind kind)
{
    switch (kind) {
    case Kind::Bool:
        return ColumnType::Bool;
    case Kind::Integer:
        return ColumnType::Long;
    case Kind::Float:
        return ColumnType::Float;
    case Kind::Double:
        return ColumnType::Double;
    case Kind::Money:
        return ColumnType::Money;
    case Kind::Date:
        return ColumnType::Date;
    case Kind::Guid:
        return ColumnType::Guid;
    case Kind::Binary:
        return ColumnType::Binary;
    default:
        return ColumnType::Text;
    }
}

double toDouble(const Value& value)
{
    switch (value.index()) {
    case 1:
        return std::get<bool>(value) ? -1 : 0;
    case 2:
        return std::get<std::int32_t>(value);
    case 3:
        return std::get<float>(value);
    case 4:
        return std::get<double>(value);
    case 5:
        return static_cast<double>(std::get<Money>(value).scaled) / 10'000;
    case 6:
        return std::get<DateTime>(value).serial;
    case 7:
        return toDouble(std::get<Numeric>(value));
    default:
        throw typeMismatch();
    }
}

Money toMoney(double number)
{
    const double scaled = std::nearbyint(number * 10'000);
    if (!(std::abs(scaled) < 9.2233720368547e18))
        throw overflow();
    return Money{static_cast<std::int64_t>(scaled)};
}

std::string guidText(const Guid& guid)
{
    static constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text = "{";
    for (std::size_t i = 0; i < guid.bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10)
            text += '-';
        text += digits[guid.bytes[i] >> 4U];
        text += digits[guid.bytes[i] & 15U];
    }
    return text + '}';
}

Value withoutNoise(const Value& value)
{
    const float* const single = std::get_if<float>(&value);
    if (single == nullptr)
        return value;
    const double magnitude = *single == 0 ? 0 : std::floor(std::log10(std::abs(static_cast<double>(*single))));
    const double step = std::pow(10.0, 6 - magnitude);
    return std::isfinite(step) && step > 0 ? std::nearbyint(*single * step) / step : static_cast<double>(*single);
}

std::string toText(const Value& value, const RegionalConversions& regional)
{
    if (isNull(value))
        return {};
    if (const std::string* text = std::get_if<std::string>(&value))
        return *text;
    if (const DateTime* date = std::get_if<DateTime>(&value))
        return regional.dateToText(date->serial);
    if (const Guid* guid = std::get_if<Guid>(&value))
        return guidText(*guid);
    return regional.numberToText(toDouble(withoutNoise(value)));
}

bool comparable(Kind a, Kind b)
{
    if (a == Kind::Null || b == Kind::Null)
        return true;
    if (a == Kind::Binary || b == Kind::Binary)
        return a == b;
    const bool textA = a == Kind::Text || a == Kind::Guid;
    const bool textB = b == Kind::Text || b == Kind::Guid;
    return textA == textB;
}

std::optional<int> compareValues(const Value& a, const Value& b)
{
    if (isNull(a) || isNull(b))
        return std::nullopt;
    const auto isText = [](const Value& value) {
        return std::holds_alternative<std::string>(value) || std::holds_alternative<Guid>(value);
    };
    if (isText(a) || isText(b)) {
        const auto text = [](const Value& value) {
            const Guid* guid = std::get_if<Guid>(&value);
            return guid != nullptr ? guidText(*guid) : std::get<std::string>(value);
        };
        if (!isText(a) || !isText(b))
            throw typeMismatch();
        return compareTexts(text(a), text(b));
    }
    const Bytes* bytesA = std::get_if<Bytes>(&a);
    const Bytes* bytesB = std::get_if<Bytes>(&b);
    if (bytesA != nullptr && bytesB != nullptr)
        return *bytesA < *bytesB ? -1 : *bytesA == *bytesB ? 0 : 1;
    const std::optional<std::int64_t> moneyA = scaledMoney(a);
    const std::optional<std::int64_t> moneyB = scaledMoney(b);
    if (moneyA && moneyB)
        return *moneyA < *moneyB ? -1 : *moneyA == *moneyB ? 0 : 1;
    if (std::holds_alternative<Numeric>(a) || std::holds_alternative<Numeric>(b)) {
        const std::optional<Numeric> decimalA = exactDecimal(a);
        const std::optional<Numeric> decimalB = exactDecimal(b);
        if (decimalA && decimalB)
            return compareDecimals(*decimalA, *decimalB);
    }
    double left = toDouble(a);
    double right = toDouble(b);
    if (std::holds_alternative<float>(a) || std::holds_alternative<float>(b)) {
        left = static_cast<float>(left);
        right = static_cast<float>(right);
    }
    if (std::isnan(left) || std::isnan(right))
        return std::nullopt;
    return order(left, right);
}

bool satisfies(Operator operation, int relation)
{
    switch (operation) {
    case Operator::Equal:
        return relation == 0;
    case Operator::NotEqual:
        return relation != 0;
    case Operator::Less:
        return relation < 0;
    case Operator::LessEqual:
        return relation <= 0;
    case Operator::Greater:
        return relation > 0;
    default:
        return relation >= 0;
    }
}

Kind arithmeticKind(Operator operation, Kind a, Kind b)
{
    if (a == Kind::Binary || b == Kind::Binary)
        throw typeMismatch();
    if (operation == Operator::Concatenate || (operation == Operator::Add && a == Kind::Text && b == Kind::Text))
        return Kind::Text;
    if (a == Kind::Guid || b == Kind::Guid)
        throw typeMismatch();
    if (a == Kind::Null || b == Kind::Null)
        return a == Kind::Null ? b : a;
    if (operation == Operator::Add || operation == Operator::Subtract) {
        if ((a == Kind::Date) != (b == Kind::Date) && !(operation == Operator::Subtract && b == Kind::Date))
            return Kind::Date;
        const auto whole = [](Kind kind) { return kind == Kind::Integer || kind == Kind::Bool; };
        const auto exact = [&](Kind kind) { return whole(kind) || kind == Kind::Money; };
        if (whole(a) && whole(b))
            return Kind::Integer;
        if (exact(a) && exact(b))
            return Kind::Money;
        return Kind::Double;
    }
    if (operation == Operator::Modulo || operation == Operator::IntegerDivide)
        return Kind::Integer;
    if (operation == Operator::Multiply && (a == Kind::Integer || a == Kind::Bool) &&
        (b == Kind::Integer || b == Kind::Bool))
        return Kind::Integer;
    return Kind::Double;
}

Value calculate(Operator operation, const Value& a, const Value& b, const RegionalConversions& regional)
{
    if (operation == Operator::Concatenate) {
        if (isNull(a) && isNull(b))
            return Null{};
        return toText(a, regional) + toText(b, regional);
    }
    if (isNull(a) || isNull(b))
        return Null{};
    if (operation == Operator::Add && std::holds_alternative<std::string>(a) && std::holds_alternative<std::string>(b))
        return std::get<std::string>(a) + std::get<std::string>(b);
    const Value left = toNumber(a, regional);
    const Value right = toNumber(b, regional);
    switch (operation) {
    case Operator::Add:
    case Operator::Subtract:
        return addOrSubtract(operation, left, right);
    case Operator::Multiply:
        if (isInteger(left) && isInteger(right))
            return checkedInteger(integer(left) * integer(right));
        return checked(toDouble(left) * toDouble(right));
    case Operator::Divide:
        if (toDouble(right) == 0)
            throw divisionByZero();
        return checked(toDouble(left) / toDouble(right));
    case Operator::IntegerDivide:
    case Operator::Modulo: {
        const std::int64_t divisor = rounded(right);
        if (divisor == 0)
            throw divisionByZero();
        return checkedInteger(operation == Operator::Modulo ? rounded(left) % divisor : rounded(left) / divisor);
    }
    default:
        return checked(std::pow(toDouble(left), toDouble(right)));
    }
}

Value negate(const Value& value, const RegionalConversions& regional)
{
    if (isNull(value))
        return value;
    const Value number = toNumber(value, regional);
    if (isInteger(number))
        return checkedInteger(-integer(number));
    if (const Money* money = std::get_if<Money>(&number)) {
        if (money->scaled == std::numeric_limits<std::int64_t>::min())
            throw overflow();
        return Money{-money->scaled};
    }
    if (const Numeric* decimal = std::get_if<Numeric>(&number)) {
        Numeric opposite = *decimal;
        opposite.negative = !opposite.negative;
        return opposite;
    }
    if (const DateTime* date = std::get_if<DateTime>(&number))
        return checkedDate(-date->serial);
    return checked(-toDouble(number));
}

} // namespace accessfile::sql
