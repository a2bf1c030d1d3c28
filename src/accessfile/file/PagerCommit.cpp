#include "accessfile/Error.h"
#include "accessfile/file/Pager.h"

#include <algorithm>

// Turns, and what a commit does in one.
namespace accessfile {

void Pager::takeTurn()
{
    if (m_turns > 0) {
        ++m_turns;
        return;
    }
    if (!m_readOnlyReason.empty())
        throw Error(ErrorKind::ReadOnly, m_readOnlyReason);
    m_file.takeTurn();
    enterTurn();
}

/// Behind m_file.takeTurn or tryTurn: recovers what stopped halfway and goes to the state that the file is in.
void Pager::enterTurn()
{
    m_turns = 1;
    try {
        if (m_file.table().slot(0) == CommitTable::writing)
            recover();
        const CommitTable table = m_file.table();
        const bool moved = !m_table || *m_table != table || m_openings != m_file.openings();
        if (table.firstUnsettled() < CommitTable::slots) {
            if (m_suspicion.empty())
                suspect(Journal::Verdict::Nothing, table);
            throw Error(ErrorKind::ReadOnly, m_suspicion);
        }
        if (moved && m_inUnit)
            m_overtaken = true;
        else if (moved) {
            m_suspicion.clear();
            forget(table);
        }
    } catch (...) {
        giveTurnBack();
        throw;
    }
}

void Pager::giveTurnBack() noexcept
{
    if (m_turns == 0 || --m_turns > 0)
        return;
    m_file.giveTurnBack();
}

/// In a turn, with slot 0 at "writing": what stopped there was a unit of this engine, or something that it cannot undo.
void Pager::recover()
{
    Journal::Finding found = m_journal.examine();
    switch (found.verdict) {
    case Journal::Verdict::PlayBack: {
        std::vector<Write> images;
        for (auto& [number, image] : found.images)
            images.push_back({number, std::move(image)});
        restore(images, found.pages, found.counter);
        break;
    }
    case Journal::Verdict::Finished:
        m_file.setSlot(0, CommitTable::next(found.counter));
        break;
    case Journal::Verdict::Nothing:
    case Journal::Verdict::Foreign:
        suspect(found.verdict, m_file.table());
        return;
    }
    m_wrote = true;
    m_suspicion.clear();
    if (!m_inUnit)
        forget(m_file.table());
}

void Pager::writePage(PageNumber number, const PageBytes& bytes)
{
    // The first page ends where the commit table begins.
    m_file.device().write(std::uint64_t{number} * pageSize,
                          ByteView(bytes).first(number == 0 ? CommitTable::offset : pageSize));
}

/// Undoes pages that were written: the images, the length, and a counter that moves.
void Pager::restore(const std::vector<Write>& images, std::uint32_t pages, std::uint16_t counter)
{
    for (const Write& image : images)
        writePage(image.page, *image.bytes);
    m_file.device().truncate(std::uint64_t{pages} * pageSize);
    m_file.device().sync();
    m_file.setSlot(0, CommitTable::next(counter));
}

void Pager::begin()
{
    if (!m_readOnlyReason.empty())
        throw Error(ErrorKind::ReadOnly, m_readOnlyReason);
    look();
    if (isReadOnly())
        throw Error(ErrorKind::ReadOnly, readOnlyReason());
    m_overtaken = false;
    m_inUnit = true;
}

void Pager::commit()
{
    std::vector<JournalEntry> entries;
    for (const auto& [number, bytes] : m_changed) {
        PagePointer old;
        if (number < m_committedPages) {
            if (Frame& frame = m_frames[number]; frame.page) {
                old = frame.page;
            } else {
                auto read = std::make_shared<PageBytes>();
                readStored(number, *read);
                encode(number, *read);
                old = std::move(read);
            }
            if (*old == *bytes)
                continue;
            old = stored(number, old);
        }
        entries.push_back({number, std::move(old), stored(number, bytes)});
    }
    if (!entries.empty()) {
        takeTurn();
        try {
            if (m_overtaken)
                throw Error(ErrorKind::Conflict, "Outro programa alterou o arquivo de dados neste momento.");
            m_file.requireName();
            writeUnit(entries);
        } catch (...) {
            giveTurnBack();
            throw;
        }
        giveTurnBack();
    } else if (!holds()) {
        throw Error(ErrorKind::Conflict, "Outro programa alterou o arquivo de dados neste momento.");
    }
    for (auto& [number, bytes] : m_changed)
        keep(number, std::move(bytes));
    m_changed.clear();
    m_committedPages = m_pageCount;
    m_inUnit = false;
    makeRoom();
}

void Pager::writeUnit(const std::vector<JournalEntry>& entries)
{
    m_wrote = true;
    m_journal.write({*m_table, m_committedPages, m_pageCount}, entries);
    // New pages first, then the changed ones from the back: the global map and the header come last.
    std::vector<Write> writes;
    for (const JournalEntry& entry : entries)
        writes.push_back({entry.page, entry.newBytes});
    std::sort(writes.begin(), writes.end(), [this](const Write& left, const Write& right) {
        const bool leftNew = left.page >= m_committedPages;
        const bool rightNew = right.page >= m_committedPages;
        if (leftNew != rightNew)
            return leftNew;
        return leftNew ? left.page < right.page : left.page > right.page;
    });
    const std::uint16_t counter = m_table->slot(0);
    try {
        m_file.setSlot(0, CommitTable::writing);
        m_file.device().sync();
        for (const Write& write : writes)
            writePage(write.page, *write.bytes);
        m_file.device().sync();
        m_file.setSlot(0, CommitTable::next(counter));
    } catch (const Error&) {
        std::vector<Write> images;
        for (const JournalEntry& entry : entries) {
            if (entry.oldBytes)
                images.push_back({entry.page, entry.oldBytes});
        }
        try {
            restore(images, m_committedPages, counter);
            m_table->setSlot(0, CommitTable::next(counter));
        } catch (const Error&) {
            // Slot 0 stays at "writing" with a journal that undoes it: the next look recovers.
            m_table.reset();
        }
        throw;
    }
    m_table->setSlot(0, CommitTable::next(counter));
    ++m_state;
}

void Pager::rollback() noexcept
{
    m_changed.clear();
    m_pageCount = m_committedPages;
    m_inUnit = false;
    m_overtaken = false;
}

} // namespace accessfile
