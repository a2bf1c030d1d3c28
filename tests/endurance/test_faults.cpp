// What goes wrong around the program, at every statement of a closing and of every register's save: the process is
// killed, the server stops, restarts or becomes slow, the disk is full, the file is removed or read-only. Afterwards
// the database holds exactly what stood there before the statement that failed, and the program starts again.
//
// Real processes, real windows. PLANILHA_ENDURANCE=full tries everything; else the closing alone, at fewer places.

#include "FaultStation.h"
#include "Scenarios.h"
#include "StatementGate.h"

#include "platform/ui/Application.h"
#include "support/BothBackEnds.h"
#include "support/MariaDbServer.h"

#include <QApplication>
#include <QFile>
#include <QRegularExpression>
#include <QTest>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <functional>
#include <thread>

using namespace Qt::StringLiterals;
using endurance::FaultStation;
using endurance::StatementGate;

namespace {

constexpr unsigned Nobody = 65534;

bool isFull()
{
    return qEnvironmentVariable("PLANILHA_ENDURANCE") == u"full";
}

support::MariaDbServer& server()
{
    return support::MariaDbServer::shared();
}

/// Contents before each statement of an undisturbed run, and behind the last one.
QList<QStringList> undisturbed(const FaultStation& station, const QString& scenario)
{
    QList<QStringList> contents;
    station.restore();
    StatementGate child(scenario, station.folder());
    while (child.standsStill()) {
        contents << station.contents();
        child.letThrough();
    }
    contents << station.contents();
    return contents;
}

} // namespace

class TestFaults : public QObject
{
    Q_OBJECT

private:
    int m_tried = 0;
    int m_survived = 0;

    /// The program comes up on the station, and that changes nothing.
    static bool startsAgain(const FaultStation& station)
    {
        const QStringList before = station.contents();
        station.forgetLines(); // Their question is no fault.
        StatementGate child(u"start"_s, station.folder());
        const bool ended = child.runToTheEnd();
        return ended && child.exitCode() == 0 && child.boxes().isEmpty() && station.contents() == before;
    }

    static void addScenarios()
    {
        QTest::addColumn<QString>("backEnd");
        QTest::addColumn<QString>("scenario");
        for (const QString& backEnd : {u"access"_s, u"mysql"_s}) {
            for (const QString& scenario : endurance::scenarioNames()) {
                if (isFull() || scenario == u"closing")
                    QTest::addRow("%s %s", qPrintable(backEnd), qPrintable(scenario)) << backEnd << scenario;
            }
        }
    }

    struct Fault
    {
        QString name;
        std::function<void(StatementGate&)> strike; ///< While the child stands before the statement.
        std::function<void()> repair;               ///< When the child has ended.
        bool passes = false;                        ///< The statement is delayed only: all of it is done in the end.
        int stride = 1;                             ///< In a short run only every n-th statement.
    };

