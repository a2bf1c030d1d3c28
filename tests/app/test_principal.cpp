// The main window: the pump grid, entering readings and closing the sheet, driven by keys on both back ends.

#include "StationFixture.h"

#include "platform/ui/Application.h"
#include "platform/ui/DatePicker.h"
#include "platform/ui/FlexGrid.h"
#include "support/MariaDbServer.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMenu>

using platform::MsgBoxResult;
using Rows = QList<QStringList>;

namespace {

const QString Unlinked =
    QStringLiteral("Nao foi identificado o codigo do produto do cadastro de Estoque para os produtos desta lista\r\n"
                   "- Vá em (cadastro de produtos) e insira o codigo dos produtos utilizados nesta planilha\r\n"
                   "- Após inseridos tente novamente fechar o lançamento");

/// A number column of either back end as the number that it holds.
QString plain(QString text)
{
    return QString::number(text.replace(u',', u'.').toDouble());
}

} // namespace

class TestPrincipal : public QObject
{
    Q_OBJECT

private:
    static Rows readings(const support::BothBackEnds& database)
    {
        Rows rows = database.table(QStringLiteral("Leitura"),
                                   {QStringLiteral("DataLT"), QStringLiteral("cdgBomba"), QStringLiteral("LeitAnt"),
                                    QStringLiteral("LeitAtu"), QStringLiteral("Saldo"), QStringLiteral("Obs"),
                                    QStringLiteral("tanq"), QStringLiteral("afericao")});
        for (QStringList& row : rows)
            row[0] = row[0].left(10);
        return rows;
    }
    static QStringList pumps(const support::BothBackEnds& database)
    {
        QStringList result;
        for (const QStringList& row :
             database.table(QStringLiteral("PlanilhaPosto"), {QStringLiteral("numeroDispositivo"),
                                                              QStringLiteral("DataInsert"), QStringLiteral("Leitura")}))
            result << row[0] + u' ' + row[1].left(10) + u' ' + row[2];
        result.sort();
        return result;
    }
    static QStringList stock(const support::BothBackEnds& database)
    {
        QStringList result;
        for (const QStringList& row : database.table(QStringLiteral("Estoque"), {QStringLiteral("quantidade")}))
            result << plain(row[0]);
        return result;
    }

private Q_SLOTS:
    void load_data() { support::BothBackEnds::addRows(); }
    void load()
    {
        FRESH_DATABASE(database);
        StationFixture station(database);
        database.script(
            {QStringLiteral("Insert into PlanilhaPosto (numeroDispositivo, Descritivo) values (9, 'Sem')")});
        station.open();
        // The tank shows one character only, a pump without product has no price, and the sheet takes the date of the
        // lowest pump.
        QCOMPARE(station.rows("flex"), QStringList({QStringLiteral("001|Gasolina A|1.000,50|14/03/24|5,50|101||1|"),
                                                    QStringLiteral("002|Gasolina B|12.345,67|14/03/24|5,50|101||1|"),
                                                    QStringLiteral("007|Etanol pátio|500,00|12/03/24|3,50|102||1|"),
                                                    QStringLiteral("009|Sem|||0,00||||")}));
        QCOMPARE(station.date("DTP").Value(), QDate(2024, 3, 14));
        QCOMPARE(station.date("dtpI_0").Value(), QDate(2024, 3, 15));
        QCOMPARE(station.rows("FlexD"),
                 QStringList({QStringLiteral("20|Aditivo|5,00|0"), QStringLiteral("21|Óleo 1 L|10,00|0")}));
        QCOMPARE(station.label("Label22"),
                 QStringLiteral("* Baixas = Saidas no intervalo da data: 15/03/2024<>15/03/2024"));

        // A pump without a price cannot be selected by a click; Enter does not ask for the price.
        platform::FlexGrid& flex = station.grid("flex");
        const auto click = [&](int row) {
            QTest::mouseClick(flex.viewport(), Qt::LeftButton, {},
                              flex.visualRect(flex.model()->index(row - 1, 1)).center());
        };
        station.messages.expect();
        click(4);
        QCOMPARE(station.messages.shown().last().prompt,
                 QStringLiteral("É necessário cadastrar valores para o produto"));
        QCOMPARE(station.label("lb_3"), QString());
        click(3);
        QCOMPARE(station.label("lb_3"), QStringLiteral("Etanol pátio"));
        QCOMPARE(station.label("lb_0"), QStringLiteral("500,00"));
        QCOMPARE(station.label("lb_1"), QStringLiteral("0"));
        QCOMPARE(station.label("lb_2"), QStringLiteral("12/03/24"));
        QCOMPARE(station.label("lb_4"), QStringLiteral("007"));
        QCOMPARE(station.label("lb_5"), QStringLiteral("3,500"));
        QCOMPARE(station.label("lb_6"), QStringLiteral("TANQUE_12"));
        QCOMPARE(station.child<QLineEdit>("Text1").text(), QStringLiteral("500,00"));
        QCOMPARE(flex.TextMatrix(3, 6), QStringLiteral("X"));
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

    void entry_data() { support::BothBackEnds::addRows(); }
    void entry()
    {
        FRESH_DATABASE(database);
        StationFixture station(database);
        station.open();
        QLineEdit& text1 = station.child<QLineEdit>("Text1");
        text1.setFocus();
        QTest::keyClicks(&text1, QStringLiteral("12"));
        station.key(Qt::Key_Return);
        QCOMPARE(text1.text(), QString()); // No pump is selected: every key is dropped.
        QCOMPARE(station.grid("flexG").Rows(), 1);

        station.grid("flex").setFocus();
        station.key(Qt::Key_Return);
        QVERIFY(text1.hasFocus());
        QCOMPARE(text1.selectedText(), QStringLiteral("1.000,50"));
        QTest::keyClicks(&text1, QStringLiteral("a1.1,0-"));
        QCOMPARE(text1.text(), QStringLiteral("-1,1,0"));          // Points become commas; the minus goes in front.
        QCOMPARE(station.label("lb_1"), QStringLiteral("-999,4")); // From "1,1": what came after is no number.
        const QColor orange = station.child<QLabel>("lb_1").palette().color(QPalette::Window);
        QCOMPARE(orange, QColor(0xFF, 0x80, 0x00));
        text1.selectAll();
        QTest::keyClicks(&text1, QStringLiteral("1100"));
        QCOMPARE(station.label("lb_1"), QStringLiteral("99,5"));
        QCOMPARE(station.child<QLabel>("lb_1").palette().color(QPalette::Window), QColor(0x80, 0xFF, 0x80));
        station.key(Qt::Key_Return);
        QCOMPARE(station.rows("flexG"),
                 QStringList(QStringLiteral("14/03|001|1.000,50|1100|99,5|5,499|547,15|TANQUE_1|0")));
        QCOMPARE(station.label("Label5"), QStringLiteral("547,15"));
        QVERIFY(station.grid("flex").hasFocus());
        QCOMPARE(station.grid("flex").Row(), 2);
        QCOMPARE(text1.text(), QStringLiteral("1.100,00")); // Reformatted on leaving.

        // One litre backwards is refused without a word, half a litre is not.
        station.enterReading(2, QStringLiteral("12344,67"));
        QCOMPARE(station.grid("flexG").Rows(), 2);
        station.enterReading(2, QStringLiteral("12345,17"));
        QCOMPARE(station.rows("flexG").last(),
                 QStringLiteral("14/03|002|12.345,67|12345,17|-0,5|5,499|-2,75|TANQUE_1|0"));
        QCOMPARE(station.label("Label5"), QStringLiteral("544,40"));
        station.enterReading(3, QStringLiteral("500"));
        QCOMPARE(station.grid("flex").Row(), 3); // The last row stays.

        station.messages.expect();
        station.grid("flex").setFocus();
        station.key(Qt::Key_Return);
        QCOMPARE(station.messages.shown().last().prompt,
                 QStringLiteral("Note que você chegou ao fim da leitura, obseve"));

        // Delete takes the current line away, and the total follows.
        platform::FlexGrid& flexG = station.grid("flexG");
        flexG.setRow(1);
        station.key(Qt::Key_Delete, &flexG);
        QCOMPARE(station.label("Label5"), QStringLiteral("-2,75"));
        station.key(Qt::Key_Delete, &flexG);
        station.key(Qt::Key_Delete, &flexG);
        QCOMPARE(flexG.Rows(), 1);
        QCOMPARE(flexG.Cols(), 9);
        QCOMPARE(station.label("Label5"), QStringLiteral("0,00"));
    }

    void blinkingAndOverflow_data() { support::BothBackEnds::addRows(); }
    void blinkingAndOverflow()
    {
        FRESH_DATABASE(database);
        StationFixture station(database);
        station.open();
        const auto colour = [&] { return station.child<QLabel>("lb_3").palette().color(QPalette::Window); };
        QCOMPARE(colour(), QColor(0xC0, 0xFF, 0xFF));
        station.enterReading(1, QStringLiteral("900000000000000"));
        QTRY_COMPARE(colour(), QColor(0xFF, 0xFF, 0x00));
        QTRY_COMPARE(colour(), QColor(0xC0, 0xFF, 0xFF));
        // The value does not fit: its cell stays empty, and the total counts nothing for it.
        QCOMPARE(station.grid("flexG").TextMatrix(1, 6), QString());
        QCOMPARE(station.label("Label5"), QStringLiteral("0,00"));
    }

    void closing_data() { support::BothBackEnds::addRows(); }
    void closing()
    {
        FRESH_DATABASE(database);
        StationFixture station(database);
        station.open();
        station.key(Qt::Key_F4);
        QVERIFY(station.messages.shown().isEmpty()); // An empty sheet: no question.

        station.enterReading(1, QStringLiteral("1234.5"));
        station.enterReading(2, QStringLiteral("12400"));
        station.enterReading(3, QStringLiteral("600"));
        station.messages.expect(MsgBoxResult::No);
        station.key(Qt::Key_F4);
        QCOMPARE(station.messages.shown().last(),
                 (support::TestMessages::Shown{
                     QStringLiteral("Certifique-se que o lançamento esta totalmente correto antes de fechar a "
                                    "lista.\r\nConfirma o fechamento/Leitura da lista?"),
                     52, QStringLiteral("A T E N Ç Ã O")}));
        QVERIFY(readings(database).isEmpty());

        const support::StatementTrace trace;
        station.messages.expect(MsgBoxResult::Yes);
        station.key(Qt::Key_F4);
        QCOMPARE(station.prompts, 0); // The key asks for no password.
        const QString day = database.isMySql() ? QStringLiteral("2024-03-14 00:00:00") : QStringLiteral("14/03/2024 ");
        const QString filter =
            database.isMySql() ? QStringLiteral(" ' 2024/03/14 ' ") : QStringLiteral(" # 03/14/2024 # ");
        QStringList expected;
        const auto line = [&](const QString& pump, const QString& values, const QString& reading, const QString& code) {
            expected << QStringLiteral("open Select * from planilhaposto where numerodispositivo = ") + pump
                     << QStringLiteral("exec Insert into Leitura(DataLT,cdgBomba,LeitAnt,LeitAtu,Saldo,Obs,tanq, "
                                       "afericao)values('") +
                            day + values
                     << QStringLiteral("exec Update planilhaPosto set DataInsert = '") + day +
                            QStringLiteral("', Leitura = '") + reading +
                            QStringLiteral("' where numerodispositivo = ") + pump
                     << QStringLiteral("open Select quantidade, codigo from estoque where codigo = ") + code;
        };
        line(QStringLiteral("1"), QStringLiteral("','001','1.000,50','1.234,50','234,00','5,50','TANQUE_1','0');"),
             QStringLiteral("1234,5"), QStringLiteral("101"));
        line(QStringLiteral("2"), QStringLiteral("','002','12.345,67','12.400,00','54,33','5,50','TANQUE_1','0');"),
             QStringLiteral("12400"), QStringLiteral("101"));
        line(QStringLiteral("7"), QStringLiteral("','007','500,00','600,00','100,00','3,50','TANQUE_12','0');"),
             QStringLiteral("600"), QStringLiteral("102"));
        expected << QStringLiteral("open Select * from Leitura where DataLT = ") + filter +
                        QStringLiteral("  order by  DataLT, cdgBomba ");
        QCOMPARE(trace.lines().mid(0, expected.size()), expected);

        const auto row = [](const char* cells) { return QString::fromUtf8(cells).split(u'|'); };
        QCOMPARE(readings(database), (Rows{row("2024-03-14|1|1.000,50|1.234,50|234,00|5,50|TANQUE_1|0"),
                                           row("2024-03-14|2|12.345,67|12.400,00|54,33|5,50|TANQUE_1|0"),
                                           row("2024-03-14|7|500,00|600,00|100,00|3,50|TANQUE_12|0")}));
        QCOMPARE(pumps(database),
                 QStringList({QStringLiteral("1 2024-03-14 1234,5"), QStringLiteral("2 2024-03-14 12400"),
                              QStringLiteral("7 2024-03-14 600")}));
        QCOMPARE(stock(database), QStringList({plain(QStringLiteral("9712.17")), QStringLiteral("2900")}));
        QCOMPARE(station.grid("flexG").Rows(), 1);
        QCOMPARE(station.label("Label5"), QStringLiteral("0,00"));
        QCOMPARE(station.grid("flex2").Rows(), 4);
        QCOMPARE(station.label("Label10"), QStringLiteral("388,33"));

        // The same date once more, by the button: its password every time; the rows stand twice then.
        station.enterReading(1, QStringLiteral("1300"));
        station.knowsPassword = false;
        station.child<QAbstractButton>("btf").click();
        QCOMPARE(readings(database).size(), 3);
        station.knowsPassword = true;
        station.messages.expect(MsgBoxResult::Yes);
        station.child<QAbstractButton>("btf").click();
        QCOMPARE(station.prompts, 2);
        QCOMPARE(readings(database).size(), 4);
    }

    void deductionSwitch_data()
    {
        QTest::addColumn<QString>("backEnd");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("left");
        for (const char* backEnd : {"access", "mysql"}) {
            const auto add = [&](const char* value, const char* left) {
                QTest::addRow("%s %s", backEnd, value)
                    << QString::fromLatin1(backEnd) << QString::fromLatin1(value) << QString::fromLatin1(left);
            };
            add("'nao'", "10000.5");
            add("'Nao'", "9900.5");
            add("null", "9900.5");
        }
    }
    void deductionSwitch()
    {
        FRESH_DATABASE(database);
        QFETCH(QString, value);
        QFETCH(QString, left);
        StationFixture station(database);
        database.script({QStringLiteral("update config set baixardoestoqueplanilha = ") + value});
        station.open();
        station.enterReading(1, QStringLiteral("1100,5"));
        station.messages.expect(MsgBoxResult::Yes);
        station.key(Qt::Key_F4);
        QCOMPARE(stock(database).first(), plain(left));
    }

    void failingClosings_data()
    {
        QTest::addColumn<QString>("backEnd");
        QTest::addColumn<QString>("damage");
        QTest::addColumn<int>("written");
        for (const char* backEnd : {"access", "mysql"}) {
            const auto add = [&](const char* name, const char* damage, int written) {
                QTest::addRow("%s %s", backEnd, name)
                    << QString::fromLatin1(backEnd) << QString::fromLatin1(damage) << written;
            };
            add("unlinked", "update PlanilhaPosto set ProdVinculado = 0 where numeroDispositivo = 7", 2);
            add("pump gone", "delete from PlanilhaPosto where numeroDispositivo = 7", 2);
            add("no product at all", "update PlanilhaPosto set ProdVinculado = null where numeroDispositivo = 7", 2);
            add("stock refused", "drop table Estoque", 1); // Half a row: stored and moved forward, not deducted.
            add("no such stock item", "delete from Estoque where codigo = 102", 3);
        }
    }
    void failingClosings()
    {
        FRESH_DATABASE(database);
        QFETCH(QString, damage);
        QFETCH(int, written);
        StationFixture station(database);
        station.open();
        station.enterReading(1, QStringLiteral("1100,5"));
        station.enterReading(2, QStringLiteral("12445,67"));
        station.enterReading(3, QStringLiteral("600"));
        database.script({damage});
        station.messages.expect(MsgBoxResult::Yes);
        if (written < 3)
            station.messages.expect();
        station.key(Qt::Key_F4);
        QCOMPARE(readings(database).size(), written);
        if (written > 1)
            QCOMPARE(stock(database).first(), QStringLiteral("9800.5")); // Two pumps of one product: two deductions.
        else
            QCOMPARE(pumps(database).first(), QStringLiteral("1 2024-03-14 1100,5"));
        QCOMPARE(station.grid("flexG").Rows(), written < 3 ? 4 : 1); // Lines that could not be closed stay.
        if (damage.contains(QStringLiteral("= null")))
            QVERIFY(station.messages.shown().last().prompt.contains(QStringLiteral("'94'")));
        else if (written == 2)
            QCOMPARE(station.messages.shown().last(), (support::TestMessages::Shown{Unlinked, 0, QString()}));
    }

    void eventsDuringAClosing_data() { support::BothBackEnds::addRows(); }
    void eventsDuringAClosing()
    {
        FRESH_DATABASE(database);
        StationFixture station(database);
        frmprincipal& window = station.open();
        station.enterReading(1, QStringLiteral("1100,5"));
        station.enterReading(2, QStringLiteral("12445,67"));
        bool ended = false;
        QObject::connect(&window, &frmprincipal::encerrado, &window, [&] { ended = true; });
        // After the first row: a second F4, a line taken away, one more typed, and the window closed.
        station.pump.at(station.pump.count() + 1, [&] {
            station.key(Qt::Key_F4, &window);
            station.key(Qt::Key_Delete, &station.grid("flexG"));
            station.key(Qt::Key_Return, &station.child<QLineEdit>("Text1"));
            window.close();
            QVERIFY(!ended);
        });
        station.messages.expect(MsgBoxResult::Yes);
        station.key(Qt::Key_F4);
        QVERIFY(ended);
        QCOMPARE(readings(database).size(), 2);
    }

    void serverStopsBetweenTwoRows()
    {
        if (!support::MariaDbServer::isInstalled())
            QSKIP("no MariaDB server is installed");
        support::BothBackEnds database(QStringLiteral("mysql"));
        StationFixture station(database);
        station.open();
        station.enterReading(1, QStringLiteral("1100,5"));
        station.enterReading(2, QStringLiteral("12445,67"));
        support::MariaDbServer& server = support::MariaDbServer::shared();
        station.pump.at(station.pump.count() + 1, [&] { server.kill(); });
        station.messages.expect(MsgBoxResult::Yes);
        station.messages.expect();
        station.key(Qt::Key_F4);
        QVERIFY(station.messages.shown().last().prompt.startsWith(QStringLiteral("Erro em tempo de execução '")));
        server.start();
        QCOMPARE(readings(database).size(), 1);
        QCOMPARE(stock(database).first(), QStringLiteral("9900.5"));
        QCOMPARE(station.grid("flexG").Rows(), 3);
    }

    void keysOfTheWindow_data() { support::BothBackEnds::addRows(); }
    void keysOfTheWindow()
    {
        FRESH_DATABASE(database);
        StationFixture station(database);
        frmprincipal& window = station.open();
        station.child<QAbstractButton>("Buttom_Mega6").click();
        QWidget& log = station.child<QWidget>("Frame4");
        QVERIFY(log.isVisible());
        station.key(Qt::Key_Escape);
        QVERIFY(!log.isVisible());
        QVERIFY(!window.isClosed());
        QTest::keyClick(&station.grid("flex"), Qt::Key_F4, Qt::AltModifier);
        station.key(Qt::Key_Escape);
        QVERIFY(window.isClosed());
    }
};

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    platform::prepareApplication(application);
    TestPrincipal test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_principal.moc"
