#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>

// The operating system as the engine sees it. All of it is virtual, so that tests can fail or stop at any write.
namespace accessfile {

/// An open file. All functions raise Error (IoError) when the system refuses.
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
};

struct OpenedFile
{
    std::unique_ptr<FileDevice> device;
    bool readOnly = false;
};

class FileSystem
{
public:
    virtual ~FileSystem() = default;
    /// Opens a database and locks it: exclusively for writing, shared where it is or can only be read. Raises
    /// CannotOpen or Locked.
    [[nodiscard]] virtual OpenedFile openLocked(const std::filesystem::path& file, bool readOnly) = 0;
    /// Makes a new file; one that exists is an error (Duplicate).
    [[nodiscard]] virtual std::unique_ptr<FileDevice> createNew(const std::filesystem::path& file) = 0;
    /// Opens a journal, made when it is missing, and keeps its directory entry.
    [[nodiscard]] virtual std::unique_ptr<FileDevice> openJournal(const std::filesystem::path& file) = 0;
    /// Opens for reading; nullptr when there is none.
    [[nodiscard]] virtual std::unique_ptr<FileDevice> openExisting(const std::filesystem::path& file) = 0;
    [[nodiscard]] virtual bool exists(const std::filesystem::path& file) = 0;
    /// True when files can be made in the folder of `file`.
    [[nodiscard]] virtual bool folderWritable(const std::filesystem::path& file) = 0;
    /// Removes a file, durably; a missing one is no error.
    virtual void remove(const std::filesystem::path& file) = 0;
    /// Gives a finished file its name; an existing file of that name is an error (Duplicate).
    virtual void publish(const std::filesystem::path& from, const std::filesystem::path& to) = 0;
};

/// The real one.
[[nodiscard]] FileSystem& nativeFileSystem();

} // namespace accessfile
