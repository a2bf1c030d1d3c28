// Keys and clicks as they come from a real X server: held down, typed ahead of the program, composed. Runs under a
// virtual display with a window manager; xdotool is the hand on the keyboard.

#include "platform/ui/Application.h"
#include "platform/ui/Boundary.h"
#include "platform/ui/HeldKeys.h"
#include "platform/ui/InputQueue.h"
#include "platform/ui/ListBox.h"
#include "platform/ui/RealSeams.h"

#include <QApplication>
#include <QDialog>
#include <QLineEdit>
#include <QMenu>
#include <QProcess>
#include <QPushButton>
#include <QScrollBar>
#include <QTest>
#include <QThread>
#include <QVBoxLayout>

#include <map>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

constexpr int patience = 10'000;

/// A window with a grid that answers Enter, Delete and Escape, and a box below it. What happens is noted in order.
class Counter : public QDialog
{
public:
    Counter()
        : list(*new platform::ListBox)
        , box(*new QLineEdit)
        , button(*new QPushButton(u"&Fecha"_s))
    {
        auto* const layout = new QVBoxLayout(this);
        for (QWidget* const widget :
             {static_cast<QWidget*>(&list), static_cast<QWidget*>(&box), static_cast<QWidget*>(&button)})
            layout->addWidget(widget);
        button.setAutoDefault(false);
        for (int row = 0; row < 200; ++row)
            list.addItem(QString::number(row));
        list.setCurrentRow(0);
        connect(&list, &platform::ListBox::KeyDown, this, [this](QKeyEvent* event) {
            if (event->key() != Qt::Key_Return && event->key() != Qt::Key_Delete)
                return;
            event->accept();
            act(event->key() == Qt::Key_Return ? u"enter"_s : u"delete"_s);
        });
        connect(&box, &QLineEdit::returnPressed, this, [this] { act(u"box:"_s + box.text()); });
        connect(&button, &QPushButton::clicked, this, [this] { act(u"button"_s); });
        list.setFocus();
    }
    void reject() override { noted << u"escape"_s; }

    /// What a handler does: slow statements with events between them.
    void act(const QString& what)
    {
        platform::tellAndStay(boxes, [&] {
            for (int statement = 0; statement < statements; ++statement) {
                QThread::msleep(100);
                if (filling) {
                    const platform::InputQueue::Filling fill;
                    pump.DoEvents();
                } else {
                    pump.DoEvents();
                }
            }
            noted << what;
            if (then)
                then(what);
        });
    }
    void open()
    {
        show();
        activateWindow();
        if (!QTest::qWaitForWindowActive(this))
            qFatal("the window does not become active");
    }

    platform::ListBox& list;
    QLineEdit& box;
    QPushButton& button;
    QStringList noted;
    int statements = 0;
    bool filling = false;
    std::function<void(const QString&)> then;
    platform::ApplicationEvents pump;
    platform::MessageBoxes boxes;
};

/// The hand on the keyboard; it goes on while the program works.
class Hand
{
public:
    explicit Hand(const QString& words) { m_process.start(u"xdotool"_s, words.split(u' ')); }
    ~Hand() { m_process.waitForFinished(); }
    void isDone()
    {
        QTRY_COMPARE_WITH_TIMEOUT(m_process.state(), QProcess::NotRunning, patience);
        QTest::qWait(100);
        QTRY_VERIFY_WITH_TIMEOUT(platform::InputQueue::isIdle(), patience);
    }

private:
    QProcess m_process;
};

void hand(const QString& words)
{
    Hand(words).isDone();
}

/// Long enough for many repeats of the server.
void hold(const QString& key)
{
    hand(u"keydown "_s + key);
    QTest::qWait(1400);
    hand(u"keyup "_s + key);
}

} // namespace

