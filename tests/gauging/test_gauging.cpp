// The dip readings and the gauge table editor, driven by keys and clicks on both back ends.
#include "data/Dialect.h"
#include "gauging/frmEditTabTanque.h"
#include "gauging/frmReguaL.h"
#include "platform/ui/Application.h"
#include "platform/ui/DatePicker.h"
#include "platform/ui/FlexGrid.h"
#include "shared/Services.h"
#include "support/BothBackEnds.h"
#include "support/Doubles.h"
#include "support/StatementTrace.h"
#include "support/StationSchema.h"

#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPointer>
#include <QPushButton>
#include <QTest>

#include <algorithm>

using platform::FlexGrid;
using platform::MsgBoxResult;
using Rows = QList<QStringList>;

namespace {

const QString NoTable = QStringLiteral(
    "Não há controle de medição inserida para este tanque no sistema. \nVocê poderá ir no Gerenciador VELTA e inserir "
    "ou importar uma tabela/régua, em caso de duvida solicite suporte");

/// The station with a gauge table of its first tank, on the 15th of March 2024.
struct Station
{
    explicit Station(support::BothBackEnds& backEnd, const Rows& gauge)
        : database(backEnd)
        , dialect(backEnd.isMySql() ? QStringLiteral("mysql") : QString())
    {
        support::makeStation(database);
        fill(1, gauge);
    }
    ~Station()
    {
        if (messages.pending() != 0)
            QTest::qFail("an expected message box has not come", __FILE__, __LINE__);
    }

    /// Rows of a gauge table: depth with a point, litres as text.
    void fill(int tank, const Rows& gauge)
    {
        for (const QStringList& row : gauge) {
            database.script({QStringLiteral("insert into TANQUE_%1 (cmA, ltsA) values (%2, '%3')")
                                 .arg(QString::number(tank), row[0], row[1])});
        }
    }
    [[nodiscard]] QString date(const QString& access, const QString& mySql) const
    {
        return database.isMySql() ? QStringLiteral(" ' ") + mySql + QStringLiteral(" ' ")
                                  : QStringLiteral(" # ") + access + QStringLiteral(" # ");
    }
    [[nodiscard]] QString today() const { return date(QStringLiteral("03/15/2024"), QStringLiteral("2024/03/15")); }
    /// The stored readings, numbers as their shortest text.
    [[nodiscard]] Rows readings() const
    {
        Rows rows = database.table(QStringLiteral("tabafer"),
                                   {QStringLiteral("cmt"), QStringLiteral("saldo"), QStringLiteral("tanque")});
        for (QStringList& row : rows) {
            for (const int column : {0, 1})
                row[column] = QString::number(row[column].toDouble(), 'g', 12);
        }
        return rows;
    }

    support::BothBackEnds& database;
    data::Dialect dialect;
    support::TestMessages messages;
    support::TestClock clock{QDateTime(QDate(2024, 3, 15), QTime(10, 30))};
    support::TestPump pump;
    Services services{database.connection(), dialect, messages, clock, pump};
};

template <typename Window>
struct Shown
{
    explicit Shown(Station& station)
        : window(std::make_unique<Window>(station.services))
    {
        window->show();
        if (!QTest::qWaitForWindowActive(window.get()))
            QTest::qFail("the window does not become active", __FILE__, __LINE__);
        QCoreApplication::processEvents(); // it loads when it has come up
    }
    template <typename Widget>
    Widget& at(const char* name) const
    {
        auto* const found = window->template findChild<Widget*>(QLatin1String(name));
        if (!found)
            qFatal("no control %s", name);
        return *found;
    }
    void key(Qt::Key key) const { QTest::keyClick(window->focusWidget(), key); }
    void type(const char* name, const QString& text) const
    {
        auto& box = at<QLineEdit>(name);
        QTest::mouseClick(&box, Qt::LeftButton);
        QTest::keyClick(&box, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(&box, Qt::Key_Delete);
        QTest::keyClicks(&box, text);
    }
    void press(const char* name) const { QTest::mouseClick(&at<QPushButton>(name), Qt::LeftButton); }
    void clickRow(int row) const
    {
        auto& grid = at<FlexGrid>("flex");
        const QModelIndex cell = grid.model()->index(row - 1, 1);
        grid.scrollTo(cell);
        QTest::mouseClick(grid.viewport(), Qt::LeftButton, {}, grid.visualRect(cell).center());
    }
    [[nodiscard]] QStringList lines() const
    {
        QStringList lines;
        const auto& list = at<QListWidget>("List1");
        for (int row = 0; row < list.count(); ++row)
            lines << list.item(row)->text();
        return lines;
    }
    [[nodiscard]] Rows rows() const
    {
        Rows rows;
        const auto& grid = at<FlexGrid>("flex");
        for (int row = 0; row < grid.Rows(); ++row) {
            rows << QStringList();
            for (int column = 0; column < grid.Cols(); ++column)
                rows.last() << grid.TextMatrix(row, column);
        }
        return rows;
    }

    std::unique_ptr<Window> window;
};

using Gauging = Shown<frmReguaL>;
using Editor = Shown<frmEditTabTanque>;

const QStringList History = {QStringLiteral("DATA"), QStringLiteral("CMT"), QStringLiteral("SALDO"),
                             QStringLiteral("TANQUE"), QString()};

} // namespace

class TestGauging : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { platform::prepareApplication(*qApp); }

