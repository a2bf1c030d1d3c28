#pragma once

#include "accessfile/file/FileDevice.h"

namespace accessfile {

/// The lock file beside a data file (.ldb), in which its users are found: each holds a byte far beyond the end and has
/// a record of 64 bytes with its computer's name. A record alone proves nothing, records outlive their users; the locks
/// do. It is open only while it is asked or held: a lock file that somebody holds open cannot be deleted by the last
/// Access user on a network share. It is never deleted here.
class LockFile
{
public:
    LockFile(FileSystem& files, const std::filesystem::path& database);

    /// Who has the file.
    struct Holder
    {
        std::string machine;    ///< Empty where no record tells.
        bool everyUser = false; ///< One of our programs, in its turn.
    };
    /// Anyone but this object. Takes nothing and leaves nothing behind.
    [[nodiscard]] std::optional<Holder> holder(FileDevice& database);

    /// Whether that user is there; user 0 is one of our programs in its turn.
    [[nodiscard]] bool userPresent(FileDevice& database, std::uint32_t user);

    /// Tries to be next and then alone: first the place in the queue, which is kept between two tries, then every
    /// user's byte. False while somebody else is there. Writes the own record.
    [[nodiscard]] bool tryTake(FileDevice& database);
    /// Lets the next one queue; the users' bytes stay.
    void leaveQueue();
    /// Lets users in again; the place in the queue stays.
    void leaveUsers();
    /// Gives everything back and closes.
    void release() noexcept;

private:
    [[nodiscard]] std::unique_ptr<FileDevice> find(FileDevice& database);
    [[nodiscard]] std::optional<Holder> holderIn(FileDevice& device) const;
    [[nodiscard]] std::string machineAt(FileDevice& device, std::uint32_t user) const;
    void open(FileDevice& database);
    void writeRecord();

    FileSystem& m_files;
    std::filesystem::path m_path;
    std::unique_ptr<FileDevice> m_device;
    bool m_queued = false;
    bool m_taken = false;
};

} // namespace accessfile
