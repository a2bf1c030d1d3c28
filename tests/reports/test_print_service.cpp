// The print service itself: a private CUPS server with two queues that write what they get to files.

#include "platform/print/PrinterObject.h"
#include "platform/print/SystemPrinters.h"
#include "reports/ReportPrinting.h"
#include "shared/Emitente.h"
#include "support/Doubles.h"
#include "support/PdfText.h"
#include "support/PrintDoubles.h"

#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <csignal>
#include <unistd.h>
#ifdef Q_OS_LINUX
#include <sys/prctl.h>
#endif

using namespace Qt::StringLiterals;

namespace {

QString tool(const char* name)
{
    const QString file = QString::fromLatin1(name);
    const QString found = QStandardPaths::findExecutable(file);
    return found.isEmpty() ? QStandardPaths::findExecutable(file, {u"/usr/sbin"_s, u"/sbin"_s}) : found;
}

/// Runs a command to its end; its exit code, and what it wrote.
struct Ran
{
    int code = -1;
    QString output;
};
Ran run(const QString& program, const QStringList& arguments, int timeout = 30'000)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    if (!process.waitForFinished(timeout) || process.exitStatus() != QProcess::NormalExit)
        return {-1, process.errorString()};
    return {process.exitCode(), QString::fromUtf8(process.readAll())};
}

void write(const QString& path, const QString& text)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(text.toUtf8()) < 0)
        qFatal("cannot write %s", qPrintable(path));
}

constexpr int Nobody = 65534;
const QStringList Untouched{u"Balcao"_s, u"Balcao"_s};

} // namespace

class TestPrintService : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;
    std::unique_ptr<QProcess> m_server;
    support::TestChooser m_chooser;
    support::TestPump m_pump;
    support::TestClock m_clock{QDateTime(QDate(2026, 11, 22), QTime(22, 5, 9))};
    Emitente m_emitente;
    platform::SystemDefaultPrinter m_default;
    platform::SystemSpooler m_spooler;

    QString path(const char* name) const { return m_folder.filePath(QString::fromLatin1(name)); }

    bool startServer()
    {
        for (const char* folder : {"spool", "cache", "state", "tmp", "etc", "home", "bin/backend"})
            QDir().mkpath(path(folder));
        const QString root = m_folder.path();
        write(path("etc/cupsd.conf"),
              u"Listen %1/s\nBrowsing No\nWebInterface No\nDefaultAuthType None\nPreserveJobFiles No\nLogLevel debug\n"
              u"IdleExitTimeout 0\n<Location />\nAllow all\n</Location>\n<Policy default>\nJobPrivateAccess all\n"
              u"JobPrivateValues none\nSubscriptionPrivateAccess all\nSubscriptionPrivateValues none\n"
              u"<Limit All>\nOrder deny,allow\nAllow all\n</Limit>\n</Policy>\n"_s.arg(root));
        QFile::link(u"/usr/lib/cups/daemon"_s, path("bin/daemon"));
        // The last step of a job. Without rights for others it runs as the server's own user.
        write(path("bin/backend/papel"), u"#!/bin/sh\ncat \"$6\" >\"${DEVICE_URI#papel:}\"\n"_s);
        QFile::setPermissions(path("bin/backend/papel"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        write(path("etc/cups-files.conf"),
              u"ServerRoot %1/etc\nRequestRoot %1/spool\nCacheDir %1/cache\nStateDir %1/state\nTempDir %1/tmp\n"
              u"AccessLog %1/access.log\nErrorLog %1/error.log\nPageLog %1/page.log\nPrintcap %1/printcap\n"
              u"ServerBin %1/bin\nSandboxing relaxed\nFatalErrors none\n"_s.arg(root));
        qputenv("CUPS_SERVER", path("s").toUtf8());
        qputenv("CUPS_SERVERROOT", path("etc").toUtf8()); // the default printer of root
        qputenv("HOME", path("home").toUtf8());           // and of everyone else
        m_server = std::make_unique<QProcess>();
        m_server->setStandardOutputFile(path("server.log"));
        m_server->setStandardErrorFile(path("server.log"), QIODevice::Append);
#ifdef Q_OS_LINUX
        // It does not outlive a test that crashes.
        m_server->setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGTERM); });