    void opens_data() { support::BothBackEnds::addRows(); }
    void opens()
    {
        FRESH_DATABASE(database);
        Station station(database, {{QStringLiteral("12"), QStringLiteral("845")}});
        const support::StatementTrace trace;
        const Gauging gauging(station);
        const QString history = QStringLiteral("open Select * from tabafer where dataf = ") + station.today() +
                                QStringLiteral(" order by dataf;");
        QCOMPARE(trace.lines(),
                 (QStringList{QStringLiteral("open Select * from TANQUE_1 order by cma ;"), history, history}));
        QCOMPARE(gauging.window->windowTitle(), QStringLiteral("Régua (Para uso do LMC)"));
        QCOMPARE(gauging.at<platform::DatePicker>("DTP").Value(), QDate(2024, 3, 15));
        QCOMPARE(gauging.window->focusWidget(), &gauging.at<QListWidget>("List1"));
        const auto& tanks = gauging.at<QComboBox>("Combo1");
        QCOMPARE(tanks.count(), 5); // the pump register knows a sixth tank: deliberate
        QCOMPARE(tanks.itemText(4), QStringLiteral("TANQUE_5"));
        QCOMPARE(gauging.rows(), Rows{History});
        QVERIFY(gauging.at<FlexGrid>("flex").isColumnHidden(4));
        gauging.key(Qt::Key_Escape);
        QVERIFY(!gauging.window->isVisible());
    }

    /// What a row of the gauge table looks like in the list, and what is stored when that line is confirmed.
    void lines_data()
    {
        QTest::addColumn<QString>("backEnd");
        QTest::addColumn<QString>("centimetres");
        QTest::addColumn<QString>("litres");
        QTest::addColumn<QString>("line");
        QTest::addColumn<QStringList>("stored");
        const auto add = [](const char* name, const char* centimetres, const char* litres, const char* line,
                            const char* stored) {
            for (const QString& backEnd : {QStringLiteral("access"), QStringLiteral("mysql")}) {
                QTest::addRow("%s, %s", qPrintable(backEnd), name)
                    << backEnd << QString::fromLatin1(centimetres) << QString::fromLatin1(litres)
                    << QString::fromLatin1(line) << QString::fromLatin1(stored).split(u'|');
            }
        };
        add("padded", "12", "845", "12    845", "12|845");
        add("thousands point", "100", "1.234,5", "100 1234,5", "100|1234.5");
        add("seven characters", "12", "1.234.567", "12 1234567", "12|1234567");
        add("stored with blanks", "5", "   99", "5     99", "5|99");
        add("no litres", "9", "", "9 ", "9|0");
        // Three characters are the centimetres, whatever stands there: the limit of the line, deliberate.
        add("four characters", "1234", "845", "1234    845", "123|4845");
        add("half a centimetre", "12.5", "845", "12,5    845", "12|5845");
        add("seven characters beside one", "7", "1.234.567", "7 1234567", "71|234567");
    }
    void lines()
    {
        FRESH_DATABASE(database);
        QFETCH(QString, centimetres);
        QFETCH(QString, litres);
        Station station(database, {{centimetres, litres}});
        const Gauging gauging(station);
        QFETCH(QString, line);
        QCOMPARE(gauging.lines(), QStringList{line});
        gauging.key(Qt::Key_Down);
        gauging.key(Qt::Key_Enter);
        gauging.key(Qt::Key_Enter);
        QFETCH(QStringList, stored);
        QCOMPARE(station.readings(), Rows{stored + QStringList{QStringLiteral("TANQUE_1")}});
    }

