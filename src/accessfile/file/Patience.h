#pragma once

#include "accessfile/file/CommitTable.h"
#include "accessfile/file/FileDevice.h"

#include <functional>

namespace accessfile {

/// How long a statement waits for others.
struct Waiting
{
    /// Without a sign of work: as long as the commit table moves, the holder works, and this begins anew.
    std::chrono::milliseconds limit = std::chrono::seconds(10);
    /// In all.
    std::chrono::milliseconds longest = std::chrono::minutes(1);
    /// Called with true when a wait becomes noticeable, and with false at its end.
    std::function<void(bool)> notice = {};
};

/// One bounded wait.
class Patience
{
public:
    Patience(FileSystem& files, const Waiting& waiting)
        : m_files(files)
        , m_waiting(waiting)
    {}
    ~Patience()
    {
        if (m_noticed && m_waiting.notice)
            m_waiting.notice(false);
    }
    Patience(const Patience&) = delete;
    Patience& operator=(const Patience&) = delete;

    /// The commit table as it stands; nullopt where it cannot be read now.
    void sees(const std::optional<CommitTable>& table);
    /// Sleeps for a moment; false when the time is up.
    [[nodiscard]] bool pause();
    [[nodiscard]] std::chrono::milliseconds waited() const
    {
        return m_begin ? m_files.now() - *m_begin : std::chrono::milliseconds(0);
    }

private:
    FileSystem& m_files;
    const Waiting& m_waiting;
    std::optional<std::chrono::milliseconds> m_begin;
    std::chrono::milliseconds m_sign{};
    std::chrono::milliseconds m_step{1};
    std::optional<CommitTable> m_seen;
    bool m_noticed = false;
};

} // namespace accessfile
