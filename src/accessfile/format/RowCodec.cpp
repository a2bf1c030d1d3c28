#include "accessfile/format/RowCodec.h"

#include "accessfile/Error.h"
#include "accessfile/format/TextCodec.h"

#include <algorithm>
#include <cmath>

namespace accessfile {

namespace {

/// The first three groups of a GUID are stored little-endian.
constexpr std::array<std::size_t, 16> guidOrder = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};

[[noreturn]] void throwMismatch(const ColumnDefinition& column)
{
    throw Error(ErrorKind::TypeMismatch, "O valor não é do tipo da coluna '" + column.name + "'.");
}

[[noreturn]] void throwTooLong(const ColumnDefinition& column)
{
    throw Error(ErrorKind::TooLong, "O campo '" + column.name + "' é pequeno demais para o valor.");
}

template <typename Type>
const Type& as(const ColumnDefinition& column, const Value& value)
{
    if (const Type* held = std::get_if<Type>(&value))
        return *held;
    throwMismatch(column);
}

std::int32_t wholeNumber(const ColumnDefinition& column, const Value& value, std::int32_t least, std::int32_t most)
{
    const auto number = as<std::int32_t>(column, value);
    if (number < least || number > most)
        throw Error(ErrorKind::Overflow, "O valor não cabe na coluna '" + column.name + "'.");
    return number;
}

/// Divides the magnitude by ten; the remainder is cut off.
void divideByTen(Numeric& number)
{
    std::uint64_t rest = 0;
    for (std::uint32_t& word : number.magnitude) {
        const std::uint64_t part = rest << 32 | word;
        word = static_cast<std::uint32_t>(part / 10);
        rest = part % 10;
    }
}

bool multiplyByTen(Numeric& number)
{
    std::uint64_t carry = 0;
    for (std::size_t i = number.magnitude.size(); i-- > 0;) {
        const std::uint64_t part = std::uint64_t{number.magnitude[i]} * 10 + carry;
        number.magnitude[i] = static_cast<std::uint32_t>(part & 0xFFFFFFFF);
        carry = part >> 32;
    }
    return carry == 0;
}

Bytes encodeNumeric(const ColumnDefinition& column, Numeric number)
{
    for (; number.scale > column.scale; --number.scale)
        divideByTen(number);
    bool fits = true;
    for (; number.scale < column.scale && fits; ++number.scale)
        fits = multiplyByTen(number);
    Numeric digits = number;
    for (int i = 0; i < column.precision; ++i)
        divideByTen(digits);
    if (!fits || digits.magnitude != std::array<std::uint32_t, 4>{})
        throw Error(ErrorKind::Overflow, "O valor não cabe na coluna '" + column.name + "'.");
    Bytes stored(17, 0);
    stored[0] = number.negative && number.magnitude != std::array<std::uint32_t, 4>{} ? 0x80 : 0;
    for (std::size_t i = 0; i < 4; ++i)
        store32(stored.data() + 1 + 4 * i, number.magnitude[i]);
    return stored;
}

} // namespace

RowLayout::RowLayout(ByteView row, bool hasVariable)
    : m_row(row)
{
    if (row.size() < 2)
        throwDamaged("registro");
    m_columns = load16(row.data());
    const std::size_t maskBytes = (m_columns + 7) / 8;
    if (2 + maskBytes > row.size())
        throwDamaged("registro");
    m_mask = row.size() - maskBytes;
    if (!hasVariable)
        return;
    if (m_mask < 6)
        throwDamaged("registro");
    m_variable = load16(row.data() + m_mask - 2);
    m_table = m_mask - 4;
    // Offsets of all slots and the end of the data must lie inside the row.
    if (m_table < 2 * m_variable + 2)
        throwDamaged("registro");
}

std::size_t RowLayout::fixedEnd() const
{
    return m_table == 0 ? m_mask : offsetOf(0);
}

std::optional<ByteView> RowLayout::cell(const ColumnDefinition& column) const
{
    if (!present(column.id))
        return std::nullopt;
    if (column.fixed) {
        const std::size_t start = 2 + std::size_t{column.fixedOffset};
        const std::size_t limit = m_table == 0 ? m_mask : m_table - 2 * m_variable;
        if (start + column.length > limit)
            throwDamaged("registro mais curto que as colunas");
        return m_row.subspan(start, column.length);
    }
    if (column.slot >= m_variable)
        return std::nullopt;
    const std::size_t start = offsetOf(column.slot);
    const std::size_t end = offsetOf(column.slot + std::size_t{1});
    if (start > end || end > m_table - 2 * m_variable)
        throwDamaged("campo de um registro");
    return m_row.subspan(start, end - start);
}

