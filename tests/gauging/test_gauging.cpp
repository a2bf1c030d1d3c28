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

using namespace Qt::StringLiterals;
using namespace support;
using platform::FlexGrid;
using platform::MsgBoxResult;

namespace {

const QString NoTable = u"0 Não há controle de medição inserida para este tanque no sistema. \nVocê "
                        u"poderá ir no Gerenciador VELTA e inserir "
                        u"ou importar uma tabela/régua, em caso de duvida solicite suporte"_s;

struct Station : WindowTest
{
    using WindowTest::WindowTest;

    /// Rows of a gauge table: depth with a point, litres as text.
    void fill(int tank, const QList<QStringList>& gauge)
    {
        QStringList values;
        for (const QStringList& row : gauge)
            values << u"%1, '%2'"_s.arg(row[0], row[1]);
        insert(u"TANQUE_%1"_s.arg(tank), u"cmA, ltsA"_s, values);
    }
    [[nodiscard]] QString today() const { return literal(clock.today()); }
    /// The stored readings, numbers as their shortest text.
    [[nodiscard]] QStringList readings() const
    {
        QStringList lines;
        for (const QStringList& row : database.table(u"tabafer"_s, {u"cmt"_s, u"saldo"_s, u"tanque"_s}))
            lines << u"%1|%2|%3"_s.arg(row[0].toDouble(), 0, 'g', 12).arg(row[1].toDouble(), 0, 'g', 12).arg(row[2]);
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
    [[nodiscard]] QStringList lines() const { return entries(at<QListWidget>("List1")); }
    [[nodiscard]] QStringList rows() const { return rowsOf(at<FlexGrid>("flex")); }

    std::unique_ptr<Window> window;
};

using Gauging = Shown<frmReguaL>;
using Editor = Shown<frmEditTabTanque>;

const QString History = u"DATA|CMT|SALDO|TANQUE|"_s;

} // namespace

class TestGauging : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase_data() { BothBackEnds::addRows(); }
    void initTestCase() { platform::prepareApplication(*qApp); }

    void opens()
    {
        FRESH_STATION(Station, station);
        station.fill(1, {{u"12"_s, u"845"_s}});
        const Gauging gauging(station);
        const QString history =
            u"open Select * from tabafer where dataf = "_s + station.today() + u" order by dataf;"_s;
        QCOMPARE(station.statements(),
                 (QStringList{u"open Select * from TANQUE_1 order by cma ;"_s, history, history}));
        QCOMPARE(gauging.window->windowTitle(), u"Régua (Para uso do LMC)"_s);
        QCOMPARE(gauging.at<platform::DatePicker>("DTP").Value(), station.clock.today());
        QCOMPARE(focused(), u"List1"_s);
        const auto& tanks = gauging.at<QComboBox>("Combo1");
        QCOMPARE(tanks.count(), 5); // the pump register knows a sixth tank: deliberate
        QCOMPARE(tanks.itemText(4), u"TANQUE_5"_s);
        QCOMPARE(gauging.rows(), QStringList{History});
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
        addTexts({"centimetres", "litres", "line", "stored"},
                 {{u"padded"_s, u"12"_s, u"845"_s, u"12    845"_s, u"12|845"_s},
                  {u"thousands point"_s, u"100"_s, u"1.234,5"_s, u"100 1234,5"_s, u"100|1234.5"_s},
                  {u"seven characters"_s, u"12"_s, u"1.234.567"_s, u"12 1234567"_s, u"12|1234567"_s},
                  {u"stored with blanks"_s, u"5"_s, u"   99"_s, u"5     99"_s, u"5|99"_s},
                  {u"no litres"_s, u"9"_s, u""_s, u"9       "_s, u"9|0"_s},
                  // Three characters are the centimetres, whatever stands there: the limit of the line, deliberate.
                  {u"four characters"_s, u"1234"_s, u"845"_s, u"1234    845"_s, u"123|4845"_s},
                  {u"half a centimetre"_s, u"12.5"_s, u"845"_s, u"12,5    845"_s, u"12|5845"_s},
                  {u"seven characters beside one"_s, u"7"_s, u"1.234.567"_s, u"7 1234567"_s, u"71|234567"_s}});
    }
    void lines()
    {
        QFETCH(QString, centimetres);
        QFETCH(QString, litres);
        QFETCH(QString, line);
        QFETCH(QString, stored);
        FRESH_STATION(Station, station);
        station.fill(1, {{centimetres, litres}});
        const Gauging gauging(station);
        QCOMPARE(gauging.lines(), QStringList{line});
        press({Qt::Key_Down, Qt::Key_Enter, Qt::Key_Enter});
        QCOMPARE(station.readings(), QStringList{stored + u"|TANQUE_1"_s});
    }

