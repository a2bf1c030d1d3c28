#include "accessfile/file/Journal.h"

#include <algorithm>

namespace accessfile {

namespace {

// Two headers of a sector each, then the bodies: the commit table before the unit, and the entries.
constexpr std::array<std::uint8_t, 16> magic = {'P', 'l', 'a', 'n', 'i', 'l', 'h', 'a',
                                                ' ', 'd', 'i', 'a', 'r', 'i', 'o', '2'};
constexpr std::size_t sector = 512;
constexpr std::size_t headerLength = 72;
constexpr std::uint64_t firstBody = 2 * sector;
constexpr std::size_t sectorsOfPage = pageSize / sector;
constexpr std::size_t entryLength = 8 + 8 * sectorsOfPage; ///< Page, whether an old image follows, hashes.
constexpr std::size_t chunkLength = 64 * pageSize;

ByteView sectorOf(const PageBytes& page, std::size_t number)
{
    return ByteView(page).subspan(number * sector, sector);
}

/// Sectors that a unit writes: those of page 0 end where the commit table begins.
std::size_t sectorsWritten(PageNumber page)
{
    return page == 0 ? CommitTable::offset / sector : sectorsOfPage;
}

bool isZero(ByteView bytes)
{
    return std::all_of(bytes.begin(), bytes.end(), [](std::uint8_t byte) { return byte == 0; });
}

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

/// One of the two headers, as far as it is one.
struct Journal::Place
{
    std::uint64_t sequence = 0;
    std::uint64_t body = 0;
    std::uint64_t length = 0;
    std::uint32_t oldPages = 0;
    std::uint32_t newPages = 0;
    std::uint32_t count = 0;
    std::uint64_t bodyHash = 0;

