#pragma once

#include "accessfile/file/FileDevice.h"
#include "accessfile/file/Page.h"

#include <map>
#include <memory>
#include <vector>

namespace accessfile {

/// Hash of page contents for the journal; guards against torn writes, not against malice.
[[nodiscard]] std::uint64_t contentHash(ByteView bytes, std::uint64_t seed = 0);

/// What a unit of change replaces: pages as they are stored before it, and hashes of what they become.
struct JournalEntry
{
    PageNumber page = 0;
    std::uint64_t newHash = 0;
    PagePointer oldBytes; ///< Null for pages that the unit appends.
};

/// The rollback journal beside the file. Written and synced before the first page of a unit is; it names the hashes of
/// the new pages, so that a unit found wholly written at the next opening needs no third sync to be known as done.
class Journal
{
public:
    Journal(FileSystem& files, const std::filesystem::path& database);

    /// Writes the old images and returns when they are on the medium.
    void write(std::uint32_t oldPages, std::uint32_t newPages, std::uint64_t oldIdentity, std::uint64_t newIdentity,
               const std::vector<JournalEntry>& entries);
    /// Makes the journal void; failing to is harmless, its hashes tell.
    void invalidate() noexcept;
    /// Closes and removes the file.
    void remove() noexcept;

    struct Recovered
    {
        bool playBack = false;
        std::uint32_t pages = 0;
        std::map<PageNumber, PagePointer> images;
    };
    /// Reads a journal left by a crash. Nothing to play back when there is none, when it is incomplete or another
    /// file's, or when its unit was finished.
    [[nodiscard]] Recovered read(FileDevice& database);

    /// Of page 0: which file this is.
    [[nodiscard]] static std::uint64_t identity(const PageBytes& pageZero);

private:
    FileSystem& m_files;
    std::filesystem::path m_path;
    std::unique_ptr<FileDevice> m_device;
};

} // namespace accessfile
