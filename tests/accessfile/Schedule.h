#pragma once

#include "accessfile/FaultyFiles.h"

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace accesstest {

/// Several programs on the same files in memory, one of them at a time: before each of its calls of the system a
/// program may have to wait for another. What is chosen where decides everything, so a run can be repeated.
class Schedule
{
public:
    /// Chooses who makes call `step`, counted over all: an index into the `ready` ones; `current` is who made the last.
    using Choice = std::function<std::size_t(std::size_t step, const std::vector<int>& ready, int current)>;

    Schedule(FaultyFiles& files, Choice choice)
        : m_files(files)
        , m_choice(std::move(choice))
    {}
    /// The program number `who` is killed at its call `call`.
    void kill(int who, std::size_t call) { m_deaths[who] = call; }

    /// Runs the programs to their ends. Each gets the files as its own system; what it raises but Stopped is an error.
    void run(const std::vector<std::function<void(accessfile::FileSystem&)>>& programs);

    [[nodiscard]] std::size_t steps() const { return m_step; }
    [[nodiscard]] bool died(int who) const { return m_died.at(static_cast<std::size_t>(who)); }
    /// What a program raised; empty when nothing went wrong.
    [[nodiscard]] const std::string& error() const { return m_error; }

private:
    friend class ScheduledFiles;
    friend class ScheduledDevice;
    /// Called by a program before each of its calls; `waits` where it can do nothing before others have worked.
    void call(int who, bool waits = false);
    void hand(int who, bool waits);

    FaultyFiles& m_files;
    Choice m_choice;
    std::map<int, std::size_t> m_deaths;
    std::mutex m_mutex;
    std::condition_variable m_turn;
    std::vector<bool> m_ended;
    std::vector<bool> m_died;
    std::vector<std::size_t> m_calls;
    int m_current = -1;
    std::size_t m_step = 0;
    std::string m_error;
};

} // namespace accesstest
