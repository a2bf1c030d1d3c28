#include "accessfile/table/PageClaims.h"

#include "accessfile/table/DefinitionPages.h"

namespace accessfile {

namespace {

constexpr PageNumber mapsPage = 1;
constexpr PageNumber catalogPage = 2;

class Claims
{
public:
    explicit Claims(Pager& pager)
        : m_pager(pager)
        , m_claimed(pager.pageCount(), false)
    {}
    void page(PageNumber number)
    {
        if (number < m_claimed.size())
            m_claimed[number] = true;
    }
    void map(RowId row)
    {
        if (row.page == 0)
            return;
        page(row.page);
        const UsageMap map(m_pager, row);
        for (const PageNumber number : map.bitmapPages())
            page(number);
        map.forEachPage([this](PageNumber number) { page(number); });
    }
    void table(PageNumber first)
    {
        const TableDefinition table = readDefinition(m_pager, first);
        for (const PageNumber number : table.pages)
            page(number);
        map(table.ownedMap());
        map(table.freeMap());
        for (const ColumnDefinition& column : table.columns) {
            map(column.ownedMap);
            map(column.freeMap);
        }
        for (const PhysicalIndex& index : table.physical) {
            page(index.root);
            map(index.ownedMap);
        }
    }
    [[nodiscard]] std::vector<bool> take() { return std::move(m_claimed); }

private:
    Pager& m_pager;
    std::vector<bool> m_claimed;
};

} // namespace

std::vector<bool> claimedPages(Pager& pager, const std::vector<CatalogEntry>& entries)
{
    Claims claims(pager);
    claims.page(0);
    claims.page(mapsPage);
    for (const PageNumber page : UsageMap(pager, {mapsPage, 0}).bitmapPages())
        claims.page(page);
    claims.map({mapsPage, 1});
    claims.table(catalogPage);
    for (const CatalogEntry& entry : entries) {
        if (entry.type == CatalogEntry::tableType && static_cast<PageNumber>(entry.id) != catalogPage)
            claims.table(static_cast<PageNumber>(entry.id));
    }
    return claims.take();
}

} // namespace accessfile
