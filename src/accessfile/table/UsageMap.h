#pragma once

#include "accessfile/table/PageAllocator.h"

#include <functional>
#include <optional>
#include <vector>

namespace accessfile {

/// A set of pages, stored as a row: of a table, of an index, of a long-value column.
class UsageMap
{
public:
    UsageMap(Pager& pager, RowId row)
        : m_pager(pager)
        , m_row(row)
    {}
    [[nodiscard]] bool contains(PageNumber page) const;
    /// All pages, ascending; those beyond the end of the file are left out.
    [[nodiscard]] std::vector<PageNumber> pages() const;
    /// All pages, those beyond the end of the file too.
    [[nodiscard]] std::vector<PageNumber> allPages() const;
    /// The same without a list of them.
    void forEachPage(const std::function<void(PageNumber)>& take) const;
    [[nodiscard]] std::optional<PageNumber> highest() const;
    void add(PageNumber page, PageAllocator& allocator);
    void remove(PageNumber page);
    /// Pages that hold the bitmap itself.
    [[nodiscard]] std::vector<PageNumber> bitmapPages() const;
    [[nodiscard]] RowId row() const { return m_row; }

private:
    void convertToReference(const std::vector<PageNumber>& pages, PageAllocator& allocator);
    Pager& m_pager;
    RowId m_row;
};

/// A new empty map: on `*mapPage` while it has room, else on a page of its own that `*mapPage` then names.
[[nodiscard]] RowId makeUsageMap(Pager& pager, PageAllocator& allocator, PageNumber& mapPage);

} // namespace accessfile
