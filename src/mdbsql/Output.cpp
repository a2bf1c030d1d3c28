#include "mdbsql/Output.h"

#include <array>
#include <charconv>

namespace {

using accessfile::Value;

constexpr std::string_view hexDigits = "0123456789ABCDEF";

/// The second byte of the two that UTF-8 has for U+0080 to U+009F, behind their first.
bool isUpperControl(unsigned char first, unsigned char second)
{
    return first == 0xC2 && second < 0xA0;
}

/// Plain digits with a point, all that the number holds and no exponent, readable by the next program.
template <typename Number>
std::string digits(Number number)
{
    std::array<char, 1100> buffer{};
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number, std::chars_format::fixed);
    return {buffer.data(), end.ptr};
}

std::string digits(accessfile::Money money)
{
    std::string text = accessfile::decimalText(accessfile::toDecimal(money));
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.')
        text.pop_back();
    return text;
}

template <typename Container>
std::string hexadecimal(const Container& bytes)
{
    std::string text;
    for (const std::uint8_t byte : bytes) {
        text += hexDigits[byte >> 4U];
        text += hexDigits[byte & 15U];
    }
    return text;
}

} // namespace

std::string printable(std::string_view utf8)
{
    std::string shown;
    shown.reserve(utf8.size());
    for (std::size_t i = 0; i < utf8.size(); ++i) {
        const auto byte = static_cast<unsigned char>(utf8[i]);
        const auto next = static_cast<unsigned char>(i + 1 < utf8.size() ? utf8[i + 1] : 0xFF);
        const bool upper = isUpperControl(byte, next);
        if (byte == '\n' || byte == '\r' || byte == '\t' || byte == '\\') {
            shown += '\\';
            shown += byte == '\n' ? 'n' : byte == '\r' ? 'r' : byte == '\t' ? 't' : '\\';
        } else if (byte < 0x20 || byte == 0x7F || upper) {
            const unsigned char code = upper ? next : byte;
            shown += "\\x";
            shown += hexDigits[code >> 4U];
            shown += hexDigits[code & 15U];
            i += upper ? 1 : 0;
        } else {
            shown += utf8[i];
        }
    }
    return shown;
}

OutputError::OutputError()
    : std::runtime_error("não foi possível gravar a saída")
{}

void flush(std::ostream& out)
{
    if (!out.flush())
        throw OutputError();
}

void TextSink::columns(const std::vector<accessfile::ResultColumn>& columns)
{
    m_out.str({});
    m_first = true;
    for (const accessfile::ResultColumn& column : columns)
        textCell(column.name);
    endRow(std::nullopt);
}

void TextSink::cell(const Value& value)
{
    if (const bool* truth = std::get_if<bool>(&value))
        write(*truth ? "-1" : "0");
    else if (const std::int32_t* integer = std::get_if<std::int32_t>(&value))
        write(std::to_string(*integer));
    else if (const float* single = std::get_if<float>(&value))
        write(digits(*single));
    else if (const double* number = std::get_if<double>(&value))
        write(digits(*number));
    else if (const auto* money = std::get_if<accessfile::Money>(&value))
        write(digits(*money));
    else if (const auto* date = std::get_if<accessfile::DateTime>(&value))
        write(m_conversions.dateToText(date->serial));
    else if (const std::string* text = std::get_if<std::string>(&value))
        textCell(*text);
    else if (const auto* numeric = std::get_if<accessfile::Numeric>(&value))
        write(accessfile::decimalText(*numeric));
    else if (const auto* guid = std::get_if<accessfile::Guid>(&value))
        write(hexadecimal(guid->bytes));
    else if (const auto* binary = std::get_if<accessfile::Bytes>(&value))
        write(hexadecimal(*binary));
    else
        write({});
}

void TextSink::textCell(std::string_view utf8)
{
    write(printable(utf8));
}

void TextSink::endRow(std::optional<accessfile::RowId> /*row*/)
{
    m_out << '\n';
    m_first = true;
    if (!m_out)
        throw OutputError();
}

void TextSink::write(std::string_view plain)
{
    if (!m_first)
        m_out << '\t';
    m_first = false;
    m_out << plain;
}
