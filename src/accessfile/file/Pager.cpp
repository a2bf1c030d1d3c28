#include "accessfile/file/Pager.h"

#include "accessfile/Error.h"
#include "accessfile/file/FileErrors.h"
#include "accessfile/file/Header.h"

#include <algorithm>

// The state of the file, and the cache. What a commit does stands in PagerCommit.cpp.
namespace accessfile {

namespace {
/// How long slot 0 may say that somebody writes whom no lock shows: one who has the file for himself alone.
constexpr std::chrono::seconds unseenWriter{2};
constexpr int runsBeforeWaiting = 3;
} // namespace

Pager::Pager(FileSystem& files, const std::filesystem::path& file, const PagerOptions& options)
    : m_file(files, file, options.company, options.waiting)
    , m_journal(m_file)
    , m_cacheLimit(std::max<std::size_t>(options.cachePages, 16))
{
    if (options.readOnly)
        m_readOnlyReason = "O arquivo foi aberto somente para leitura.";
    else if (!files.fileWritable(m_file.name()))
        m_readOnlyReason = "O arquivo só pode ser lido: não há permissão para gravar nele.";
    else if (!files.folderWritable(m_file.name()))
        m_readOnlyReason = "O arquivo só pode ser lido: não há permissão para gravar na pasta dele.";
    if (m_file.device().size() < pageSize)
        throw Error(ErrorKind::NotADatabase, "O arquivo não é um banco de dados do Access.");
    PageBytes first{};
    m_file.device().read(0, std::span(first).first(CommitTable::offset));
    static_cast<void>(Header(first)); // Of other formats not even the commit table is what it seems.
    look();
}

Pager::~Pager()
{
    rollback();
    m_turns = std::min(m_turns, 1);
    giveTurnBack();
    try {
        // A journal is of no use once the last counter is on the medium. Where others are at work theirs is there.
        if (!m_wrote || !m_file.tryTurn())
            return;
        if (m_file.table().slot(0) >= CommitTable::first) {
            m_file.device().sync();
            m_journal.remove();
        }
        m_file.giveTurnBack();
    } catch (...) {
        m_file.giveTurnBack();
    }
}

void Pager::forbidWriting(const std::string& reason)
{
    if (!isReadOnly())
        m_readOnlyReason = reason;
}

void Pager::look()
{
    if (m_inUnit)
        return;
    m_readSinceLook = false;
    if (m_turns > 0) {
        // Nobody else writes; but an own commit may have failed halfway.
        if (!m_table)
            recover();
        return;
    }
    Patience patience(m_file.files(), m_file.waiting());
    for (;;) {
        if (m_file.replaced())
            m_file.reopen();
        const std::optional<CommitTable> table = m_file.tableIfOpen();
        if (table && settle(*table, patience))
            return;
        patience.sees(table);
        if (!patience.pause())
            m_file.throwInUse();
    }
}

bool Pager::settle(const CommitTable& table, const Patience& patience)
{
    if (m_table && *m_table == table && m_openings == m_file.openings())
        return true;
    const std::size_t unsettled = table.firstUnsettled();
    if (unsettled < CommitTable::slots) {
        if (table.slot(unsettled) == CommitTable::writing && m_file.userPresent(unsettled))
            return false;
        return m_file.tableIfOpen() == table && settleAbandoned(table, patience);
    }
    m_suspicion.clear();
    forget(table);
    return true;
}

/// The table says that somebody is writing, but he is not there.
bool Pager::settleAbandoned(const CommitTable& table, const Patience& patience)
{
    Journal::Finding found;
    if (table.slot(0) == CommitTable::writing) {
        found = m_journal.examine();
        const bool undoable =
            found.verdict == Journal::Verdict::Finished || found.verdict == Journal::Verdict::PlayBack;
        if (undoable && m_readOnlyReason.empty() && m_file.tryTurn()) {
            enterTurn();
            giveTurnBack();
            return false;
        }
        const auto holder = m_file.holder();
        if (holder && holder->everyUser)
            return false;
        if (undoable) {
            // It cannot be written now: read as if it were undone.
            forget(table);
            if (found.verdict == Journal::Verdict::PlayBack) {
                m_overlay = std::move(found.images);
                m_pageCount = m_committedPages = found.pages;
                m_frames.assign(m_pageCount, {});
            }
            return true;
        }
        if (patience.waited() < unseenWriter)
            return false;
    }
    suspect(found.verdict, table);
    forget(table);
    return true;
}

void Pager::suspect(Journal::Verdict verdict, const CommitTable& table)
{
    const std::string repair =
        " Faça uma cópia dele e repare-o no Access (Compactar e reparar banco de dados), ou volte a um backup.";
    if (verdict == Journal::Verdict::Foreign)
        m_suspicion = "O arquivo só pode ser lido: uma gravação deste programa parou no meio e depois outro programa "
                      "gravou no arquivo. Nada foi desfeito; o diário '" +
                      shownName(m_journal.name().filename()) + "' foi guardado." + repair + " Depois apague o diário.";
    else if (table.slot(table.firstUnsettled()) == CommitTable::damaged)
        m_suspicion = "O arquivo só pode ser lido: outro programa encontrou uma página danificada nele." + repair;
    else
        m_suspicion = "O arquivo só pode ser lido: uma gravação nele parou no meio, e não há diário com que "
                      "desfazê-la." +
                      repair;
}

bool Pager::holds()
{
    // What came out of the cache alone is of the state that the look found.
    if (m_turns > 0 || !m_readSinceLook)
        return true;
    return m_file.openings() == m_openings && m_file.tableIfOpen() == m_table && !m_file.replaced();
}

void Pager::waitForOthers(Patience& patience, int runs)
{
    const auto pause = [&] {
        patience.sees(m_file.tableIfOpen());
        if (!patience.pause())
            m_file.throwInUse();
    };
    pause();
    if (runs < runsBeforeWaiting)
        return;
    for (auto holder = m_file.holder(); holder && holder->everyUser; holder = m_file.holder())
        pause();
}

void Pager::forget(const CommitTable& table)
{
    const std::uint64_t length = m_file.device().size();
    m_table = table;
    m_openings = m_file.openings();
    ++m_generation;
    ++m_state;
    m_overlay.clear();
    m_loaded.clear();
    m_hand = 0;
    m_pageCount = static_cast<PageNumber>(std::min(length, largestFile + pageSize) / pageSize);
    m_committedPages = m_pageCount;
    m_frames.assign(m_pageCount, {});
    if (length % pageSize != 0 && m_suspicion.empty())
        m_suspicion = "O arquivo só pode ser lido: o fim dele está truncado.";
}

void Pager::encode(PageNumber number, PageBytes& bytes) const
{
    if (m_pageKey != 0 && number != 0)
        applyRc4(m_pageKey ^ number, bytes);
}

PagePointer Pager::stored(PageNumber number, const PagePointer& plain) const
{
    if (m_pageKey == 0 || number == 0)
        return plain;
    auto encoded = std::make_shared<PageBytes>(*plain);
    encode(number, *encoded);
    return encoded;
}

void Pager::readStored(PageNumber number, PageBytes& bytes) const
{
    m_readSinceLook = true;
    if (const auto image = m_overlay.find(number); image != m_overlay.end())
        bytes = *image->second;
    else
        m_file.device().read(std::uint64_t{number} * pageSize, bytes);
}

PagePointer Pager::page(PageNumber number) const
{
    if (number >= m_pageCount)
        throwDamaged("referência à página " + std::to_string(number) + ", além do fim");
    if (!m_changed.empty()) {
        if (const auto found = m_changed.find(number); found != m_changed.end())
            return found->second;
    }
    Frame& frame = m_frames[number];
    if (frame.page) {
        frame.recent = true;
        return frame.page;
    }
    auto bytes = std::make_shared<PageBytes>();
    readStored(number, *bytes);
    encode(number, *bytes);
    makeRoom();
    keep(number, bytes);
    return bytes;
}

void Pager::keep(PageNumber number, PagePointer page) const
{
    if (!m_frames[number].page)
        m_loaded.push_back(number);
    m_frames[number] = {std::move(page), false};
}

void Pager::makeRoom() const
{
    while (m_loaded.size() >= m_cacheLimit) {
        if (m_hand >= m_loaded.size())
            m_hand = 0;
        Frame& frame = m_frames[m_loaded[m_hand]];
        if (frame.recent) {
            frame.recent = false;
            ++m_hand;
            continue;
        }
        frame.page.reset();
        m_loaded[m_hand] = m_loaded.back();
        m_loaded.pop_back();
    }
}

PageBytes& Pager::modify(PageNumber number)
{
    if (const auto found = m_changed.find(number); found != m_changed.end())
        return *found->second;
    const PagePointer old = page(number);
    auto copy = std::make_shared<PageBytes>(*old);
    PageBytes& bytes = *copy;
    m_changed.emplace(number, std::move(copy));
    return bytes;
}

PageNumber Pager::append()
{
    if ((std::uint64_t{m_pageCount} + 1) * pageSize > largestFile)
        throw Error(ErrorKind::TooLong, "O arquivo de dados chegou ao tamanho máximo de 2 GB.");
    const PageNumber number = m_pageCount++;
    if (m_frames.size() < m_pageCount)
        m_frames.resize(m_pageCount);
    m_changed[number] = std::make_shared<PageBytes>();
    return number;
}

void Pager::copyTo(FileDevice& copy)
{
    constexpr std::size_t chunkPages = 64;
    std::vector<PageBytes> chunk(chunkPages);
    for (PageNumber start = 0; start < m_pageCount; start += chunkPages) {
        const std::size_t count = std::min<std::size_t>(chunkPages, m_pageCount - start);
        for (std::size_t i = 0; i < count; ++i)
            readStored(static_cast<PageNumber>(start + i), chunk[i]);
        copy.write(std::uint64_t{start} * pageSize, std::span(chunk[0].data(), count * pageSize));
    }
    copy.truncate(std::uint64_t{m_pageCount} * pageSize);
}

} // namespace accessfile