Value decodeCell(const ColumnDefinition& column, ByteView stored)
{
    const auto need = [&](std::size_t length) {
        if (stored.size() < length)
            throwDamaged("campo '" + column.name + "'");
    };
    switch (column.type) {
    case ColumnType::Byte:
        need(1);
        return std::int32_t{stored[0]};
    case ColumnType::Int:
        need(2);
        return std::int32_t{static_cast<std::int16_t>(load16(stored.data()))};
    case ColumnType::Long:
        need(4);
        return static_cast<std::int32_t>(load32(stored.data()));
    case ColumnType::Money:
        need(8);
        return Money{static_cast<std::int64_t>(load64(stored.data()))};
    case ColumnType::Float: {
        need(4);
        const std::uint32_t bits = load32(stored.data());
        float number = 0;
        std::memcpy(&number, &bits, sizeof number);
        return number;
    }
    case ColumnType::Double:
        need(8);
        return loadDouble(stored.data());
    case ColumnType::Date:
        need(8);
        return DateTime{loadDouble(stored.data())};
    case ColumnType::Guid: {
        need(16);
        Guid guid;
        for (std::size_t i = 0; i < 16; ++i)
            guid.bytes[i] = stored[guidOrder[i]];
        return guid;
    }
    case ColumnType::Numeric: {
        need(17);
        Numeric number;
        number.negative = (stored[0] & 0x80) != 0;
        number.scale = column.scale;
        for (std::size_t i = 0; i < 4; ++i)
            number.magnitude[i] = load32(stored.data() + 1 + 4 * i);
        return number;
    }
    case ColumnType::Text: {
        std::string text;
        if (column.fixed)
            appendUtf16(stored, text);
        else
            appendStoredText(stored, text);
        return text;
    }
    default:
        return Bytes(stored.begin(), stored.end());
    }
}

Bytes encodeCell(const ColumnDefinition& column, const Value& value)
{
    Bytes stored;
    switch (column.type) {
    case ColumnType::Byte:
        stored.push_back(static_cast<std::uint8_t>(wholeNumber(column, value, 0, 255)));
        return stored;
    case ColumnType::Int:
        append16(stored, static_cast<std::uint16_t>(wholeNumber(column, value, -32768, 32767)));
        return stored;
    case ColumnType::Long:
        append32(stored, static_cast<std::uint32_t>(as<std::int32_t>(column, value)));
        return stored;
    case ColumnType::Money:
        stored.resize(8);
        store(stored.data(), as<Money>(column, value).scaled);
        return stored;
    case ColumnType::Float: {
        const float number = as<float>(column, value);
        if (!std::isfinite(number))
            throw Error(ErrorKind::Overflow, "O valor não cabe na coluna '" + column.name + "'.");
        std::uint32_t bits = 0;
        std::memcpy(&bits, &number, sizeof bits);
        append32(stored, bits);
        return stored;
    }
    case ColumnType::Double:
    case ColumnType::Date: {
        const double number =
            column.type == ColumnType::Date ? as<DateTime>(column, value).serial : as<double>(column, value);
        // Dates run from the year 100 to 9999.
        if (!std::isfinite(number) || (column.type == ColumnType::Date && (number < -657434 || number >= 2958466)))
            throw Error(ErrorKind::Overflow, "O valor não cabe na coluna '" + column.name + "'.");
        stored.resize(8);
        storeDouble(stored.data(), number);
        return stored;
    }
    case ColumnType::Guid: {
        const Guid& guid = as<Guid>(column, value);
        stored.resize(16);
        for (std::size_t i = 0; i < 16; ++i)
            stored[guidOrder[i]] = guid.bytes[i];
        return stored;
    }
    case ColumnType::Numeric:
        return encodeNumeric(column, as<Numeric>(column, value));
    case ColumnType::Text: {
        const std::string& text = as<std::string>(column, value);
        stored = toStoredText(text, false);
        if (stored.size() > column.length)
            throwTooLong(column);
        if (column.fixed) {
            while (stored.size() < column.length)
                append16(stored, ' ');
        } else if (column.compressible) {
            stored = toStoredText(text, true);
        }
        return stored;
    }
    case ColumnType::Binary:
    case ColumnType::BigBinary:
        stored = as<Bytes>(column, value);
        if (stored.size() > column.length)
            throwTooLong(column);
        if (column.fixed)
            stored.resize(column.length);
        return stored;
    default:
        throwMismatch(column);
    }
}

Bytes encodeRow(const TableDefinition& definition, std::span<const std::optional<Bytes>> cells)
{
    const std::size_t columns = definition.maxColumns();
    const std::size_t slots = definition.variableSlots();
    Bytes row(2 + definition.fixedArea(), 0);
    store16(row.data(), columns);
    Bytes mask((columns + 7) / 8, 0);
    std::vector<const Bytes*> variable(slots, nullptr);
    for (std::size_t i = 0; i < definition.columns.size(); ++i) {
        const ColumnDefinition& column = definition.columns[i];
        if (!cells[i])
            continue;
        mask[column.id / 8] = static_cast<std::uint8_t>(mask[column.id / 8] | 1U << (column.id % 8));
        if (column.type == ColumnType::Bool)
            continue;
        if (column.fixed)
            std::copy_n(cells[i]->begin(), std::min<std::size_t>(cells[i]->size(), column.length),
                        row.begin() + 2 + column.fixedOffset);
        else
            variable[column.slot] = &*cells[i];
    }
    if (slots > 0) {
        std::vector<std::size_t> offsets;
        for (const Bytes* bytes : variable) {
            offsets.push_back(row.size());
            if (bytes != nullptr)
                append(row, *bytes);
        }
        append16(row, row.size());
        for (std::size_t i = slots; i-- > 0;)
            append16(row, offsets[i]);
        append16(row, slots);
    }
    append(row, mask);
    if (row.size() > longestRow)
        throw Error(ErrorKind::TooLong, "O registro é grande demais.");
    return row;
}

} // namespace accessfile
