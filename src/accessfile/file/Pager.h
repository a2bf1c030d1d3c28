#pragma once

#include "accessfile/file/Journal.h"
#include "accessfile/file/Page.h"

#include <map>
#include <string>
#include <unordered_map>
#include <vector>

namespace accessfile {

/// The file as numbered pages: cache, page encoding, and the unit of change. Between begin and commit every changed
/// page is in memory; commit writes the journal, the pages, and makes the journal void.
class Pager
{
public:
    /// Opens and locks the file and plays back a journal left by a crash.
    Pager(FileSystem& files, const std::filesystem::path& file, bool readOnly, std::size_t cachePages);
    ~Pager();
    Pager(const Pager&) = delete;
    Pager& operator=(const Pager&) = delete;

    [[nodiscard]] bool isReadOnly() const { return !m_readOnlyReason.empty(); }
    /// Why the file cannot be written, as a sentence; empty when it can.
    [[nodiscard]] const std::string& readOnlyReason() const { return m_readOnlyReason; }
    void setPageKey(std::uint32_t key);
    void forbidWriting(const std::string& reason);

    [[nodiscard]] PageNumber pageCount() const { return m_pageCount; }
    [[nodiscard]] PagePointer page(PageNumber number) const;
    /// The page for changing, valid until the unit ends. Only within a unit.
    [[nodiscard]] PageBytes& modify(PageNumber number);
    /// A zeroed page at the end of the file.
    [[nodiscard]] PageNumber append();

    void begin();
    [[nodiscard]] bool inUnit() const { return m_inUnit; }
    void commit();
    void rollback() noexcept;

private:
    struct Frame
    {
        PagePointer page;
        bool recent = false;
    };
    void recover();
    void makeRoom() const;
    void keep(PageNumber number, PagePointer page) const;
    void encode(PageNumber number, PageBytes& bytes) const;
    [[nodiscard]] PagePointer stored(PageNumber number, const PagePointer& plain) const;
    void undo(const std::vector<JournalEntry>& entries);

    Journal m_journal;
    std::unique_ptr<FileDevice> m_device;
    std::string m_readOnlyReason;
    std::uint32_t m_pageKey = 0;
    std::size_t m_cacheLimit;
    PageNumber m_pageCount = 0;
    PageNumber m_committedPages = 0;
    mutable std::vector<Frame> m_frames;
    mutable std::vector<PageNumber> m_loaded; ///< Pages in the cache, swept like a clock.
    mutable std::size_t m_hand = 0;
    std::unordered_map<PageNumber, std::shared_ptr<PageBytes>> m_changed;
    std::map<PageNumber, PagePointer> m_overlay; ///< Journal images over a file that cannot be written.
    bool m_inUnit = false;
    bool m_broken = false;
};

} // namespace accessfile
