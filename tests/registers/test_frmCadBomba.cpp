#include "platform/ui/Application.h"
#include "platform/ui/DatePicker.h"
#include "registers/frmCadBomba.h"
#include "support/WindowTest.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QLineEdit>
#include <QSignalSpy>

using namespace Qt::StringLiterals;
using namespace support;
using platform::MsgBoxResult;

namespace {

const QString SelectPumps = u"open Select * from planilhaposto order by numeroDispositivo"_s;
const QString TankQuestion =
    u"4 Editar as leituras anteriores correspondente ao combustivel com o novo numero de TANQUE?"_s;

/// An open pump register over three products and three pumps.
struct Register : WindowTest
{
    explicit Register(BothBackEnds& used)
        : WindowTest(used)
    {
        insert(u"CadProdComb"_s, u"Descritivo, codprod, valor, codigoEstoque"_s,
               {u"'Gasolina comum', 7, 5.5, 7"_s, u"'Etanol', 8, 3.5, 8"_s, u"'Etanol', 9, 3.6, 9"_s});
        insert(u"PlanilhaPosto"_s, u"numeroDispositivo, Descritivo, Leitura, DataInsert, ProdVinculado, tanq"_s,
               {u"3, 'Bomba pátio', '1.000,00', @2026-02-28@, 7, 'TANQUE_2'"_s, u"12, 'B12', '5', NULL, 99, NULL"_s,
                u"150, 'B150', '6', @2026-02-28@, 9, 'TANQUE_7'"_s});
        insert(u"Leitura"_s, u"cdgBomba, tanq"_s, {u"5, 'TANQUE_3'"_s, u"12, 'TANQUE_1'"_s});
        insert(u"EstoqueDiversos"_s, u"codigo"_s, {u"0"_s, u"1"_s, u"150"_s});
        open(window);
    }
    QLineEdit& tx(int index) { return control<QLineEdit>(window, qPrintable(u"tx_%1"_s.arg(index))); }
    QStringList pumps() { return rows(u"PlanilhaPosto"_s, u"numeroDispositivo"_s); }
    QString storedDate() { return dialect.isMySql() ? u"2026-03-14 00:00:00"_s : u"14/03/2026 "_s; }

    frmCadBomba window{services};
    QComboBox& product = control<QComboBox>(window, "Combo1");
    QComboBox& tank = control<QComboBox>(window, "Combo2");
    QListWidget& list = control<QListWidget>(window, "List1");
    platform::DatePicker& picker = control<platform::DatePicker>(window, "dtp");
    QSignalSpy changed{&window, &frmCadBomba::pumpsChanged};
};

} // namespace

