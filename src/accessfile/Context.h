#pragma once

#include "accessfile/Header.h"
#include "accessfile/LongValues.h"
#include "accessfile/Pager.h"
#include "accessfile/UsageMap.h"

namespace accessfile {

/// What all tables of an open file share.
struct Context
{
    Context(FileSystem& files, const std::filesystem::path& file, const OpenOptions& options)
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
    explicit ChangeGuard(Context& context)
        : m_context(context)
        , m_own(!context.pager.inUnit())
    {
        if (m_own)
            context.pager.begin();
    }
    ~ChangeGuard()
    {
        if (m_own && !m_done) {
            m_context.pager.rollback();
            m_context.allocator.forgetUnit();
            m_context.halfway = false;
        }
    }
    ChangeGuard(const ChangeGuard&) = delete;
    ChangeGuard& operator=(const ChangeGuard&) = delete;
    /// From here on pages change.
    void start() { m_context.halfway = true; }
    void finish()
    {
        m_context.halfway = false;
        if (m_own) {
            m_context.pager.commit();
            m_context.allocator.keepUnit();
        }
        m_done = true;
    }

private:
    Context& m_context;
    bool m_own;
    bool m_done = false;
};

} // namespace accessfile