    /// Every line of a whole table, found by typing its depth, is stored as the table has it.
    void everyLine_data() { support::BothBackEnds::addRows(); }
    void everyLine()
    {
        FRESH_DATABASE(database);
        Rows gauge;
        Rows expected;
        for (int depth = 1; depth <= 400; ++depth) {
            const int tenths = depth * depth * 7 + depth % 10;
            const QString whole = QString::number(tenths / 10);
            QString grouped = whole;
            if (grouped.size() > 3)
                grouped.insert(grouped.size() - 3, u'.');
            gauge << QStringList{QString::number(depth), grouped + u',' + QString::number(tenths % 10)};
            const QString fraction = tenths % 10 == 0 ? QString() : u'.' + QString::number(tenths % 10);
            expected << QStringList{QString::number(depth), whole + fraction, QStringLiteral("TANQUE_1")};
        }
        Rows shuffled = gauge; // the list is ordered by the statement
        std::reverse(shuffled.begin(), shuffled.end());
        Station station(database, shuffled);
        const Gauging gauging(station);
        auto& list = gauging.at<QListWidget>("List1");
        auto& date = gauging.at<platform::DatePicker>("DTP");
        for (int depth = 1; depth <= 400; ++depth) {
            date.setValue(QDate(2024, 3, 15).addDays(depth));
            list.setFocus();
            QTest::keyClicks(&list, QString::number(depth));
            QCOMPARE(list.currentRow(), depth - 1);
            gauging.key(Qt::Key_Return);
            gauging.key(Qt::Key_Return);
        }
        QCOMPARE(station.readings(), expected);
    }

    void manualFigures_data()
    {
        QTest::addColumn<QString>("backEnd");
        QTest::addColumn<QString>("centimetres");
        QTest::addColumn<QString>("litres");
        QTest::addColumn<bool>("isManual");
        QTest::addColumn<QStringList>("stored");
        const auto add = [](const char* name, const char* centimetres, const char* litres, bool isManual,
                            const char* stored) {
            for (const QString& backEnd : {QStringLiteral("access"), QStringLiteral("mysql")}) {
                QTest::addRow("%s, %s", qPrintable(backEnd), name)
                    << backEnd << QString::fromLatin1(centimetres) << QString::fromLatin1(litres) << isManual
                    << QString::fromLatin1(stored).split(u'|');
            }
        };
        add("one character of litres", "50", "9", false, "12|845");
        add("two characters", "50", "90", true, "50|90");
        add("filtered", "1-a2.5", "x9 8%7,2", true, "12.5|987.2");
        add("not numeric", "1,,5", "2,,5", true, "0|0");
        add("no centimetres", "", "00", true, "0|0");
    }
    void manualFigures()
    {
        FRESH_DATABASE(database);
        Station station(database, {{QStringLiteral("12"), QStringLiteral("845")}});
        const Gauging gauging(station);
        auto& list = gauging.at<QListWidget>("List1");
        QTest::keyClicks(&list, QStringLiteral("12"));
        QFETCH(QString, centimetres);
        QFETCH(QString, litres);
        gauging.type("tx_0", centimetres);
        gauging.key(Qt::Key_Return);
        QCOMPARE(gauging.window->focusWidget(), &gauging.at<QLineEdit>("tx_1"));
        QVERIFY(gauging.at<QLineEdit>("tx_1").hasSelectedText());
        QTest::keyClicks(gauging.window->focusWidget(), litres);
        gauging.key(Qt::Key_Return);
        QCOMPARE(gauging.window->focusWidget(), &gauging.at<QPushButton>("Command1"));
        gauging.key(Qt::Key_Return);
        QTEST(!list.isEnabled(), "isManual");
        QFETCH(QStringList, stored);
        QCOMPARE(station.readings(), Rows{stored + QStringList{QStringLiteral("TANQUE_1")}});

        // Back to the list, by way of the date and the tank.
        gauging.at<platform::DatePicker>("DTP").setFocus();
        QVERIFY(list.isEnabled());
        gauging.key(Qt::Key_Return);
        QCOMPARE(gauging.window->focusWidget(), &gauging.at<QComboBox>("Combo1"));
        gauging.key(Qt::Key_Return);
        QCOMPARE(gauging.window->focusWidget(), &list);
        QCOMPARE(gauging.at<QLineEdit>("tx_0").text(), QStringLiteral("0"));
        QCOMPARE(gauging.at<QLineEdit>("tx_1").text(), QStringLiteral("0"));
    }

