// An operator whose fingers are faster than the program: seeded sequences of keys over all windows of the real program,
// at random speed, on a slow server, a fast server and an Access file. The tables afterwards are those of the same keys
// typed slowly, each after the program has come to rest.
//
//   random_operator [COUNT [FIRST SEED]]    under a display of its own: operador_ao_acaso

#include "FaultStation.h"
#include "SlowServer.h"

#include "app/ModConec.h"
#include "platform/print/Printers.h"
#include "platform/ui/Application.h"
#include "platform/ui/InputQueue.h"
#include "platform/ui/RealSeams.h"
#include "support/Doubles.h"
#include "support/MariaDbServer.h"
#include "support/PrintDoubles.h"
#include "support/StationSchema.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QSocketNotifier>
#include <QThread>
#include <QTimer>

#include <unistd.h>

#include <cstdio>
#include <memory>
#include <optional>
#include <random>

using namespace Qt::StringLiterals;

namespace {

const QDateTime Now(QDate(2024, 3, 15), QTime(9, 0));
constexpr int SlowMilliseconds = 300;
constexpr int Patience = 90'000; ///< Milliseconds; a slow server and sixty keys take their time.

// --- The program, in a process of its own.

class NoPrinter : public platform::PrinterChooser
{
public:
    platform::PrinterChoice choose(const QString&) override { throw platform::UserCancelled(); }
};

/// Counts the keys that have arrived, and says when the program is at rest after a given number of them.
class Watcher : public QObject
{
public:
    Watcher()
        : m_asked(STDIN_FILENO, QSocketNotifier::Read)
    {
        qApp->installEventFilter(this);
        connect(&m_asked, &QSocketNotifier::activated, this, [this] {
            char line[32] = {};
            if (::read(STDIN_FILENO, line, sizeof line - 1) <= 0)
                std::_Exit(0);
            m_wanted = std::atoi(line);
            m_quiet = m_ticks = 0;
            m_timer.start(10);
        });
        connect(&m_timer, &QTimer::timeout, this, [this] {
            m_quiet = m_keys >= m_wanted && platform::InputQueue::isIdle() && QGuiApplication::focusWindow()
                          ? m_quiet + 1
                          : 0;
            if (++m_ticks % 500 == 0) {
                std::printf("keys %d of %d, idle %d, focus %d\n", m_keys, m_wanted, platform::InputQueue::isIdle(),
                            QGuiApplication::focusWindow() != nullptr);
                std::fflush(stdout);
            }
            if (m_quiet < 3)
                return;
            m_timer.stop();
            std::printf("rest\n");
            std::fflush(stdout);
        });
    }
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::KeyPress && event->spontaneous() && watched->isWindowType())
            ++m_keys;
        return false;
    }

private:
    QSocketNotifier m_asked;
    QTimer m_timer;
    int m_keys = 0;
    int m_wanted = 0;
    int m_quiet = 0;
    int m_ticks = 0;
};

int runProgram(int argc, char* argv[])
{
    QApplication application(argc, argv);
    platform::prepareApplication(application);
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication::setKeyboardInputInterval(1); // A search in a list is not to depend on the speed of the typing.
    Watcher watcher;
    platform::MessageBoxes messages;
    support::TestClock clock{Now};
    platform::ApplicationEvents events;
    NoPrinter chooser;
    support::TestDefaultPrinter defaultPrinter;
    support::TestSpooler spooler;
    return ModConec::Main({application.arguments().at(2), messages, clock, events, {chooser, defaultPrinter, spooler}});
}

// --- The operator.

struct Sequence
{
    QStringList keys;
    QList<int> pauses; ///< Milliseconds after each key, when typed fast.
};

class Fingers
{
public:
    explicit Fingers(unsigned seed)
        : m_random(seed)
    {}

