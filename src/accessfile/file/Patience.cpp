#include "accessfile/file/Patience.h"

#include <algorithm>
#include <random>

namespace accessfile {

namespace {
constexpr std::chrono::milliseconds noticeable{150};
constexpr std::chrono::milliseconds longestStep{20};
} // namespace

void Patience::sees(const std::optional<CommitTable>& table)
{
    if (table && m_seen && *table != *m_seen)
        m_sign = m_files.now();
    if (table)
        m_seen = table;
}

bool Patience::pause()
{
    const std::chrono::milliseconds now = m_files.now();
    if (!m_begin) {
        m_begin = now;
        m_sign = now;
    }
    if (now - m_sign >= m_waiting.limit || now - *m_begin >= std::max(m_waiting.longest, m_waiting.limit))
        return false;
    if (!m_noticed && now - *m_begin >= noticeable) {
        m_noticed = true;
        if (m_waiting.notice)
            m_waiting.notice(true);
    }
    // Random, so that two that wait do not go on meeting; longer from time to time, so that a wait costs nothing.
    static thread_local std::minstd_rand random{std::random_device{}()};
    m_files.pause(
        std::chrono::milliseconds(std::uniform_int_distribution<int>(1, static_cast<int>(m_step.count()))(random)));
    m_step = std::min(longestStep, m_step * 2);
    return true;
}

} // namespace accessfile