    void strikeEverywhere(const FaultStation& station, const QString& scenario, const QList<QStringList>& contents,
                          const Fault& fault)
    {
        const auto statements = static_cast<int>(contents.size()) - 1;
        for (int statement = 1; statement <= statements; ++statement) {
            if (!isFull() && statement % fault.stride != fault.stride - 1 && fault.stride > 1)
                continue;
            const QString where = u"%1, %2, statement %3"_s.arg(scenario, fault.name).arg(statement);
            station.restore();
            ++m_tried;
            StatementGate child(scenario, station.folder());
            for (int before = 1; before < statement; ++before) {
                QVERIFY2(child.standsStill(), qPrintable(where));
                child.letThrough();
            }
            QVERIFY2(child.standsStill(), qPrintable(where));
            fault.strike(child);
            QVERIFY2(child.runToTheEnd() || fault.name == u"killed", qPrintable(where));
            fault.repair();
            const QStringList& expected = fault.passes ? contents.last() : contents[statement - 1];
            QVERIFY2(station.contents() == expected,
                     qPrintable(where + u"\nthere:\n"_s + station.contents().join(u'\n') + u"\nexpected:\n"_s +
                                expected.join(u'\n')));
            // Every failure of a statement is told; a killed process and a slow server tell nothing.
            QVERIFY2(startsAgain(station), qPrintable(where + u": the program does not start again"_s));
            ++m_survived;
        }
    }

private Q_SLOTS:
    void everyStatement_data() { addScenarios(); }
    void everyStatement()
    {
        QFETCH(QString, backEnd);
        QFETCH(QString, scenario);
        if (const QString missing = support::BothBackEnds::missing(backEnd); !missing.isEmpty())
            QSKIP(qPrintable(missing));
        const FaultStation station(backEnd == u"mysql");
        const QList<QStringList> contents = undisturbed(station, scenario);
        QVERIFY(contents.size() > 2);
        QVERIFY(contents.first() != contents.last()); // The scenario has saved something.

        const auto nothing = [] {};
        QList<Fault> faults{{u"killed"_s, [](StatementGate& child) { child.kill(); }, nothing, false, 3}};
        if (station.isMySql()) {
            faults << Fault{u"server killed"_s, [](StatementGate&) { server().kill(); }, [] { server().start(); },
                            false, 6};
            faults << Fault{u"server restarted"_s, [](StatementGate&) { server().restart(); }, nothing, false, 8};
            const auto mute = [](StatementGate&) {
                server().pause();
                std::thread([] {
                    std::this_thread::sleep_for(std::chrono::milliseconds(400));
                    server().resume();
                }).detach();
            };
            faults << Fault{u"server slow"_s, mute, nothing, true, 5};
        } else {
            const auto full = [](rlim_t bytes) {
                return [bytes](StatementGate& child) {
                    const rlimit limit{bytes, bytes};
                    ::prlimit(static_cast<pid_t>(child.pid()), RLIMIT_FSIZE, &limit, nullptr);
                };
            };
            faults << Fault{u"disk full"_s, full(0), nothing, false, 4};
            faults << Fault{u"disk full in the journal"_s, full(3000), nothing, false, 5};
            // A file that has lost its name is written no more: nobody would find it. Kept under another one, it is
            // looked at afterwards.
            const QByteArray name = QFile::encodeName(station.database());
            const QByteArray other = name + ".other";
            faults << Fault{u"file removed"_s,
                            [=](StatementGate&) {
                                ::link(name.constData(), other.constData());
                                ::unlink(name.constData());
                            },
                            [=] { ::rename(other.constData(), name.constData()); }, false, 5};
        }
        for (const Fault& fault : std::as_const(faults)) {
            strikeEverywhere(station, scenario, contents, fault);
            if (QTest::currentTestFailed())
                return;
        }
    }

