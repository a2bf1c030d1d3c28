#include "platform/ui/Application.h"
#include "platform/ui/FlexGrid.h"
#include "registers/frmdiversos.h"
#include "shared/Module1.h"
#include "support/WindowTest.h"

#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>

using namespace Qt::StringLiterals;
using namespace support;
using platform::FlexGrid;
using platform::MsgBoxResult;

namespace {

const QString SelectChosen =
    u"open Select codigo, discriminacao, quantidade from EstoqueDIVERSOS order by discriminacao;"_s;
const QString DeleteQuestion =
    u"260 A T E N Ç Ã O: Excluir o(s) registro(s) selecionado(s) e todos seus vinculos.\r\nEsta operação não poderá "
    u"ser revertida"_s;

/// The open window over four stock items, two of them chosen.
struct Items : WindowTest
{
    explicit Items(BothBackEnds& used)
        : WindowTest(used)
    {
        insert(u"Estoque"_s, u"codigo, Discriminacao, quantidade"_s,
               {u"11, 'Óleo 20W50', 86"_s, u"12, 'Água 5 L', 24.5"_s, u"13, 'Óleo 15W40', 1"_s,
                u"14, 'Pano d''água', NULL"_s});
        insert(u"EstoqueDiversos"_s, u"codigo, discriminacao, quantidade"_s,
               {u"11, 'Óleo 20W50', '10,00'"_s, u"20, 'Cera', '2,50'"_s});
        insert(u"ControleProdComb"_s, u"CodProd, cred"_s, {u"20, 1"_s, u"20, 2"_s, u"11, 3"_s});
        open(window);
    }
    QString text(const char* box) { return control<QLineEdit>(window, box).text(); }
    QStringList stored() { return rows(u"EstoqueDiversos"_s, u"codigo discriminacao quantidade"_s); }

    frmdiversos window{services};
    FlexGrid& stock = control<FlexGrid>(window, "flex");
    FlexGrid& chosen = control<FlexGrid>(window, "Flex1");
    QGroupBox& quantity = control<QGroupBox>(window, "Frame1");
};

} // namespace

