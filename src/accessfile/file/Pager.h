#pragma once

#include "accessfile/file/DataFile.h"
#include "accessfile/file/Journal.h"
#include "accessfile/file/Page.h"

#include <map>
#include <string>
#include <unordered_map>
#include <vector>

namespace accessfile {

struct PagerOptions
{
    bool readOnly = false;
    std::size_t cachePages = 4096;
    Company company = Company::Shared;
    Waiting waiting;
};

/// The file as numbered pages: cache, page encoding, the unit of change, and the turn in which it is written.
///
///                 look                     begin                    modify, append
///     AWAY ---------------> LOOKING ---------------> UNIT <----------------+
///       ^   (again at every    |                      |  |-----------------+
///       |    statement)        |                      |
///       |                      |  rollback            | commit with changed pages, takeTurn
///       +----------------------+<---------------------+
///       |                                             v
///       |      the table has moved: Conflict        TURN   alone: every user's byte and the whole file are held
///       |<--------------------------------------------+
///       |                                             | journal written and synced
///       |                                             v
///       |                                          JOURNALED  void as long as slot 0 is a counter
///       |                                             | slot 0 = 0, synced
///       |                                             v
///       |                                           MARKED    Access lets nobody in; readers of ours wait
///       |                                             | pages written and synced
///       |                                             v
///       |                                           WRITTEN   the unit is there, come what may
///       |  giveTurnBack                               | slot 0 = counter + 1
///       +<--------------------------------------------+
///
/// A failure from MARKED on writes the old images back (undo); where that fails too, or the process dies, slot 0 stays
/// 0 and the next that looks at the file recovers it within a turn of its own.
///
/// Invariants
///  1. Every page in the cache belongs to the state of the file that m_table stands for; when the table moves or the
///     name gets another file, the whole cache goes, and what is built on it (generation()).
///  2. What a statement read is of one state only if the table is the same after its last read (holds()).
///  3. Pages of the data file are written in MARKED alone, and MARKED is entered in a turn alone.
///  4. The journal is on the medium before slot 0 is 0 on it, slot 0 is 0 on it before the first page is written, and
///     the last page is on it before slot 0 is a counter again, in the file.
///  5. Of the commit table nothing is written but slot 0, two bytes at a time.
///  6. A journal is played back only where slot 0 is 0, nobody is in a turn, no other slot has moved since, and every
///     sector that the unit concerns is its old or its new one. A counter in slot 0 makes it void.
///  7. After undo or playing back slot 0 goes up as after a unit: who read in between must see that it moved.
///  8. Between turns the file is open for reading alone and no lock is held.
class Pager
{
public:
    /// Opens the file and recovers what a crash left half written.
    Pager(FileSystem& files, const std::filesystem::path& file, const PagerOptions& options);
    ~Pager();
    Pager(const Pager&) = delete;
    Pager& operator=(const Pager&) = delete;

    [[nodiscard]] bool isReadOnly() const { return !readOnlyReason().empty(); }
    /// Why the file cannot be written, as a sentence; empty when it can. What a look at the file finds may change it.
    [[nodiscard]] const std::string& readOnlyReason() const
    {
        return m_readOnlyReason.empty() ? m_suspicion : m_readOnlyReason;
    }
    /// The part of it that is the file's own state: somebody stopped while he was writing.
    [[nodiscard]] const std::string& suspicion() const { return m_suspicion; }
    void setPageKey(std::uint32_t key) { m_pageKey = key; }
    void forbidWriting(const std::string& reason);

    [[nodiscard]] PageNumber pageCount() const { return m_pageCount; }
    [[nodiscard]] PagePointer page(PageNumber number) const;
    /// The page for changing, valid until the unit ends. Only within a unit.
    [[nodiscard]] PageBytes& modify(PageNumber number);
    /// A zeroed page at the end of the file.
    [[nodiscard]] PageNumber append();

    /// Goes to the state that the file is in now. Waits while somebody writes it: Locked when that takes too long.
    void look();
    /// Whether everything read since the look is of that one state.
    [[nodiscard]] bool holds();
    /// Waits for whoever made a statement read two states, before it runs again.
    void waitForOthers(Patience& patience, int runs);
    /// Another number where the cache was dropped: what was built on pages is void.
    [[nodiscard]] std::uint64_t generation() const { return m_generation; }
    /// Another number for each state of the file, whoever changed it.
    [[nodiscard]] std::uint64_t state() const { return m_state; }

    /// Turns may be taken one within another; the outermost counts. Locked when somebody else does not leave.
    void takeTurn();
    void giveTurnBack() noexcept;

    /// Opens a unit on the state that the file is in. ReadOnly where it cannot be written.
    void begin();
    [[nodiscard]] bool inUnit() const { return m_inUnit; }
    [[nodiscard]] bool hasChanges() const { return !m_changed.empty(); }
    /// Writes the unit, in a turn of its own where there is none. Conflict when the file was changed since begin; then
    /// and after every other error the caller rolls back. A unit without changes takes no turn.
    void commit();
    void rollback() noexcept;

    /// Copies the file as it is stored, in the state of the last look.
    void copyTo(FileDevice& copy);
    [[nodiscard]] DataFile& file() { return m_file; }

private:
    struct Frame
    {
        PagePointer page;
        bool recent = false;
    };
    struct Write
    {
        PageNumber page = 0;
        PagePointer bytes;
    };
    // The state of the file.
    [[nodiscard]] bool settle(const CommitTable& table, const Patience& patience);
    [[nodiscard]] bool settleAbandoned(const CommitTable& table, const Patience& patience);
    void forget(const CommitTable& table);
    void enterTurn();
    void recover();
    void suspect(Journal::Verdict verdict, const CommitTable& table);
    // The cache.
    void readStored(PageNumber number, PageBytes& bytes) const;
    void makeRoom() const;
    void keep(PageNumber number, PagePointer page) const;
    void encode(PageNumber number, PageBytes& bytes) const;
    [[nodiscard]] PagePointer stored(PageNumber number, const PagePointer& plain) const;
    // The commit.
    void writePage(PageNumber number, const PageBytes& bytes);
    void writeUnit(const std::vector<JournalEntry>& entries);
    void restore(const std::vector<Write>& images, std::uint32_t pages, std::uint16_t counter);

    mutable DataFile m_file;
    Journal m_journal;
    std::string m_readOnlyReason;
    std::string m_suspicion; ///< What makes writing unsafe for now.
    std::uint32_t m_pageKey = 0;
    std::size_t m_cacheLimit;
    PageNumber m_pageCount = 0;
    PageNumber m_committedPages = 0;
    std::optional<CommitTable> m_table; ///< Of the state that the cache belongs to.
    unsigned m_openings = 0;
    std::uint64_t m_generation = 0;
    std::uint64_t m_state = 0;
    mutable bool m_readSinceLook = false;
    mutable std::vector<Frame> m_frames;
    mutable std::vector<PageNumber> m_loaded; ///< Pages in the cache, swept like a clock.
    mutable std::size_t m_hand = 0;
    std::unordered_map<PageNumber, std::shared_ptr<PageBytes>> m_changed;
    std::map<PageNumber, PagePointer> m_overlay; ///< Journal images over a file that cannot be written.
    int m_turns = 0;
    bool m_inUnit = false;
    bool m_overtaken = false; ///< The file moved on under the open unit.
    bool m_wrote = false;
};

} // namespace accessfile