#endif
        m_server->start(tool("cupsd"),
                        {u"-f"_s, u"-c"_s, path("etc/cupsd.conf"), u"-s"_s, path("etc/cups-files.conf")});
        return QTest::qWaitFor([this] { return QFile::exists(path("s")) && run(tool("lpstat"), {u"-r"_s}).code == 0; });
    }

    void stopServer()
    {
        if (m_server) {
            m_server->terminate();
            m_server->waitForFinished();
        }
        m_server.reset();
    }

    bool print()
    {
        const reports::ReportServices services{m_emitente, m_clock, m_pump, {m_chooser, m_default, m_spooler}};
        return reports::printReport(services, u"Conferência"_s, [](platform::PrinterObject& printer) {
            printer.Print(u"Gasolina aditivada Nº 7"_s);
        });
    }
    /// The default printer as the program and as the system's own tool see it.
    QStringList defaults()
    {
        return {m_default.name(), run(tool("lpstat"), {u"-d"_s}).output.trimmed().section(u' ', -1)};
    }
    [[nodiscard]] static QString jobs()
    {
        return run(tool("lpstat"), {u"-W"_s, u"all"_s, u"-o"_s}).output.trimmed();
    }

private Q_SLOTS:
    void initTestCase()
    {
        for (const char* name : {"cupsd", "lpadmin", "lpstat", "cupsreject"}) {
            if (tool(name).isEmpty())
                QSKIP("cups-daemon and cups-client are not installed");
        }
        for (const char* name : {"LPDEST", "PRINTER", "CUPS_USER"})
            qunsetenv(name);
    }
    void init()
    {
        m_chooser = {};
        // One place for all: a process asks for the server's address once.
        QVERIFY2(startServer(), qPrintable(m_folder.path()));
        // Queues that write their jobs to the files of their names.
        for (const QString& queue : {u"Balcao"_s, u"Pista"_s})
            QCOMPARE(
                run(tool("lpadmin"), {u"-p"_s, queue, u"-E"_s, u"-v"_s, u"papel:"_s + m_folder.filePath(queue)}).output,
                QString());
        m_default.setName(u"Balcao"_s);
        QCOMPARE(defaults(), Untouched);
    }
    void cleanup()
    {
        stopServer();
    }

    void theChosenQueueGetsTheJobAndTheDefaultStays()
    {
        m_chooser.answer = {u"Pista"_s, {}};
        m_chooser.whileOpen = [this] { m_default.setName(u"Pista"_s); };
        QVERIFY(print());
        QCOMPARE(defaults(), Untouched);
        QVERIFY2(QTest::qWaitFor([this] { return QFileInfo(path("Pista")).size() > 1000; }, 15'000),
                 qPrintable(jobs()));
        QVERIFY(QTest::qWaitFor([this] { return !support::pdfWords(path("Pista")).isEmpty(); }));
        QCOMPARE(support::pdfWords(path("Pista")).last().text, u"7"_s);
        QCOMPARE(QFileInfo(path("Balcao")).size(), 0);

        m_chooser.cancel = true;
        const QString before = jobs();
        QVERIFY(!print());
        QCOMPARE(defaults(), Untouched);
        QCOMPARE(jobs(), before);
    }

    void aRefusedJobIsNoticedAndLeavesNothing_data()
    {
        QTest::addColumn<QString>("queue");
        QTest::addColumn<bool>("stopped");
        QTest::newRow("the queue takes no jobs") << u"Pista"_s << false;
        QTest::newRow("no such queue") << u"Garagem"_s << false;
        QTest::newRow("no print service") << u"Pista"_s << true;
    }
    void aRefusedJobIsNoticedAndLeavesNothing()
    {
        QFETCH(QString, queue);
        QFETCH(bool, stopped);
        QCOMPARE(run(tool("cupsreject"), {u"Pista"_s}).code, 0);
        const QString before = jobs();
        if (stopped)
            m_chooser.whileOpen = [this] { stopServer(); };
        else
            m_chooser.whileOpen = [this] { m_default.setName(u"Pista"_s); };
        m_chooser.answer = {queue, {}};
        QString told;
        try {
            (void)print();
        } catch (const platform::PrintError& error) {
            told = QString::fromUtf8(error.what());
        }
        QVERIFY2(told.startsWith(u"A impressora \"%1\" não aceitou a impressão: "_s.arg(queue)), qPrintable(told));
        if (stopped)
            return;
        QCOMPARE(jobs(), before);
        QCOMPARE(defaults(), Untouched);
    }

    /// Root's default printer is kept elsewhere than everybody else's.
    void asAnotherUser()
    {
        if (geteuid() != 0)
            QSKIP("only root can become another user");
        const QString setpriv = tool("setpriv");
        const QStringList asNobody{u"--reuid=%1"_s.arg(Nobody), u"--regid=%1"_s.arg(Nobody), u"--clear-groups"_s,
                                   u"--"_s};
        const QString self = QCoreApplication::applicationFilePath();
        if (setpriv.isEmpty() || run(setpriv, asNobody + QStringList{u"test"_s, u"-x"_s, self}).code != 0)
            QSKIP("no other user can run this program here");
        const Ran ran = run(setpriv, asNobody + QStringList{self}, 120'000);
        QVERIFY2(ran.code == 0, qPrintable(ran.output));
    }
};

QTEST_MAIN(TestPrintService)
#include "test_print_service.moc"
