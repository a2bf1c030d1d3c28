#include "accessfile/format/Keys.h"

#include "accessfile/Error.h"
#include "accessfile/format/RowCodec.h"
#include "accessfile/format/TextOrder.h"

#include <algorithm>

namespace accessfile {

namespace {

constexpr std::size_t block = 8;

/// Big-endian copy of a little-endian stored number.
Bytes reversed(ByteView stored)
{
    return {stored.rbegin(), stored.rend()};
}

void invert(Bytes& bytes, std::size_t from)
{
    for (std::size_t i = from; i < bytes.size(); ++i)
        bytes[i] = static_cast<std::uint8_t>(~bytes[i]);
}

/// Blocks of eight bytes, zero padded, each followed by 9 when more follows or by its own length.
void appendBlocks(ByteView bytes, bool ascending, Bytes& key)
{
    for (std::size_t at = 0; at < bytes.size(); at += block) {
        const std::size_t length = std::min(block, bytes.size() - at);
        const bool more = at + length < bytes.size();
        Bytes part(bytes.begin() + static_cast<std::ptrdiff_t>(at),
                   bytes.begin() + static_cast<std::ptrdiff_t>(at + length));
        part.resize(block);
        if (!more)
            part.push_back(static_cast<std::uint8_t>(length));
        if (!ascending)
            invert(part, 0);
        if (more)
            part.push_back(block + 1);
        append(key, part);
    }
}

void appendText(const ColumnDefinition& column, const Value& value, bool ascending, Bytes& key)
{
    const std::string* text = std::get_if<std::string>(&value);
    if (text == nullptr)
        throw Error(ErrorKind::TypeMismatch, "O valor não é do tipo da coluna '" + column.name + "'.");
    const std::size_t start = key.size();
    if (!column.generalOrder)
        throw Error(ErrorKind::ReadOnly,
                    "A coluna '" + column.name + "' usa uma ordem de classificação que não é atendida.");
    if (!appendTextKey(*text, key))
        throw Error(ErrorKind::TypeMismatch, "O texto da coluna indexada '" + column.name +
                                                 "' tem um caractere que o programa não sabe classificar.");
    if (!ascending) {
        invert(key, start);
        key.push_back(0x00);
    }
}

} // namespace

void appendKeyPart(const ColumnDefinition& column, const Value& value, bool ascending, Bytes& key)
{
    if (column.type == ColumnType::Bool) {
        const bool* flag = std::get_if<bool>(&value);
        const bool on = flag != nullptr && *flag;
        key.push_back(ascending ? 0x7F : 0x80);
        key.push_back(on == ascending ? 0x00 : 0xFF);
        return;
    }
    if (isNull(value)) {
        key.push_back(ascending ? 0x00 : 0xFF);
        return;
    }
    key.push_back(ascending ? 0x7F : 0x80);
    if (column.isText()) {
        appendText(column, value, ascending, key);
        return;
    }
    const Bytes stored = encodeCell(column, value);
    Bytes part;
    switch (column.type) {
    case ColumnType::Byte:
        part = stored;
        break;
    case ColumnType::Int:
    case ColumnType::Long:
    case ColumnType::Money:
        part = reversed(stored);
        part[0] ^= 0x80;
        break;
    case ColumnType::Float:
    case ColumnType::Double:
    case ColumnType::Date:
        part = reversed(stored);
        if ((part[0] & 0x80) != 0)
            invert(part, 0);
        else
            part[0] ^= 0x80;
        break;
    case ColumnType::Numeric: {
        const bool negative = stored[0] != 0;
        part.push_back(0);
        for (std::size_t i = 0; i < 4; ++i)
            append(part, reversed(ByteView(stored).subspan(1 + 4 * i, 4)));
        // Descending keys of this type are refused before; both readings of the format agree on the ascending form.
        if (negative)
            invert(part, 0);
        part[0] = negative ? 0x00 : 0xFF;
        break;
    }
    case ColumnType::Guid:
        appendBlocks(std::get<Guid>(value).bytes, ascending, key);
        return;
    case ColumnType::Binary:
        appendBlocks(stored, ascending, key);
        return;
    default:
        throw Error(ErrorKind::ReadOnly, "O índice da coluna '" + column.name + "' não é atendido.");
    }
    if (!ascending)
        invert(part, 0);
    append(key, part);
}

IndexKey makeKey(const TableDefinition& definition, const PhysicalIndex& index,
                 const std::function<Value(std::size_t)>& valueOf)
{
    IndexKey key;
    for (const KeyColumn& part : index.columns) {
        const int position = definition.columnById(part.id);
        if (position < 0)
            throwDamaged("índice sobre uma coluna que não existe");
        const ColumnDefinition& column = definition.columns[static_cast<std::size_t>(position)];
        const Value value = valueOf(static_cast<std::size_t>(position));
        const bool null = isNull(value) && column.type != ColumnType::Bool;
        key.anyNull = key.anyNull || null;
        key.allNull = key.allNull && null;
        appendKeyPart(column, value, part.ascending, key.bytes);
    }
    // Engines disagree on how a longer key is kept.
    if (key.bytes.size() > longestKey)
        throw Error(ErrorKind::TooLong, "Os valores indexados do registro são longos demais.");
    return key;
}

} // namespace accessfile
