#include "accessfile/format/Properties.h"

#include "accessfile/Error.h"
#include "accessfile/Storage.h"
#include "accessfile/format/TextCodec.h"

#include <algorithm>

namespace accessfile {

namespace {

// Layout: "MR2" 00, then chunks. A chunk is
//
//   offset size
//        0    4  its length, these bytes included
//        4    2  kind: 80 names, 0 properties of the table, 1 those of a column
//
// Names are texts, each behind its length (2 bytes). Properties begin with the length of this head (4), the length of
// the owner's name (2) and that name; each property is
//
//   offset size
//        0    2  its length, these bytes included
//        2    1  1
//        3    1  type of the value
//        4    2  number of its name
//        6    2  length of the value
//        8       the value
constexpr std::size_t chunkKindAt = 4;
constexpr std::size_t chunkHead = 6;
constexpr std::size_t ownerNameAt = 6;
constexpr std::size_t itemTypeAt = 3;
constexpr std::size_t itemNameAt = 4;
constexpr std::size_t itemLengthAt = 6;
constexpr std::size_t itemHead = 8;
constexpr std::array<std::uint8_t, 4> signature = {'M', 'R', '2', 0};
constexpr std::uint16_t namesKind = 0x80;
constexpr std::uint16_t objectKind = 0;
constexpr std::uint16_t columnKind = 1;
constexpr std::uint8_t flagType = 0x01;
constexpr std::uint8_t textType = 0x0A;
constexpr std::uint8_t memoType = 0x0C;

std::string textOf(ByteView bytes)
{
    std::string text;
    appendUtf16(bytes, text);
    return text;
}

} // namespace

Properties::Properties(ByteView blob)
{
    if (blob.empty())
        return;
    try {
        parse(blob);
    } catch (const Error&) {
        m_readable = false;
    }
}

void Properties::parse(ByteView blob)
{
    if (blob.size() < signature.size() || !std::equal(signature.begin(), signature.end(), blob.begin()))
        throwDamaged("propriedades da tabela");
    for (std::size_t at = signature.size(); at + chunkHead <= blob.size();) {
        const std::size_t length = load32(blob.data() + at);
        if (length < chunkHead || length > blob.size() - at)
            throwDamaged("propriedades da tabela");
        const ByteView body = blob.subspan(at + chunkHead, length - chunkHead);
        m_chunks.push_back({load16(blob.data() + at + chunkKindAt), {body.begin(), body.end()}});
        at += length;
    }
    for (const Chunk& chunk : m_chunks) {
        if (chunk.kind != namesKind)
            continue;
        for (std::size_t at = 0; at + 2 <= chunk.body.size();) {
            const std::size_t length = load16(chunk.body.data() + at);
            if (length > chunk.body.size() - at - 2)
                throwDamaged("propriedades da tabela");
            m_names.push_back(textOf(ByteView(chunk.body).subspan(at + 2, length)));
            at += 2 + length;
        }
    }
    for (const Chunk& chunk : m_chunks) {
        if (chunk.kind == objectKind || chunk.kind == columnKind)
            parseOwner(chunk);
    }
}

void Properties::parseOwner(const Chunk& chunk)
{
    const ByteView body(chunk.body);
    if (body.size() < ownerNameAt)
        throwDamaged("propriedades da tabela");
    const std::size_t header = load32(body.data());
    const std::size_t nameLength = load16(body.data() + ownerNameAt - 2);
    if (header < ownerNameAt || header > body.size() || nameLength > header - ownerNameAt)
        throwDamaged("propriedades da tabela");
    // The table's own name is not needed to find its properties.
    const std::string owner = chunk.kind == objectKind ? std::string() : textOf(body.subspan(ownerNameAt, nameLength));
    for (std::size_t at = header; at + itemHead <= body.size();) {
        const std::size_t length = load16(body.data() + at);
        const std::size_t valueLength = load16(body.data() + at + itemLengthAt);
        const std::size_t name = load16(body.data() + at + itemNameAt);
        if (length < itemHead || length > body.size() - at || valueLength > length - itemHead)
            throwDamaged("propriedades da tabela");
        const ByteView value = body.subspan(at + itemHead, valueLength);
        if (name < m_names.size())
            m_items.push_back({owner, m_names[name], body[at + itemTypeAt], {value.begin(), value.end()}});
        at += length;
    }
}

const Properties::Item* Properties::find(std::string_view owner, std::string_view property) const
{
    for (const Item& item : m_items) {
        if (item.name == property && sameName(item.owner, owner))
            return &item;
    }
    return nullptr;
}

std::optional<std::string> Properties::text(std::string_view owner, std::string_view property) const
{
    const Item* item = find(owner, property);
    if (item == nullptr || (item->type != textType && item->type != memoType))
        return std::nullopt;
    return textOf(item->value);
}

std::optional<bool> Properties::flag(std::string_view owner, std::string_view property) const
{
    const Item* item = find(owner, property);
    if (item == nullptr || item->type != flagType || item->value.empty())
        return std::nullopt;
    return item->value.front() != 0;
}

bool Properties::anyText(std::string_view property) const
{
    return std::any_of(m_items.begin(), m_items.end(), [&](const Item& item) {
        return item.name == property && (item.type == textType || item.type == memoType) && !item.value.empty();
    });
}

std::size_t Properties::nameIndex(const std::string& name)
{
    const auto found = std::find(m_names.begin(), m_names.end(), name);
    if (found != m_names.end())
        return static_cast<std::size_t>(found - m_names.begin());
    auto names =
        std::find_if(m_chunks.begin(), m_chunks.end(), [](const Chunk& each) { return each.kind == namesKind; });
    if (names == m_chunks.end())
        names = m_chunks.insert(m_chunks.begin(), Chunk{namesKind, {}});
    const Bytes text = toUtf16(name);
    append16(names->body, text.size());
    append(names->body, text);
    m_names.push_back(name);
    return m_names.size() - 1;
}

void Properties::addColumn(const Column& column)
{
    std::vector<Item> items;
    if (column.required)
        items.push_back({column.name, "Required", flagType, {0xFF}});
    const bool isText = column.type == ColumnType::Text || column.type == ColumnType::Memo;
    if (isText && !column.allowZeroLength)
        items.push_back({column.name, "AllowZeroLength", flagType, {0}});
    if (column.defaultExpression)
        items.push_back({column.name, "DefaultValue", memoType, toUtf16(*column.defaultExpression)});
    if (items.empty())
        return;
    Chunk chunk{columnKind, {}};
    const Bytes owner = toUtf16(column.name);
    append32(chunk.body, static_cast<std::uint32_t>(ownerNameAt + owner.size()));
    append16(chunk.body, owner.size());
    append(chunk.body, owner);
    for (Item& item : items) {
        append16(chunk.body, itemHead + item.value.size());
        chunk.body.push_back(1);
        chunk.body.push_back(item.type);
        append16(chunk.body, nameIndex(item.name));
        append16(chunk.body, item.value.size());
        append(chunk.body, item.value);
        m_items.push_back(std::move(item));
    }
    m_chunks.push_back(std::move(chunk));
}

Bytes Properties::blob() const
{
    if (m_chunks.empty())
        return {};
    Bytes blob(signature.begin(), signature.end());
    for (const Chunk& chunk : m_chunks) {
        append32(blob, static_cast<std::uint32_t>(chunkHead + chunk.body.size()));
        append16(blob, chunk.kind);
        append(blob, chunk.body);
    }
    return blob;
}

} // namespace accessfile
