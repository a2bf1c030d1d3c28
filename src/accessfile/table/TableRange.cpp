#include "accessfile/Error.h"
#include "accessfile/format/DataPage.h"
#include "accessfile/format/Keys.h"
#include "accessfile/table/IndexTree.h"
#include "accessfile/table/TableFile.h"

#include <algorithm>

namespace accessfile {

namespace {

/// One end of a range as bytes of the first key column.
struct Bound
{
    Bytes bytes;
    bool inclusive = true;
};

bool startsWith(ByteView key, ByteView head)
{
    return key.size() >= head.size() && std::equal(head.begin(), head.end(), key.begin());
}

class RangeCursor : public Cursor
{
public:
    RangeCursor(TableSpace& space, const TableDefinition& definition, PageNumber owner, IndexPosition position,
                Bound lower, std::optional<Bound> upper)
        : m_space(space)
        , m_owner(owner)
        , m_position(std::move(position))
        , m_lower(std::move(lower))
        , m_upper(std::move(upper))
        , m_reader(space, definition)
    {}
    bool next() override
    {
        while (const auto entry = m_position.entry()) {
            const ByteView key = keyOf(*entry);
            m_position.advance();
            if (!m_lower.inclusive && startsWith(key, m_lower.bytes))
                continue;
            if (m_upper) {
                const bool equal = startsWith(key, m_upper->bytes);
                if (equal ? !m_upper->inclusive : compareKeys(key, m_upper->bytes) > 0)
                    return false;
            }
            const RowId row = rowOf(*entry);
            if (!m_page || m_pageNumber != row.page) {
                m_page = m_space.pager.page(row.page);
                m_pageNumber = row.page;
                if (!isType(*m_page, PageType::Data) || datapage::owner(*m_page) != m_owner)
                    throwDamaged("índice que aponta para outra tabela");
            }
            m_reader.open(m_page, row);
            return true;
        }
        return false;
    }
    [[nodiscard]] RowId rowId() const override { return m_reader.rowId(); }
    [[nodiscard]] Value value(int column) const override { return m_reader.value(column); }
    bool appendText(int column, std::string& out) const override { return m_reader.appendText(column, out); }

private:
    TableSpace& m_space;
    PageNumber m_owner;
    IndexPosition m_position;
    Bound m_lower;
    std::optional<Bound> m_upper;
    RowReader m_reader;
    PagePointer m_page;
    PageNumber m_pageNumber = 0;
};

} // namespace

bool TableFile::usableForRange(int index) const
{
    const Index& found = m_indexes.at(static_cast<std::size_t>(index));
    if (found.columns.empty())
        return false;
    const ColumnDefinition& column = m_definition.columns[static_cast<std::size_t>(found.columns.front().column)];
    switch (column.type) {
    case ColumnType::Ole:
    case ColumnType::BigBinary:
    case ColumnType::Memo:   // Only the head of a memo is in its key.
    case ColumnType::Binary: // The key of no bytes is the beginning of every other key.
        return false;
    case ColumnType::Text:
        return column.generalOrder;
    case ColumnType::Numeric:
        return found.columns.front().ascending;
    default:
        return true;
    }
}

std::unique_ptr<Cursor> TableFile::range(int index, const KeyRange& range) const
{
    if (!usableForRange(index))
        throw Error(ErrorKind::TypeMismatch, "O índice não serve para procurar um intervalo.");
    const Index& found = m_indexes[static_cast<std::size_t>(index)];
    const bool ascending = found.columns.front().ascending;
    const ColumnDefinition& column = m_definition.columns[static_cast<std::size_t>(found.columns.front().column)];
    const auto bound = [&](const std::optional<Value>& value, bool inclusive) -> std::optional<Bound> {
        if (!value)
            return std::nullopt;
        Bound result{{}, inclusive};
        appendKeyPart(column, *value, ascending, result.bytes);
        // The index holds only the head of an overlong key: both ends then include what looks alike.
        if (result.bytes.size() > longestKey - 2) {
            result.bytes.resize(longestKey - 2);
            result.inclusive = true;
        }
        return result;
    };
    std::optional<Bound> lower = bound(range.lower, range.lowerInclusive);
    std::optional<Bound> upper = bound(range.upper, range.upperInclusive);
    if (!ascending)
        std::swap(lower, upper);
    // Nulls stand before all values of an ascending column and behind those of a descending one.
    if (!lower)
        lower = Bound{{static_cast<std::uint8_t>(ascending ? 0x7F : 0x80)}, true};
    if (!upper && !ascending)
        upper = Bound{{0xFF}, false};
    const PhysicalIndex& physical = m_definition.physical[m_physicalOf[static_cast<std::size_t>(index)]];
    IndexPosition position = IndexTree(m_space, m_page, physical).find(lower->bytes);
    return std::make_unique<RangeCursor>(m_space, m_definition, m_page, std::move(position), std::move(*lower),
                                         std::move(upper));
}

} // namespace accessfile