    Sequence sequence()
    {
        const int length = between(20, 60);
        while (m_sequence.keys.size() < length)
            habit();
        m_sequence.keys.resize(length);
        const int slowest = pick<int>({15, 40, 40, 120, 600});
        for (int key = 0; key < length; ++key)
            m_sequence.pauses << (between(0, 15) == 0 ? between(0, 1500) : between(4, slowest));
        return m_sequence;
    }

private:
    int between(int least, int most) { return std::uniform_int_distribution<int>(least, most)(m_random); }
    template <typename T>
    T pick(std::initializer_list<T> choices)
    {
        return *(choices.begin() + between(0, static_cast<int>(choices.size()) - 1));
    }
    void press(const QString& keys)
    {
        for (const QString& key : keys.split(u' '))
            m_sequence.keys << key;
    }
    void number(int digits)
    {
        for (int digit = 0; digit < digits; ++digit)
            press(QString::number(between(1, 9)));
        if (between(0, 3) == 0)
            press(u"comma 5"_s);
    }
    void times(const char* key, int most)
    {
        for (int count = between(0, most); count > 0; --count)
            press(QLatin1String(key));
    }
    void answer() { press(pick<QString>({u"s"_s, u"s"_s, u"n"_s, u"Return"_s, u"Escape"_s, u"Tab Return"_s})); }

    void habit()
    {
        switch (between(0, 13)) {
        case 0:
        case 1:
        case 2: // A reading; the meters stand at 1000,5 and 12345,67.
            press(u"Return"_s);
            press(pick<QString>({u"1"_s, u"2"_s, u"9"_s}));
            number(4);
            press(u"Return"_s);
            break;
        case 3:
            press(u"F4"_s);
            answer();
            break;
        case 4:
        case 5:
        case 6: // One of the windows behind the password.
            press(u"alt+c"_s);
            times("Down", 3);
            press(u"Return 1 2 3 4 Return"_s);
            insideAWindow();
            if (between(0, 2) != 0)
                press(u"Escape"_s);
            break;
        case 7: // The gauging.
            press(u"Menu Up Return"_s);
            times("Down", 2);
            press(pick<QString>({u"Return space"_s, u"Tab 1 2 Return 4 5 Return space"_s, u"Escape"_s}));
            break;
        case 8: // A line of the entry grid.
            times("Tab", 3);
            press(u"Delete"_s);
            break;
        case 9: // A reading is deleted.
            press(pick<QString>({u"shift+Tab"_s, u"Tab Tab Tab"_s}));
            press(u"space Delete 1 2 3 4 Return"_s);
            answer();
            break;
        case 10: // An item is issued.
            times("Tab", 6);
            press(u"Return"_s);
            number(1);
            press(u"Return"_s);
            break;
        case 11:
            times("Tab", 8);
            break;
        default:
            press(pick<QString>({u"Return"_s, u"Return"_s, u"Return"_s, u"Delete"_s, u"Down"_s, u"Up"_s, u"space"_s,
                                 u"Tab"_s, u"F4"_s, u"7"_s, u"BackSpace"_s, u"alt+t"_s, u"Home"_s, u"End"_s, u"s"_s,
                                 u"n"_s}));
        }
    }

    void insideAWindow()
    {
        for (int step = between(1, 4); step > 0; --step) {
            switch (between(0, 5)) {
            case 0:
                number(2);
                press(u"Return"_s);
                break;
            case 1:
                times("Tab", 4);
                press(u"Down Return"_s);
                break;
            case 2:
                times("Tab", 5);
                press(u"space"_s);
                answer();
                break;
            case 3:
                press(u"Delete"_s);
                answer();
                break;
            case 4:
                press(u"Return Return"_s);
                break;
            default:
                number(3);
                press(u"Tab"_s);
            }
        }
    }

    std::mt19937 m_random;
    Sequence m_sequence;
};

/// The program while keys are typed into it.
class Session
{
public:
    explicit Session(const QString& folder)
    {
        m_program.setProcessChannelMode(QProcess::SeparateChannels);
        m_program.start(QCoreApplication::applicationFilePath(), {u"--program"_s, folder});
        waitForRest(); // The password prompt.
        for (const QChar key : u"1234"_s)
            type({QString(key)}, {0});
        type({u"Return"_s}, {0});
        waitForRest();
    }
    ~Session()
    {
        m_program.kill();
        m_program.waitForFinished();
    }