    void replaces_data() { support::BothBackEnds::addRows(); }
    void replaces()
    {
        FRESH_DATABASE(database);
        Station station(database,
                        {{QStringLiteral("1"), QStringLiteral("10")}, {QStringLiteral("2"), QStringLiteral("25")}});
        const Gauging gauging(station);
        gauging.press("Command1"); // no line: zero
        const QString prompt =
            QStringLiteral("Já existe na base de dados uma leitura para TANQUE_1 nesta mesma data de 15/03/2024 deseja "
                           "substituir o registro existe?");
        QCOMPARE(station.readings(), (Rows{{QStringLiteral("0"), QStringLiteral("0"), QStringLiteral("TANQUE_1")}}));

        QTest::keyClick(&gauging.at<QListWidget>("List1"), Qt::Key_2);
        const support::StatementTrace trace;
        const QString select = QStringLiteral("open Select * from tabafer where tanque = 'TANQUE_1' and dataf = ");
        station.messages.expect(MsgBoxResult::Cancel);
        gauging.press("Command1");
        QCOMPARE(station.messages.shown().last(),
                 (support::TestMessages::Shown{prompt, platform::vbOKCancel + platform::vbExclamation, QString()}));
        QCOMPARE(trace.lines(), QStringList{select + station.today()});
        QCOMPARE(station.readings().size(), 1);

        station.messages.expect(MsgBoxResult::Ok);
        gauging.press("Command1");
        QCOMPARE(trace.lines().mid(1),
                 (QStringList{select + station.today(),
                              QStringLiteral("exec Delete from tabafer where tanque = 'TANQUE_1' and dataf = ") +
                                  station.today(),
                              QStringLiteral("open Select * from tabafer where dataf = ") + station.today() +
                                  QStringLiteral(" order by dataf;")}));
        QCOMPARE(station.readings(), (Rows{{QStringLiteral("2"), QStringLiteral("25"), QStringLiteral("TANQUE_1")}}));

        // Another tank and another day have readings of their own; the grid shows the day's, unformatted.
        station.messages.expect(); // no gauge table
        gauging.at<QComboBox>("Combo1").setFocus();
        gauging.key(Qt::Key_Down);
        database.script({QStringLiteral("insert into tabafer (tanque, dataf, cmt, saldo) values ('TANQUE_2',") +
                         station.today() + QStringLiteral(",7.5,1234.5)")});
        auto& date = gauging.at<platform::DatePicker>("DTP");
        date.setFocus();
        QTest::keyClicks(&date, QStringLiteral("14032024"));
        gauging.key(Qt::Key_Return);
        QCOMPARE(gauging.rows(), Rows{History});
        date.setFocus();
        QTest::keyClicks(&date, QStringLiteral("15"));
        gauging.key(Qt::Key_Return);
        const Rows rows = gauging.rows();
        QCOMPARE(rows.size(), 3);
        QCOMPARE(rows[1].first(4), (QStringList{QStringLiteral("15/03/2024"), QStringLiteral("2"), QStringLiteral("25"),
                                                QStringLiteral("TANQUE_1")}));
        QCOMPARE(rows[2].first(4), (QStringList{QStringLiteral("15/03/2024"), QStringLiteral("7,5"),
                                                QStringLiteral("1234,5"), QStringLiteral("TANQUE_2")}));
        QVERIFY(!rows[1][4].isEmpty() && rows[1][4] != rows[2][4]);
    }

    /// Without a gauge table nothing can be confirmed, nor can a line of the tank before.
    void noTable_data() { support::BothBackEnds::addRows(); }
    void noTable()
    {
        FRESH_DATABASE(database);
        Station station(database, {{QStringLiteral("1"), QStringLiteral("10")}});
        database.script({QStringLiteral("drop table TANQUE_3")});
        const Gauging gauging(station);
        auto& tanks = gauging.at<QComboBox>("Combo1");
        const auto& confirm = gauging.at<QPushButton>("Command1");
        tanks.setFocus();
        station.messages.expect();
        gauging.key(Qt::Key_Down);
        QCOMPARE(station.messages.shown().last(), (support::TestMessages::Shown{NoTable, 0, QString()}));
        QVERIFY(!confirm.isEnabled() && gauging.lines().isEmpty());
        gauging.key(Qt::Key_Up);
        QVERIFY(confirm.isEnabled());
        QCOMPARE(gauging.lines().size(), 1);

        station.messages.expect(); // empty TANQUE_2
        station.messages.expect(); // missing TANQUE_3
        gauging.key(Qt::Key_Down);
        gauging.key(Qt::Key_Down);
        QCOMPARE(station.messages.shown().last().style, platform::vbCritical);
        QVERIFY(station.messages.shown().last().prompt.contains(QStringLiteral("TANQUE_3"), Qt::CaseInsensitive));
        QVERIFY(!confirm.isEnabled() && gauging.lines().isEmpty() && gauging.window->isVisible());
    }

