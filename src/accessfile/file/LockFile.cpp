#include "accessfile/file/LockFile.h"

#include "accessfile/Error.h"
#include "accessfile/file/LockRanges.h"

#include <algorithm>
#include <array>

namespace accessfile {

namespace {

constexpr std::size_t recordLength = 64;
constexpr std::size_t fieldLength = 32;
constexpr std::size_t longestName = 15;
constexpr std::uint32_t ownUser = 1;

using Record = std::array<std::uint8_t, recordLength>;

/// A name as the records have it: one byte a character, a zero, blanks.
void putName(std::span<std::uint8_t> field, std::string_view name)
{
    std::fill(field.begin(), field.end(), std::uint8_t{' '});
    std::size_t length = 0;
    for (const char each : name.substr(0, longestName)) {
        const auto byte = static_cast<unsigned char>(each);
        field[length++] = byte > ' ' && byte < 0x7F ? byte : static_cast<std::uint8_t>('?');
    }
    field[length] = 0;
}

} // namespace

LockFile::LockFile(FileSystem& files, const std::filesystem::path& database)
    : m_files(files)
    , m_path(database)
{
    m_path.replace_extension(".ldb");
}

std::string LockFile::machineAt(FileDevice& device, std::uint32_t user) const
{
    Record record{};
    if (device.size() < std::uint64_t{recordLength} * user)
        return {};
    device.read(std::uint64_t{recordLength} * (user - 1), record);
    std::string name;
    for (std::size_t i = 0; i < fieldLength && record[i] != 0; ++i) {
        // Names come from other computers: what is no plain character is not shown.
        name += record[i] >= ' ' && record[i] < 0x7F ? static_cast<char>(record[i]) : '?';
    }
    return name.substr(0, name.find_last_not_of(' ') + 1);
}

std::optional<LockFile::Holder> LockFile::holderIn(FileDevice& device) const
{
    const std::optional<ByteRange> held = device.lockOfOthers(lockrange::everyUser);
    if (!held)
        return std::nullopt;
    Holder holder;
    if (held->start <= lockrange::everyUser.start) {
        // Where the system does not tell which bytes are held, the byte of each record is asked.
        holder.everyUser = device.lockOfOthers({lockrange::everyUser.start, 1}).has_value();
        if (holder.everyUser) {
            holder.machine = machineAt(device, ownUser);
            return holder;
        }
    }
    const auto records =
        static_cast<std::uint32_t>(std::min<std::uint64_t>(device.size() / recordLength, lockrange::mostUsers));
    for (std::uint32_t user = 1; user <= records && holder.machine.empty(); ++user) {
        if (device.lockOfOthers(lockrange::user(user)))
            holder.machine = machineAt(device, user);
    }
    return holder;
}

std::unique_ptr<FileDevice> LockFile::find(FileDevice& database)
{
    if (auto device = m_files.openExisting(m_path, database))
        return device;
    const auto found = m_files.findIgnoringCase(m_path);
    return found ? m_files.openExisting(*found, database) : nullptr;
}

std::optional<LockFile::Holder> LockFile::holder(FileDevice& database)
{
    if (m_device && !m_taken)
        return holderIn(*m_device);
    const auto device = find(database);
    return device ? holderIn(*device) : std::nullopt;
}

bool LockFile::userPresent(FileDevice& database, std::uint32_t user)
{
    const auto device = find(database);
    return device && device->lockOfOthers(lockrange::user(user)).has_value();
}

void LockFile::open(FileDevice& database)
{
    m_device = m_files.openExisting(m_path, database);
    if (!m_device) {
        if (const auto found = m_files.findIgnoringCase(m_path))
            m_path = *found;
        m_device = m_files.openBeside(m_path, database);
    }
}

bool LockFile::tryTake(FileDevice& database)
{
    if (!m_device)
        open(database);
    m_queued = m_queued || m_device->tryLock(lockrange::nextInTurn);
    // Asked first: to Access a whole range that is taken for a moment looks like somebody alone.
    if (!m_queued || m_device->lockOfOthers(lockrange::everyUser))
        return false;
    if (!m_device->tryLock(lockrange::everyUser))
        return false;
    m_taken = true;
    // Deleted or replaced meanwhile: the others gather in another file.
    if (m_files.identityOf(m_path) != m_device->identity()) {
        release();
        return false;
    }
    writeRecord();
    return true;
}

void LockFile::writeRecord()
{
    Record record{};
    putName(std::span(record).first(fieldLength), m_files.machineName());
    putName(std::span(record).last(fieldLength), "Admin");
    Record found{};
    if (m_device->size() >= recordLength)
        m_device->read(0, found);
    if (found != record)
        m_device->write(0, record);
}

void LockFile::leaveQueue()
{
    if (m_queued)
        m_device->unlock(lockrange::nextInTurn);
    m_queued = false;
}

void LockFile::leaveUsers()
{
    if (m_taken)
        m_device->unlock(lockrange::everyUser);
    m_taken = false;
}

void LockFile::release() noexcept
{
    try {
        leaveQueue();
        leaveUsers();
    } catch (...) {
        // Closing gives back what is left.
    }
    m_queued = false;
    m_taken = false;
    m_device.reset();
}

} // namespace accessfile