    [[nodiscard]] std::array<std::uint8_t, headerLength> stored() const
    {
        std::array<std::uint8_t, headerLength> header{};
        std::copy(magic.begin(), magic.end(), header.begin());
        store64(header.data() + 16, sequence);
        store64(header.data() + 24, body);
        store64(header.data() + 32, length);
        store32(header.data() + 40, oldPages);
        store32(header.data() + 44, newPages);
        store32(header.data() + 48, count);
        store64(header.data() + 56, bodyHash);
        store64(header.data() + 64, contentHash(ByteView(header).first(64)));
        return header;
    }
    [[nodiscard]] static std::optional<Place> from(ByteView header)
    {
        if (!std::equal(magic.begin(), magic.end(), header.begin()) ||
            load64(header.data() + 64) != contentHash(header.first(64)))
            return std::nullopt;
        return Place{load64(header.data() + 16), load64(header.data() + 24), load64(header.data() + 32),
                     load32(header.data() + 40), load32(header.data() + 44), load32(header.data() + 48),
                     load64(header.data() + 56)};
    }
};

Journal::Journal(DataFile& file)
    : m_file(file)
    , m_name(file.name())
{
    m_name += "-diario";
}

/// The latest first.
std::vector<Journal::Place> Journal::places(FileDevice& device)
{
    std::vector<Place> found;
    if (device.size() < firstBody)
        return found;
    std::array<std::uint8_t, firstBody> headers{};
    device.read(0, headers);
    for (std::size_t i = 0; i < 2; ++i) {
        if (const auto place = Place::from(ByteView(headers).subspan(i * sector, headerLength)))
            found.push_back(*place);
    }
    std::sort(found.begin(), found.end(),
              [](const Place& left, const Place& right) { return left.sequence > right.sequence; });
    return found;
}

void Journal::write(const JournalUnit& unit, const std::vector<JournalEntry>& entries)
{
    // Another program may have removed it since, or put one of its own there.
    if (!m_device || m_file.files().identityOf(m_name) != m_device->identity())
        m_device = m_file.files().openBeside(m_name, m_file.opened());
    const std::vector<Place> before = places(*m_device);

    std::uint64_t length = unit.table.bytes().size();
    for (const JournalEntry& entry : entries)
        length += entryLength + (entry.oldBytes ? pageSize : 0);
    Place place{1, firstBody, length, unit.oldPages, unit.newPages, static_cast<std::uint32_t>(entries.size()), 0};
    if (!before.empty()) {
        const Place& last = before.front();
        place.sequence = last.sequence + 1;
        if (last.body < firstBody + length)
            place.body = (last.body + last.length + sector - 1) / sector * sector;
    }

    Bytes chunk;
    std::uint64_t offset = place.body;
    std::uint64_t hash = 0;
    const auto put = [&](ByteView bytes) {
        hash = contentHash(bytes, hash);
        append(chunk, bytes);
        if (chunk.size() >= chunkLength) {
            m_device->write(offset, chunk);
            offset += chunk.size();
            chunk.clear();
        }
    };
    put(unit.table.bytes());
    for (const JournalEntry& entry : entries) {
        std::array<std::uint8_t, entryLength> description{};
        store32(description.data(), entry.page);
        store32(description.data() + 4, entry.oldBytes ? 1 : 0);
        for (std::size_t i = 0; i < sectorsOfPage; ++i)
            store64(description.data() + 8 + 8 * i, contentHash(sectorOf(*entry.newBytes, i)));
        put(description);
        if (entry.oldBytes)
            put(*entry.oldBytes);
    }
    if (!chunk.empty())
        m_device->write(offset, chunk);
    place.bodyHash = hash;
    m_device->write(place.sequence % 2 * sector, place.stored());
    m_device->sync();
}

void Journal::remove() noexcept
{
    try {
        m_device.reset();
        m_file.files().remove(m_name);
    } catch (...) {
        // It stays and is void: slot 0 says so.
    }
}

Journal::Finding Journal::examine()
{
    const auto device = m_file.files().openExisting(m_name, m_file.opened());
    if (!device)
        return {};
    for (const Place& place : places(*device)) {
        const Finding found = judge(*device, place);
        if (found.verdict != Verdict::Nothing)
            return found;
    }
    return {};
}

Journal::Finding Journal::judge(FileDevice& journal, const Place& place)
{
    FileDevice& database = m_file.device();
    const std::uint64_t length = journal.size();
    const std::uint64_t databaseLength = database.size();
    if (place.length > length || place.body > length - place.length || place.oldPages == 0 ||
        std::max(place.oldPages, place.newPages) > largestFile / pageSize)
        return {};

    std::uint64_t offset = place.body;
    const std::uint64_t end = place.body + place.length;
    std::uint64_t hash = 0;
    const auto get = [&](std::span<std::uint8_t> bytes) {
        if (bytes.size() > end - offset)
            return false;
        journal.read(offset, bytes);
        offset += bytes.size();
        hash = contentHash(bytes, hash);
        return true;
    };
    CommitTable before;
    if (!get(before.bytes()))
        return {};
    Finding found;
    found.pages = place.oldPages;
    found.counter = before.slot(0);
    bool allNew = databaseLength == std::uint64_t{place.newPages} * pageSize;
    bool known = databaseLength >= std::uint64_t{std::min(place.oldPages, place.newPages)} * pageSize &&
                 databaseLength <= std::uint64_t{std::max(place.oldPages, place.newPages)} * pageSize &&
                 before.sameOthers(m_file.table());
    for (std::uint32_t i = 0; i < place.count; ++i) {
        std::array<std::uint8_t, entryLength> entry{};
        if (!get(entry))
            return {};
        const PageNumber page = load32(entry.data());
        PagePointer old;
        if (load32(entry.data() + 4) != 0) {
            auto image = std::make_shared<PageBytes>();
            if (page >= place.oldPages || !get(*image))
                return {};
            old = image;
            found.images[page] = std::move(image);
        }
        // A page that the unit appends may be there in part, the rest as the system fills it up.
        PageBytes now{};
        const std::uint64_t at = std::uint64_t{page} * pageSize;
        const std::size_t there = at >= databaseLength ? 0 : std::min<std::uint64_t>(pageSize, databaseLength - at);
        if (there > 0)
            database.read(at, std::span(now).first(there));
        for (std::size_t s = 0; s < sectorsWritten(page); ++s) {
            const bool isNew = contentHash(sectorOf(now, s)) == load64(entry.data() + 8 + 8 * s);
            const bool isOld = old ? std::ranges::equal(sectorOf(now, s), sectorOf(*old, s)) : isZero(sectorOf(now, s));
            allNew = allNew && isNew;
            known = known && (isNew || isOld);
        }
    }
    if (offset != end || hash != place.bodyHash)
        return {};
    found.verdict = !known ? Verdict::Foreign : allNew ? Verdict::Finished : Verdict::PlayBack;
    return found;
}

} // namespace accessfile
