#include "accessfile/file/Journal.h"

#include <algorithm>

namespace accessfile {

namespace {

constexpr std::array<std::uint8_t, 16> magic = {'P', 'l', 'a', 'n', 'i', 'l', 'h', 'a',
                                                ' ', 'd', 'i', 'a', 'r', 'i', 'o', '1'};
constexpr std::size_t headerLength = 64;
constexpr std::size_t entryLength = 16; ///< Page, whether an old image follows, hash of the new one.
constexpr std::size_t chunkLength = 64 * pageSize;

} // namespace

std::uint64_t contentHash(ByteView bytes, std::uint64_t seed)
{
    std::uint64_t hash = seed ^ 0x9E3779B97F4A7C15ULL ^ bytes.size();
    std::size_t i = 0;
    const auto mix = [&hash](std::uint64_t word) {
        hash = (hash ^ word) * 0xFF51AFD7ED558CCDULL;
        hash ^= hash >> 32;
    };
    for (; i + 8 <= bytes.size(); i += 8) {
        std::uint64_t word = 0;
        std::memcpy(&word, bytes.data() + i, 8);
        mix(word);
    }
    for (; i < bytes.size(); ++i)
        mix(bytes[i]);
    return hash;
}

Journal::Journal(FileSystem& files, const std::filesystem::path& database)
    : m_files(files)
    , m_path(database)
{
    m_path += "-diario";
}

std::uint64_t Journal::identity(const PageBytes& pageZero)
{
    return contentHash(ByteView(pageZero).first(0x98));
}

void Journal::write(std::uint32_t oldPages, std::uint32_t newPages, std::uint64_t oldIdentity,
                    std::uint64_t newIdentity, const std::vector<JournalEntry>& entries)
{
    if (!m_device)
        m_device = m_files.openJournal(m_path);
    std::array<std::uint8_t, headerLength> header{};
    std::copy(magic.begin(), magic.end(), header.begin());
    store32(header.data() + 16, oldPages);
    store32(header.data() + 20, newPages);
    store32(header.data() + 24, static_cast<std::uint32_t>(entries.size()));
    store64(header.data() + 32, oldIdentity);
    store64(header.data() + 40, newIdentity);

    const auto describe = [](const JournalEntry& entry) {
        std::array<std::uint8_t, entryLength> bytes{};
        store32(bytes.data(), entry.page);
        store32(bytes.data() + 4, entry.oldBytes ? 1 : 0);
        store64(bytes.data() + 8, entry.newHash);
        return bytes;
    };
    std::uint64_t hash = contentHash(ByteView(header).first(48));
    for (const JournalEntry& entry : entries) {
        hash = contentHash(describe(entry), hash);
        if (entry.oldBytes)
            hash = contentHash(*entry.oldBytes, hash);
    }
    store64(header.data() + 48, hash);

    Bytes chunk(header.begin(), header.end());
    std::uint64_t offset = 0;
    const auto flush = [&] {
        m_device->write(offset, chunk);
        offset += chunk.size();
        chunk.clear();
    };
    for (const JournalEntry& entry : entries) {
        append(chunk, describe(entry));
        if (entry.oldBytes)
            append(chunk, *entry.oldBytes);
        if (chunk.size() >= chunkLength)
            flush();
    }
    if (!chunk.empty())
        flush();
    m_device->sync();
}

void Journal::invalidate() noexcept
{
    try {
        if (m_device)
            m_device->write(0, std::array<std::uint8_t, headerLength>{});
    } catch (...) {
    }
}

void Journal::remove() noexcept
{
    try {
        m_device.reset();
        if (m_files.exists(m_path))
            m_files.remove(m_path);
    } catch (...) {
    }
}

Journal::Recovered Journal::read(FileDevice& database)
{
    Recovered recovered;
    const auto device = m_files.openExisting(m_path);
    if (!device || device->size() < headerLength)
        return recovered;
    const std::uint64_t length = device->size();
    std::array<std::uint8_t, headerLength> header{};
    device->read(0, header);
    if (!std::equal(magic.begin(), magic.end(), header.begin()))
        return recovered;
    const std::uint32_t oldPages = load32(header.data() + 16);
    const std::uint32_t newPages = load32(header.data() + 20);
    const std::uint32_t count = load32(header.data() + 24);
    const std::uint64_t databaseLength = database.size();
    if (oldPages == 0 || databaseLength < pageSize || std::uint64_t{oldPages} * pageSize > largestFile)
        return recovered;

    PageBytes pageZero{};
    database.read(0, pageZero);
    const std::uint64_t found = identity(pageZero);
    if (found != load64(header.data() + 32) && found != load64(header.data() + 40))
        return recovered;

    std::uint64_t hash = contentHash(ByteView(header).first(48));
    std::uint64_t offset = headerLength;
    bool finished = databaseLength == std::uint64_t{newPages} * pageSize;
    for (std::uint32_t i = 0; i < count; ++i) {
        std::array<std::uint8_t, entryLength> entry{};
        if (offset + entryLength > length)
            return recovered;
        device->read(offset, entry);
        offset += entryLength;
        hash = contentHash(entry, hash);
        const PageNumber page = load32(entry.data());
        if (load32(entry.data() + 4) != 0) {
            if (offset + pageSize > length || page >= oldPages)
                return recovered;
            auto image = std::make_shared<PageBytes>();
            device->read(offset, *image);
            offset += pageSize;
            hash = contentHash(*image, hash);
            recovered.images[page] = std::move(image);
        }
        if (finished) {
            PageBytes now{};
            finished = (std::uint64_t{page} + 1) * pageSize <= databaseLength;
            if (finished) {
                database.read(std::uint64_t{page} * pageSize, now);
                finished = contentHash(now) == load64(entry.data() + 8);
            }
        }
    }
    recovered.pages = oldPages;
    recovered.playBack = hash == load64(header.data() + 48) && !finished;
    return recovered;
}

} // namespace accessfile
