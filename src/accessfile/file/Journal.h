#pragma once

#include "accessfile/file/CommitTable.h"
#include "accessfile/file/DataFile.h"

#include <map>
#include <memory>
#include <vector>

namespace accessfile {

/// Hash of page contents for the journal; guards against torn writes, not against malice.
[[nodiscard]] std::uint64_t contentHash(ByteView bytes, std::uint64_t seed = 0);

/// What a unit of change replaces: pages as they are stored before it and after it.
struct JournalEntry
{
    PageNumber page = 0;
    PagePointer oldBytes; ///< Null for pages that the unit appends.
    PagePointer newBytes;
};

/// What is known of a unit besides its pages.
struct JournalUnit
{
    CommitTable table; ///< Before it.
    std::uint32_t oldPages = 0;
    std::uint32_t newPages = 0;
};

/// The rollback journal beside the data file (NAME-diario): what a unit's pages held before it, and hashes of what they
/// become, sector by sector. It is on the medium before slot 0 of the data file says that pages are being written; that
/// slot alone tells whether it is needed. It has two places: a unit never overwrites the one before it, whose counter
/// may not have reached the medium yet. All writing is done within a turn.
class Journal
{
public:
    explicit Journal(DataFile& file);

    /// Returns when the unit is on the medium.
    void write(const JournalUnit& unit, const std::vector<JournalEntry>& entries);
    /// Closes and removes it. Everything that it guards must be on the medium.
    void remove() noexcept;
    void close() noexcept { m_device.reset(); }
    [[nodiscard]] const std::filesystem::path& name() const { return m_name; }

    /// What the journal says of a data file whose slot 0 stands at "writing" while nobody is writing.
    enum class Verdict {
        Nothing,  ///< No journal, or none that was complete: what stopped was no unit of this engine.
        Finished, ///< The file holds the whole unit.
        PlayBack, ///< Every sector is the unit's old or new one, and nobody else has written: the images undo it.
        Foreign   ///< Somebody else has written since. Playing back would undo that.
    };
    struct Finding
    {
        Verdict verdict = Verdict::Nothing;
        std::uint32_t pages = 0;   ///< PlayBack: length of the file before the unit.
        std::uint16_t counter = 0; ///< Slot 0 before the unit.
        std::map<PageNumber, PagePointer> images;
    };
    /// Reads file and journal. Changes nothing.
    [[nodiscard]] Finding examine();

private:
    struct Place;
    [[nodiscard]] static std::vector<Place> places(FileDevice& device);
    [[nodiscard]] Finding judge(FileDevice& journal, const Place& place);

    DataFile& m_file;
    std::filesystem::path m_name;
    std::unique_ptr<FileDevice> m_device;
};

} // namespace accessfile
