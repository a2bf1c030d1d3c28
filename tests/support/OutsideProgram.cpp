#include "support/OutsideProgram.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QStandardPaths>
#include <QThread>

#include <atomic>
#ifdef Q_OS_LINUX
#include <csignal>

#include <sys/prctl.h>
#endif

namespace support {

#ifdef Q_OS_WIN

namespace {

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void store(const QString& path, const QByteArray& content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("%s cannot be written", qPrintable(path));
}

} // namespace

QString outsideProgram(const QString& name)
{
    const QString finder = QStringLiteral("PATH=$PATH:/usr/sbin:/usr/local/sbin; command -v ") + name;
    const Outcome found = runOutside(QStringLiteral("sh"), {QStringLiteral("-c"), finder});
    return found.succeeded() ? QString::fromUtf8(found.output).trimmed() : QString();
}

Outcome runOutside(const QString& program, const QStringList& arguments, const QByteArray& input, int patienceMs)
{
    static std::atomic<int> wishes = 0;
    const QString folder = qEnvironmentVariable("PLANILHA_FORA");
    if (folder.isEmpty())
        return {};
    const QString name = QStringLiteral("%1/%2-%3.").arg(folder).arg(QCoreApplication::applicationPid()).arg(++wishes);
    QByteArray command = program.toUtf8();
    for (const QString& argument : arguments)
        command += '\0' + outsidePath(argument).toUtf8();
    store(name + QStringLiteral("entrada"), input);
    store(name + QStringLiteral("novo"), command);
    QFile::rename(name + QStringLiteral("novo"), name + QStringLiteral("pedido"));

    QElapsedTimer waited;
    waited.start();
    while (!QFile::exists(name + QStringLiteral("fim"))) {
        if (waited.elapsed() > patienceMs)
            return {};
        QThread::msleep(5);
    }
    const Outcome outcome{true, contentOf(name + QStringLiteral("fim")).toInt(),
                          contentOf(name + QStringLiteral("saida")), contentOf(name + QStringLiteral("erros"))};
    for (const char* part : {"entrada", "saida", "erros", "fim"})
        QFile::remove(name + QLatin1StringView(part));
    return outcome;
}

QString outsidePath(const QString& path)
{
    // Z: is the root of the Unix system.
    if (!path.startsWith(QLatin1StringView("Z:"), Qt::CaseInsensitive))
        return path;
    return QDir::fromNativeSeparators(path.mid(2));
}

void OutsideServer::start(const QString& program, const QStringList& arguments)
{
    const QString starter = QStringLiteral("\"$0\" \"$@\" >/dev/null 2>&1 </dev/null & echo $!");
    const Outcome started =
        runOutside(QStringLiteral("sh"), QStringList{QStringLiteral("-c"), starter, program} + arguments);
    m_process = QString::fromUtf8(started.output).trimmed();
}

bool OutsideServer::isRunning()
{
    return !m_process.isEmpty() && runOutside(QStringLiteral("kill"), {QStringLiteral("-0"), m_process}).succeeded();
}

void OutsideServer::signal(const QString& name)
{
    (void)runOutside(QStringLiteral("kill"), {QStringLiteral("-s"), name, m_process});
}

bool OutsideServer::waitForEnd(int patienceMs)
{
    QElapsedTimer waited;
    waited.start();
    while (isRunning()) {
        if (waited.elapsed() > patienceMs)
            return false;
        QThread::msleep(20);
    }
    return true;
}

#else

QString outsideProgram(const QString& name)
{
    const QString found = QStandardPaths::findExecutable(name);
    return found.isEmpty()
               ? QStandardPaths::findExecutable(name, {QStringLiteral("/usr/sbin"), QStringLiteral("/usr/local/sbin")})
               : found;
}

Outcome runOutside(const QString& program, const QStringList& arguments, const QByteArray& input, int patienceMs)
{
    QProcess process;
    process.start(program, arguments);
    process.write(input);
    process.closeWriteChannel();
    const bool hasEnded = process.waitForFinished(patienceMs) && process.exitStatus() == QProcess::NormalExit;
    return {hasEnded, process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

QString outsidePath(const QString& path)
{
    return path;
}

void OutsideServer::start(const QString& program, const QStringList& arguments)
{
#ifdef Q_OS_LINUX
    m_process.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
#endif
    m_process.setStandardOutputFile(QProcess::nullDevice());
    m_process.setStandardErrorFile(QProcess::nullDevice());
    m_process.start(program, arguments);
}

bool OutsideServer::isRunning()
{
    return m_process.state() != QProcess::NotRunning && !m_process.waitForFinished(0);
}

void OutsideServer::signal(const QString& name)
{
    (void)runOutside(QStringLiteral("kill"), {QStringLiteral("-s"), name, QString::number(m_process.processId())});
}

bool OutsideServer::waitForEnd(int patienceMs)
{
    return m_process.state() == QProcess::NotRunning || m_process.waitForFinished(patienceMs);
}

#endif

} // namespace support