    [[nodiscard]] bool hasEnded()
    {
        m_program.waitForFinished(1);
        return m_program.state() == QProcess::NotRunning;
    }
    [[nodiscard]] bool hasCrashed() const
    {
        return m_program.state() == QProcess::NotRunning && m_program.exitStatus() == QProcess::CrashExit;
    }
    void type(const QStringList& keys, const QList<int>& pauses)
    {
        QStringList words;
        for (qsizetype key = 0; key < keys.size(); ++key) {
            words << u"key"_s << u"--delay"_s << u"0"_s << keys[key];
            if (pauses[key] > 0)
                words << u"sleep"_s << QString::number(pauses[key] / 1000.0);
            // A modifier is a key of its own.
            m_typed += keys[key].contains(u'+') ? 2 : 1;
        }
        QProcess::execute(u"xdotool"_s, words);
    }
    /// False when the program has ended or does not come to rest.
    bool waitForRest()
    {
        QElapsedTimer waited;
        waited.start();
        m_program.write(QByteArray::number(m_typed) + '\n');
        for (QByteArray said; !said.contains("rest\n"); said += m_program.readAllStandardOutput()) {
            if (hasEnded())
                return false;
            if (waited.elapsed() > Patience) {
                std::printf("  the program does not come to rest after %d keys: %s\n", m_typed,
                            said.trimmed().split('\n').last().constData());
                return false;
            }
            m_program.waitForReadyRead(50);
        }
        return true;
    }

private:
    QProcess m_program;
    int m_typed = 0;
};

enum Setup { SlowServerSetup, FastServerSetup, FileSetup, Setups };
constexpr const char* setupNames[Setups] = {"slow server", "fast server", "Access file"};

void useServer(const endurance::FaultStation& station, const QString& address)
{
    QFile::remove(station.folder() + u"/Host.mdb"_s);
    support::makeHosts(station.folder(), {{u"X"_s, address, station.database(), support::MariaDbServer::user(),
                                           support::MariaDbServer::password()}});
}

QStringList typedSlowly(const endurance::FaultStation& station, const Sequence& sequence)
{
    station.restore();
    {
        Session session(station.folder());
        for (const QString& key : sequence.keys) {
            session.type({key}, {0});
            if (!session.waitForRest())
                break;
        }
        if (session.hasCrashed())
            return {u"the program has crashed"_s};
    }
    return station.contents();
}

QStringList typedFast(const endurance::FaultStation& station, const Sequence& sequence)
{
    station.restore();
    {
        Session session(station.folder());
        session.type(sequence.keys, sequence.pauses);
        session.waitForRest();
        if (session.hasCrashed())
            return {u"the program has crashed"_s};
    }
    return station.contents();
}

int operate(int count, unsigned first)
{
    const endurance::FaultStation server(true);
    const endurance::FaultStation file(false);
    const QString fast = support::MariaDbServer::shared().host();
    const QString slow = u"127.91.%1.%2"_s.arg(::getpid() / 250 % 250).arg(::getpid() % 250 + 1);
    const endurance::SlowServer slowServer(fast, slow, SlowMilliseconds);
    int different = 0;
    for (unsigned seed = first; seed < first + static_cast<unsigned>(count); ++seed) {
        const auto setup = static_cast<Setup>(seed % Setups);
        const endurance::FaultStation& station = setup == FileSetup ? file : server;
        const Sequence sequence = Fingers(seed).sequence();
        QElapsedTimer clock;
        clock.start();
        if (setup != FileSetup)
            useServer(station, fast);
        const QStringList expected = typedSlowly(station, sequence);
        if (setup == SlowServerSetup)
            useServer(station, slow);
        const QStringList found = typedFast(station, sequence);
        const bool same = found == expected;
        different += same ? 0 : 1;
        std::printf("%s seed %u, %s, %lld keys, %.0f s\n", same ? "same     " : "DIFFERENT", seed, setupNames[setup],
                    static_cast<long long>(sequence.keys.size()), static_cast<double>(clock.elapsed()) / 1000);
        if (!same) {
            std::printf("  keys: %s\n", qPrintable(sequence.keys.join(u' ')));
            for (const QString& line : expected) {
                if (found.count(line) < expected.count(line))
                    std::printf("  missing: %s\n", qPrintable(line));
            }
            for (const QString& line : found) {
                if (expected.count(line) < found.count(line))
                    std::printf("  extra: %s\n", qPrintable(line));
            }
        }
        std::fflush(stdout);
    }
    std::printf("%d of %d sequences differ\n", different, count);
    return different == 0 ? 0 : 1;
}

} // namespace

int main(int argc, char* argv[])
{
    if (argc > 2 && qstrcmp(argv[1], "--program") == 0)
        return runProgram(argc, argv);
    qputenv("PLANILHA_NO_PLACEMENT", "1");
    QCoreApplication application(argc, argv);
    return operate(argc > 1 ? std::atoi(argv[1]) : 3, argc > 2 ? static_cast<unsigned>(std::atoi(argv[2])) : 0);
}