    /// Between two rows the operator chooses another tank, or closes the window.
    void eventsDuringAFill_data() { support::BothBackEnds::addRows(); }
    void eventsDuringAFill()
    {
        FRESH_DATABASE(database);
        Rows gauge;
        for (int depth = 1; depth <= 9; ++depth)
            gauge << QStringList{QString::number(depth), QStringLiteral("10")};
        Station station(database, gauge);
        station.fill(2, {{QStringLiteral("1"), QStringLiteral("20")}});
        QPointer<frmReguaL> closing;
        {
            const Gauging gauging(station);
            auto& tanks = gauging.at<QComboBox>("Combo1");
            tanks.setCurrentIndex(1);
            station.pump.at(station.pump.count() + 4, [&] { tanks.setCurrentIndex(1); });
            tanks.setCurrentIndex(0);
            QCOMPARE(gauging.lines(), QStringList{QStringLiteral("1     20")});
            QVERIFY(gauging.at<QListWidget>("List1").isVisible());
        }
        closing = new frmReguaL(station.services);
        closing->deleteWhenClosed();
        closing->show();
        QCoreApplication::processEvents();
        const int before = station.pump.count();
        station.pump.at(before + 4, [&] { closing->close(); });
        auto* const tanks = closing->findChild<QComboBox*>(QStringLiteral("Combo1"));
        tanks->setCurrentIndex(1);
        tanks->setCurrentIndex(0);
        QCOMPARE(station.pump.count(), before + 4);
        QTRY_VERIFY(!closing);
    }

    void editsRows_data() { support::BothBackEnds::addRows(); }
    void editsRows()
    {
        FRESH_DATABASE(database);
        Station station(database, {{QStringLiteral("10"), QStringLiteral("845")},
                                   {QStringLiteral("20"), QStringLiteral("1.234,5")},
                                   {QStringLiteral("30"), QStringLiteral("2.000")}});
        const support::StatementTrace trace;
        const Editor editor(station);
        const QString select = QStringLiteral("open Select * from TANQUE_1 order by cma ;");
        QCOMPARE(trace.lines(), QStringList{select});
        QCOMPARE(editor.window->windowTitle(), QStringLiteral("Edição de tabela Tanque"));
        const QStringList header = {QString(), QStringLiteral("CMs"), QStringLiteral("LTs")};
        QCOMPARE(editor.rows(), (Rows{header,
                                      {QStringLiteral("1"), QStringLiteral("10"), QStringLiteral("   845")},
                                      {QStringLiteral("2"), QStringLiteral("20"), QStringLiteral("1234,5")},
                                      {QStringLiteral("3"), QStringLiteral("30"), QStringLiteral("  2000")}}));
        auto& grid = editor.at<FlexGrid>("flex");
        QVERIFY(grid.isColumnHidden(0));

        editor.clickRow(2);
        const auto labels = [&] {
            return QStringList{editor.at<QLabel>("lb_0").text(), editor.at<QLabel>("lb_1").text(),
                               editor.at<QLabel>("lb_2").text()};
        };
        QCOMPARE(labels(), (QStringList{QStringLiteral("20"), QStringLiteral("1234,5"), QStringLiteral("2")}));
        QCOMPARE(editor.at<QLineEdit>("Text2").text(), QStringLiteral("1234,5"));

        // A depth below the first row's: the row moves up and stays chosen; the litres lose their point.
        editor.type("Text1", QStringLiteral("5"));
        editor.key(Qt::Key_Return);
        editor.key(Qt::Key_Return);
        editor.key(Qt::Key_Return);
        QCOMPARE(
            trace.lines().mid(1),
            (QStringList{QStringLiteral("exec Update TANQUE_1 set cmA = '5', ltsA = '1234,5' where id = 2"), select}));
        QCOMPARE(editor.rows()[1], (QStringList{QStringLiteral("2"), QStringLiteral("5"), QStringLiteral("1234,5")}));
        QCOMPARE(grid.Row(), 1);
        QCOMPARE(labels(), (QStringList{QStringLiteral("5"), QStringLiteral("1234,5"), QStringLiteral("2")}));

        // By keys: the litres keep the blanks that align them, deliberately.
        grid.setFocus();
        QTest::keyClick(&grid, Qt::Key_Down);
        QTest::keyClick(&grid, Qt::Key_Return);
        QCOMPARE(editor.window->focusWidget(), &editor.at<QLineEdit>("Text1"));
        editor.press("Command1");
        QCOMPARE(trace.lines()[3], QStringLiteral("exec Update TANQUE_1 set cmA = '10', ltsA = '   845' where id = 1"));
        QCOMPARE(database.table(QStringLiteral("TANQUE_1"), {QStringLiteral("cmA"), QStringLiteral("ltsA")}),
                 (Rows{{QStringLiteral("10"), QStringLiteral("   845")},
                       {QStringLiteral("5"), QStringLiteral("1234,5")},
                       {QStringLiteral("30"), QStringLiteral("2.000")}}));
    }

