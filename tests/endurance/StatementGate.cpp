#include "StatementGate.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QThread>

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <stdexcept>

using namespace Qt::StringLiterals;

namespace endurance {

namespace {

constexpr int Patience = 120'000; // Milliseconds; a machine may be busy with other things.

} // namespace

StatementGate::StatementGate(const QString& scenario, const QString& folder, unsigned user, const QString& systemFault)
    : m_pipe(QFile::encodeName(m_folder.filePath(u"statements"_s)))
{
    makePipe();
    if (user != 0)
        ::chmod(QFile::encodeName(m_folder.path()).constData(), 0777);
    m_process.setChildProcessModifier([user] {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (user != 0 && (::setgid(user) != 0 || ::setuid(user) != 0))
            ::_exit(99);
    });
    m_process.setProcessChannelMode(QProcess::SeparateChannels);
    m_process.start(QCoreApplication::applicationFilePath(),
                    {u"--child"_s, scenario, folder, QString::fromLocal8Bit(m_pipe), systemFault});
    if (!m_process.waitForStarted())
        throw std::runtime_error("the child does not start");
}

StatementGate::~StatementGate()
{
    kill();
}

/// The system call that the child waits in, with its arguments; empty while it runs.
QByteArray StatementGate::blockedIn() const
{
    QFile file(u"/proc/%1/syscall"_s.arg(pid()));
    const QByteArray line = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    return line.startsWith(QByteArray::number(SYS_openat) + ' ') ? line : QByteArray();
}

bool StatementGate::standsStill()
{
    QElapsedTimer waited;
    waited.start();
    while (waited.elapsed() < Patience) {
        // A moment later still in the same call: no file of the disk takes that long to open.
        if (const QByteArray call = blockedIn(); !call.isEmpty()) {
            QThread::msleep(4);
            if (blockedIn() == call)
                return true;
        }
        if (m_process.state() == QProcess::NotRunning || m_process.waitForFinished(1))
            return false;
    }
    throw std::runtime_error("the child neither ends nor comes to a statement");
}

void StatementGate::letThrough()
{
    // The child waits at the old pipe; the next statement finds a new one that nobody reads.
    const QByteArray old = m_pipe + ".old";
    ::rename(m_pipe.constData(), old.constData());
    makePipe();
    const int pipe = ::open(old.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    char character = 0;
    while (character != '\n') {
        pollfd waiting{pipe, POLLIN, 0};
        if (::poll(&waiting, 1, Patience) <= 0 || ::read(pipe, &character, 1) <= 0)
            break;
    }
    ::close(pipe);
    ::unlink(old.constData());
}

void StatementGate::makePipe() const
{
    if (::mkfifo(m_pipe.constData(), 0666) != 0 || ::chmod(m_pipe.constData(), 0666) != 0)
        throw std::runtime_error("no named pipe can be made");
}

bool StatementGate::runToTheEnd()
{
    const int pipe = ::open(m_pipe.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    QElapsedTimer waited;
    waited.start();
    std::array<char, 4096> text{};
    while (m_process.state() != QProcess::NotRunning && waited.elapsed() < Patience) {
        while (::read(pipe, text.data(), text.size()) > 0) {
        }
        m_process.waitForFinished(5);
    }
    ::close(pipe);
    return m_process.state() == QProcess::NotRunning && m_process.exitStatus() == QProcess::NormalExit;
}

void StatementGate::kill()
{
    if (m_process.state() == QProcess::NotRunning)
        return;
    m_process.kill();
    m_process.waitForFinished();
}

QString StatementGate::boxes()
{
    m_output += m_process.readAllStandardOutput();
    return QString::fromUtf8(m_output);
}

} // namespace endurance
