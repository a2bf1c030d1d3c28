#pragma once

#include "accessfile/file/CommitTable.h"
#include "accessfile/file/FileDevice.h"
#include "accessfile/file/LockRanges.h"

#include <string>

namespace accesstest {

/// Stands in for the Access engine at a data file, as far as it meets others there: a byte and a record in the lock
/// file, and batches of pages between a 0 in its slot and a higher counter.
class OtherProgram
{
public:
    OtherProgram(accessfile::FileSystem& files, const std::filesystem::path& file, std::uint32_t user)
        : m_files(files)
        , m_name(file)
        , m_user(user)
        , m_file(files.openToWrite(file))
    {
        std::filesystem::path lockFile = file;
        lockFile.replace_extension(".ldb");
        m_lockFile = files.openBeside(lockFile, *m_file);
    }
    /// False where somebody has the file for himself alone.
    [[nodiscard]] bool enter(const std::string& machine = "CAIXA02")
    {
        if (!m_lockFile->tryLock(accessfile::lockrange::user(m_user)))
            return false;
        if (!m_file)
            m_file = m_files.openToWrite(m_name);
        std::string record(64, ' ');
        record.replace(0, machine.size() + 1, machine + '\0');
        record.replace(32, 6, std::string("Admin") + '\0');
        m_lockFile->write(64 * (m_user - 1), {reinterpret_cast<const std::uint8_t*>(record.data()), record.size()});
        return true;
    }
    void leave()
    {
        m_lockFile->unlock(accessfile::lockrange::user(m_user));
        m_file.reset();
    }
    /// A batch, up to its end or left in the middle.
    void write(std::uint64_t offset, accessfile::ByteView bytes, bool finished = true)
    {
        const std::uint16_t counter = slot();
        setSlot(0);
        m_file->write(offset, bytes);
        if (finished)
            setSlot(accessfile::CommitTable::next(counter));
    }
    /// The file gets another length.
    void resize(std::uint64_t length)
    {
        const std::uint16_t counter = slot();
        setSlot(0);
        if (length < m_file->size())
            m_file->truncate(length);
        else
            m_file->write(m_file->size(), accessfile::Bytes(length - m_file->size(), 0xEE));
        setSlot(accessfile::CommitTable::next(counter));
    }
    void setSlot(std::uint16_t value)
    {
        std::array<std::uint8_t, 2> bytes{};
        accessfile::store16(bytes.data(), value);
        m_file->write(slotPlace(), bytes);
    }

private:
    [[nodiscard]] std::uint64_t slotPlace() const { return accessfile::CommitTable::offset + 2 * m_user; }
    [[nodiscard]] std::uint16_t slot()
    {
        std::array<std::uint8_t, 2> bytes{};
        m_file->read(slotPlace(), bytes);
        return accessfile::load16(bytes.data());
    }
    accessfile::FileSystem& m_files;
    std::filesystem::path m_name;
    std::uint32_t m_user;
    std::unique_ptr<accessfile::FileDevice> m_file;
    std::unique_ptr<accessfile::FileDevice> m_lockFile;
};

} // namespace accesstest
