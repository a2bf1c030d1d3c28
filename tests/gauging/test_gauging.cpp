// The dip readings and the gauge table editor, driven by keys and clicks on both back ends.
#include "gauging/frmEditTabTanque.h"
#include "gauging/frmReguaL.h"
#include "platform/ui/Application.h"
#include "platform/ui/DatePicker.h"
#include "platform/ui/FlexGrid.h"
#include "support/WindowTest.h"

#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>

#include <algorithm>

using namespace support;
using platform::FlexGrid;
using platform::MsgBoxResult;
using Rows = QList<QStringList>;

namespace {

const QString NoTable = QStringLiteral("0 Não há controle de medição inserida para este tanque no sistema. \nVocê "
                                       "poderá ir no Gerenciador VELTA e inserir "
                                       "ou importar uma tabela/régua, em caso de duvida solicite suporte");

/// The station with a gauge table of its first tank.
struct Station : WindowTest
{
    Station(BothBackEnds& backEnd, const Rows& gauge)
        : WindowTest(backEnd)
    {
        fill(1, gauge);
    }

    /// Rows of a gauge table: depth with a point, litres as text.
    void fill(int tank, const Rows& gauge)
    {
        for (const QStringList& row : gauge)
            script({QStringLiteral("insert into TANQUE_%2 (cmA, ltsA) values (%3, '%4')")
                        .replace(QStringLiteral("%2"), QString::number(tank))
                        .replace(QStringLiteral("%3"), row[0])
                        .replace(QStringLiteral("%4"), row[1])});
    }
    [[nodiscard]] QString today() const { return dialect.dateLiteral(clock.today()); }
    /// The stored readings, numbers as their shortest text.
    [[nodiscard]] QStringList readings() const
    {
        QStringList lines;
        for (const QStringList& row : database.table(
                 QStringLiteral("tabafer"), {QStringLiteral("cmt"), QStringLiteral("saldo"), QStringLiteral("tanque")}))
            lines << QString::number(row[0].toDouble(), 'g', 12) + u'|' + QString::number(row[1].toDouble(), 'g', 12) +
                         u'|' + row[2];
        return lines;
    }
};

template <typename Window>
struct Shown
{
    explicit Shown(Station& station)
        : window(std::make_unique<Window>(station.services))
    {
        open(*window);
    }
    template <typename Widget>
    Widget& at(const char* name) const
    {
        return control<Widget>(*window, name);
    }
    void typeInto(const char* name, const QString& text) const
    {
        at<QLineEdit>(name).setFocus();
        press(Qt::Key_A, Qt::ControlModifier);
        press(Qt::Key_Delete);
        type(text);
    }
    void clickRow(int row) const
    {
        auto& grid = at<FlexGrid>("flex");
        const QModelIndex cell = grid.model()->index(row - 1, 1);
        grid.scrollTo(cell);
        QTest::mouseClick(grid.viewport(), Qt::LeftButton, {}, grid.visualRect(cell).center());
    }
    [[nodiscard]] QStringList lines() const { return entries(at<QListWidget>("List1")); }
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

/// Data rows of a test over both back ends whose cases differ in texts.
void addCases(std::initializer_list<const char*> columns, std::initializer_list<QStringList> cases)
{
    QTest::addColumn<QString>("backEnd");
    for (const char* const column : columns)
        QTest::addColumn<QString>(column);
    for (const QString& backEnd : {QStringLiteral("access"), QStringLiteral("mysql")}) {
        for (const QStringList& one : cases) {
            QTestData& row = QTest::addRow("%s, %s", qPrintable(backEnd), qPrintable(one.first())) << backEnd;
            for (const QString& text : one.mid(1))
                row << text;
        }
    }
}

const QStringList History = {QStringLiteral("DATA"), QStringLiteral("CMT"), QStringLiteral("SALDO"),
                             QStringLiteral("TANQUE"), QString()};

} // namespace

class TestGauging : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { platform::prepareApplication(*qApp); }

