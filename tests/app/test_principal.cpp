// The main window: the pump grid, entering readings and closing the sheet, driven by keys on both back ends.

#include "StationFixture.h"

#include "platform/ui/Application.h"
#include "support/MariaDbServer.h"

#include <QMenu>

using namespace Qt::StringLiterals;
using namespace support;
using platform::MsgBoxResult;

namespace {

const QString Question = u"52 A T E N Ç Ã O: Certifique-se que o lançamento esta totalmente correto antes de fechar a "
                         u"lista.\r\nConfirma o fechamento/Leitura da lista?"_s;
const QString Unlinked =
    u"0 Nao foi identificado o codigo do produto do cadastro de Estoque para os produtos desta lista\r\n"
    u"- Vá em (cadastro de produtos) e insira o codigo dos produtos utilizados nesta planilha\r\n"
    u"- Após inseridos tente novamente fechar o lançamento"_s;

/// The main window, and what the tables hold.
struct Sheet : StationFixture
{
    using StationFixture::StationFixture;

    QStringList readings() const
    {
        return rows(u"Leitura"_s, u"DataLT cdgBomba LeitAnt LeitAtu Saldo Obs tanq afericao"_s)
            .replaceInStrings(u" 00:00:00"_s, QString());
    }
    QString pumps() const
    {
        QStringList lines = rows(u"PlanilhaPosto"_s, u"numeroDispositivo DataInsert Leitura"_s);
        lines.sort();
        return lines.join(u' ').remove(u" 00:00:00"_s);
    }
    /// Numbers, however many zeros the table keeps behind them.
    QStringList stock() const
    {
        QStringList quantities;
        for (const QString& quantity : rows(u"Estoque"_s, u"quantidade"_s))
            quantities << QString::number(quantity.toDouble());
        return quantities;
    }
    void enterReadings(const QStringList& readings)
    {
        for (int row = 1; row <= readings.size(); ++row)
            enterReading(row, readings[row - 1]);
    }
    QStringList texts(const QStringList& labels) const
    {
        QStringList all;
        for (const QString& name : labels)
            all << label(qPrintable(name));
        return all;
    }
    /// F4, and the answer to its question; what is told.
    QString closes(MsgBoxResult answer)
    {
        return told([] { press(Qt::Key_F4); }, answer);
    }
};

/// Keeps a log-out from ending the test.
class KeepsRunning : public QObject
{
public:
    KeepsRunning() { qApp->installEventFilter(this); }
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        return watched == qApp && event->type() == QEvent::Quit;
    }
};

} // namespace

