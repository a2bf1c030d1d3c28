#include "accessfile/Error.h"
#include "accessfile/format/DataPage.h"
#include "accessfile/table/DefaultValues.h"
#include "accessfile/table/DefinitionPages.h"
#include "accessfile/table/IndexTree.h"
#include "accessfile/table/NewTable.h"
#include "accessfile/table/TableFile.h"

#include <algorithm>

// Changes of a table's definition, with what they ask of the rows that are there already.
namespace accessfile {

std::vector<RowId> TableFile::allRows() const
{
    std::vector<RowId> rows;
    for (const auto cursor = scan(); cursor->next();)
        rows.push_back(cursor->rowId());
    return rows;
}

std::size_t TableFile::leastFixedOffset() const
{
    // Without dropped columns the definition itself says how far the fixed areas of all rows reach.
    std::size_t least = 0;
    if (m_definition.columns.size() < m_definition.maxColumns()) {
        for (const RowId row : allRows())
            least = std::max(least, openRow(row).layout().fixedEnd() - 2);
    }
    return least;
}

void TableFile::addColumn(const Column& column)
{
    TableDefinition changed = readDefinition(m_space.pager, m_page);
    checkNewColumn(changed, column);
    changed.addColumn(column, {}, {}, leastFixedOffset());
    // A table's first variable column gives every row a trailer, so the rows that have none are written anew.
    const bool firstVariable = changed.variableSlots() > 0 && m_definition.variableSlots() == 0;
    const std::vector<RowId> rows = firstVariable || column.autonumber ? allRows() : std::vector<RowId>();

    PageNumber mapPage = changed.ownedMap().page;
    if (changed.columns.back().isLongValue())
        giveMaps(m_space, changed.columns.back(), mapPage);
    writeDefinition(changed, m_space.pager, m_space.allocator);
    widenRows(rows, changed);
    if (column.autonumber && column.type == ColumnType::Long)
        store32(m_space.pager.modify(m_page).data() + definition::lastNumberAt,
                static_cast<std::uint32_t>(rows.size()));
}

void TableFile::widenRows(const std::vector<RowId>& rows, const TableDefinition& changed)
{
    const ColumnDefinition& added = changed.columns.back();
    std::int32_t number = 0;
    for (const RowId row : rows) {
        const RowReader reader = openRow(row);
        std::vector<std::optional<Bytes>> cells;
        for (const ColumnDefinition& column : m_definition.columns) {
            std::optional<Bytes>& cell = cells.emplace_back();
            if (column.type == ColumnType::Bool) {
                if (reader.layout().present(column.id))
                    cell.emplace();
            } else if (const auto stored = reader.layout().cell(column)) {
                cell.emplace(stored->begin(), stored->end());
            }
        }
        std::optional<Bytes>& cell = cells.emplace_back();
        if (added.autonumber)
            cell = encodeCell(added, Value(++number));
        else if (added.autoGuid)
            cell = encodeCell(added, randomGuid());
        storeRow(row, reader.place(), encodeRow(changed, cells));
    }
}

void TableFile::addIndex(const Index& index)
{
    TableDefinition changed = readDefinition(m_space.pager, m_page);
    declareIndex(changed, index);
    PhysicalIndex& added = changed.physical.back();
    std::vector<Bytes> entries;
    std::vector<Bytes> uniqueKeys;
    for (const auto cursor = scan(); cursor->next();) {
        IndexKey key = makeKey(changed, added, [&](std::size_t i) { return cursor->value(static_cast<int>(i)); });
        if (added.required && key.anyNull)
            throw Error(ErrorKind::NullNotAllowed, "A chave primária ou o índice não pode conter um valor Nulo.");
        if (added.skipNulls && key.allNull)
            continue;
        entries.push_back(makeEntry(key.bytes, cursor->rowId()));
        if (added.unique && !key.anyNull)
            uniqueKeys.push_back(std::move(key.bytes));
    }
    std::sort(uniqueKeys.begin(), uniqueKeys.end());
    if (std::adjacent_find(uniqueKeys.begin(), uniqueKeys.end()) != uniqueKeys.end())
        throwDuplicateKey();
    std::sort(entries.begin(), entries.end(),
              [](const Bytes& left, const Bytes& right) { return compareEntries(left, right) < 0; });
    std::uint32_t distinct = 0;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (i == 0 || compareKeys(keyOf(entries[i - 1]), keyOf(entries[i])) != 0)
            ++distinct;
    }

    PageNumber mapPage = changed.ownedMap().page;
    giveRoot(m_space, m_page, added, mapPage);
    store32(changed.counters.data() + changed.counters.size() - 8, distinct);
    writeDefinition(changed, m_space.pager, m_space.allocator);
    IndexTree(m_space, m_page, added).rebuild(std::move(entries));
}

void TableFile::releaseMap(RowId map, const std::function<bool(const PageBytes&)>* own)
{
    if (map.page == 0)
        return;
    Pager& pager = m_space.pager;
    const UsageMap usage(pager, map);
    if (own != nullptr) {
        for (const PageNumber number : usage.pages()) {
            // A page that is another's, or free already, must not be given away.
            if (m_space.allocator.isFree(number) || !(*own)(*pager.page(number)))
                throwDamaged("página de outra tabela no mapa da tabela '" + m_name + "'");
            m_space.allocator.release(number);
        }
    }
    for (const PageNumber number : usage.bitmapPages())
        m_space.allocator.release(number);
    datapage::erase(pager.modify(map.page), map.slot);
    if (!datapage::hasLiveRow(*pager.page(map.page)))
        m_space.allocator.release(map.page, PageType::EmptiedData);
}

void TableFile::releasePages()
{
    const std::function<bool(const PageBytes&)> longValue = [](const PageBytes& page) {
        return isType(page, PageType::Data) && datapage::owner(page) == datapage::longValueOwner;
    };
    const std::function<bool(const PageBytes&)> tree = [this](const PageBytes& page) {
        return (isType(page, PageType::IndexLeaf) || isType(page, PageType::IndexNode)) &&
               load32(page.data() + datapage::ownerAt) == m_page;
    };
    const std::function<bool(const PageBytes&)> rows = [this](const PageBytes& page) {
        return (isType(page, PageType::Data) || isType(page, PageType::EmptiedData)) && datapage::owner(page) == m_page;
    };
    for (const ColumnDefinition& column : m_definition.columns) {
        if (!column.isLongValue())
            continue;
        releaseMap(column.ownedMap, &longValue);
        releaseMap(column.freeMap, nullptr);
    }
    for (const PhysicalIndex& index : m_definition.physical)
        releaseMap(index.ownedMap, &tree);
    releaseMap(m_definition.ownedMap(), &rows);
    releaseMap(m_definition.freeMap(), nullptr);
    for (const PageNumber number : m_definition.pages)
        m_space.allocator.release(number, number == m_page ? PageType::DroppedDefinition : PageType::None);
}

} // namespace accessfile
