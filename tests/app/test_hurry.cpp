// The station's windows under real keys: held down, and typed ahead. Runs under a virtual display; xdotool is the hand
// on the keyboard.

#include "StationFixture.h"

#include "platform/ui/Application.h"
#include "platform/ui/InputQueue.h"
#include "registers/frmdiversos.h"

#include <QProcess>

using namespace Qt::StringLiterals;
using namespace support;

namespace {

void hand(const QString& words)
{
    QProcess xdotool;
    xdotool.start(u"xdotool"_s, words.split(u' '));
    QTRY_COMPARE_WITH_TIMEOUT(xdotool.state(), QProcess::NotRunning, 20'000);
    QTest::qWait(100);
    QTRY_VERIFY_WITH_TIMEOUT(platform::InputQueue::isIdle(), 20'000);
}

/// Long enough for many repeats of the server.
void hold(const QString& key)
{
    hand(u"keydown "_s + key);
    QTest::qWait(1400);
    hand(u"keyup "_s + key);
}

} // namespace

class TestHurry : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase_data()
    {
        QTest::addColumn<QString>("backEnd");
        QTest::newRow("access") << u"access"_s;
    }
    void initTestCase() { platform::prepareApplication(*qApp); }

    void heldInTheMainWindow()
    {
        FRESH_STATION(StationFixture, station);
        station.open();
        platform::FlexGrid& flex = station.grid("flex");
        QLineEdit& text1 = station.child<QLineEdit>("Text1");
        flex.setFocus();
        hold(u"Return"_s); // The pump is selected, and its reading not registered.
        QVERIFY(text1.hasFocus());
        QCOMPARE(station.grid("flexG").Rows(), 1);
        hold(u"Return"_s); // Registered once, and the next pump not selected.
        QVERIFY(flex.hasFocus());
        QCOMPARE(station.grid("flexG").Rows(), 2);
        QCOMPARE(station.label("lb_4"), u"001"_s);
        hand(u"key --delay 15 Return 9 9 9 9 9 Return Return Return"_s); // Two Enters are one line and the next pump.
        QCOMPARE(station.grid("flexG").Rows(), 4);
        station.grid("flexG").setFocus();
        hold(u"Delete"_s);
        QCOMPARE(station.grid("flexG").Rows(), 3);

        station.grid("FlexD").setRow(1);
        station.child<QLineEdit>("Text2").setFocus();
        hand(u"key 2"_s);
        hold(u"Return"_s);
        QCOMPARE(station.rows(u"ControleProdComb"_s, u"deb"_s), QStringList(u"2"_s));

        station.click("Buttom_Mega6");
        hold(u"Escape"_s); // The log closes, the program goes on.
        QVERIFY(!station.child<QWidget>("Frame4").isVisible());
        QVERIFY(!station.window().isClosed());
    }

    void heldAndTwiceInDiversos()
    {
        FRESH_STATION(StationFixture, station);
        frmdiversos window(station.services);
        support::open(window);
        control<platform::FlexGrid>(window, "flex").setFocus();
        hold(u"Return"_s); // The quantity is asked, and not taken.
        QVERIFY(control<QWidget>(window, "Frame1").isVisible());
        QCOMPARE(station.rows(u"EstoqueDiversos"_s, u"codigo"_s).size(), 2);
        hand(u"key 5"_s);
        hold(u"Return"_s);
        QCOMPARE(station.rows(u"EstoqueDiversos"_s, u"codigo"_s).size(), 3);
        QVERIFY(!control<QWidget>(window, "Frame1").isVisible());
        hand(u"key --delay 15 Down Return 6"_s);
        station.messages.expect(); // The second Enter finds the item chosen.
        hand(u"key --delay 15 Return Return"_s);
        QCOMPARE(station.boxes(), QStringList(u"0 Existe um registro inserido com este codigo"_s));
        QCOMPARE(station.rows(u"EstoqueDiversos"_s, u"codigo"_s).size(), 4);
    }
};

QTEST_MAIN(TestHurry)
#include "test_hurry.moc"
