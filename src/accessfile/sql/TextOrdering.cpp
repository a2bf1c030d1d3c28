#include "accessfile/sql/TextOrdering.h"

#include "accessfile/Storage.h"
#include "accessfile/format/Utf8.h"

#include <algorithm>
#include <optional>

namespace accessfile::sql {

namespace {

bool isPlain(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

std::string_view withoutTrailingBlanks(std::string_view text)
{
    while (!text.empty() && text.back() == ' ')
        text.remove_suffix(1);
    return text;
}

char foldAscii(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
}

int sign(int order)
{
    return order < 0 ? -1 : order > 0 ? 1 : 0;
}

} // namespace

std::u32string codePoints(std::string_view utf8)
{
    std::u32string result;
    result.reserve(utf8.size());
    for (std::size_t position = 0; position < utf8.size();)
        result += nextCodePoint(utf8, position);
    return result;
}

std::size_t utf16Length(std::string_view utf8)
{
    std::size_t units = 0;
    for (const char c : utf8) {
        const auto byte = static_cast<unsigned char>(c);
        if ((byte & 0xC0U) != 0x80U)
            units += byte >= 0xF0 ? 2 : 1;
    }
    return units;
}

std::string sliceUnits(std::string_view utf8, std::size_t begin, std::size_t count)
{
    std::string result;
    std::size_t unit = 0;
    for (std::size_t position = 0; position < utf8.size() && unit < begin + count;) {
        const std::size_t start = position;
        const std::size_t first = unit;
        unit += nextCodePoint(utf8, position) >= 0x10000 ? 2 : 1;
        if (first >= begin && unit <= begin + count)
            result += utf8.substr(start, position - start);
    }
    return result;
}

char32_t foldCase(char32_t c)
{
    if (c < 0x80)
        return c >= U'A' && c <= U'Z' ? c + 32 : c;
    if (c >= 0xC0 && c <= 0xDE)
        return c == 0xD7 ? c : c + 32;
    if (c == 0x178)
        return 0xFF;
    if ((c >= 0x100 && c <= 0x137) || (c >= 0x14A && c <= 0x177))
        return c | 1U;
    if ((c >= 0x139 && c <= 0x148) || (c >= 0x179 && c <= 0x17E))
        return c % 2 == 1 ? c + 1 : c;
    if (c >= 0x391 && c <= 0x3A9)
        return c + 32;
    if (c >= 0x410 && c <= 0x42F)
        return c + 32;
    if (c >= 0x400 && c <= 0x40F)
        return c + 80;
    return c;
}

std::string foldCase(std::string_view utf8)
{
    std::string result;
    result.reserve(utf8.size());
    for (std::size_t position = 0; position < utf8.size();) {
        if (static_cast<unsigned char>(utf8[position]) < 0x80)
            result += foldAscii(utf8[position++]);
        else
            appendCodePoint(foldCase(nextCodePoint(utf8, position)), result);
    }
    return result;
}

std::string orderingKey(std::string_view utf8)
{
    if (std::optional<std::string> key = textSortKey(utf8))
        return *std::move(key);
    return "\xFF" + foldCase(withoutTrailingBlanks(utf8));
}

int compareTexts(std::string_view a, std::string_view b)
{
    return a == b ? 0 : sign(orderingKey(a).compare(orderingKey(b)));
}

ComparedText::ComparedText(std::string_view text)
    : m_key(orderingKey(text))
    , m_folded(foldCase(withoutTrailingBlanks(text)))
    , m_plain(isPlain(text))
{}

int ComparedText::order(std::string_view text) const
{
    return sign(orderingKey(text).compare(m_key));
}

bool ComparedText::equals(std::string_view text) const
{
    // Among printable ASCII the order tells all characters apart but for case: no key is needed.
    const std::string_view trimmed = withoutTrailingBlanks(text);
    if (m_plain && isPlain(trimmed))
        return std::equal(trimmed.begin(), trimmed.end(), m_folded.begin(), m_folded.end(),
                          [](char a, char b) { return foldAscii(a) == b; });
    return orderingKey(text) == m_key;
}

} // namespace accessfile::sql