    /// Every line of a whole table, found by typing its depth, is stored as the table has it.
    void everyLine()
    {
        FRESH_STATION(Station, station);
        QList<QStringList> gauge;
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
            expected << QString::number(depth) + u'|' + whole + fraction + u"|TANQUE_1"_s;
        }
        station.fill(1, gauge);
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
        addTexts({"centimetres", "litres", "mode", "stored"},
                 {{u"one character of litres"_s, u"50"_s, u"9"_s, u"list"_s, u"12|845"_s},
                  {u"two characters"_s, u"50"_s, u"90"_s, u"manual"_s, u"50|90"_s},
                  {u"filtered"_s, u"1-a2.5"_s, u"x9 8%7,2"_s, u"manual"_s, u"12.5|987.2"_s},
                  {u"not numeric"_s, u"1,,5"_s, u"2,,5"_s, u"manual"_s, u"0|0"_s},
                  {u"no centimetres"_s, u""_s, u"00"_s, u"manual"_s, u"0|0"_s}});
    }
    void manualFigures()
    {
        FRESH_STATION(Station, station);
        station.fill(1, {{u"12"_s, u"845"_s}});
        const Gauging gauging(station);
        auto& list = gauging.at<QListWidget>("List1");
        type(u"12"_s);
        QFETCH(QString, centimetres);
        QFETCH(QString, litres);
        QFETCH(QString, mode);
        QFETCH(QString, stored);
        typeInto(gauging.at<QLineEdit>("tx_0"), centimetres);
        press(Qt::Key_Return);
        QVERIFY(gauging.at<QLineEdit>("tx_1").hasSelectedText());
        enter(litres);
        QCOMPARE(focused(), u"Command1"_s);
        press(Qt::Key_Return);
        QCOMPARE(list.isEnabled(), mode == u"list");
        QCOMPARE(station.readings(), QStringList{stored + u"|TANQUE_1"_s});

        // Back to the list, by way of the date and the tank.
        gauging.at<platform::DatePicker>("DTP").setFocus();
        QVERIFY(list.isEnabled());
        press(Qt::Key_Return);
        QCOMPARE(focused(), u"Combo1"_s);
        press(Qt::Key_Return);
        QCOMPARE(focused(), u"List1"_s);
        QCOMPARE(gauging.at<QLineEdit>("tx_0").text(), u"0"_s);
        QCOMPARE(gauging.at<QLineEdit>("tx_1").text(), u"0"_s);
    }

    void replaces()
    {
        FRESH_STATION(Station, station);
        station.fill(1, {{u"1"_s, u"10"_s}, {u"2"_s, u"25"_s}});
        const Gauging gauging(station);
        click(*gauging.window, "Command1"); // no line: zero
        QCOMPARE(station.readings(), QStringList{u"0|0|TANQUE_1"_s});

        gauging.at<QListWidget>("List1").setFocus();
        type(u"2"_s);
        station.trace.clear();
        const QString select = u"open Select * from tabafer where tanque = 'TANQUE_1' and dataf = "_s + station.today();
        QCOMPARE(station.told([&] { click(*gauging.window, "Command1"); }, MsgBoxResult::Cancel),
                 u"49 Já existe na base de dados uma leitura para TANQUE_1 nesta mesma data de "
                 u"14/03/2026 deseja substituir o registro existe?"_s);
        QCOMPARE(station.statements(), QStringList{select});
        QCOMPARE(station.readings(), QStringList{u"0|0|TANQUE_1"_s});

        station.messages.expect(MsgBoxResult::Ok);
        click(*gauging.window, "Command1");
        QCOMPARE(
            station.statements(),
            (QStringList{select, u"exec Delete from tabafer where tanque = 'TANQUE_1' and dataf = "_s + station.today(),
                         u"open Select * from tabafer where dataf = "_s + station.today() + u" order by dataf;"_s}));
        QCOMPARE(station.boxes().size(), 1);
        QCOMPARE(station.readings(), QStringList{u"2|25|TANQUE_1"_s});

        // The grid shows the day's readings of all tanks, unformatted.
        station.script({u"insert into tabafer (tanque, dataf, cmt, saldo) values ('TANQUE_2',"_s + station.today() +
                        u",7.5,1234.5)"_s});
        auto& date = gauging.at<platform::DatePicker>("DTP");
        date.setFocus();
        enter(u"13032026"_s);
        QCOMPARE(gauging.rows(), QStringList{History});
        date.setFocus();
        enter(u"14"_s);
        // The first reading was stored, deleted and stored again: its key is 2.
        QCOMPARE(gauging.rows(),
                 (QStringList{History, u"14/03/2026|2|25|TANQUE_1|2"_s, u"14/03/2026|7,5|1234,5|TANQUE_2|3"_s}));
    }

    /// Without a gauge table nothing can be confirmed, nor can a line of the tank before.
    void noTable()
    {
        FRESH_STATION(Station, station);
        station.fill(1, {{u"1"_s, u"10"_s}});
        station.fill(4, {{u"1"_s, u"10"_s}});
        station.script({u"drop table TANQUE_3"_s});
        const Gauging gauging(station);
        const auto& confirm = gauging.at<QPushButton>("Command1");
        gauging.at<QComboBox>("Combo1").setFocus();
        QCOMPARE(station.told([&] { press(Qt::Key_Down); }), NoTable);
        QVERIFY(!confirm.isEnabled() && gauging.lines().isEmpty());
        press(Qt::Key_Up);
        QVERIFY(confirm.isEnabled());
        QCOMPARE(gauging.lines().size(), 1);

        gauging.at<QComboBox>("Combo1").setCurrentIndex(3);
        QVERIFY(confirm.isEnabled());
        const QString box = station.told([] { press(Qt::Key_Up); });
        QVERIFY(box.startsWith(u"16 Erro em tempo de execução"_s) && box.contains(u"TANQUE_3"_s, Qt::CaseInsensitive));
        QVERIFY(!confirm.isEnabled() && gauging.lines().isEmpty() && gauging.window->isVisible());
    }

    /// Between two rows the operator chooses another tank, or closes the window.
    void eventsDuringAFill()
    {
        FRESH_STATION(Station, station);
        QList<QStringList> gauge;
        for (int depth = 1; depth <= 9; ++depth)
            gauge << QStringList{QString::number(depth), u"10"_s};
        station.fill(1, gauge);
        station.fill(2, {{u"1"_s, u"20"_s}});
        {
            const Gauging gauging(station);
            auto& tanks = gauging.at<QComboBox>("Combo1");
            tanks.setCurrentIndex(1);
            station.pump.at(station.pump.count() + 4, [&] { tanks.setCurrentIndex(1); });
            tanks.setCurrentIndex(0);
            QCOMPARE(gauging.lines(), QStringList{u"1     20"_s});
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

    void editsRows()
    {
        FRESH_STATION(Station, station);
        station.fill(1, {{u"10"_s, u"845"_s}, {u"20"_s, u"1.234,5"_s}, {u"30"_s, u"2.000"_s}});
        const Editor editor(station);
        const QString select = u"open Select * from TANQUE_1 order by cma ;"_s;
        QCOMPARE(station.statements(), QStringList{select});
        QCOMPARE(editor.window->windowTitle(), u"Edição de tabela Tanque"_s);
        QCOMPARE(editor.rows(), (QStringList{u"|CMs|LTs"_s, u"1|10|   845"_s, u"2|20|1234,5"_s, u"3|30|  2000"_s}));
        auto& grid = editor.at<FlexGrid>("flex");
        QVERIFY(grid.isColumnHidden(0));

        clickRow(grid, 2);
        const auto labels = [&] {
            return QStringList{editor.at<QLabel>("lb_0").text(), editor.at<QLabel>("lb_1").text(),
                               editor.at<QLabel>("lb_2").text()}
                .join(u'|');
        };
        QCOMPARE(labels(), u"20|1234,5|2"_s);
        QCOMPARE(editor.at<QLineEdit>("Text2").text(), u"1234,5"_s);

        // A depth below the first row's: the row moves up and stays chosen; the litres lose their point.
        typeInto(editor.at<QLineEdit>("Text1"), u"5"_s);
        press({Qt::Key_Return, Qt::Key_Return, Qt::Key_Return});
        QCOMPARE(station.statements(),
                 (QStringList{u"exec Update TANQUE_1 set cmA = '5', ltsA = '1234,5' where id = 2"_s, select}));
        QCOMPARE(editor.rows()[1], u"2|5|1234,5"_s);
        QCOMPARE(grid.Row(), 1);
        QCOMPARE(labels(), u"5|1234,5|2"_s);

        // By keys: the litres keep the blanks that align them, deliberately.
        grid.setFocus();
        press({Qt::Key_Down, Qt::Key_Return});
        QCOMPARE(focused(), u"Text1"_s);
        click(*editor.window, "Command1");
        QCOMPARE(station.statements().first(), u"exec Update TANQUE_1 set cmA = '10', ltsA = '   845' where id = 1"_s);
        QCOMPARE(station.rows(u"TANQUE_1"_s, u"cmA ltsA"_s),
                 (QStringList{u"10|   845"_s, u"5|1234,5"_s, u"30|2.000"_s}));
    }

    void editorRefuses()
    {
        FRESH_STATION(Station, station);
        station.fill(1, {{u"10"_s, u"845"_s}});
        const Editor editor(station);
        station.trace.clear();
        for (const char* const name : {"Text1", "Text2"}) {
            typeInto(editor.at<QLineEdit>("Text1"), u"10"_s);
            typeInto(editor.at<QLineEdit>("Text2"), u"9"_s);
            typeInto(editor.at<QLineEdit>(name), u"dez"_s);
            click(*editor.window, "Command1");
            QCOMPARE(editor.at<QLineEdit>(name).text(), u"0"_s);
            QCOMPARE(focused(), QLatin1String(name));
        }
        QCOMPARE(station.statements(), QStringList());

        // No row is chosen: the database refuses the statement, and the window stays with what was typed.
        typeInto(editor.at<QLineEdit>("Text2"), u"0.5"_s);
        station.messages.expect();
        click(*editor.window, "Command1");
        QCOMPARE(station.statements(), QStringList{u"exec Update TANQUE_1 set cmA = '10', ltsA = '0,5' where id = "_s});
        QVERIFY(station.boxes().first().startsWith(u"16 Erro em tempo de execução"_s));
        QVERIFY(editor.window->isVisible());

        // A tank without table: the old rows stay on screen, but no row is chosen and nothing can be confirmed.
        clickRow(editor.at<FlexGrid>("flex"), 1);
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
    void opensTheEditor()
    {
        FRESH_STATION(Station, station);
        station.fill(1, {{u"10"_s, u"845"_s}});
        const Gauging gauging(station);
        typeInto(gauging.at<QLineEdit>("tx_1"), u"55"_s);
        const auto editors = [] {
            QWidgetList found = QApplication::topLevelWidgets();
            found.removeIf([](QWidget* window) { return !qobject_cast<frmEditTabTanque*>(window); });
            return found;
        };
        for (int time = 0; time < 2; ++time)
            gauging.window->findChild<QAction*>(u"editTab"_s)->trigger();
        QCOMPARE(editors().size(), 1);
        QVERIFY(!editors().first()->isModal());
        QVERIFY(QTest::qWaitForWindowActive(editors().first()));
        clickRow(control<FlexGrid>(*editors().first(), "flex"), 1);
        typeInto(control<QLineEdit>(*editors().first(), "Text2"), u"900"_s);
        click(*editors().first(), "Command1");
        QCOMPARE(gauging.lines(), QStringList{u"10    845"_s});
        press(Qt::Key_Escape);
        QTRY_VERIFY(editors().isEmpty());
        QCOMPARE(gauging.lines(), QStringList{u"10    900"_s}); // Read again, for its table has changed.
        gauging.window->activateWindow();
        QTRY_COMPARE(focused(), u"List1"_s);
        QCOMPARE(gauging.at<QLineEdit>("tx_1").text(), u"0"_s);
    }
};

QTEST_MAIN(TestGauging)
#include "test_gauging.moc"
