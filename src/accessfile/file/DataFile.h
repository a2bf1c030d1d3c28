#pragma once

#include "accessfile/file/LockFile.h"
#include "accessfile/file/Patience.h"

namespace accessfile {

/// Who else may have the file open.
enum class Company {
    Shared, ///< Anybody: the lock file is asked, writing takes a turn.
    Alone   ///< Nobody: a file in the making, under a name that only its maker knows.
};

/// The data file and its turns. Between turns it is open for reading only, and no lock of ours is on it or beside it.
/// For the length of a turn every user's byte in the lock file is held, so that nobody else comes in, and the whole
/// data file beside it, which keeps out programs that know nothing of the lock file.
class DataFile
{
public:
    DataFile(FileSystem& files, const std::filesystem::path& file, Company company, const Waiting& waiting);
    ~DataFile();
    DataFile(const DataFile&) = delete;
    DataFile& operator=(const DataFile&) = delete;

    /// The file's own name, whatever link led to it.
    [[nodiscard]] const std::filesystem::path& name() const { return m_name; }
    /// For reading, in a turn and outside.
    [[nodiscard]] FileDevice& device() { return m_writer ? *m_writer : *m_reader; }
    [[nodiscard]] FileDevice& opened() { return *m_reader; }
    [[nodiscard]] bool inTurn() const { return m_writer != nullptr; }

    [[nodiscard]] CommitTable table();
    /// The same where a lock of others may keep it closed.
    [[nodiscard]] std::optional<CommitTable> tableIfOpen();
    /// Sets a slot: two bytes of the file and nothing else of its first page.
    void setSlot(std::size_t number, std::uint16_t value);

    /// True when the name belongs to another file now: compacted, or put back from a backup.
    /// Looked at every tenth of a second at most; a turn always looks.
    [[nodiscard]] bool replaced();
    /// Opens the file that has the name now.
    void reopen();
    /// In a turn: CannotOpen where the file has lost its name, since nobody would find what is written to it.
    void requireName();
    /// Goes up with every opening.
    [[nodiscard]] unsigned openings() const { return m_openings; }

    /// Somebody who has the file, as far as the lock file tells.
    [[nodiscard]] std::optional<LockFile::Holder> holder();
    /// Whether the user of a slot is there.
    [[nodiscard]] bool userPresent(std::size_t slot);
    /// Waits until nobody else is in, as long as told, and takes the turn. Raises Locked with the other's name.
    void takeTurn();
    /// Takes the turn only where nobody has to be waited for.
    [[nodiscard]] bool tryTurn();
    void giveTurnBack() noexcept;

    [[nodiscard]] FileSystem& files() { return m_files; }
    [[nodiscard]] const Waiting& waiting() const { return m_waiting; }
    void setWaiting(const Waiting& waiting) { m_waiting = waiting; }
    /// For a wait that has come to its end.
    [[noreturn]] void throwInUse();

private:
    [[nodiscard]] bool attemptTurn();
    [[nodiscard]] bool openWriter();

    FileSystem& m_files;
    std::filesystem::path m_name;
    Company m_company;
    Waiting m_waiting;
    LockFile m_lockFile;
    std::unique_ptr<FileDevice> m_reader;
    std::unique_ptr<FileDevice> m_writer;
    FileIdentity m_identity;                             ///< Of the reader.
    std::optional<std::chrono::milliseconds> m_nameSeen; ///< When the name was last looked at.
    unsigned m_openings = 1;
};

} // namespace accessfile