class TestFrmCadBomba : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase_data() { BothBackEnds::addRows(); }
    void initTestCase() { platform::prepareApplication(*qApp); }

    void byKeyboard()
    {
        FRESH_STATION(Register, pumps);
        type(u"a0-5.x"_s);
        QCOMPARE(pumps.tx(2).text(), u"-05,"_s);
        press({Qt::Key_Backspace, Qt::Key_Home, Qt::Key_Delete, Qt::Key_Return});
        QVERIFY(QTest::qWaitFor([&] { return pumps.product.view()->isVisible(); }));
        press({Qt::Key_Down, Qt::Key_Down, Qt::Key_Return});
        QVERIFY(QTest::qWaitFor([&] { return !pumps.product.view()->isVisible(); }));
        press(Qt::Key_Return);
        QCOMPARE(pumps.tx(0).selectedText(), u"Gasolina comum"_s);
        enter(u"bomba açaí - 5"_s);
        QCOMPARE(pumps.tx(0).text(), u"BOMBA AÇAÍ - 5"_s);
        type(u"1.234,5"_s);
        press({Qt::Key_Return, Qt::Key_Return});
        QCOMPARE(focused(), u"Combo2"_s);
        press({Qt::Key_Down, Qt::Key_Down, Qt::Key_Return});
        QCOMPARE(focused(), u"Buttom_Mega1"_s);
        (void)pumps.statements();
        pumps.messages.expect(MsgBoxResult::No);
        press(Qt::Key_Return);
        QCOMPARE(pumps.statements(),
                 QStringList({u"open Select * from planilhaposto where numeroDispositivo = 5;"_s,
                              u"exec INSERT into PlanilhaPosto (numeroDispositivo,Descritivo,Leitura,DataInsert, "
                              u"ProdVinculado, tanq) values ('05','BOMBA AÇAÍ - 5','1.234,5','"_s +
                                  pumps.storedDate() + u"','00007','TANQUE_2');"_s,
                              SelectPumps}));
        QCOMPARE(pumps.boxes(), QStringList({TankQuestion}));
        QCOMPARE(focused(), u"tx_2"_s);
        QCOMPARE(pumps.list.count(), 4);
        QVERIFY(pumps.rows(u"PlanilhaPosto"_s, u"numeroDispositivo Descritivo Leitura DataInsert ProdVinculado tanq"_s)
                    .contains(u"5|BOMBA AÇAÍ - 5|1.234,5|%1|7|TANQUE_2"_s.arg(pumps.shownDate(QDate(2026, 3, 14)))));

        // The same number once more, in another tank, and for the readings before, too.
        type(u"5"_s);
        pumps.tank.setCurrentIndex(4);
        for (int box = 0; box < 2; ++box)
            pumps.messages.expect(MsgBoxResult::Yes);
        click(pumps.window, "Buttom_Mega1");
        const QStringList statements = pumps.statements();
        QCOMPARE(statements.value(1), u"exec DELETE from planilhaposto where numeroDispositivo = 5"_s);
        QCOMPARE(statements.last(), u"exec Update Leitura set tanq = 'TANQUE_5' where cdgbomba = 5"_s);
        QCOMPARE(pumps.boxes().last(), TankQuestion);
        QCOMPARE(pumps.rows(u"Leitura"_s, u"cdgBomba tanq"_s), QStringList({u"5|TANQUE_5"_s, u"12|TANQUE_1"_s}));
        QCOMPARE(pumps.pumps().size(), 4);

        QCOMPARE(pumps.changed.count(), 0);
        press(Qt::Key_Escape);
        QVERIFY(!pumps.window.isVisible());
        QCOMPARE(pumps.changed.count(), 1);
    }

    void refused_data()
    {
        QTest::addColumn<QStringList>("typed"); // number, description, reading
        QTest::addColumn<int>("tank");          // -1 for none
        QTest::addColumn<MsgBoxResult>("answer");
        QTest::addColumn<QStringList>("messages"); // beginnings
        QTest::addColumn<QString>("left");
        const QString exists = u"4 Já existe em sua base de dados um numero de bomba parecido com este: \r\n"_s;
        const QString reading = u"0 É necessário inserir uma leitura para este dispositivo"_s;
        const QString all = u"3 12 150"_s;
        const auto yes = MsgBoxResult::Yes;
        QTest::newRow("no number") << QStringList{{}, {}, u"1"_s} << 0 << yes << QStringList() << all;
        QTest::newRow("no tank") << QStringList{u"3"_s, {}, u"1"_s} << -1 << yes
                                 << QStringList{u"0 Selecione o tanque"_s} << all;
        QTest::newRow("no reading") << QStringList{u"7"_s, {}, {}} << 0 << yes << QStringList{reading} << all;
        QTest::newRow("No") << QStringList{u"012"_s, {}, {}} << 0 << MsgBoxResult::No
                            << QStringList{exists + u"012 deseja editar este existente?"_s} << all;
        QTest::newRow("Yes, no reading: gone")
            << QStringList{u"00003"_s, {}, u"x"_s} << 0 << yes << QStringList{exists, reading} << u"12 150"_s;
        QTest::newRow("Yes, apostrophe: gone")
            << QStringList{u"3"_s, u"d'água"_s, u"1"_s} << 0 << yes << QStringList{exists, u"16 Erro"_s} << u"12 150"_s;
    }
    void refused()
    {
        QFETCH(QStringList, typed);
        QFETCH(int, tank);
        QFETCH(MsgBoxResult, answer);
        QFETCH(QStringList, messages);
        FRESH_STATION(Register, pumps);
        for (const int box : {0, 1, 2})
            pumps.tx(box).setText(typed[(box + 1) % 3]);
        pumps.tank.setCurrentIndex(tank);
        for (qsizetype i = 0; i < messages.size(); ++i)
            pumps.messages.expect(answer);
        click(pumps.window, "Buttom_Mega1");
        const QStringList shown = pumps.boxes();
        QCOMPARE(shown.size(), messages.size());
        for (qsizetype i = 0; i < messages.size(); ++i)
            QVERIFY2(shown[i].startsWith(messages[i]), qPrintable(shown[i]));
        QTEST(pumps.pumps().join(u' '), "left");
        QCOMPARE(pumps.tx(0).text(), typed[1]);
        QCOMPARE(focused(), messages.isEmpty() ? u"tx_2"_s : u"Buttom_Mega1"_s);
        // A register without products.
        pumps.product.clear();
        pumps.tx(2).setText(u"99"_s);
        pumps.tx(1).setText(u"0"_s);
        pumps.tank.setCurrentIndex(0);
        QCOMPARE(pumps.told([&] { click(pumps.window, "Buttom_Mega1"); }),
                 u"0 É necessário inserir produto vinculado ao dispositivo"_s);
    }

    void choosing()
    {
        FRESH_STATION(Register, pumps);
        QCOMPARE(pumps.statements(),
                 QStringList({u"open Select * from CadProdComb order by Descritivo"_s, SelectPumps}));
        QCOMPARE(entries(pumps.list), QStringList({u"00003 - BOMBA PÁTIO"_s, u"00012 - B12"_s, u"00150 - B150"_s}));
        QCOMPARE(pumps.tank.count(), 6);
        QCOMPARE(pumps.tank.itemText(5), u"TANQUE_6"_s);
        QCOMPARE(focused(), u"tx_2"_s);
        QCOMPARE(namelessControls(pumps.window), QStringList());
        const auto shown = [&] {
            return QStringList({pumps.tx(2).text(), pumps.tx(0).text(), pumps.tx(1).text(), pumps.tank.currentText(),
                                pumps.product.currentText(), pumps.picker.Value().toString(u"dd/MM/yyyy"_s)})
                .join(u'|');
        };
        // The first product is selected at once, with its description.
        QVERIFY(shown().startsWith(u"|Etanol|||0000"_s) && shown().endsWith(u" - Etanol|14/03/2026"_s));
        clickEntry(pumps.list, 0);
        QCOMPARE(pumps.statements(), QStringList({u"open Select * from planilhaposto where numerodispositivo = 3;"_s,
                                                  u"open Select * from CadProdComb where codprod = 7"_s}));
        QCOMPARE(shown(), u"3|Bomba pátio|1.000,00|TANQUE_2|00007 - Gasolina comum|28/02/2026"_s);
        // A pump whose product is gone, without tank and date.
        press(Qt::Key_Down);
        QCOMPARE(shown(), u"12|B12|5||00007 - Gasolina comum|14/03/2026"_s);
        // The second of two products of one description, and a tank that is none of the six.
        press(Qt::Key_Down);
        QCOMPARE(shown(), u"150|B150|6|TANQUE_7|00009 - Etanol|28/02/2026"_s);
        // A pump that was deleted while it was listed.
        pumps.script({u"DELETE FROM PlanilhaPosto WHERE numeroDispositivo = 3"_s});
        clickEntry(pumps.list, 0);
        QCOMPARE(pumps.tx(2).text(), u"150"_s);
        // A product found by typing its code copies its description too.
        pumps.product.setFocus(Qt::MouseFocusReason);
        type(u"00007"_s);
        QCOMPARE(pumps.tx(0).text(), u"Gasolina comum"_s);
    }

    void deleting_data()
    {
        QTest::addColumn<int>("entry");
        QTest::addColumn<QString>("number"); // in the box: decides which pump goes
        QTest::addColumn<bool>("confirm");
        QTest::addColumn<QString>("left");
        QTest::addColumn<QString>("items");
        QTest::newRow("12 takes item 0 along") << 1 << u"12"_s << true << u"3 150"_s << u"1 150"_s;
        QTest::newRow("150 takes item 1 along") << 2 << u"150"_s << true << u"3 12"_s << u"0 150"_s;
        QTest::newRow("another number in the box") << 2 << u"3"_s << true << u"12 150"_s << u"0 150"_s;
        QTest::newRow("cancelled") << 1 << u"12"_s << false << u"3 12 150"_s << u"0 1 150"_s;
    }
    void deleting()
    {
        QFETCH(int, entry);
        QFETCH(QString, number);
        QFETCH(bool, confirm);
        FRESH_STATION(Register, pumps);
        clickEntry(pumps.list, entry);
        pumps.tx(2).setText(number);
        const QString text = pumps.list.item(entry)->text();
        (void)pumps.statements();
        pumps.messages.expect(confirm ? MsgBoxResult::Ok : MsgBoxResult::Cancel);
        press(Qt::Key_Delete);
        QCOMPARE(pumps.boxes(),
                 QStringList({u"1 Deseja mesmo excluir o registro: \r\n"_s + text +
                              u" inclusive seus VINCULOS, ESTA OPERAÇÃO NÃO PODERÁ SER DESFEITA, caso tenha duvida "
                              u"cancele imediatamente esta operação"_s}));
        const QStringList expected{u"exec Delete from planilhaposto where numerodispositivo = "_s + number,
                                   u"exec Delete from EstoqueDiversos where CODIGO = "_s + QString::number(entry - 1),
                                   SelectPumps};
        QCOMPARE(pumps.statements(), confirm ? expected : QStringList());
        QCOMPARE(pumps.changed.count(), confirm ? 1 : 0);
        QTEST(pumps.pumps().join(u' '), "left");
        QTEST(pumps.rows(u"EstoqueDiversos"_s, u"codigo"_s).join(u' '), "items");
    }

    void allPumps()
    {
        FRESH_STATION(Register, pumps);
        (void)pumps.statements();
        QCOMPARE(pumps.told([&] { click(pumps.window, "Command1"); }), u"0 Concluido"_s);
        QCOMPARE(pumps.statements(),
                 QStringList({u"exec Update planilhaposto set datainsert = '"_s + pumps.storedDate() + u'\''}));
        const QString day = pumps.shownDate(QDate(2026, 3, 14));
        QCOMPARE(pumps.rows(u"PlanilhaPosto"_s, u"DataInsert"_s), QStringList({day, day, day}));

        for (const MsgBoxResult answer : {MsgBoxResult::No, MsgBoxResult::Yes}) {
            QCOMPARE(pumps.pumps().size(), 3);
            QCOMPARE(pumps.told([&] { click(pumps.window, "Buttom_Mega2"); }, answer),
                     u"4 Esta operação irá excluir a leitura atual, para renovação de dados"_s);
        }
        QCOMPARE(pumps.statements(), QStringList({u"exec Delete from planilhaposto"_s, SelectPumps}));
        QVERIFY(pumps.pumps().isEmpty());
        QCOMPARE(pumps.list.count(), 3); // the old entries stay, deliberately
    }

    void closedWhileItLoads()
    {
        FRESH_STATION(Register, pumps);
        pumps.window.close();
        pumps.pump.at(pumps.pump.count() + 2, [&] { pumps.window.close(); });
        (void)pumps.statements();
        pumps.window.exec(); // ends although the window closes in the middle of its first list
        QVERIFY(!pumps.window.isVisible());
        QCOMPARE(pumps.statements().size(), 2);
    }
};

QTEST_MAIN(TestFrmCadBomba)
#include "test_frmCadBomba.moc"
