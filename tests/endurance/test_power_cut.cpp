// Power cuts: a process in which lines are typed, deleted and closed is killed at random moments. What the next start
// restores, what is stored and what is named to the operator together are the lines that were typed.
//
// Real processes, the real main window. PLANILHA_ENDURANCE=full kills 200 on either back end.

#include "Counter.h"
#include "FaultStation.h"

#include "platform/ui/Application.h"
#include "platform/vb/Conversion.h"
#include "support/BothBackEnds.h"

#include <QApplication>
#include <QProcess>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QSet>
#include <QTest>
#include <QThread>

#include <sys/prctl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>

using namespace Qt::StringLiterals;
using endurance::Counter;
using endurance::FaultStation;

namespace {

const QDate Today(2024, 3, 16);

using Readings = QSet<qint64>;

// ---- In the child.

void say(const char* what, qint64 reading = 0)
{
    std::printf("%s %lld\n", what, static_cast<long long>(reading));
    std::fflush(stdout);
}

qint64 readingOf(const QString& cell)
{
    return static_cast<qint64>(vb::CDbl(cell));
}

/// Types, deletes and closes until it is killed. Every reading is another one.
[[noreturn]] void work(const QString& folder, quint32 seed)
{
    QRandomGenerator random(seed);
    Counter counter(folder, Today);
    auto& flexG = counter.grid("flexG");
    qint64 reading = 200'000;
    say("ready");
    for (;;) {
        for (int lines = random.bounded(2, 7); lines > 0; --lines) {
            reading += 10;
            say("typing", reading);
            counter.enterReading(random.bounded(1, 3), QString::number(reading));
            say("typed", reading);
            if (random.bounded(4) == 0) {
                flexG.setRow(random.bounded(1, flexG.Rows()));
                const qint64 deleted = readingOf(flexG.TextMatrix(flexG.Row(), EntryGrid::Current));
                say("deleting", deleted);
                QTest::keyClick(&flexG, Qt::Key_Delete);
                say("deleted", deleted);
            }
        }
        say("closing");
        QTest::keyClick(&counter.window(), Qt::Key_F4);
        say("closed");
    }
}

/// Starts as after a power cut, says Sim, and tells what is there then.
[[noreturn]] void recover(const QString& folder)
{
    Counter counter(folder, Today);
    counter.window().oferece_linhas();
    static const QRegularExpression named(u"Bomba \\d+: de \\S+ a (\\S+),"_s);
    for (const QString& text : std::as_const(counter.messages.said)) {
        for (const QRegularExpressionMatch& match : named.globalMatch(text))
            say("named", readingOf(match.captured(1)));
    }
    for (int row = 1; row < counter.grid("flexG").Rows(); ++row)
        say("restored", readingOf(counter.grid("flexG").TextMatrix(row, EntryGrid::Current)));
    say("end");
    ::_exit(0);
}

// ---- In the test.

/// What a child has said, by its first word.
QHash<QString, Readings> heard(QProcess& child)
{
    QHash<QString, Readings> said;
    const QList<QByteArray> lines = child.readAllStandardOutput().split('\n');
    for (const QByteArray& line : lines.first(lines.size() - 1)) {
        const QStringList words = QString::fromLatin1(line).split(u' ');
        said[words[0]] << words[1].toLongLong();
    }
    return said;
}

void start(QProcess& child, const QStringList& arguments)
{
    child.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
    child.start(QCoreApplication::applicationFilePath(), arguments);
    if (!child.waitForStarted())
        throw std::runtime_error("the child does not start");
}

Readings storedIn(const FaultStation& station)
{
    Readings stored;
    for (const QString& line : station.contents().filter(u"Leitura "_s)) {
        const qint64 reading = readingOf(line.section(u'|', 3, 3));
        if (line.startsWith(u"Leitura "_s) && reading > 200'000)
            stored << reading;
    }
    return stored;
}

QString listed(Readings readings)
{
    QStringList texts;
    for (const qint64 reading : std::as_const(readings))
        texts << QString::number(reading);
    texts.sort();
    return texts.join(u' ');
}

} // namespace

class TestPowerCut : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void randomMoments_data() { support::BothBackEnds::addRows(); }
    void randomMoments()
    {
        QFETCH(QString, backEnd);
        if (const QString missing = support::BothBackEnds::missing(backEnd); !missing.isEmpty())
            QSKIP(qPrintable(missing));
        const FaultStation station(backEnd == u"mysql");
        const bool isFull = qEnvironmentVariable("PLANILHA_ENDURANCE") == u"full";
        QRandomGenerator random(7);
        int restored = 0;
        int named = 0;
        for (int kill = 0; kill < (isFull ? 200 : 6); ++kill) {
            station.restore();
            QProcess child;
            start(child, {u"--work"_s, station.folder(), QString::number(random.generate())});
            QVERIFY(child.waitForReadyRead(60'000)); // It is ready.
            const auto stop = std::chrono::steady_clock::now() + std::chrono::microseconds(random.bounded(1'500'000));
            while (std::chrono::steady_clock::now() < stop)
                child.waitForReadyRead(1);
            child.kill();
            QVERIFY(child.waitForFinished());
            auto before = heard(child);

            const Readings storedAtKill = storedIn(station);
            QProcess next;
            start(next, {u"--recover"_s, station.folder()});
            QVERIFY(next.waitForFinished(120'000));
            auto after = heard(next);
            QVERIFY(after.contains(u"end"_s));
            QCOMPARE(storedIn(station), storedAtKill); // Restoring writes nothing.

            const Readings everywhere = after[u"restored"_s] + storedAtKill + after[u"named"_s];
            const Readings surelyThere = before[u"typed"_s] - before[u"deleting"_s];
            QCOMPARE(listed(surelyThere - everywhere), QString());
            QCOMPARE(listed(everywhere - before[u"typing"_s]), QString());
            QCOMPARE(listed(everywhere & before[u"deleted"_s]), QString());
            QCOMPARE(listed(after[u"restored"_s] & (storedAtKill + after[u"named"_s])), QString());
            QVERIFY(after[u"named"_s].size() <= 1);
            restored += static_cast<int>(after[u"restored"_s].size());
            named += static_cast<int>(after[u"named"_s].size());
        }
        qInfo("%s: restored %d, named %d", qPrintable(backEnd), restored, named);
    }
};

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    platform::prepareApplication(application);
    QApplication::setQuitOnLastWindowClosed(false);
    const QStringList arguments = QApplication::arguments();
    if (arguments.value(1) == u"--work")
        work(arguments.at(2), arguments.at(3).toUInt());
    if (arguments.value(1) == u"--recover")
        recover(arguments.at(2));
    qputenv("QTEST_FUNCTION_TIMEOUT", "7200000"); // A long run is no hang.
    TestPowerCut test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_power_cut.moc"
