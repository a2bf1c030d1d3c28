#include "station/Desk.h"

#include "app/ModConec.h"
#include "platform/ui/DatePicker.h"
#include "platform/ui/FlexGrid.h"
#include "station/Measure.h"

#include <QElapsedTimer>
#include <QLineEdit>
#include <QProcess>
#include <QSignalBlocker>

#include <cstdio>

namespace bench {

namespace {

/// Types the password when its window comes up, says when the main window has been painted, and closes it.
class Operator : public QObject
{
public:
    [[nodiscard]] bool hasSeenIt() const { return m_hasSeenIt; }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Show && watched->objectName() == u"frmsenha") {
            QMetaObject::invokeMethod(
                watched,
                [watched] {
                    auto& box = *watched->findChild<QLineEdit*>(QStringLiteral("Text1"));
                    box.setText(QStringLiteral("1234"));
                    press(box, Qt::Key_Return, QStringLiteral("\r"));
                },
                Qt::QueuedConnection);
        } else if (event->type() == QEvent::Show && watched->objectName() == u"frmprincipal") {
            auto* const window = static_cast<QWidget*>(watched);
            const auto painted = [this, window] {
                window->repaint();
                m_hasSeenIt = true;
                std::printf("%lld\n", static_cast<long long>(peakBytes()));
                std::fflush(stdout);
                window->close();
            };
            QMetaObject::invokeMethod(window, painted, Qt::QueuedConnection);
        }
        return false;
    }

private:
    bool m_hasSeenIt = false;
};

} // namespace

platform::MsgBoxResult Agreeing::MsgBox(const QString& prompt, int style, const QString& title)
{
    Q_UNUSED(prompt);
    Q_UNUSED(title);
    ++shown;
    return (style & 15) == platform::vbYesNo ? platform::MsgBoxResult::Yes : platform::MsgBoxResult::Ok;
}

void press(QWidget& widget, int key, const QString& text)
{
    QKeyEvent down(QEvent::KeyPress, key, Qt::NoModifier, text);
    QCoreApplication::sendEvent(&widget, &down);
    QKeyEvent up(QEvent::KeyRelease, key, Qt::NoModifier, text);
    QCoreApplication::sendEvent(&widget, &up);
}

void settle()
{
    // Layouts put off until the next round ask for one more painting.
    for (int round = 0; round < 3; ++round)
        QCoreApplication::processEvents();
}

void settleUntil(const std::function<bool()>& done)
{
    QElapsedTimer waited;
    waited.start();
    while (!done()) {
        QCoreApplication::processEvents();
        if (waited.elapsed() > 60'000)
            qFatal("nothing happens");
    }
    settle();
}

Start startUp(const BenchStation& station)
{
    QProcess program;
    program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    Start start;
    start.milliseconds = millisecondsOf([&] {
        program.start(QCoreApplication::applicationFilePath(), {QString::fromLatin1(StartOption), station.folder()});
        if (!program.waitForReadyRead(60'000))
            qFatal("the program does not start");
    });
    start.peakBytes = program.readLine().toLongLong();
    if (!program.waitForFinished() || program.exitCode() != 0)
        qFatal("the program does not end");
    return start;
}

int runStart(const QString& folder)
{
    support::TestClock clock{QDateTime(BenchStation::today(), QTime(8, 30))};
    Agreeing messages;
    platform::ApplicationEvents events;
    support::TestChooser chooser;
    support::TestDefaultPrinter defaultPrinter;
    support::TestSpooler spooler;
    Operator person;
    qApp->installEventFilter(&person);
    const int result = ModConec::Main({folder, messages, clock, events, {chooser, defaultPrinter, spooler}});
    qApp->removeEventFilter(&person);
    return result == 0 && messages.shown == 0 && person.hasSeenIt() ? 0 : 1;
}

Desk::Desk(const BenchStation& station)
    : m_gate([] { return SupervisorAnswer::Granted; })
    , m_emitente{QStringLiteral("Auto Posto Três Ipês Ltda"), QStringLiteral("000"), QStringLiteral("111"),
                 QStringLiteral("Avenida das Acácias, 1500")}
{
    database.emplace(station.folder());
    database->open(messages);
    services.emplace(Services{database->DataConnection(), database->dialect(), messages, clock, events});
    chooser.answer.fileName = paper();
    m_window.emplace(*services, *database, m_gate, m_emitente, platform::Printers{chooser, defaultPrinter, spooler});
    m_window->carrega();
    m_window->show();
    m_window->activateWindow();
    settle();
}

platform::FlexGrid& Desk::grid(const char* name) const
{
    return child<platform::FlexGrid>(name);
}

void Desk::setPeriod(QDate first, QDate last) const
{
    const auto set = [this](const char* name, QDate day) {
        auto& picker = child<platform::DatePicker>(name);
        const QSignalBlocker quiet(picker);
        picker.setValue(day);
    };
    set("dtpI_0", first);
    set("dtpI_1", last);
}

void Desk::setSheetDate(QDate day) const
{
    auto& picker = child<platform::DatePicker>("DTP");
    const QSignalBlocker quiet(picker);
    picker.setValue(day);
}

reports::ReportServices Desk::reportServices()
{
    return {m_emitente, clock, events, {chooser, defaultPrinter, spooler}};
}

} // namespace bench
