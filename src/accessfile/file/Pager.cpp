#include "accessfile/file/Pager.h"

#include "accessfile/Error.h"
#include "accessfile/file/Header.h"

#include <algorithm>

namespace accessfile {

namespace {

std::filesystem::path lockFileOf(const std::filesystem::path& file, const char* extension)
{
    std::filesystem::path lockFile = file;
    return lockFile.replace_extension(extension);
}

std::string nameOf(const std::filesystem::path& file)
{
    const std::u8string text = file.filename().u8string();
    return {text.begin(), text.end()};
}

} // namespace

Pager::Pager(FileSystem& files, const std::filesystem::path& file, bool readOnly, std::size_t cachePages)
    : m_journal(files, file)
    , m_cacheLimit(std::max<std::size_t>(cachePages, 16))
{
    OpenedFile opened = files.openLocked(file, readOnly);
    m_device = std::move(opened.device);
    if (readOnly)
        m_readOnlyReason = "O arquivo foi aberto somente para leitura.";
    else if (opened.readOnly)
        m_readOnlyReason = "O arquivo só pode ser lido: não há permissão para gravar nele.";
    else if (!files.folderWritable(file))
        m_readOnlyReason = "O arquivo só pode ser lido: não há permissão para gravar na pasta dele.";
    if (!isReadOnly()) {
        // Access marks its users in a lock file that other systems cannot take part in.
        for (const char* extension : {".ldb", ".LDB"}) {
            const std::filesystem::path lockFile = lockFileOf(file, extension);
            if (files.exists(lockFile))
                throw Error(ErrorKind::Locked, "O arquivo está em uso pelo Access (existe '" + nameOf(lockFile) +
                                                   "'). Feche-o em todos os computadores; se nenhum o tiver aberto, "
                                                   "apague esse arquivo e tente novamente.");
        }
    }
    recover();
    const std::uint64_t length = m_device->size();
    if (m_overlay.empty())
        m_pageCount = static_cast<PageNumber>(std::min(length, largestFile + pageSize) / pageSize);
    if (length == 0 || m_pageCount == 0)
        throw Error(ErrorKind::NotADatabase, "O arquivo não é um banco de dados do Access.");
    if (length % pageSize != 0 && !isReadOnly())
        m_readOnlyReason = "O arquivo só pode ser lido: o fim dele está truncado.";
    m_committedPages = m_pageCount;
    m_frames.resize(m_pageCount);
}

Pager::~Pager()
{
    rollback();
    if (!isReadOnly() && !m_broken)
        m_journal.remove();
}

void Pager::recover()
{
    Journal::Recovered found = m_journal.read(*m_device);
    if (isReadOnly()) {
        if (found.playBack) {
            m_overlay = std::move(found.images);
            m_pageCount = found.pages;
        }
        return;
    }
    if (found.playBack) {
        for (const auto& [number, image] : found.images)
            m_device->write(std::uint64_t{number} * pageSize, *image);
        m_device->truncate(std::uint64_t{found.pages} * pageSize);
        m_device->sync();
    }
    m_journal.remove();
}

void Pager::setPageKey(std::uint32_t key)
{
    m_pageKey = key;
}

void Pager::forbidWriting(const std::string& reason)
{
    if (!isReadOnly())
        m_readOnlyReason = reason;
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
    if (const auto image = m_overlay.find(number); image != m_overlay.end())
        *bytes = *image->second;
    else
        m_device->read(std::uint64_t{number} * pageSize, *bytes);
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

void Pager::begin()
{
    if (m_broken)
        throw Error(ErrorKind::IoError, "Uma falha anterior de gravação deixou o arquivo incompleto. Feche e abra o "
                                        "programa: o arquivo será recomposto.");
    if (isReadOnly())
        throw Error(ErrorKind::ReadOnly, m_readOnlyReason);
    m_inUnit = true;
}

void Pager::commit()
{
    std::vector<JournalEntry> entries;
    std::vector<std::pair<PageNumber, PagePointer>> writes;
    for (const auto& [number, bytes] : m_changed) {
        PagePointer old;
        if (number < m_committedPages) {
            Frame& frame = m_frames[number];
            if (frame.page) {
                old = frame.page;
            } else {
                auto read = std::make_shared<PageBytes>();
                m_device->read(std::uint64_t{number} * pageSize, *read);
                encode(number, *read);
                old = std::move(read);
            }
            if (*old == *bytes)
                continue;
            old = stored(number, old);
        }
        writes.emplace_back(number, stored(number, bytes));
        entries.push_back({number, contentHash(*writes.back().second), std::move(old)});
    }
    if (!writes.empty()) {
        const auto zeroAfter = m_changed.find(0);
        const PagePointer zeroBefore = m_frames[0].page ? m_frames[0].page : [this] {
            auto read = std::make_shared<PageBytes>();
            m_device->read(0, *read);
            return PagePointer(read);
        }();
        const std::uint64_t before = Journal::identity(*zeroBefore);
        const std::uint64_t after = zeroAfter == m_changed.end() ? before : Journal::identity(*zeroAfter->second);
        try {
            m_journal.write(m_committedPages, m_pageCount, before, after, entries);
        } catch (...) {
            m_journal.invalidate();
            throw;
        }
        // New pages first, then the changed ones from the back: the global map and the header come last.
        std::sort(writes.begin(), writes.end(), [this](const auto& left, const auto& right) {
            const bool leftNew = left.first >= m_committedPages;
            const bool rightNew = right.first >= m_committedPages;
            if (leftNew != rightNew)
                return leftNew;
            return leftNew ? left.first < right.first : left.first > right.first;
        });
        try {
            for (const auto& [number, bytes] : writes)
                m_device->write(std::uint64_t{number} * pageSize, *bytes);
            m_device->sync();
        } catch (...) {
            undo(entries);
            throw;
        }
        m_journal.invalidate();
    }
    for (auto& [number, bytes] : m_changed)
        keep(number, std::move(bytes));
    m_changed.clear();
    m_committedPages = m_pageCount;
    m_inUnit = false;
    makeRoom();
}

void Pager::undo(const std::vector<JournalEntry>& entries)
{
    try {
        for (const JournalEntry& entry : entries) {
            if (entry.oldBytes)
                m_device->write(std::uint64_t{entry.page} * pageSize, *entry.oldBytes);
        }
        m_device->truncate(std::uint64_t{m_committedPages} * pageSize);
        m_device->sync();
        m_journal.invalidate();
    } catch (...) {
        // The journal stays: the next opening plays it back.
        m_broken = true;
    }
}

void Pager::rollback() noexcept
{
    m_changed.clear();
    m_pageCount = m_committedPages;
    m_inUnit = false;
}

} // namespace accessfile