    void opens_data() { BothBackEnds::addRows(); }
    void opens()
    {
        FRESH_DATABASE(database);
        Station station(database, {{QStringLiteral("12"), QStringLiteral("845")}});
        const Gauging gauging(station);
        const QString history = QStringLiteral("open Select * from tabafer where dataf = ") + station.today() +
                                QStringLiteral(" order by dataf;");
        QCOMPARE(station.statements(),
                 (QStringList{QStringLiteral("open Select * from TANQUE_1 order by cma ;"), history, history}));
        QCOMPARE(gauging.window->windowTitle(), QStringLiteral("Régua (Para uso do LMC)"));
        QCOMPARE(gauging.at<platform::DatePicker>("DTP").Value(), station.clock.today());
        QCOMPARE(focused(), QStringLiteral("List1"));
        const auto& tanks = gauging.at<QComboBox>("Combo1");
        QCOMPARE(tanks.count(), 5); // the pump register knows a sixth tank: deliberate
        QCOMPARE(tanks.itemText(4), QStringLiteral("TANQUE_5"));
        QCOMPARE(gauging.rows(), Rows{History});
        QVERIFY(gauging.at<FlexGrid>("flex").isColumnHidden(4));
        QCOMPARE(namelessControls(*gauging.window) + namelessControls(*Editor(station).window), QStringList());
        gauging.window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(gauging.window.get()));
        press(Qt::Key_Escape);
        QVERIFY(!gauging.window->isVisible());
    }

    /// What a row of the gauge table looks like in the list, and what is stored when that line is confirmed.
    void lines_data()
    {
        const auto row = [](const char* name, const char* centimetres, const char* litres, const char* line,
                            const char* stored) {
            return QStringList{QString::fromLatin1(name), QString::fromLatin1(centimetres), QString::fromLatin1(litres),
                               QString::fromLatin1(line), QString::fromLatin1(stored) + QStringLiteral("|TANQUE_1")};
        };
        addCases({"centimetres", "litres", "line", "stored"},
                 {row("padded", "12", "845", "12    845", "12|845"),
                  row("thousands point", "100", "1.234,5", "100 1234,5", "100|1234.5"),
                  row("seven characters", "12", "1.234.567", "12 1234567", "12|1234567"),
                  row("stored with blanks", "5", "   99", "5     99", "5|99"), row("no litres", "9", "", "9 ", "9|0"),
                  // Three characters are the centimetres, whatever stands there: the limit of the line, deliberate.
                  row("four characters", "1234", "845", "1234    845", "123|4845"),
                  row("half a centimetre", "12.5", "845", "12,5    845", "12|5845"),
                  row("seven characters beside one", "7", "1.234.567", "7 1234567", "71|234567")});
    }
    void lines()
    {
        FRESH_DATABASE(database);
        QFETCH(QString, centimetres);
        QFETCH(QString, litres);
        QFETCH(QString, line);
        QFETCH(QString, stored);
        Station station(database, {{centimetres, litres}});
        const Gauging gauging(station);
        QCOMPARE(gauging.lines(), QStringList{line});
        press({Qt::Key_Down, Qt::Key_Enter, Qt::Key_Enter});
        QCOMPARE(station.readings(), QStringList{stored});
    }

    /// Every line of a whole table, found by typing its depth, is stored as the table has it.
    void everyLine_data() { BothBackEnds::addRows(); }
    void everyLine()
    {
        FRESH_DATABASE(database);
        Rows gauge;
        QStringList expected;
        for (int depth = 1; depth <= 400; ++depth) {
            const int tenths = depth * depth * 7 + depth % 10;
            const QString whole = QString::number(tenths / 10);
            QString grouped = whole;
            if (grouped.size() > 3)
                grouped.insert(grouped.size() - 3, u'.');
            // The list is ordered by the statement, not as the rows are stored.
            gauge.prepend({QString::number(depth), grouped + u',' + QString::number(tenths % 10)});
            const QString fraction = tenths % 10 == 0 ? QString() : u'.' + QString::number(tenths % 10);
            expected << QString::number(depth) + u'|' + whole + fraction + QStringLiteral("|TANQUE_1");
        }
        Station station(database, gauge);
        const Gauging gauging(station);
        auto& list = gauging.at<QListWidget>("List1");
        for (int depth = 1; depth <= 400; ++depth) {
            gauging.at<platform::DatePicker>("DTP").setValue(QDate(2026, 3, 15).addDays(depth));
            list.setFocus();
            type(QString::number(depth));
            QCOMPARE(list.currentRow(), depth - 1);
            press({Qt::Key_Return, Qt::Key_Return});
        }
        QCOMPARE(station.readings(), expected);
    }

    void manualFigures_data()
    {
        const auto row = [](const char* name, const char* centimetres, const char* litres, const char* mode,
                            const char* stored) {
            return QStringList{QString::fromLatin1(name), QString::fromLatin1(centimetres), QString::fromLatin1(litres),
                               QString::fromLatin1(mode), QString::fromLatin1(stored) + QStringLiteral("|TANQUE_1")};
        };
        addCases({"centimetres", "litres", "mode", "stored"},
                 {row("one character of litres", "50", "9", "list", "12|845"),
                  row("two characters", "50", "90", "manual", "50|90"),
                  row("filtered", "1-a2.5", "x9 8%7,2", "manual", "12.5|987.2"),
                  row("not numeric", "1,,5", "2,,5", "manual", "0|0"),
                  row("no centimetres", "", "00", "manual", "0|0")});
    }
    void manualFigures()
    {
        FRESH_DATABASE(database);
        Station station(database, {{QStringLiteral("12"), QStringLiteral("845")}});
        const Gauging gauging(station);
        auto& list = gauging.at<QListWidget>("List1");
        type(QStringLiteral("12"));
        QFETCH(QString, centimetres);
        QFETCH(QString, litres);
        QFETCH(QString, mode);
        QFETCH(QString, stored);
        gauging.typeInto("tx_0", centimetres);
        press(Qt::Key_Return);
        QVERIFY(gauging.at<QLineEdit>("tx_1").hasSelectedText());
        type(litres);
        press(Qt::Key_Return);
        QCOMPARE(focused(), QStringLiteral("Command1"));
        press(Qt::Key_Return);
        QCOMPARE(list.isEnabled(), mode == u"list");
        QCOMPARE(station.readings(), QStringList{stored});

        // Back to the list, by way of the date and the tank.
        gauging.at<platform::DatePicker>("DTP").setFocus();
        QVERIFY(list.isEnabled());
        press(Qt::Key_Return);
        QCOMPARE(focused(), QStringLiteral("Combo1"));
        press(Qt::Key_Return);
        QCOMPARE(focused(), QStringLiteral("List1"));
        QCOMPARE(gauging.at<QLineEdit>("tx_0").text(), QStringLiteral("0"));
        QCOMPARE(gauging.at<QLineEdit>("tx_1").text(), QStringLiteral("0"));
    }

    void replaces_data() { BothBackEnds::addRows(); }
    void replaces()
    {
        FRESH_DATABASE(database);
        Station station(database,
                        {{QStringLiteral("1"), QStringLiteral("10")}, {QStringLiteral("2"), QStringLiteral("25")}});
        const Gauging gauging(station);
        click(*gauging.window, "Command1"); // no line: zero
        QCOMPARE(station.readings(), QStringList{QStringLiteral("0|0|TANQUE_1")});

        gauging.at<QListWidget>("List1").setFocus();
        type(QStringLiteral("2"));
        station.trace.clear();
        const QString select =
            QStringLiteral("open Select * from tabafer where tanque = 'TANQUE_1' and dataf = ") + station.today();
        station.messages.expect(MsgBoxResult::Cancel);
        click(*gauging.window, "Command1");
        QCOMPARE(station.boxes(), QStringList{QStringLiteral(
                                      "49 Já existe na base de dados uma leitura para TANQUE_1 nesta mesma data de "
                                      "14/03/2026 deseja substituir o registro existe?")});
        QCOMPARE(station.statements(), QStringList{select});
        QCOMPARE(station.readings(), QStringList{QStringLiteral("0|0|TANQUE_1")});

        station.messages.expect(MsgBoxResult::Ok);
        click(*gauging.window, "Command1");
        QCOMPARE(station.statements(),
                 (QStringList{select,
                              QStringLiteral("exec Delete from tabafer where tanque = 'TANQUE_1' and dataf = ") +
                                  station.today(),
                              QStringLiteral("open Select * from tabafer where dataf = ") + station.today() +
                                  QStringLiteral(" order by dataf;")}));
        QCOMPARE(station.boxes().size(), 1);
        QCOMPARE(station.readings(), QStringList{QStringLiteral("2|25|TANQUE_1")});

        // The grid shows the day's readings of all tanks, unformatted.
        station.script({QStringLiteral("insert into tabafer (tanque, dataf, cmt, saldo) values ('TANQUE_2',") +
                        station.today() + QStringLiteral(",7.5,1234.5)")});
        auto& date = gauging.at<platform::DatePicker>("DTP");
        date.setFocus();
        type(QStringLiteral("13032026"));
        press(Qt::Key_Return);
        QCOMPARE(gauging.rows(), Rows{History});
        date.setFocus();
        type(QStringLiteral("14"));
        press(Qt::Key_Return);
        const Rows rows = gauging.rows();
        QCOMPARE(rows.size(), 3);
        QCOMPARE(rows[1].first(4).join(u'|'), QStringLiteral("14/03/2026|2|25|TANQUE_1"));
        QCOMPARE(rows[2].first(4).join(u'|'), QStringLiteral("14/03/2026|7,5|1234,5|TANQUE_2"));
        QVERIFY(!rows[1][4].isEmpty() && rows[1][4] != rows[2][4]);
    }

    /// Without a gauge table nothing can be confirmed, nor can a line of the tank before.
    void noTable_data() { BothBackEnds::addRows(); }
    void noTable()
    {
        FRESH_DATABASE(database);
        Station station(database, {{QStringLiteral("1"), QStringLiteral("10")}});
        station.script({QStringLiteral("drop table TANQUE_3")});
        const Gauging gauging(station);
        const auto& confirm = gauging.at<QPushButton>("Command1");
        gauging.at<QComboBox>("Combo1").setFocus();
        station.messages.expect();
        press(Qt::Key_Down);
        QCOMPARE(station.boxes(), QStringList{NoTable});
        QVERIFY(!confirm.isEnabled() && gauging.lines().isEmpty());
        press(Qt::Key_Up);
        QVERIFY(confirm.isEnabled());
        QCOMPARE(gauging.lines().size(), 1);

        station.messages.expect(); // empty TANQUE_2
        station.messages.expect(); // missing TANQUE_3
        press({Qt::Key_Down, Qt::Key_Down});
        const QStringList boxes = station.boxes();
        QCOMPARE(boxes.size(), 2);
        QVERIFY(boxes[1].startsWith(QStringLiteral("16 Erro em tempo de execução")));
        QVERIFY(boxes[1].contains(QStringLiteral("TANQUE_3"), Qt::CaseInsensitive));
        QVERIFY(!confirm.isEnabled() && gauging.lines().isEmpty() && gauging.window->isVisible());
    }

    /// Between two rows the operator chooses another tank, or closes the window.
    void eventsDuringAFill_data() { BothBackEnds::addRows(); }
    void eventsDuringAFill()
    {
        FRESH_DATABASE(database);
        Rows gauge;
        for (int depth = 1; depth <= 9; ++depth)
            gauge << QStringList{QString::number(depth), QStringLiteral("10")};
        Station station(database, gauge);
        station.fill(2, {{QStringLiteral("1"), QStringLiteral("20")}});
        {
            const Gauging gauging(station);
            auto& tanks = gauging.at<QComboBox>("Combo1");
            tanks.setCurrentIndex(1);
            station.pump.at(station.pump.count() + 4, [&] { tanks.setCurrentIndex(1); });
            tanks.setCurrentIndex(0);
            QCOMPARE(gauging.lines(), QStringList{QStringLiteral("1     20")});
        }
        const QPointer<frmReguaL> closing = new frmReguaL(station.services);
        closing->deleteWhenClosed();
        open(*closing);
        const int before = station.pump.count();
        station.pump.at(before + 4, [&] { closing->close(); });
        control<QComboBox>(*closing, "Combo1").setCurrentIndex(1);
        control<QComboBox>(*closing, "Combo1").setCurrentIndex(0);
        QCOMPARE(station.pump.count(), before + 4);
        QTRY_VERIFY(!closing);
    }

    void editsRows_data() { BothBackEnds::addRows(); }
    void editsRows()
    {
        FRESH_DATABASE(database);
        Station station(database, {{QStringLiteral("10"), QStringLiteral("845")},
                                   {QStringLiteral("20"), QStringLiteral("1.234,5")},
                                   {QStringLiteral("30"), QStringLiteral("2.000")}});
        const Editor editor(station);
        const QString select = QStringLiteral("open Select * from TANQUE_1 order by cma ;");
        QCOMPARE(station.statements(), QStringList{select});
        QCOMPARE(editor.window->windowTitle(), QStringLiteral("Edição de tabela Tanque"));
        QCOMPARE(editor.rows(), (Rows{{QString(), QStringLiteral("CMs"), QStringLiteral("LTs")},
                                      {QStringLiteral("1"), QStringLiteral("10"), QStringLiteral("   845")},
                                      {QStringLiteral("2"), QStringLiteral("20"), QStringLiteral("1234,5")},
                                      {QStringLiteral("3"), QStringLiteral("30"), QStringLiteral("  2000")}}));
        auto& grid = editor.at<FlexGrid>("flex");
        QVERIFY(grid.isColumnHidden(0));

        editor.clickRow(2);
        const auto labels = [&] {
            return QStringList{editor.at<QLabel>("lb_0").text(), editor.at<QLabel>("lb_1").text(),
                               editor.at<QLabel>("lb_2").text()}
                .join(u'|');
        };
        QCOMPARE(labels(), QStringLiteral("20|1234,5|2"));
        QCOMPARE(editor.at<QLineEdit>("Text2").text(), QStringLiteral("1234,5"));

        // A depth below the first row's: the row moves up and stays chosen; the litres lose their point.
        editor.typeInto("Text1", QStringLiteral("5"));
        press({Qt::Key_Return, Qt::Key_Return, Qt::Key_Return});
        QCOMPARE(
            station.statements(),
            (QStringList{QStringLiteral("exec Update TANQUE_1 set cmA = '5', ltsA = '1234,5' where id = 2"), select}));
        QCOMPARE(editor.rows()[1].join(u'|'), QStringLiteral("2|5|1234,5"));
        QCOMPARE(grid.Row(), 1);
        QCOMPARE(labels(), QStringLiteral("5|1234,5|2"));

        // By keys: the litres keep the blanks that align them, deliberately.
        grid.setFocus();
        press({Qt::Key_Down, Qt::Key_Return});
        QCOMPARE(focused(), QStringLiteral("Text1"));
        click(*editor.window, "Command1");
        QCOMPARE(station.statements().first(),
                 QStringLiteral("exec Update TANQUE_1 set cmA = '10', ltsA = '   845' where id = 1"));
        QCOMPARE(station.rows(QStringLiteral("TANQUE_1"), QStringLiteral("cmA ltsA")),
                 (QStringList{QStringLiteral("10|   845"), QStringLiteral("5|1234,5"), QStringLiteral("30|2.000")}));
    }

    void editorRefuses_data() { BothBackEnds::addRows(); }
    void editorRefuses()
    {
        FRESH_DATABASE(database);
        Station station(database, {{QStringLiteral("10"), QStringLiteral("845")}});
        const Editor editor(station);
        station.trace.clear();
        for (const char* const name : {"Text1", "Text2"}) {
            editor.typeInto("Text1", QStringLiteral("10"));
            editor.typeInto("Text2", QStringLiteral("9"));
            editor.typeInto(name, QStringLiteral("dez"));
            click(*editor.window, "Command1");
            QCOMPARE(editor.at<QLineEdit>(name).text(), QStringLiteral("0"));
            QCOMPARE(focused(), QLatin1String(name));
        }
        QCOMPARE(station.statements(), QStringList());

        // No row is chosen: the database refuses the statement, and the window stays with what was typed.
        station.messages.expect();
        click(*editor.window, "Command1");
        QCOMPARE(station.statements(),
                 QStringList{QStringLiteral("exec Update TANQUE_1 set cmA = '10', ltsA = '0' where id = ")});
        QVERIFY(station.boxes().first().startsWith(QStringLiteral("16 Erro em tempo de execução")));
        QVERIFY(editor.window->isVisible());

        // A tank without table: the old rows stay on screen, but no row is chosen and nothing can be confirmed.
        editor.clickRow(1);
        station.messages.expect();
        editor.at<QComboBox>("Combo1").setFocus();
        press(Qt::Key_Down);
        QCOMPARE(station.boxes(), QStringList{NoTable});
        QCOMPARE(editor.rows().size(), 2);
        QVERIFY(!editor.at<QPushButton>("Command1").isEnabled() && editor.at<QLabel>("lb_2").text().isEmpty());
        press(Qt::Key_Up);
        QVERIFY(editor.at<QPushButton>("Command1").isEnabled());
    }

    /// Opened from the gauging window, once, beside it; the gauging starts anew when the operator comes back to it.
    void opensTheEditor_data() { BothBackEnds::addRows(); }
    void opensTheEditor()
    {
        FRESH_DATABASE(database);
        Station station(database, {{QStringLiteral("10"), QStringLiteral("845")}});
        const Gauging gauging(station);
        gauging.typeInto("tx_1", QStringLiteral("55"));
        const auto editors = [] {
            QWidgetList found = QApplication::topLevelWidgets();
            found.removeIf([](QWidget* window) { return !qobject_cast<frmEditTabTanque*>(window); });
            return found;
        };
        for (int time = 0; time < 2; ++time)
            gauging.window->findChild<QAction*>(QStringLiteral("editTab"))->trigger();
        QCOMPARE(editors().size(), 1);
        QVERIFY(!editors().first()->isModal());
        QVERIFY(QTest::qWaitForWindowActive(editors().first()));
        press(Qt::Key_Escape);
        QTRY_VERIFY(editors().isEmpty());
        gauging.window->activateWindow();
        QTRY_COMPARE(focused(), QStringLiteral("List1"));
        QCOMPARE(gauging.at<QLineEdit>("tx_1").text(), QStringLiteral("0"));
    }
};

QTEST_MAIN(TestGauging)
#include "test_gauging.moc"
