#include "accessfile/table/LongValues.h"

#include "accessfile/Error.h"
#include "accessfile/format/DataPage.h"
#include "accessfile/format/RowCodec.h"
#include "accessfile/format/TextCodec.h"

#include <algorithm>

namespace accessfile {

namespace {

using namespace longvalue;

constexpr std::size_t longestInline = 64;
constexpr std::size_t longestInOneRow = 3816;
constexpr std::size_t chainChunk = 4072;
constexpr std::size_t leastUsefulRoom = 258;

PagePointer longValuePage(const Pager& pager, PageNumber number)
{
    PagePointer page = pager.page(number);
    if (!isType(*page, PageType::Data) || datapage::owner(*page) != datapage::longValueOwner)
        throwDamaged("a página " + std::to_string(number) + " não é de textos longos");
    return page;
}

Bytes makeDescriptor(std::size_t length, std::uint32_t kind, RowId row, std::uint32_t stamp)
{
    Bytes descriptor(descriptorLength, 0);
    store32(descriptor.data(), static_cast<std::uint32_t>(length) | kind);
    storeRowId(descriptor.data() + rowAt, row);
    store32(descriptor.data() + stampAt, stamp);
    return descriptor;
}

} // namespace

void PiecesRead::begin(RowId row, int column)
{
    m_current.owner =
        std::uint64_t{row.page} << 24U | std::uint64_t{row.slot} << 16U | static_cast<std::uint16_t>(column);
    ++m_current.reading;
}

void PiecesRead::claim(RowId piece)
{
    Claim& claim = m_claims[std::uint64_t{piece.page} << 8U | piece.slot];
    if (claim.reading != 0 && (claim.owner != m_current.owner || claim.reading == m_current.reading))
        throwDamaged("conteúdo repetido na página " + std::to_string(piece.page));
    claim = m_current;
}

Bytes LongValues::read(ByteView descriptor, PiecesRead& pieces) const
{
    if (descriptor.empty())
        return {};
    if (descriptor.size() < descriptorLength)
        throwDamaged("texto longo");
    const std::uint32_t word = load32(descriptor.data());
    const std::size_t length = word & lengthMask;
    if ((word & inlineKind) != 0) {
        if (length > descriptor.size() - descriptorLength)
            throwDamaged("texto longo");
        const ByteView content = descriptor.subspan(descriptorLength, length);
        return {content.begin(), content.end()};
    }
    RowId next = loadRowId(descriptor.data() + rowAt);
    if ((word & rowKind) != 0) {
        pieces.claim(next);
        const PagePointer page = longValuePage(m_pager, next.page);
        const ByteView row = datapage::row(*page, next.slot);
        if (length > row.size())
            throwDamaged("texto longo incompleto na página " + std::to_string(next.page));
        return {row.begin(), row.begin() + static_cast<std::ptrdiff_t>(length)};
    }
    // The declared length is not trusted with memory before the chain has delivered it.
    if (length > std::size_t{m_pager.pageCount()} * pageSize)
        throwDamaged("texto longo");
    Bytes content;
    PageNumber last = next.page;
    while (content.size() < length) {
        if (next.page == 0)
            throwDamaged("texto longo incompleto na página " + std::to_string(last));
        pieces.claim(next);
        const PagePointer page = longValuePage(m_pager, next.page);
        const ByteView row = datapage::row(*page, next.slot);
        if (row.size() <= datapage::pointerLength || row.size() - datapage::pointerLength > length - content.size())
            throwDamaged("texto longo de outro tamanho na página " + std::to_string(next.page));
        append(content, row.subspan(datapage::pointerLength));
        last = next.page;
        next = loadRowId(row.data());
    }
    // What goes on behind its length runs in a circle, or belongs to another value.
    if (next.page != 0)
        throwDamaged("texto longo que não termina na página " + std::to_string(last));
    return content;
}

Value LongValues::value(const ColumnDefinition& column, ByteView descriptor, PiecesRead& pieces) const
{
    Bytes content = read(descriptor, pieces);
    if (column.type != ColumnType::Memo)
        return content;
    std::string text;
    appendStoredText(content, text);
    return text;
}

LongValues::Prepared LongValues::prepare(const ColumnDefinition& column, const Value& value)
{
    Prepared prepared;
    if (column.type == ColumnType::Memo) {
        const std::string* text = std::get_if<std::string>(&value);
        if (text == nullptr)
            throw Error(ErrorKind::TypeMismatch, "O valor não é do tipo da coluna '" + column.name + "'.");
        prepared.content = toStoredText(*text, false);
        prepared.plainLength = prepared.content.size();
        // The form is chosen by the plain length; chains are never compressed.
        if (prepared.plainLength <= longestInOneRow && (prepared.plainLength <= longestInline || column.compressible))
            prepared.content = toStoredText(*text, true);
    } else {
        const Bytes* bytes = std::get_if<Bytes>(&value);
        if (bytes == nullptr)
            throw Error(ErrorKind::TypeMismatch, "O valor não é do tipo da coluna '" + column.name + "'.");
        prepared.content = *bytes;
        prepared.plainLength = bytes->size();
    }
    if (prepared.content.size() > lengthMask)
        throw Error(ErrorKind::TooLong, "O campo '" + column.name + "' é pequeno demais para o valor.");
    return prepared;
}

Bytes LongValues::Prepared::placeholder() const
{
    return Bytes(descriptorLength + (plainLength <= longestInline ? content.size() : 0), 0);
}

Bytes LongValues::write(const ColumnDefinition& column, const Prepared& prepared)
{
    const Bytes& content = prepared.content;
    const std::size_t plainLength = prepared.plainLength;
    if (plainLength <= longestInline) {
        Bytes descriptor = makeDescriptor(content.size(), inlineKind, {}, 0);
        append(descriptor, content);
        return descriptor;
    }
    if (column.ownedMap.page == 0)
        throwDamaged("coluna '" + column.name + "' sem mapa de páginas");
    if (plainLength <= longestInOneRow)
        return makeDescriptor(content.size(), rowKind, place(column, content), 0);

    // A chain is written from its end, each row naming the next.
    const std::uint32_t stamp = std::max<std::uint32_t>(1, m_pager.pageCount());
    RowId next;
    std::size_t end = content.size();
    while (end > 0) {
        const std::size_t start = (end - 1) / chainChunk * chainChunk;
        Bytes row(datapage::pointerLength);
        storeRowId(row.data(), next);
        append(row, ByteView(content).subspan(start, end - start));
        next = placeAlone(column, row, start == 0 ? stamp : 0);
        end = start;
    }
    return makeDescriptor(content.size(), 0, next, stamp);
}

RowId LongValues::place(const ColumnDefinition& column, ByteView row)
{
    UsageMap owned(m_pager, column.ownedMap);
    if (column.freeMap.page == 0)
        return placeAlone(column, row, 0);
    UsageMap freePages(m_pager, column.freeMap);
    while (const auto candidate = freePages.highest()) {
        const PagePointer page = m_pager.page(*candidate);
        if (isType(*page, PageType::Data) && datapage::owner(*page) == datapage::longValueOwner &&
            owned.contains(*candidate)) {
            PageBytes& bytes = m_pager.modify(*candidate);
            if (const auto slot = datapage::append(bytes, row)) {
                if (datapage::freeBytes(bytes) < leastUsefulRoom)
                    freePages.remove(*candidate);
                return {*candidate, *slot};
            }
        }
        freePages.remove(*candidate);
    }
    const RowId placed = placeAlone(column, row, 0);
    if (datapage::freeBytes(*m_pager.page(placed.page)) >= leastUsefulRoom)
        freePages.add(placed.page, m_allocator);
    return placed;
}

RowId LongValues::placeAlone(const ColumnDefinition& column, ByteView row, std::uint32_t stamp)
{
    const PageNumber number = m_allocator.allocate();
    PageBytes& page = m_pager.modify(number);
    datapage::initialise(page, datapage::longValueOwner);
    store32(page.data() + datapage::stampAt, stamp);
    const auto slot = datapage::append(page, row);
    UsageMap(m_pager, column.ownedMap).add(number, m_allocator);
    return {number, *slot};
}

void LongValues::free(const ColumnDefinition& column, ByteView descriptor)
{
    if (descriptor.size() < descriptorLength)
        return;
    const std::uint32_t word = load32(descriptor.data());
    if ((word & inlineKind) != 0)
        return;
    RowId next = loadRowId(descriptor.data() + rowAt);
    if ((word & rowKind) != 0) {
        eraseRow(column, next);
        return;
    }
    while (next.page != 0) {
        const PagePointer page = longValuePage(m_pager, next.page);
        const ByteView row = datapage::row(*page, next.slot);
        if (row.size() < datapage::pointerLength)
            throwDamaged("texto longo");
        const RowId following = loadRowId(row.data());
        // An erased row cannot be erased again, so a chain that runs in a circle ends here as damaged.
        eraseRow(column, next);
        next = following;
    }
}

void LongValues::eraseRow(const ColumnDefinition& column, RowId row)
{
    const PagePointer before = longValuePage(m_pager, row.page);
    static_cast<void>(datapage::row(*before, row.slot));
    UsageMap owned(m_pager, column.ownedMap);
    if (!owned.contains(row.page))
        throwDamaged("página de texto longo fora do mapa");
    PageBytes& page = m_pager.modify(row.page);
    datapage::erase(page, row.slot);
    if (!datapage::hasLiveRow(page)) {
        owned.remove(row.page);
        if (column.freeMap.page != 0)
            UsageMap(m_pager, column.freeMap).remove(row.page);
        m_allocator.release(row.page, PageType::EmptiedData);
    } else if (column.freeMap.page != 0 && datapage::freeBytes(page) >= leastUsefulRoom) {
        UsageMap(m_pager, column.freeMap).add(row.page, m_allocator);
    }
}

} // namespace accessfile
