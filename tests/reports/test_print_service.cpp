// The print service itself: a private CUPS server with two queues that write what they get to files.

#include "platform/print/PrinterObject.h"
#include "platform/print/SystemPrinters.h"
#include "reports/ReportPrinting.h"
#include "shared/Emitente.h"
#include "support/Doubles.h"
#include "support/PdfText.h"
#include "support/PrintDoubles.h"

#include <QTemporaryDir>

#include <csignal>
#include <unistd.h>
#ifdef Q_OS_LINUX
#include <sys/prctl.h>
#endif

namespace {

QString tool(const char* name)
{
    const QString file = QString::fromLatin1(name);
    const QString found = QStandardPaths::findExecutable(file);
    return found.isEmpty()
               ? QStandardPaths::findExecutable(file, {QStringLiteral("/usr/sbin"), QStringLiteral("/sbin")})
               : found;
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
        write(path("etc/cupsd.conf"), QStringLiteral("Listen %1/s\n"
                                                     "Browsing No\nWebInterface No\nDefaultAuthType None\n"
                                                     "PreserveJobFiles No\nLogLevel debug\nIdleExitTimeout 0\n"
                                                     "<Location />\nAllow all\n</Location>\n"
                                                     "<Policy default>\nJobPrivateAccess all\nJobPrivateValues none\n"
                                                     "SubscriptionPrivateAccess all\nSubscriptionPrivateValues none\n"
                                                     "<Limit All>\nOrder deny,allow\nAllow all\n</Limit>\n</Policy>\n")
                                          .arg(root));
        QString files;
        const auto place = [&](const char* directive, const char* name) {
            files += QStringLiteral("%1 %2\n").arg(QString::fromLatin1(directive), path(name));
        };
        place("ServerRoot", "etc");
        place("RequestRoot", "spool");
        place("CacheDir", "cache");
        place("StateDir", "state");
        place("TempDir", "tmp");
        place("AccessLog", "access.log");
        place("ErrorLog", "error.log");
        place("PageLog", "page.log");
        place("Printcap", "printcap");
        place("ServerBin", "bin");
        QFile::link(QStringLiteral("/usr/lib/cups/daemon"), path("bin/daemon"));
        // The last step of a job. Without rights for others it runs as the server's own user.
        write(path("bin/backend/papel"), QStringLiteral("#!/bin/sh\ncat \"$6\" >\"${DEVICE_URI#papel:}\"\n"));
        QFile::setPermissions(path("bin/backend/papel"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        write(path("etc/cups-files.conf"), files + QStringLiteral("Sandboxing relaxed\nFatalErrors none\n"));
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
        m_server->start(tool("cupsd"), {QStringLiteral("-f"), QStringLiteral("-c"), path("etc/cupsd.conf"),
                                        QStringLiteral("-s"), path("etc/cups-files.conf")});
        return QTest::qWaitFor(
            [this] { return QFile::exists(path("s")) && run(tool("lpstat"), {QStringLiteral("-r")}).code == 0; });
    }

    void stopServer()
    {
        if (m_server) {
            m_server->terminate();
            m_server->waitForFinished();
        }
        m_server.reset();
    }

    /// Makes a queue that writes its jobs to the file of its name.
    bool addQueue(const char* name)
    {
        const QString queue = QString::fromLatin1(name);
        const Ran made = run(tool("lpadmin"), {QStringLiteral("-p"), queue, QStringLiteral("-E"), QStringLiteral("-v"),
                                               QStringLiteral("papel:") + path(name)});
        if (made.code != 0)
            qWarning("%s", qPrintable(made.output));
        return made.code == 0;
    }

    void print()
    {
        const reports::ReportServices services{m_emitente, m_clock, m_pump, {m_chooser, m_default, m_spooler}};
        QVERIFY(reports::printReport(services, QStringLiteral("Conferência"), [](platform::PrinterObject& printer) {
            printer.Print(QStringLiteral("Gasolina aditivada Nº 7"));
        }));
    }
    [[nodiscard]] static QString systemDefault()
    {
        return run(tool("lpstat"), {QStringLiteral("-d")}).output.trimmed();
    }
    [[nodiscard]] static QString jobs()
    {
        return run(tool("lpstat"), {QStringLiteral("-W"), QStringLiteral("all"), QStringLiteral("-o")})
            .output.trimmed();
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
        QVERIFY(addQueue("Balcao"));
        QVERIFY(addQueue("Pista"));
        m_default.setName(QStringLiteral("Balcao"));
        QCOMPARE(m_default.name(), QStringLiteral("Balcao"));
        QVERIFY(systemDefault().endsWith(QStringLiteral("Balcao")));
    }
    void cleanup()
    {
        stopServer();
    }

    void theChosenQueueGetsTheJobAndTheDefaultStays()
    {
        m_chooser.answer = {QStringLiteral("Pista"), {}};
        m_chooser.whileOpen = [this] { m_default.setName(QStringLiteral("Pista")); };
        print();
        QCOMPARE(m_default.name(), QStringLiteral("Balcao"));
        QVERIFY(systemDefault().endsWith(QStringLiteral("Balcao")));
        QVERIFY2(QTest::qWaitFor([this] { return QFileInfo(path("Pista")).size() > 1000; }, 15'000),
                 qPrintable(jobs()));
        QVERIFY(QTest::qWaitFor([this] { return !support::pdfWords(path("Pista")).isEmpty(); }));
        QCOMPARE(support::pdfWords(path("Pista")).last().text, QStringLiteral("7"));
        QCOMPARE(QFileInfo(path("Balcao")).size(), 0);

        m_chooser.cancel = true;
        const QString before = jobs();
        const reports::ReportServices services{m_emitente, m_clock, m_pump, {m_chooser, m_default, m_spooler}};
        QVERIFY(!reports::printReport(services, QStringLiteral("Nada"), [](platform::PrinterObject&) {}));
        QCOMPARE(m_default.name(), QStringLiteral("Balcao"));
        QCOMPARE(jobs(), before);
    }

    void aRefusedJobIsNoticedAndLeavesNothing_data()
    {
        QTest::addColumn<QString>("queue");
        QTest::addColumn<bool>("stopped");
        QTest::newRow("the queue takes no jobs") << QStringLiteral("Pista") << false;
        QTest::newRow("no such queue") << QStringLiteral("Garagem") << false;
        QTest::newRow("no print service") << QStringLiteral("Pista") << true;
    }
    void aRefusedJobIsNoticedAndLeavesNothing()
    {
        QFETCH(QString, queue);
        QFETCH(bool, stopped);
        QCOMPARE(run(tool("cupsreject"), {QStringLiteral("Pista")}).code, 0);
        const QString before = jobs();
        if (stopped)
            m_chooser.whileOpen = [this] { stopServer(); };
        else
            m_chooser.whileOpen = [this] { m_default.setName(QStringLiteral("Pista")); };
        m_chooser.answer = {queue, {}};
        QString told;
        try {
            print();
        } catch (const platform::PrintError& error) {
            told = QString::fromUtf8(error.what());
        }
        QVERIFY2(told.startsWith(QStringLiteral("A impressora \"%1\" não aceitou a impressão: ").arg(queue)),
                 qPrintable(told));
        if (stopped)
            return;
        QCOMPARE(jobs(), before);
        QCOMPARE(m_default.name(), QStringLiteral("Balcao"));
    }

    /// Root's default printer is kept elsewhere than everybody else's.
    void asAnotherUser()
    {
        if (geteuid() != 0)
            QSKIP("only root can become another user");
        const QString setpriv = tool("setpriv");
        const QStringList asNobody{QStringLiteral("--reuid=%1").arg(Nobody), QStringLiteral("--regid=%1").arg(Nobody),
                                   QStringLiteral("--clear-groups"), QStringLiteral("--")};
        const QString self = QCoreApplication::applicationFilePath();
        if (setpriv.isEmpty() ||
            run(setpriv, asNobody + QStringList{QStringLiteral("test"), QStringLiteral("-x"), self}).code != 0)
            QSKIP("no other user can run this program here");
        const Ran ran = run(setpriv, asNobody + QStringList{self}, 120'000);
        QVERIFY2(ran.code == 0, qPrintable(ran.output));
    }
};

QTEST_MAIN(TestPrintService)
#include "test_print_service.moc"