    void everyCallOfTheSystem_data()
    {
        QTest::addColumn<QString>("scenario");
        QTest::addColumn<QString>("kind");
        for (const QString& scenario : endurance::scenarioNames() + QStringList{u"start"_s}) {
            for (const QString& kind : {u"kill"_s, u"change"_s, u"read"_s}) {
                // Starting on a station that is up to date changes nothing.
                if ((isFull() || scenario == u"closing") && (scenario != u"start" || kind == u"read"))
                    QTest::addRow("%s %s", qPrintable(scenario), qPrintable(kind)) << scenario << kind;
            }
        }
    }
    /// At each call by which the engine changes or reads the file, within the statements: each statement is there or
    /// not at all, and the file is sound.
    void everyCallOfTheSystem()
    {
        QFETCH(QString, scenario);
        QFETCH(QString, kind);
        if (const QString missing = support::BothBackEnds::missing(u"access"_s); !missing.isEmpty())
            QSKIP(qPrintable(missing));
        const FaultStation station(false);
        QList<QStringList> contents = undisturbed(station, scenario);
        if (scenario == u"gauging") {
            // The dip is replaced: between its Delete and the row that Update adds the program does not stand still.
            const QStringList kept = contents.first().filter(QRegularExpression(u"^(?!tabafer )"_s));
            contents.insert(contents.indexOf(contents.last()), kept);
        }
        qsizetype reached = 0;
        int struck = 0;
        for (;; ++struck) {
            const QString where = u"%1, %2 %3"_s.arg(scenario, kind).arg(struck + 1);
            station.restore();
            StatementGate child(scenario, station.folder(), 0, u"%1 %2"_s.arg(kind).arg(struck + 1));
            const bool ended = child.runToTheEnd();
            if (ended && child.exitCode() != endurance::Struck)
                break; // There were no more calls.
            ++m_tried;
            QVERIFY2(ended != (kind == u"kill"), qPrintable(where));
            QVERIFY2(station.faults().isEmpty(), qPrintable(where + u'\n' + station.faults()));
            const QStringList found = station.contents();
            // A killed process has done at least as much as one killed before.
            const qsizetype position = contents.indexOf(found, kind == u"kill" ? reached : 0);
            QVERIFY2(position >= 0, qPrintable(where + u'\n' + found.join(u'\n')));
            // What was not done was told.
            QVERIFY2(kind == u"kill" || found == contents.last() || !child.boxes().isEmpty(), qPrintable(where));
            reached = position;
            if (isFull() || struck % 8 == 0)
                QVERIFY2(startsAgain(station), qPrintable(where + u": it does not start again"_s));
            ++m_survived;
        }
        qInfo("%d calls", struck);
        QVERIFY(struck > 0 || kind == u"read"); // All may be read already.
        if (kind == u"kill")
            QCOMPARE(contents[reached], contents.last());
    }

    void missingFile()
    {
        const FaultStation station(false);
        ++m_tried;
        StatementGate child(u"start"_s, station.folder()); // Never copied to its place.
        QVERIFY(child.runToTheEnd());
        QCOMPARE(child.exitCode(), 1);
        QVERIFY(child.boxes().startsWith(u"box: Erro em tempo de execução '"_s));
        station.restore();
        QVERIFY(startsAgain(station));
        ++m_survived;
    }

    void readOnly_data() { addScenarios(); }
    void readOnly()
    {
        QFETCH(QString, backEnd);
        QFETCH(QString, scenario);
        if (backEnd != u"access")
            QSKIP("a server's files are its own");
        const FaultStation station(false);
        station.restore();
        const QStringList before = station.contents();
        const QByteArray file = QFile::encodeName(station.database());
        const QByteArray folder = QFile::encodeName(station.folder());
        ++m_tried;
        ::chmod(file.constData(), 0444);
        ::chmod(folder.constData(), 0555);
        {
            // The superuser may write everywhere: the child is somebody else then.
            StatementGate child(scenario, station.folder(), ::geteuid() == 0 ? Nobody : 0);
            const bool ended = child.runToTheEnd();
            ::chmod(folder.constData(), 0755);
            ::chmod(file.constData(), 0644);
            if (child.exitCode() == 99 || (::geteuid() == 0 && !ended))
                QSKIP("this process cannot run as somebody else");
            QVERIFY(ended);
            QVERIFY2(child.boxes().contains(u"Erro em tempo de execução"_s), qPrintable(child.boxes()));
        }
        QCOMPARE(station.contents(), before);
        QVERIFY(startsAgain(station));
        ++m_survived;
    }

    void cleanupTestCase()
    {
        qInfo("faults tried: %d, survived: %d", m_tried, m_survived);
        QVERIFY2(m_tried > 0, "no fault was tried");
        QCOMPARE(m_survived, m_tried);
    }
};

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    platform::prepareApplication(application);
    QApplication::setQuitOnLastWindowClosed(false);
    if (endurance::isChild(QApplication::arguments()))
        return endurance::runChild(QApplication::arguments());
    qputenv("QTEST_FUNCTION_TIMEOUT", "7200000"); // A long run is no hang.
    TestFaults test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_faults.moc"
