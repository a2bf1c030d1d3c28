#pragma once

#include "accessfile/Storage.h"
#include "accessfile/file/Header.h"
#include "accessfile/file/Pager.h"
#include "accessfile/table/LongValues.h"
#include "accessfile/table/UsageMap.h"

namespace accessfile {

/// What all tables of an open file share.
struct TableSpace
{
    TableSpace(FileSystem& files, const std::filesystem::path& file, const PagerOptions& options)
        : pager(files, file, options)
        , header(*pager.page(0))
        , allocator(pager)
        , longValues(pager, allocator)
    {
        pager.setPageKey(header.pageKey());
    }

    Pager pager;
    Header header;
    PageAllocator allocator;
    LongValues longValues;
    DefaultEvaluator evaluator;
    bool halfway = false; ///< A change failed between its first and its last page: the unit must not be committed.
};

/// Opens a unit for a change made outside of one; a change that fails halfway spoils the unit.
class ChangeGuard
{
public:
    explicit ChangeGuard(TableSpace& space)
        : m_space(space)
        , m_own(!space.pager.inUnit())
    {
        if (m_own)
            space.pager.begin();
    }
    ~ChangeGuard()
    {
        if (m_own && !m_done) {
            m_space.pager.rollback();
            m_space.allocator.forgetUnit();
            m_space.halfway = false;
        }
    }
    ChangeGuard(const ChangeGuard&) = delete;
    ChangeGuard& operator=(const ChangeGuard&) = delete;
    /// From here on pages change.
    void start() { m_space.halfway = true; }
    void finish()
    {
        m_space.halfway = false;
        if (m_own) {
            m_space.pager.commit();
            m_space.allocator.keepUnit();
        }
        m_done = true;
    }

private:
    TableSpace& m_space;
    bool m_own;
    bool m_done = false;
};

} // namespace accessfile
