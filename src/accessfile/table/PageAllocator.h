#pragma once

#include "accessfile/Value.h"
#include "accessfile/file/Pager.h"

#include <functional>
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
    /// A zeroed page: one that this session freed, one that the map calls free and nothing claims, else a new one at
    /// the end. Raises TooLong when the file is as large as it can be.
    [[nodiscard]] PageNumber allocate();
    /// Marks a page as free. It must be in no map any more.
    void release(PageNumber page, PageType mark = PageType::None);
    [[nodiscard]] bool isFree(PageNumber page) const;
    /// A page behind the end of the file that the map calls used: the sign of a file that was cut.
    [[nodiscard]] std::optional<PageNumber> usedBehindEnd() const;
    void forgetUnit() noexcept;
    void keepUnit();

    /// `claims` tells for each page whether something of the file claims it; it may raise Error where it cannot tell.
    /// Without it, pages that older sessions left free are not taken.
    void setClaims(std::function<std::vector<bool>()> claims) { m_claims = std::move(claims); }
    /// Another program has written: what was found free may be in use now.
    void forgetFound() noexcept;

private:
    void setFree(PageNumber page, bool free);
    void cover(PageNumber page);
    void coverPart(std::size_t part);
    [[nodiscard]] bool growInline(PageNumber page);
    void convertToReferences();
    [[nodiscard]] bool take(PageNumber page);
    void findFree();
    [[nodiscard]] bool looksUsed(PageNumber page) const;

    Pager& m_pager;
    std::function<std::vector<bool>()> m_claims;
    // Freed by this session, and as it was before the unit.
    std::vector<PageNumber> m_freed;
    std::vector<PageNumber> m_committedFreed;
    // Left free by older ones, ascending; what stands before m_next has been taken.
    std::vector<PageNumber> m_found;
    std::size_t m_next = 0;
    std::size_t m_committedNext = 0;
    bool m_searched = false;
};

} // namespace accessfile