class TestFrmdiversos : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase_data() { BothBackEnds::addRows(); }
    void initTestCase() { platform::prepareApplication(*qApp); }

    void openingAndSearching()
    {
        FRESH_STATION(Items, items);
        const QString header = u"Codigo|Quantidade|Descritivo"_s;
        QCOMPARE(items.statements(),
                 QStringList({u"open Select codigo, discriminacao, quantidade from Estoque order by discriminacao;"_s,
                              SelectChosen}));
        QCOMPARE(rowsOf(items.stock), QStringList({header, u"12|24,5|Água 5 L"_s, u"13|1|Óleo 15W40"_s,
                                                   u"11|86|Óleo 20W50"_s, u"14||Pano d'água"_s}));
        QCOMPARE(rowsOf(items.chosen), QStringList({header, u"20|2,50|Cera"_s, u"11|10,00|Óleo 20W50"_s}));
        QVERIFY(!items.quantity.isVisible());
        QCOMPARE(namelessControls(items.window), QStringList());

        QCOMPARE(focused(), u"Text1"_s);
        enter(u"óleo"_s);
        QCOMPARE(items.statements(),
                 QStringList({u"open Select codigo, discriminacao, quantidade from Estoque where discriminacao like "
                              u"'%óleo%' order by discriminacao;"_s}));
        QCOMPARE(items.stock.Rows(), 3);
        QCOMPARE(focused(), u"Text1"_s);
        QCOMPARE(control<QLineEdit>(items.window, "Text1").selectedText(), u"óleo"_s);
        enter(u"nada"_s);
        QCOMPARE(rowsOf(items.stock), QStringList({header}));
        press({Qt::Key_Tab, Qt::Key_Return}); // on the grid without rows
        QVERIFY(!items.quantity.isVisible());
        press(Qt::Key_Backtab);
        type(u"d'água"_s);
        QVERIFY(items.told([&] { press(Qt::Key_Return); }).startsWith(u"16 Erro em tempo de execução"_s));
    }

    void choosing()
    {
        FRESH_STATION(Items, items);
        (void)items.statements();
        press({Qt::Key_Tab, Qt::Key_Down, Qt::Key_Return});
        QVERIFY(items.quantity.isVisible());
        QCOMPARE(control<QLabel>(items.window, "Label4").text(), u"Óleo 15W40"_s);
        QCOMPARE(focused(), u"Text2"_s);
        press(Qt::Key_Escape);
        QVERIFY(!items.quantity.isVisible());
        QCOMPARE(focused(), u"flex"_s);
        press(Qt::Key_Return);
        enter(u"abc"_s);
        QCOMPARE(items.text("Text2"), u"0"_s);
        QCOMPARE(focused(), u"Text2"_s);
        QCOMPARE(items.statements(), QStringList());
        press(Qt::Key_Backspace);
        enter(u"1234,5"_s);
        QCOMPARE(items.statements(),
                 QStringList({u"exec Insert into EstoqueDiversos(codigo, QUANTIDADE, discriminacao) values "
                              u"('13','1.234,50','Óleo 15W40');"_s,
                              SelectChosen}));
        QCOMPARE(items.stored().last(), u"13|Óleo 15W40|1.234,50"_s);
        QCOMPARE(items.chosen.Rows(), 4);
        QVERIFY(!items.quantity.isVisible());

        // It is chosen now, by whichever way it is asked for again.
        const QString told = u"0 Existe um registro inserido com este codigo"_s;
        QCOMPARE(items.told([&] { press(Qt::Key_Return); }), told);
        QCOMPARE(items.told([&] {
            QTest::mouseDClick(items.stock.viewport(), Qt::LeftButton, {},
                               items.stock.visualRect(items.stock.model()->index(2, 1)).center());
        }),
                 told);
        QVERIFY(!items.quantity.isVisible());

        // An apostrophe breaks the statement; what was typed stays.
        press({Qt::Key_End, Qt::Key_Return});
        QCOMPARE(control<QLineEdit>(items.window, "Text2").selectedText(), u"1.234,50"_s);
        QVERIFY(items.told([&] { press(Qt::Key_Return); }).startsWith(u"16 Erro"_s));
        QVERIFY(items.quantity.isVisible());
        QCOMPARE(items.stored().size(), 3);
        press(Qt::Key_Escape);
        QVERIFY(items.window.isVisible());
        press(Qt::Key_Escape);
        QVERIFY(!items.window.isVisible());
    }

    void editing()
    {
        FRESH_STATION(Items, items);
        click(items.window, "Command2"); // no item yet: nothing is asked
        clickRow(items.chosen, 2);
        QCOMPARE(items.chosen.CellBackColor(2, 2), Module1::MarkColour);
        QCOMPARE(control<QLabel>(items.window, "Label6").text(), u"11"_s);
        press(Qt::Key_Space); // the keyboard's click
        QCOMPARE(items.chosen.CellBackColor(2, 2), 0U);
        press(Qt::Key_Tab);
        QCOMPARE(items.text("Text4"), u"10,00"_s);
        control<QLineEdit>(items.window, "Text4").setText(u"7"_s);
        press(Qt::Key_Return);
        QCOMPARE(focused(), u"Text3"_s);
        press(Qt::Key_End);
        type(u"!"_s);
        (void)items.statements();
        for (const MsgBoxResult answer : {MsgBoxResult::No, MsgBoxResult::Yes}) {
            QCOMPARE(items.stored().first(), u"11|Óleo 20W50|10,00"_s);
            control<QLineEdit>(items.window, "Text3").setFocus();
            QCOMPARE(items.told(
                         [&] {
                             press({Qt::Key_Return, Qt::Key_Return});
                         },
                         answer),
                     u"4 Confirma as alterações?"_s);
        }
        QCOMPARE(items.statements(),
                 QStringList({u"exec Update EstoqueDiversos set quantidade = '7', discriminacao = 'Óleo 20W50!' where "
                              u"codigo = 11"_s,
                              SelectChosen}));
        QCOMPARE(items.stored().first(), u"11|Óleo 20W50!|7"_s);
        QCOMPARE(rowsOf(items.chosen).last(), u"11|7|Óleo 20W50!"_s);
        click(items.window, "Command3");
        QVERIFY(!items.window.isVisible());
    }

    void deleting()
    {
        FRESH_STATION(Items, items);
        (void)items.statements();
        clickRow(items.chosen, 2);
        press(Qt::Key_Space); // marked and unmarked again
        QCOMPARE(items.told([&] { press(Qt::Key_Delete); }, MsgBoxResult::Yes), DeleteQuestion);
        QCOMPARE(items.statements(), QStringList({SelectChosen})); // no row is marked

        clickRow(items.chosen, 1);
        items.messages.expect(MsgBoxResult::No);
        press(Qt::Key_Delete);
        (void)items.boxes();
        QCOMPARE(items.stored().size(), 2);
        QCOMPARE(items.told(
                     [&] {
                         QTest::mouseDClick(items.chosen.viewport(), Qt::LeftButton, {},
                                            items.chosen.visualRect(items.chosen.model()->index(0, 1)).center());
                     },
                     MsgBoxResult::Yes),
                 DeleteQuestion);
        QCOMPARE(items.statements(),
                 QStringList({u"exec Delete from EstoqueDiversos where codigo = 20"_s,
                              u"exec Delete from controleprodcomb where codprod = 20"_s, SelectChosen}));
        QCOMPARE(items.stored(), QStringList({u"11|Óleo 20W50|10,00"_s}));
        QCOMPARE(items.rows(u"ControleProdComb"_s, u"CodProd cred"_s), QStringList({u"11|3"_s}));
        QCOMPARE(items.chosen.Rows(), 2);
    }

    void transferring()
    {
        FRESH_STATION(Items, items);
        const auto ledger = [&] {
            return items.rows(u"ControleProdComb"_s, u"CodProd DataOP descritivo cred deb fornecedor NumeroNota"_s)
                .mid(3);
        };
        bool enabled = true;
        items.pump.at(items.pump.count() + 1,
                      [&] { enabled = control<QPushButton>(items.window, "Command1").isEnabled(); });
        (void)items.statements();
        QCOMPARE(items.told([&] { click(items.window, "Command1"); }), u"0 Concluido"_s);
        QVERIFY(!enabled);
        QVERIFY(control<QPushButton>(items.window, "Command1").isEnabled());
        QCOMPARE(items.statements(), QStringList(2, u"open Select * from ControleProdComb;"_s));
        const QString day = items.shownDate(QDate(2026, 3, 14));
        QCOMPARE(ledger(), QStringList({u"20|%1|Cera|2.5|0|OperEmpresa|140326102030"_s.arg(day),
                                        u"11|%1|Óleo 20W50|10|0|OperEmpresa|140326102030"_s.arg(day)}));

        // A quantity that is no number stops the second transfer at its row; the button can be pressed again.
        items.script({u"UPDATE EstoqueDiversos SET quantidade = 'dois' WHERE codigo = 11"_s});
        items.clock.set(QDateTime(QDate(2026, 3, 14), QTime(9, 5, 7)));
        clickRow(items.chosen, 1);
        QCOMPARE(items.told([&] { click(items.window, "Command2"); }, MsgBoxResult::Yes),
                 u"4 Confirma as alterações?"_s);
        QVERIFY(
            items.told([&] { click(items.window, "Command1"); }).startsWith(u"16 Erro em tempo de execução '13'"_s));
        QVERIFY(control<QPushButton>(items.window, "Command1").isEnabled());
        QCOMPARE(ledger().size(), 3);
        QVERIFY(ledger().last().endsWith(u"140326090507"_s));
    }
};

QTEST_MAIN(TestFrmdiversos)
#include "test_frmdiversos.moc"