class TestPrincipal : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase_data() { BothBackEnds::addRows(); }
    void initTestCase() { platform::prepareApplication(*qApp); }

    void load()
    {
        FRESH_STATION(Sheet, station);
        station.insert(u"PlanilhaPosto"_s, u"numeroDispositivo, Descritivo"_s, {u"9, 'Sem'"_s});
        station.open();
        QCOMPARE(namelessControls(station.window()), QStringList());
        // The tank shows one character only, a pump without product has no price, and the sheet takes the date of the
        // lowest pump.
        QCOMPARE(station.shown("flex"),
                 QStringList({u"001|Gasolina A|1.000,50|14/03/24|5,50|101||1|"_s,
                              u"002|Gasolina B|12.345,67|14/03/24|5,50|101||1|"_s,
                              u"007|Etanol pátio|500,00|12/03/24|3,50|102||1|"_s, u"009|Sem|||0,00||||"_s}));
        QCOMPARE(station.date("DTP").Value(), QDate(2024, 3, 14));
        QCOMPARE(station.date("dtpI_0").Value(), QDate(2024, 3, 15));
        QCOMPARE(station.shown("FlexD"), QStringList({u"20|Aditivo|5,00|0"_s, u"21|Óleo 1 L|10,00|0"_s}));
        QCOMPARE(station.label("Label22"), u"* Baixas = Saidas no intervalo da data: 15/03/2024<>15/03/2024"_s);

        // A pump without a price cannot be selected by a click; Enter does not ask for the price.
        platform::FlexGrid& flex = station.grid("flex");
        QCOMPARE(station.told([&] { clickRow(flex, 4); }), u"0 É necessário cadastrar valores para o produto"_s);
        QCOMPARE(station.label("lb_3"), QString());
        clickRow(flex, 3);
        QCOMPARE(
            station.texts({u"lb_3"_s, u"lb_0"_s, u"lb_1"_s, u"lb_2"_s, u"lb_4"_s, u"lb_5"_s, u"lb_6"_s}).join(u'|'),
            u"Etanol pátio|500,00|0|12/03/24|007|3,500|TANQUE_12"_s);
        QCOMPARE(station.child<QLineEdit>("Text1").text(), u"500,00"_s);
        QCOMPARE(flex.TextMatrix(3, 6), u"X"_s);
        QCOMPARE(flex.CellBackColor(3, 0), 65535U);

        // "Remove" takes the row from the grid only; "Recarregar Lista" brings it back.
        QMenu& fer = station.child<QMenu>("fer");
        QTest::mouseClick(flex.viewport(), Qt::RightButton, {}, QPoint(20, 20));
        QVERIFY(fer.isVisible());
        fer.close();
        station.child<QAction>("removFlex").trigger();
        QCOMPARE(flex.Rows(), 4);
        station.child<QAction>("recarga").trigger();
        QCOMPARE(flex.Rows(), 5);
    }

    void entry()
    {
        FRESH_STATION(Sheet, station);
        station.open();
        QLineEdit& text1 = station.child<QLineEdit>("Text1");
        text1.setFocus();
        enter(u"12"_s);
        QCOMPARE(text1.text(), QString()); // No pump is selected: every key is dropped.
        QCOMPARE(station.grid("flexG").Rows(), 1);

        station.grid("flex").setFocus();
        press(Qt::Key_Return);
        QVERIFY(text1.hasFocus());
        QCOMPARE(text1.selectedText(), u"1.000,50"_s);
        QTest::keyClicks(&text1, u"a1.1,0-"_s);
        QCOMPARE(text1.text(), u"-1,1,0"_s);          // Points become commas; the minus goes in front.
        QCOMPARE(station.label("lb_1"), u"-999,4"_s); // From "1,1": what came after is no number.
        QCOMPARE(station.colour("lb_1"), QColor(0xFF, 0x80, 0x00));
        text1.selectAll();
        QTest::keyClicks(&text1, u"1100"_s);
        QCOMPARE(station.label("lb_1"), u"99,5"_s);
        QCOMPARE(station.colour("lb_1"), QColor(0x80, 0xFF, 0x80));
        press(Qt::Key_Return);
        QCOMPARE(station.shown("flexG"), QStringList(u"14/03|001|1.000,50|1100|99,5|5,499|547,15|TANQUE_1|0"_s));
        QCOMPARE(station.label("Label5"), u"547,15"_s);
        QVERIFY(station.grid("flex").hasFocus());
        QCOMPARE(station.grid("flex").Row(), 2);
        QCOMPARE(text1.text(), u"1.100,00"_s); // Reformatted on leaving.

        // One litre backwards is refused without a word, half a litre is not.
        station.enterReading(2, u"12344,67"_s);
        QCOMPARE(station.grid("flexG").Rows(), 2);
        station.enterReading(2, u"12345,17"_s);
        QCOMPARE(station.shown("flexG").last(), u"14/03|002|12.345,67|12345,17|-0,5|5,499|-2,75|TANQUE_1|0"_s);
        QCOMPARE(station.label("Label5"), u"544,40"_s);
        station.enterReading(3, u"500"_s);
        QCOMPARE(station.grid("flex").Row(), 3); // The last row stays.

        station.grid("flex").setFocus();
        QCOMPARE(station.told([] { press(Qt::Key_Return); }), u"0 Note que você chegou ao fim da leitura, obseve"_s);

        // Delete takes the current line away, and the total follows.
        platform::FlexGrid& flexG = station.grid("flexG");
        flexG.setRow(1);
        for (const QString& total : {u"-2,75"_s, u"0,00"_s, u"0,00"_s}) {
            QTest::keyClick(&flexG, Qt::Key_Delete);
            QCOMPARE(station.label("Label5"), total);
        }
        QCOMPARE(flexG.Rows(), 1);
        QCOMPARE(flexG.Cols(), 9);
    }

    void blinkingAndOverflow()
    {
        FRESH_STATION(Sheet, station);
        station.open();
        // 10,05 litres at 5,499 are 55,26495, rounded once.
        station.enterReading(1, u"1010,55"_s);
        QCOMPARE(station.grid("flexG").TextMatrix(1, 6), u"55,26"_s);
        QTest::keyClick(&station.grid("flexG"), Qt::Key_Delete);
        QCOMPARE(station.colour("lb_3"), QColor(0xC0, 0xFF, 0xFF));
        station.enterReading(1, u"900000000000000"_s);
        QTRY_COMPARE(station.colour("lb_3"), QColor(0xFF, 0xFF, 0x00));
        QTRY_COMPARE(station.colour("lb_3"), QColor(0xC0, 0xFF, 0xFF));
        // The value does not fit: its cell stays empty, and the total counts nothing for it.
        QCOMPARE(station.grid("flexG").TextMatrix(1, 6), QString());
        QCOMPARE(station.label("Label5"), u"0,00"_s);
    }

    void closing()
    {
        FRESH_STATION(Sheet, station);
        station.open();
        press(Qt::Key_F4);
        QVERIFY(station.boxes().isEmpty()); // An empty sheet: no question.

        station.enterReadings({u"1234.5"_s, u"12400"_s, u"600"_s});
        QCOMPARE(station.closes(MsgBoxResult::No), Question);
        QVERIFY(station.readings().isEmpty());

        (void)station.statements();
        QCOMPARE(station.closes(MsgBoxResult::Yes), Question);
        QCOMPARE(station.prompts, 0); // The key asks for no password.
        const QString day = database.isMySql() ? u"2024-03-14 00:00:00"_s : u"14/03/2024 "_s;
        QStringList expected;
        const auto line = [&](const QString& pump, const QString& values, const QString& reading, const QString& code) {
            expected << u"open Select * from planilhaposto where numerodispositivo = "_s + pump
                     << u"exec Insert into Leitura(DataLT,cdgBomba,LeitAnt,LeitAtu,Saldo,Obs,tanq, "
                        u"afericao)values('"_s +
                            day + values
                     << u"exec Update planilhaPosto set DataInsert = '"_s + day + u"', Leitura = '"_s + reading +
                            u"' where numerodispositivo = "_s + pump
                     << u"open Select quantidade, codigo from estoque where codigo = "_s + code;
        };
        line(u"1"_s, u"','001','1.000,50','1.234,50','234,00','5,50','TANQUE_1','0');"_s, u"1234,5"_s, u"101"_s);
        line(u"2"_s, u"','002','12.345,67','12.400,00','54,33','5,50','TANQUE_1','0');"_s, u"12400"_s, u"101"_s);
        line(u"7"_s, u"','007','500,00','600,00','100,00','3,50','TANQUE_12','0');"_s, u"600"_s, u"102"_s);
        expected << u"open Select * from Leitura where DataLT = "_s + station.literal(QDate(2024, 3, 14)) +
                        u"  order by  DataLT, cdgBomba "_s;
        QCOMPARE(station.statements().mid(0, expected.size()), expected);

        QCOMPARE(station.readings(), QStringList({u"2024-03-14|1|1.000,50|1.234,50|234,00|5,50|TANQUE_1|0"_s,
                                                  u"2024-03-14|2|12.345,67|12.400,00|54,33|5,50|TANQUE_1|0"_s,
                                                  u"2024-03-14|7|500,00|600,00|100,00|3,50|TANQUE_12|0"_s}));
        QCOMPARE(station.pumps(), u"1|2024-03-14|1234,5 2|2024-03-14|12400 7|2024-03-14|600"_s);
        QCOMPARE(station.stock(), QStringList({u"9712.17"_s, u"2900"_s}));
        QCOMPARE(station.grid("flexG").Rows(), 1);
        QCOMPARE(station.label("Label5"), u"0,00"_s);
        QCOMPARE(station.grid("flex2").Rows(), 4);
        QCOMPARE(station.label("Label10"), u"388,33"_s);

        // The same date once more, by the button: its password every time; the rows stand twice then.
        station.enterReading(1, u"1300"_s);
        station.knowsPassword = false;
        station.click("btf");
        QCOMPARE(station.readings().size(), 3);
        station.knowsPassword = true;
        QCOMPARE(station.told([&] { station.click("btf"); }, MsgBoxResult::Yes), Question);
        QCOMPARE(station.prompts, 2);
        QCOMPARE(station.readings().size(), 4);
    }

    void deductionSwitch_data()
    {
        addTexts({"value", "left"}, {{u"nao"_s, u"'nao'"_s, u"10000.5"_s},
                                     {u"Nao"_s, u"'Nao'"_s, u"9900.5"_s},
                                     {u"null"_s, u"null"_s, u"9900.5"_s}});
    }
    void deductionSwitch()
    {
        FRESH_STATION(Sheet, station);
        QFETCH(QString, value);
        QFETCH(QString, left);
        database.script({u"update config set baixardoestoqueplanilha = "_s + value});
        station.open();
        station.enterReading(1, u"1100,5"_s);
        QCOMPARE(station.closes(MsgBoxResult::Yes), Question);
        QCOMPARE(station.stock().first(), left);
    }

    void failingClosings_data()
    {
        QTest::addColumn<QString>("damage");
        QTest::addColumn<int>("written");
        QTest::addColumn<QString>("error"); // the beginning of the box behind the question, if there is one
        const QString link = u"update PlanilhaPosto set ProdVinculado = %1 where numeroDispositivo = 7"_s;
        QTest::newRow("unlinked") << link.arg(0) << 2 << Unlinked;
        QTest::newRow("pump gone") << u"delete from PlanilhaPosto where numeroDispositivo = 7"_s << 2 << Unlinked;
        QTest::newRow("no product at all") << link.arg(u"null"_s) << 2 << u"16 Erro em tempo de execução '94'"_s;
        // Half a row: stored and moved forward, not deducted.
        QTest::newRow("stock refused") << u"drop table Estoque"_s << 1 << u"16 Erro em tempo de execução '"_s;
        QTest::newRow("no such stock item") << u"delete from Estoque where codigo = 102"_s << 3 << QString();
    }
    void failingClosings()
    {
        FRESH_STATION(Sheet, station);
        QFETCH(QString, damage);
        QFETCH(int, written);
        QFETCH(QString, error);
        station.open();
        station.enterReadings({u"1100,5"_s, u"12445,67"_s, u"600"_s});
        database.script({damage});
        if (written < 3)
            station.messages.expect(MsgBoxResult::Yes);
        const QString told = station.closes(written < 3 ? MsgBoxResult::Ok : MsgBoxResult::Yes);
        QCOMPARE(station.readings().size(), written);
        if (written > 1)
            QCOMPARE(station.stock().first(), u"9800.5"_s); // Two pumps of one product: two deductions.
        else
            QVERIFY(station.pumps().startsWith(u"1|2024-03-14|1100,5 "_s));
        QCOMPARE(station.grid("flexG").Rows(), written < 3 ? 4 : 1); // Lines that could not be closed stay.
        const QString whole = error.isEmpty() ? Question : Question + u'\n' + error;
        QCOMPARE(error.startsWith(u"16"_s) ? told.left(whole.size()) : told, whole);

        // The power is cut: rows that were stored do not come back, one that was begun is named.
        const bool isHalf = damage.startsWith(u"drop"_s);
        station.cutPower();
        station.open();
        if (isHalf)
            station.messages.expect();
        if (written < 3)
            station.messages.expect(MsgBoxResult::Yes);
        station.window().oferece_linhas();
        const QString boxes = station.boxes().join(u'\n');
        QCOMPARE(boxes.contains(u"Bomba 001: de 1.000,50 a 1100,5, 100 litros"_s), isHalf);
        QCOMPARE(station.grid("flexG").Rows() - 1, written == 3 ? 0 : isHalf ? 2 : 3 - written);
        if (written < 3)
            QVERIFY(station.shown("flexG").last().startsWith(u"14/03|007|500,00|600|100|"_s));
    }

    void linesAfterAPowerCut()
    {
        FRESH_STATION(Sheet, station);
        KeepsRunning keepsRunning;
        station.open();
        station.window().oferece_linhas(); // Without a file no box.
        station.enterReadings({u"1100,5"_s, u"12445,67"_s, u"600"_s});
        station.grid("flexG").setRow(2);
        QTest::keyClick(&station.grid("flexG"), Qt::Key_Delete);
        station.date("DTP").setValue(QDate(2024, 3, 17));
        const QStringList lines = station.shown("flexG");
        QCOMPARE(lines.size(), 2);
        const QString total = station.label("Label5");
        const QString question = u"65572 Há 2 leituras lançadas que não foram fechadas: planilha de 17/03/2024, última "
                                 u"digitação em 15/03/2024 08:30.\r\nDeseja recuperar?"_s;
        const auto startAgain = [&](MsgBoxResult answer) {
            station.cutPower();
            station.open();
            QCOMPARE(station.shown("flexG"), QStringList());
            QCOMPARE(station.told([&] { station.window().oferece_linhas(); }, answer), question);
            QCOMPARE(station.statements(), QStringList());
        };
        startAgain(MsgBoxResult::Cancel); // Closed without an answer: asked again.
        for (int cut = 0; cut < 2; ++cut) {
            startAgain(MsgBoxResult::Yes);
            QCOMPARE(station.shown("flexG"), lines);
            QCOMPARE(station.date("DTP").Value(), QDate(2024, 3, 17));
            QCOMPARE(station.label("Label5"), total);
        }
        startAgain(MsgBoxResult::No);
        station.enterReading(1, u"1100,5"_s);
        QEvent logOut(QEvent::Quit);
        QCoreApplication::sendEvent(qApp, &logOut);
        station.window().close(); // As the log-out does; the lines stay.
        station.cutPower();
        station.open();
        station.messages.expect(MsgBoxResult::Yes);
        station.window().oferece_linhas();
        QVERIFY(station.boxes().first().startsWith(u"65572 Há 1 leitura lançada que não foi fechada: "_s));
        QCOMPARE(station.shown("flexG"), lines.mid(0, 1).replaceInStrings(u"17/03"_s, u"14/03"_s));
        station.window().close(); // The operator's own end: nothing is left.
        station.cutPower();
        station.open();
        station.window().oferece_linhas();
        QVERIFY(station.boxes().isEmpty());
    }

    void eventsDuringAClosing()
    {
        FRESH_STATION(Sheet, station);
        station.open();
        frmprincipal& window = station.window();
        station.enterReadings({u"1100,5"_s, u"12445,67"_s});
        bool ended = false;
        QObject::connect(&window, &frmprincipal::encerrado, &window, [&] { ended = true; });
        // After the first row: a second F4, a line taken away, one more typed, and the window closed.
        station.during(1, [&] {
            QTest::keyClick(&window, Qt::Key_F4);
            QTest::keyClick(&station.grid("flexG"), Qt::Key_Delete);
            QTest::keyClick(&station.child<QLineEdit>("Text1"), Qt::Key_Return);
            window.close();
            QVERIFY(!ended);
        });
        QCOMPARE(station.closes(MsgBoxResult::Yes), Question);
        QVERIFY(ended);
        QCOMPARE(station.readings().size(), 2);
    }

    void serverStopsBetweenTwoRows()
    {
        FRESH_STATION(Sheet, station);
        if (!database.isMySql())
            QSKIP("a file has no server");
        station.open();
        station.enterReadings({u"1100,5"_s, u"12445,67"_s});
        MariaDbServer& server = MariaDbServer::shared();
        station.during(1, [&] { server.kill(); });
        station.messages.expect(MsgBoxResult::Yes);
        QVERIFY(station.closes(MsgBoxResult::Ok).startsWith(Question + u"\n16 Erro em tempo de execução '"_s));
        server.start();
        QCOMPARE(station.readings().size(), 1);
        QCOMPARE(station.stock().first(), u"9900.5"_s);
        QCOMPARE(station.grid("flexG").Rows(), 3);
    }

    void keysOfTheWindow()
    {
        FRESH_STATION(Sheet, station);
        station.open();
        frmprincipal& window = station.window();
        station.click("Buttom_Mega6");
        const QWidget& log = station.child<QWidget>("Frame4");
        QVERIFY(log.isVisible());
        press(Qt::Key_Escape);
        QVERIFY(!log.isVisible());
        QVERIFY(!window.isClosed());
        QTest::keyClick(&station.grid("flex"), Qt::Key_F4, Qt::AltModifier);
        press(Qt::Key_Escape);
        QVERIFY(window.isClosed());
    }
};

QTEST_MAIN(TestPrincipal)
#include "test_principal.moc"
