#include "accessfile/sql/RowBuffer.h"

#include <algorithm>
#include <cstring>

namespace accessfile::sql {

void RowBuffer::add(const Value& value)
{
    if (isNull(value)) {
        m_cells += static_cast<char>(Tag::Null);
    } else if (const std::string* text = std::get_if<std::string>(&value)) {
        addText(*text);
    } else if (const std::int32_t* integer = std::get_if<std::int32_t>(&value)) {
        addPlain(Tag::Integer, *integer);
    } else if (const double* number = std::get_if<double>(&value)) {
        addPlain(Tag::Double, *number);
    } else if (const DateTime* date = std::get_if<DateTime>(&value)) {
        addPlain(Tag::Date, date->serial);
    } else {
        // The rare types are kept as they are.
        addPlain(Tag::Other, m_others.size());
        m_others.push_back(value);
    }
}

void RowBuffer::addText(std::string_view text)
{
    addPlain(Tag::Text, static_cast<std::uint32_t>(text.size()));
    m_cells += text;
}

void RowBuffer::endRow(std::string_view key, std::optional<RowId> row)
{
    Row entry;
    entry.row = row;
    entry.key = m_keys.size();
    entry.keySize = static_cast<std::uint32_t>(key.size());
    entry.cells = m_rowBegin;
    for (std::size_t i = 0; i < sizeof entry.prefix; ++i)
        entry.prefix = entry.prefix << 8U | (i < key.size() ? static_cast<unsigned char>(key[i]) : 0U);
    m_keys += key;
    m_rowBegin = m_cells.size();
    m_rows.push_back(entry);
}

void RowBuffer::sort()
{
    std::sort(m_rows.begin(), m_rows.end(), [this](const Row& a, const Row& b) {
        if (a.prefix != b.prefix)
            return a.prefix < b.prefix;
        const int order = keyOf(a).compare(keyOf(b));
        return order != 0 ? order < 0 : a.cells < b.cells;
    });
}

void RowBuffer::keepFirst(std::size_t count, bool ties)
{
    if (count >= m_rows.size())
        return;
    const auto behind = m_rows.begin() + static_cast<std::ptrdiff_t>(count);
    const auto differs = [&](const Row& row) { return keyOf(row) != keyOf(*(behind - 1)); };
    m_rows.erase(ties && count > 0 ? std::find_if(behind, m_rows.end(), differs) : behind, m_rows.end());
}

void RowBuffer::emit(RowSink& sink, std::size_t columns) const
{
    for (const Row& row : m_rows) {
        std::size_t at = row.cells;
        for (std::size_t i = 0; i < columns; ++i)
            emitCell(sink, at);
        sink.endRow(row.row);
    }
}

std::string_view RowBuffer::keyOf(const Row& row) const
{
    return std::string_view(m_keys).substr(row.key, row.keySize);
}

template <typename T>
void RowBuffer::addPlain(Tag tag, T value)
{
    m_cells += static_cast<char>(tag);
    m_cells.append(reinterpret_cast<const char*>(&value), sizeof value);
}

template <typename T>
T RowBuffer::plain(std::size_t& at) const
{
    T value{};
    std::memcpy(&value, m_cells.data() + at, sizeof value);
    at += sizeof value;
    return value;
}

void RowBuffer::emitCell(RowSink& sink, std::size_t& at) const
{
    switch (static_cast<Tag>(m_cells[at++])) {
    case Tag::Null:
        sink.cell(Null{});
        break;
    case Tag::Text: {
        const auto size = plain<std::uint32_t>(at);
        sink.textCell(std::string_view(m_cells).substr(at, size));
        at += size;
        break;
    }
    case Tag::Integer:
        sink.cell(plain<std::int32_t>(at));
        break;
    case Tag::Double:
        sink.cell(plain<double>(at));
        break;
    case Tag::Date:
        sink.cell(DateTime{plain<double>(at)});
        break;
    case Tag::Other:
        sink.cell(m_others[plain<std::size_t>(at)]);
        break;
    }
}

} // namespace accessfile::sql
