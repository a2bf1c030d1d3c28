#include "accessfile/table/DefaultValues.h"

#include "accessfile/Error.h"
#include "accessfile/format/TextCodec.h"

#include <charconv>
#include <cmath>
#include <random>

namespace accessfile {

namespace {

std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && (text.front() == ' ' || text.front() == '='))
        text.remove_prefix(1);
    while (!text.empty() && text.back() == ' ')
        text.remove_suffix(1);
    return text;
}

std::optional<std::string> quotedText(std::string_view text)
{
    if (text.size() < 2 || (text.front() != '"' && text.front() != '\'') || text.back() != text.front())
        return std::nullopt;
    const char quote = text.front();
    text = text.substr(1, text.size() - 2);
    std::string content;
    for (std::size_t i = 0; i < text.size(); ++i) {
        content.push_back(text[i]);
        if (text[i] == quote) {
            if (i + 1 >= text.size() || text[i + 1] != quote)
                return std::nullopt;
            ++i;
        }
    }
    return content;
}

std::optional<Value> numberValue(const Column& column, double number)
{
    switch (column.type) {
    case ColumnType::Bool:
        return Value(number != 0);
    case ColumnType::Byte:
    case ColumnType::Int:
    case ColumnType::Long:
        if (std::fabs(number) > 2147483647.0)
            return std::nullopt;
        return Value(static_cast<std::int32_t>(std::nearbyint(number)));
    case ColumnType::Money:
        if (std::fabs(number) > 9.0e14)
            return std::nullopt;
        return Value(Money{static_cast<std::int64_t>(std::nearbyint(number * 10000))});
    case ColumnType::Float:
        return Value(static_cast<float>(number));
    case ColumnType::Double:
        return Value(number);
    case ColumnType::Date:
        return Value(DateTime{number});
    default:
        return std::nullopt;
    }
}

std::mt19937_64& generator()
{
    static std::mt19937_64 engine{std::random_device{}()};
    return engine;
}

} // namespace

Value literalDefault(const Column& column, std::string_view expression)
{
    const std::string_view text = trimmed(expression);
    const bool isText = column.type == ColumnType::Text || column.type == ColumnType::Memo;
    if (text.empty() || sameName(text, "Null"))
        return Null{};
    if (const auto quoted = quotedText(text); quoted && isText)
        return *quoted;
    double number = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
    std::optional<Value> value;
    if (failure == std::errc() && end == text.data() + text.size())
        value = isText ? Value(std::string(text)) : numberValue(column, number).value_or(Null{});
    else if (sameName(text, "True") || sameName(text, "Yes") || sameName(text, "Sim"))
        value = numberValue(column, -1);
    else if (sameName(text, "False") || sameName(text, "No") || sameName(text, "Não"))
        value = numberValue(column, 0);
    if (!value || isNull(*value))
        throw Error(ErrorKind::ReadOnly, "O valor padrão da coluna '" + column.name +
                                             "' não é compreendido: " + std::string(expression) + ".");
    return *value;
}

bool isRandomNumber(const Column& column)
{
    return column.defaultExpression && foldName(*column.defaultExpression).find("genuniqueid") != std::string::npos;
}

Value randomNumber()
{
    return std::uniform_int_distribution<std::int32_t>(std::numeric_limits<std::int32_t>::min())(generator());
}

Value randomGuid()
{
    Guid guid;
    for (std::uint8_t& byte : guid.bytes)
        byte = static_cast<std::uint8_t>(std::uniform_int_distribution<int>(0, 255)(generator()));
    guid.bytes[6] = static_cast<std::uint8_t>((guid.bytes[6] & 0x0F) | 0x40);
    guid.bytes[8] = static_cast<std::uint8_t>((guid.bytes[8] & 0x3F) | 0x80);
    return guid;
}

} // namespace accessfile
