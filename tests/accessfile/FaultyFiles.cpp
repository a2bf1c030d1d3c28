#include "accessfile/FaultyFiles.h"

#include "accessfile/Error.h"

#include <algorithm>

namespace accesstest {

using namespace accessfile;

class FaultyDevice : public FileDevice
{
public:
    FaultyDevice(FaultyFiles& files, std::shared_ptr<FaultyFiles::File> file, bool writes)
        : m_files(files)
        , m_file(std::move(file))
        , m_writes(writes)
    {
        m_file->writers += m_writes ? 1 : 0;
    }
    ~FaultyDevice() override
    {
        m_file->writers -= m_writes ? 1 : 0;
        std::erase_if(m_file->locks, [this](const auto& lock) { return lock.first == this; });
    }
    FaultyDevice(const FaultyDevice&) = delete;
    FaultyDevice& operator=(const FaultyDevice&) = delete;
    bool tryLock(ByteRange range) override
    {
        if (lockOfOthers(range))
            return false;
        m_file->locks.emplace_back(this, range);
        return true;
    }
    void unlock(ByteRange range) override
    {
        // What was not taken cannot be given back: a file server refuses it.
        if (std::erase(m_file->locks, std::pair<const void*, ByteRange>(this, range)) != 1)
            throw Error(ErrorKind::IoError, "Não reservado.");
    }
    std::optional<ByteRange> lockOfOthers(ByteRange range) override
    {
        for (const auto& [owner, held] : m_file->locks) {
            if (owner != this && held.start < range.start + range.length && range.start < held.start + held.length)
                return held;
        }
        return std::nullopt;
    }
    FileIdentity identity() override { return {1, m_file->number}; }
    bool openForWriting() override { return m_file->writers > 0; }
    std::uint64_t size() override { return m_file->content.size(); }
    void read(std::uint64_t offset, std::span<std::uint8_t> to) override
    {
        m_files.read();
        if (offset + to.size() > m_file->content.size())
            throw Error(ErrorKind::IoError, "Falha ao ler.");
        std::copy_n(m_file->content.begin() + static_cast<std::ptrdiff_t>(offset), to.size(), to.begin());
    }
    void write(std::uint64_t offset, std::span<const std::uint8_t> from) override
    {
        m_files.change(offset + from.size() > m_file->content.size());
        keep({offset, {from.begin(), from.end()}, false});
    }
    void truncate(std::uint64_t size) override
    {
        m_files.change(false);
        keep({size, {}, true});
    }
    void sync() override
    {
        m_files.change(false);
        for (const FaultyFiles::Change& each : m_file->unsynced)
            FaultyFiles::apply(m_file->durable, each);
        m_file->unsynced.clear();
    }

private:
    void keep(FaultyFiles::Change change)
    {
        FaultyFiles::apply(m_file->content, change);
        m_file->unsynced.push_back(std::move(change));
    }
    FaultyFiles& m_files;
    std::shared_ptr<FaultyFiles::File> m_file;
    bool m_writes;
};

void FaultyFiles::failAfter(std::size_t changes, Fault fault)
{
    m_left = changes;
    m_fault = fault;
    m_changes = 0;
    m_failed = false;
}

void FaultyFiles::failReadAfter(std::size_t reads)
{
    m_readsLeft = reads;
    m_failed = false;
}

void FaultyFiles::read()
{
    if (!m_readsLeft || (*m_readsLeft)-- > 0)
        return;
    m_readsLeft.reset();
    m_failed = true;
    throw Error(ErrorKind::IoError, "Erro de entrada e saída.");
}

void FaultyFiles::change(bool grows)
{
    ++m_changes;
    if (m_left > 0) {
        --m_left;
        return;
    }
    const bool fails =
        m_fault == Fault::Stop || (m_fault == Fault::Glitch && !m_failed) || (m_fault == Fault::Full && grows);
    m_failed = m_failed || fails;
    if (fails && m_fault == Fault::Stop)
        throw Stopped();
    if (fails)
        throw Error(ErrorKind::IoError, "Erro de entrada e saída.");
}

void FaultyFiles::apply(Bytes& to, const Change& change)
{
    if (change.truncates) {
        to.resize(change.offset);
        return;
    }
    to.resize(std::max<std::size_t>(to.size(), change.offset + change.bytes.size()));
    std::copy(change.bytes.begin(), change.bytes.end(), to.begin() + static_cast<std::ptrdiff_t>(change.offset));
}

void FaultyFiles::loseUnsynced(std::mt19937& engine)
{
    constexpr std::size_t sector = 512;
    const auto chance = [&engine](unsigned of) { return std::uniform_int_distribution<unsigned>(1, of)(engine) == 1; };
    for (auto& [name, file] : m_files) {
        const bool allKept = chance(4);
        for (const Change& each : file->unsynced) {
            // A truncation is lost or not; of a write each sector is.
            const std::size_t end = each.truncates ? 1 : each.bytes.size();
            for (std::size_t at = 0; at < end; at += sector) {
                if (!allKept && !chance(2))
                    continue;
                const auto from = each.bytes.begin() + static_cast<std::ptrdiff_t>(at);
                const std::size_t length = each.truncates ? 0 : std::min(sector, end - at);
                apply(file->durable,
                      {each.offset + at, Bytes(from, from + static_cast<std::ptrdiff_t>(length)), each.truncates});
            }
        }
        file->unsynced.clear();
        file->content = file->durable;
    }
}

Bytes FaultyFiles::content(const std::filesystem::path& file) const
{
    return m_files.at(file)->content;
}

std::shared_ptr<FaultyFiles::File>& FaultyFiles::make(const std::filesystem::path& file)
{
    auto& made = m_files[file];
    made = std::make_shared<File>();
    made->number = ++m_made;
    return made;
}

void FaultyFiles::setContent(const std::filesystem::path& file, Bytes bytes)
{
    File& made = *make(file);
    made.content = bytes;
    made.durable = std::move(bytes);
}

std::unique_ptr<FileDevice> FaultyFiles::device(const std::filesystem::path& file, bool writes)
{
    return std::make_unique<FaultyDevice>(*this, m_files.at(file), writes);
}

std::unique_ptr<FileDevice> FaultyFiles::openToRead(const std::filesystem::path& file)
{
    if (!m_files.contains(file))
        throw Error(ErrorKind::CannotOpen, "O arquivo não existe.");
    return device(file, false);
}

std::unique_ptr<FileDevice> FaultyFiles::openToWrite(const std::filesystem::path& file)
{
    if (!m_files.contains(file))
        throw Error(ErrorKind::CannotOpen, "O arquivo não existe.");
    return device(file, true);
}

std::unique_ptr<FileDevice> FaultyFiles::createNew(const std::filesystem::path& file)
{
    change(true);
    if (m_files.contains(file))
        throw Error(ErrorKind::Duplicate, "O arquivo já existe.");
    make(file);
    return device(file, true);
}

std::unique_ptr<FileDevice> FaultyFiles::openBeside(const std::filesystem::path& file, FileDevice&)
{
    if (!m_files.contains(file)) {
        change(true);
        make(file);
    }
    return device(file, true);
}

std::unique_ptr<FileDevice> FaultyFiles::openExisting(const std::filesystem::path& file, FileDevice&)
{
    return m_files.contains(file) ? device(file, false) : nullptr;
}

std::optional<FileIdentity> FaultyFiles::identityOf(const std::filesystem::path& file)
{
    const auto found = m_files.find(file);
    return found == m_files.end() ? std::nullopt : std::optional(FileIdentity{1, found->second->number});
}

std::optional<std::filesystem::path> FaultyFiles::findIgnoringCase(const std::filesystem::path& file)
{
    return m_files.contains(file) ? std::optional(file) : std::nullopt;
}

void FaultyFiles::remove(const std::filesystem::path& file)
{
    change(false);
    m_files.erase(file);
}

void FaultyFiles::publish(const std::filesystem::path& from, const std::filesystem::path& to)
{
    change(false);
    if (m_files.contains(to))
        throw Error(ErrorKind::Duplicate, "O arquivo já existe.");
    m_files[to] = m_files.at(from);
    m_files.erase(from);
}

} // namespace accesstest
