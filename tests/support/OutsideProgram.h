#pragma once

#include <QByteArray>
#ifndef Q_OS_WIN
#include <QProcess>
#endif
#include <QString>
#include <QStringList>

// The programs that tests and the day at the station use from outside: other readers of the files that they wrote, a
// database server, the hands on keyboard and mouse. They are programs of the Unix system. A test that was built for
// Windows and runs under Wine hands its wishes to packaging/windows/fora.py, through the folder that PLANILHA_FORA
// names.
namespace support {

struct Outcome
{
    bool hasEnded = false; ///< Started, and ended in time by itself.
    int code = 0;
    QByteArray output;
    QByteArray errors;

    [[nodiscard]] bool succeeded() const { return hasEnded && code == 0; }
};

/// Full path of a program, in /usr/sbin too; empty when it is not installed.
[[nodiscard]] QString outsideProgram(const QString& name);

[[nodiscard]] Outcome runOutside(const QString& program, const QStringList& arguments, const QByteArray& input = {},
                                 int patienceMs = 120'000);

/// A file's name as the programs outside know it.
[[nodiscard]] QString outsidePath(const QString& path);

/// A program of the Unix system that runs on beside the test. Where the test runs on that system itself, it ends with
/// the test even when that crashes.
class OutsideServer
{
public:
    void start(const QString& program, const QStringList& arguments);
    [[nodiscard]] bool isRunning();
    /// Sends a signal by its name, as the command kill knows it: TERM, KILL, STOP, CONT.
    void signal(const QString& name);
    [[nodiscard]] bool waitForEnd(int patienceMs);

private:
#ifdef Q_OS_WIN
    QString m_process;
#else
    QProcess m_process;
#endif
};

} // namespace support