    void editorRefuses_data() { support::BothBackEnds::addRows(); }
    void editorRefuses()
    {
        FRESH_DATABASE(database);
        Station station(database, {{QStringLiteral("10"), QStringLiteral("845")}});
        const Editor editor(station);
        const support::StatementTrace trace;
        for (const char* const name : {"Text1", "Text2"}) {
            editor.type("Text1", QStringLiteral("10"));
            editor.type("Text2", QStringLiteral("9"));
            editor.type(name, QStringLiteral("dez"));
            editor.press("Command1");
            QCOMPARE(editor.at<QLineEdit>(name).text(), QStringLiteral("0"));
            QCOMPARE(editor.window->focusWidget(), &editor.at<QLineEdit>(name));
        }
        QVERIFY(trace.lines().isEmpty());

        // No row is chosen: the database refuses the statement, and the window stays with what was typed.
        station.messages.expect();
        editor.press("Command1");
        QCOMPARE(trace.lines(),
                 QStringList{QStringLiteral("exec Update TANQUE_1 set cmA = '10', ltsA = '0' where id = ")});
        QCOMPARE(station.messages.shown().last().style, platform::vbCritical);
        QVERIFY(editor.window->isVisible());

        // A tank without table: the old rows stay on screen, but no row is chosen and nothing can be confirmed.
        editor.clickRow(1);
        station.messages.expect();
        editor.at<QComboBox>("Combo1").setFocus();
        editor.key(Qt::Key_Down);
        QCOMPARE(station.messages.shown().last(), (support::TestMessages::Shown{NoTable, 0, QString()}));
        QCOMPARE(editor.rows().size(), 2);
        QVERIFY(!editor.at<QPushButton>("Command1").isEnabled() && editor.at<QLabel>("lb_2").text().isEmpty());
        editor.key(Qt::Key_Up);
        QVERIFY(editor.at<QPushButton>("Command1").isEnabled());
    }

    /// Opened from the gauging window, once, beside it; the gauging starts anew when the operator comes back to it.
    void opensTheEditor_data() { support::BothBackEnds::addRows(); }
    void opensTheEditor()
    {
        FRESH_DATABASE(database);
        Station station(database, {{QStringLiteral("10"), QStringLiteral("845")}});
        const Gauging gauging(station);
        gauging.type("tx_1", QStringLiteral("55"));
        const auto editors = [] {
            QWidgetList found = QApplication::topLevelWidgets();
            found.removeIf([](QWidget* window) { return !qobject_cast<frmEditTabTanque*>(window); });
            return found;
        };
        for (int time = 0; time < 2; ++time)
            gauging.at<QAction>("editTab").trigger();
        QCOMPARE(editors().size(), 1);
        QVERIFY(!editors().first()->isModal());
        QVERIFY(QTest::qWaitForWindowActive(editors().first()));
        QTest::keyClick(editors().first(), Qt::Key_Escape);
        QTRY_VERIFY(editors().isEmpty());
        gauging.window->activateWindow();
        QTRY_COMPARE(gauging.window->focusWidget(), &gauging.at<QListWidget>("List1"));
        QCOMPARE(gauging.at<QLineEdit>("tx_1").text(), QStringLiteral("0"));
    }
};

QTEST_MAIN(TestGauging)
#include "test_gauging.moc"
