#pragma once

#include "platform/ui/Seams.h"

#include <QList>

#include <functional>
#include <map>

namespace support {

/// Message boxes with queued answers. A box that nobody expected fails the test and is answered with No, Cancel or OK.
class TestMessages : public platform::Messages
{
public:
    struct Shown
    {
        QString prompt;
        int style = 0;
        QString title;
    };

    /// Expects one box more, and answers it so.
    void expect(platform::MsgBoxResult answer = platform::MsgBoxResult::Ok) { m_answers << answer; }
    /// Expected boxes that have not come yet.
    [[nodiscard]] qsizetype pending() const { return m_answers.size(); }
    /// Every box so far, oldest first.
    [[nodiscard]] const QList<Shown>& shown() const { return m_shown; }
    void clear();

    platform::MsgBoxResult MsgBox(const QString& prompt, int style, const QString& title) override;

private:
    QList<platform::MsgBoxResult> m_answers;
    QList<Shown> m_shown;
};

/// A clock that stands still until it is set.
class TestClock : public platform::Clock
{
public:
    explicit TestClock(const QDateTime& now)
        : m_now(now)
    {}
    void set(const QDateTime& now) { m_now = now; }

private:
    [[nodiscard]] QDateTime read() const override { return m_now; }

    QDateTime m_now;
};

/// Counts DoEvents and runs an action at the n-th one (the first is 1), as a person would act in the middle of a loop.
class TestPump : public platform::EventPump
{
public:
    void at(int count, std::function<void()> action) { m_actions[count] = std::move(action); }
    [[nodiscard]] int count() const { return m_count; }
    void DoEvents() override;

private:
    int m_count = 0;
    std::map<int, std::function<void()>> m_actions;
};

} // namespace support
