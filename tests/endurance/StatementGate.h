#pragma once

#include <QProcess>
#include <QString>
#include <QTemporaryDir>

namespace endurance {

/// A child process that stands still before each of its statements: its trace is a named pipe, which it can open only
/// when someone reads.
class StatementGate
{
public:
    /// Starts this executable as a child that runs the scenario. `user` other than 0 lets it run as that user;
    /// `systemFault` befalls it from its first statement on.
    StatementGate(const QString& scenario, const QString& folder, unsigned user = 0, const QString& systemFault = {});
    ~StatementGate();
    StatementGate(const StatementGate&) = delete;
    StatementGate& operator=(const StatementGate&) = delete;

    /// Waits until the child stands before its next statement; false when it has ended instead.
    [[nodiscard]] bool standsStill();
    /// Lets that statement, and what follows up to the next one, run.
    void letThrough();
    /// Lets everything run to the end of the process; false when it does not end, or ends by a crash.
    [[nodiscard]] bool runToTheEnd();
    /// At once, as in a power cut.
    void kill();

    [[nodiscard]] qint64 pid() const { return m_process.processId(); }
    [[nodiscard]] int exitCode() const { return m_process.exitCode(); }
    /// Boxes that the child showed, one a line.
    [[nodiscard]] QString boxes();

private:
    void makePipe() const;
    [[nodiscard]] QByteArray blockedIn() const;

    QTemporaryDir m_folder;
    QByteArray m_pipe;
    QProcess m_process;
    QByteArray m_output;
};

} // namespace endurance