class TestKeys : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { platform::prepareApplication(*qApp); }

    void aHeldKeyActsOnce_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("focus"); // list, box or button
        QTest::addColumn<bool>("focusMoves");
        QTest::addColumn<QString>("noted");
        QTest::newRow("Enter") << u"Return"_s << u"list"_s << false << u"enter"_s;
        QTest::newRow("Enter, and the focus moves") << u"Return"_s << u"list"_s << true << u"enter"_s;
        QTest::newRow("Delete") << u"Delete"_s << u"list"_s << false << u"delete"_s;
        QTest::newRow("Escape") << u"Escape"_s << u"list"_s << false << u"escape"_s;
        QTest::newRow("Enter in a box") << u"Return"_s << u"box"_s << false << u"box:12345"_s;
        QTest::newRow("blank on a button") << u"space"_s << u"button"_s << false << u"button"_s;
        QTest::newRow("Alt and a letter") << u"alt+f"_s << u"box"_s << false << u"button"_s;
    }
    void aHeldKeyActsOnce()
    {
        QFETCH(QString, key);
        QFETCH(QString, focus);
        QFETCH(bool, focusMoves);
        QFETCH(QString, noted);
        Counter counter;
        counter.box.setText(u"12345"_s);
        counter.statements = 1;
        counter.open();
        const std::map<QString, QWidget*> places{
            {u"list"_s, &counter.list}, {u"box"_s, &counter.box}, {u"button"_s, &counter.button}};
        places.at(focus)->setFocus();
        if (focusMoves)
            counter.then = [&](const QString&) { counter.box.setFocus(); };
        hold(key);
        QCOMPARE(counter.noted, QStringList(noted));
        QCOMPARE(counter.box.text(), u"12345"_s);
    }

    void aHeldKeyDoesNotAnswer()
    {
        Counter counter;
        auto answer = platform::MsgBoxResult::No;
        counter.then = [&](const QString&) {
            QTimer::singleShot(2000, &counter, [] { QApplication::activeModalWidget()->close(); });
            answer = counter.boxes.MsgBox(u"?"_s, platform::vbYesNo, {});
        };
        counter.open();
        hold(u"Return"_s);
        QTRY_VERIFY(!QApplication::activeModalWidget());
        QCOMPARE(answer, platform::MsgBoxResult::No);
        QCOMPARE(counter.noted.size(), 1);
    }

    void walkingAndWritingRepeats()
    {
        Counter counter;
        counter.open();
        hold(u"Down"_s);
        QVERIFY2(counter.list.currentRow() > 5, qPrintable(QString::number(counter.list.currentRow())));
        counter.box.setFocus();
        hold(u"7"_s);
        const auto written = counter.box.text().size();
        QVERIFY2(written > 5, qPrintable(counter.box.text()));
        hold(u"BackSpace"_s);
        QVERIFY(counter.box.text().size() < written - 5);
    }

    void repeatsThatCameUnmarked_data()
    {
        QTest::addColumn<int>("releasedAt");
        QTest::addColumn<int>("pressedAt");
        QTest::addColumn<int>("releasedKey");
        QTest::addColumn<bool>("repeat");
        QTest::newRow("one time stamp") << 500 << 500 << 36 << true;
        QTest::newRow("a second press") << 500 << 501 << 36 << false;
        QTest::newRow("no time stamps") << 0 << 0 << 36 << false;
        QTest::newRow("another key") << 500 << 500 << 37 << false;
    }
    void repeatsThatCameUnmarked()
    {
        QFETCH(int, releasedAt);
        QFETCH(int, pressedAt);
        QFETCH(int, releasedKey);
        QFETCH(bool, repeat);
        platform::HeldKeys held;
        const auto key = [&](QEvent::Type type, int scanCode, int time) {
            QKeyEvent event(type, Qt::Key_Return, Qt::NoModifier, static_cast<quint32>(scanCode), 0, 0, u"\r"_s);
            event.setTimestamp(static_cast<quint64>(time));
            return held.marked(event);
        };
        QVERIFY(!key(QEvent::KeyPress, 36, 100)->isAutoRepeat());
        QVERIFY(!key(QEvent::KeyRelease, releasedKey, releasedAt)->isAutoRepeat());
        const auto again = key(QEvent::KeyPress, 36, pressedAt);
        QCOMPARE(again->isAutoRepeat(), repeat);
        QCOMPARE(again->text(), u"\r"_s);
        QCOMPARE(again->timestamp(), static_cast<quint64>(pressedAt));
    }

    /// Enter on the list goes to the box, Enter there back to the list and one row down.
    void typedAheadGoesWhereItWouldHaveGone()
    {
        Counter counter;
        counter.statements = 3;
        counter.then = [&](const QString& what) {
            if (what == u"enter") {
                counter.box.selectAll();
                counter.box.setFocus();
            } else {
                counter.list.setCurrentRow(counter.list.currentRow() + 1);
                counter.list.setFocus();
            }
        };
        counter.open();
        Hand(u"key --delay 33 Return 1 2 3 Return Return 4 5 Down 6 Return Delete alt+f Tab 8 Return Escape"_s)
            .isDone();
        QCOMPARE(counter.noted, QStringList({u"enter"_s, u"box:123"_s, u"enter"_s, u"box:456"_s, u"delete"_s,
                                             u"button"_s, u"box:8"_s, u"escape"_s}));
        QCOMPARE(counter.list.currentRow(), 5);
    }

    void aBoxTakesWhatIsTypedAhead()
    {
        Counter counter;
        counter.statements = 3;
        QStringList answers;
        counter.then = [&](const QString& what) {
            if (what == u"delete") {
                for (int box = 0; box < 2; ++box)
                    answers << (counter.boxes.MsgBox(u"?"_s, platform::vbYesNo, {}) == platform::MsgBoxResult::Yes
                                    ? u"sim"_s
                                    : u"nao"_s);
            }
            counter.box.setFocus();
        };
        counter.open();
        for (int round = 0; round < 5; ++round) {
            counter.list.setFocus();
            Hand(u"key --delay 15 Delete s n 1 2 BackSpace 3 Return"_s).isDone();
            QCOMPARE(answers, QStringList({u"sim"_s, u"nao"_s}));
            QCOMPARE(counter.noted, QStringList({u"delete"_s, u"box:13"_s}));
            answers.clear();
            counter.noted.clear();
            counter.box.clear();
        }
    }

    void aWindowTakesWhatIsTypedAhead_data()
    {
        QTest::addColumn<bool>("modal");
        QTest::newRow("modal") << true;
        QTest::newRow("beside the other") << false;
    }
    void aWindowTakesWhatIsTypedAhead()
    {
        QFETCH(bool, modal);
        Counter counter;
        counter.statements = 2;
        QStringList noted;
        counter.then = [&](const QString& what) {
            if (what != u"enter")
                return;
            auto* const window = new Counter;
            window->setParent(&counter, Qt::Window);
            window->box.setFocus();
            window->then = [&noted, window](const QString& typed) {
                noted << typed;
                window->done(0);
                window->deleteLater();
            };
            if (modal)
                window->exec();
            else
                window->show();
        };
        counter.open();
        Hand(u"key --delay 15 Return 1 2 3 Return Delete"_s).isDone();
        QCOMPARE(noted, QStringList(u"box:123"_s));
        QCOMPARE(counter.noted, QStringList({u"enter"_s, u"delete"_s}));
    }

    void aMenuTakesWhatIsTypedAhead()
    {
        Counter counter;
        counter.statements = 2;
        counter.then = [&](const QString& what) {
            if (what == u"enter")
                counter.box.setFocus();
        };
        counter.open();
        counter.box.setText(u"1234"_s);
        // The box's own menu runs a loop inside the event that opens it.
        Hand(u"key --delay 15 Return Menu Escape BackSpace 5 Return"_s).isDone();
        QCOMPARE(counter.noted, QStringList({u"enter"_s, u"box:1235"_s}));
    }

    void theWheelPassesByAndEscapeEndsAFill()
    {
        Counter counter;
        counter.statements = 12;
        counter.filling = true;
        counter.open();
        int scrolled = -1;
        connect(counter.list.verticalScrollBar(), &QScrollBar::valueChanged, &counter,
                [&](int) { scrolled = static_cast<int>(counter.noted.size()); });
        const QPoint middle = counter.list.mapToGlobal(counter.list.rect().center());
        Hand(u"mousemove %1 %2 key Return sleep 0.3 click 5 sleep 0.2 key Escape"_s.arg(middle.x()).arg(middle.y()))
            .isDone();
        QCOMPARE(scrolled, 0); // before the fill was through
        QCOMPARE(counter.noted, QStringList({u"escape"_s, u"enter"_s}));
        counter.noted.clear();
        counter.filling = false;
        Hand(u"key Return sleep 0.3 key Escape"_s).isDone(); // no fill: in order
        QCOMPARE(counter.noted, QStringList({u"enter"_s, u"escape"_s}));
        counter.noted.clear();
        counter.filling = true;
        Hand(u"key --delay 15 Return Delete Escape"_s).isDone(); // something waits before it
        QCOMPARE(counter.noted, QStringList({u"enter"_s, u"delete"_s, u"escape"_s}));
    }

    void clicksWait()
    {
        Counter counter;
        counter.statements = 4;
        counter.open();
        const QPoint button = counter.button.mapToGlobal(counter.button.rect().center());
        Hand(u"mousemove %1 %2 key Return sleep 0.15 click 1 sleep 0.1 key Tab"_s.arg(button.x()).arg(button.y()))
            .isDone();
        QCOMPARE(counter.noted, QStringList({u"enter"_s, u"button"_s}));
    }

    void composedAccentsStayInOrder()
    {
        QProcess::execute(u"setxkbmap"_s, {u"us"_s, u"intl"_s});
        QTest::qWait(200);
        Counter counter;
        counter.statements = 3;
        counter.open();
        counter.box.setFocus();
        // The dead keys stand on the apostrophe and the circumflex.
        Hand(u"key --delay 20 Return p o dead_acute a s dead_circumflex o t"_s).isDone();
        QCOMPARE(counter.box.text(), u"poásôt"_s);
        QProcess::execute(u"setxkbmap"_s, {u"us"_s});
    }

    void dropping()
    {
        Counter counter;
        counter.statements = 6;
        counter.open();
        std::unique_ptr<platform::InputQueue::Dropping> dropping;
        counter.then = [&](const QString&) { dropping.reset(); };
        dropping = std::make_unique<platform::InputQueue::Dropping>([](const QEvent& event) {
            return event.type() == QEvent::KeyPress && static_cast<const QKeyEvent&>(event).key() == Qt::Key_Delete;
        });
        Hand(u"key Return sleep 0.2 key Delete key Return key Delete"_s).isDone();
        QCOMPARE(counter.noted, QStringList({u"enter"_s, u"enter"_s, u"delete"_s}));
    }
};

QTEST_MAIN(TestKeys)
#include "test_keys.moc"
