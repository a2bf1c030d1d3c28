#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>

// The operating system as the engine sees it. All of it is virtual, so that tests can fail, stop or switch at any call.
namespace accessfile {

/// Bytes of a file, or beyond its end.
struct ByteRange
{
    std::uint64_t start = 0;
    std::uint64_t length = 0;
    bool operator==(const ByteRange&) const = default;
};

/// Tells one file from another that took over its name.
struct FileIdentity
{
    std::uint64_t volume = 0;
    std::uint64_t number = 0;
    bool operator==(const FileIdentity&) const = default;
};

/// An open file. All functions raise Error: IoError when the system refuses, Locked where a lock of another program
/// keeps the bytes closed (on a network share locks do that).
class FileDevice
{
public:
    virtual ~FileDevice() = default;
    /// Length in bytes.
    [[nodiscard]] virtual std::uint64_t size() = 0;
    /// Fills `to` from `offset`; a shorter file is an error.
    virtual void read(std::uint64_t offset, std::span<std::uint8_t> to) = 0;
    virtual void write(std::uint64_t offset, std::span<const std::uint8_t> from) = 0;
    virtual void truncate(std::uint64_t size) = 0;
    /// Returns when everything written is on the medium.
    virtual void sync() = 0;

    /// Takes bytes for this open file alone, without waiting; false where another open file holds any of them, be it
    /// of this process. Only on a file that is open for writing. Closing gives everything back.
    [[nodiscard]] virtual bool tryLock(ByteRange range) = 0;
    /// Gives back exactly a range that was taken.
    virtual void unlock(ByteRange range) = 0;
    /// The first lock of another open file among these bytes; takes nothing where the system can tell without.
    [[nodiscard]] virtual std::optional<ByteRange> lockOfOthers(ByteRange range) = 0;

    [[nodiscard]] virtual FileIdentity identity() = 0;
    /// True when somebody has the file open for writing. False too where the system does not tell.
    [[nodiscard]] virtual bool openForWriting() = 0;
};

class FileSystem
{
public:
    virtual ~FileSystem() = default;

    /// The name of the file itself, whatever link led to it; the name given where there is no such file.
    [[nodiscard]] virtual std::filesystem::path resolved(const std::filesystem::path& file) = 0;
    /// Opens a data file and locks nothing. CannotOpen for a missing file and for anything that is not a file (a pipe
    /// or device would hang), Locked where its opener admits nobody.
    [[nodiscard]] virtual std::unique_ptr<FileDevice> openToRead(const std::filesystem::path& file) = 0;
    /// Opens a data file for a turn of writing; nullptr where another opener keeps it closed.
    [[nodiscard]] virtual std::unique_ptr<FileDevice> openToWrite(const std::filesystem::path& file) = 0;
    /// Opens a file that lies beside a data file, for writing, and makes it where it is missing: with the owner, group
    /// and rights of `like` as far as they can be given, never with wider ones. Never through a link.
    [[nodiscard]] virtual std::unique_ptr<FileDevice> openBeside(const std::filesystem::path& file,
                                                                 FileDevice& like) = 0;
    /// Opens a file that lies beside a data file, where it is, for reading and locking as far as its rights go; nullptr
    /// when there is none. An Error where a link, pipe or device has its name, or it is of a user who could not have
    /// made it.
    [[nodiscard]] virtual std::unique_ptr<FileDevice> openExisting(const std::filesystem::path& file,
                                                                   FileDevice& like) = 0;
    /// Makes a new file; one that exists is an error (Duplicate).
    [[nodiscard]] virtual std::unique_ptr<FileDevice> createNew(const std::filesystem::path& file) = 0;

    /// The file that has the name now; nullopt when none has.
    [[nodiscard]] virtual std::optional<FileIdentity> identityOf(const std::filesystem::path& file) = 0;
    [[nodiscard]] virtual bool exists(const std::filesystem::path& file) = 0;
    /// The name in the file's folder that differs from its own in case at most; nullopt when there is none.
    [[nodiscard]] virtual std::optional<std::filesystem::path> findIgnoringCase(const std::filesystem::path& file) = 0;
    [[nodiscard]] virtual bool fileWritable(const std::filesystem::path& file) = 0;
    /// True when files can be made in the folder of `file`.
    [[nodiscard]] virtual bool folderWritable(const std::filesystem::path& file) = 0;
    /// Removes a file, durably; a missing one is no error.
    virtual void remove(const std::filesystem::path& file) = 0;
    /// Gives a finished file its name; an existing file of that name is an error (Duplicate).
    virtual void publish(const std::filesystem::path& from, const std::filesystem::path& to) = 0;

    /// The computer's name, as others on the network know it.
    [[nodiscard]] virtual std::string machineName() = 0;
    /// Time that only goes forward.
    [[nodiscard]] virtual std::chrono::milliseconds now() = 0;
    virtual void pause(std::chrono::milliseconds time) = 0;
};

/// The real one.
[[nodiscard]] FileSystem& nativeFileSystem();

} // namespace accessfile
