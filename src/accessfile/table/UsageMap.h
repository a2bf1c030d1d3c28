#pragma once

#include "accessfile/Value.h"
#include "accessfile/file/Pager.h"

#include <optional>
#include <vector>

namespace accessfile {

/// Which pages of the file are free. Rows 0 (free) and 1 (freed, not yet given back) of page 1.
class PageAllocator
{
public:
    explicit PageAllocator(Pager& pager)
        : m_pager(pager)
    {}
    /// A zeroed page: one that this session freed, else a new one at the end.
    [[nodiscard]] PageNumber allocate();
    /// Marks a page as free. It must be in no map any more.
    void release(PageNumber page, PageType mark = PageType::None);
    [[nodiscard]] bool isFree(PageNumber page) const;
    void forgetUnit() noexcept { m_freed = m_committedFreed; }
    void keepUnit() { m_committedFreed = m_freed; }

private:
    void setFree(PageNumber page, bool free);
    Pager& m_pager;
    // Pages that older sessions left free are not taken again: a file that marks a used page as free would lose it.
    std::vector<PageNumber> m_freed;
    std::vector<PageNumber> m_committedFreed;
};

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
