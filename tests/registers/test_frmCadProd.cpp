#include "platform/ui/Application.h"
#include "registers/frmCadProd.h"
#include "support/WindowTest.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QSignalSpy>

using namespace Qt::StringLiterals;
using namespace support;
using platform::MsgBoxResult;

namespace {

const QString SelectStock = u"open Select * from Estoque order by Discriminacao"_s;
const QString SelectProducts = u"open Select * from cadprodcomb order by Descritivo"_s;

/// An open product register over three stock items, two products and three ledger rows.
struct Register : WindowTest
{
    explicit Register(BothBackEnds& used)
        : WindowTest(used)
    {
        insert(u"Estoque"_s, u"codigo, Discriminacao, valorvenda"_s,
               {u"7, 'Gasolina comum', 5.499"_s, u"21, 'Óleo diesel', 1234.5"_s, u"30, 'Gasolina d''água', 1"_s});
        insert(u"CadProdComb"_s, u"Descritivo, codprod, valor, codigoEstoque"_s,
               {u"'Gasolina comum', 70, 5, 7"_s, u"'Etanol', 8, 3.5, 8"_s});
        insert(u"ControleProdComb"_s, u"CodProd, cred"_s, {u"7, 1"_s, u"7, 2"_s, u"8, 3"_s});
        open(window);
    }
    QLineEdit& code() { return control<QLineEdit>(window, "Text1"); }
    QLineEdit& price() { return control<QLineEdit>(window, "Text2"); }
    QString shown()
    {
        return QStringList({control<QLabel>(window, "Label1").text(), code().text(), price().text()}).join(u'|');
    }
    QStringList products() { return rows(u"CadProdComb"_s, u"Descritivo codprod valor codigoEstoque"_s); }
    QStringList ledger() { return rows(u"ControleProdComb"_s, u"CodProd cred"_s); }
    /// Picks an entry of the stock by keys alone.
    void pick(int entry)
    {
        control<QPushButton>(window, "cmddir").setFocus();
        press(Qt::Key_Return);
        for (int i = 0; i <= entry; ++i)
            press(Qt::Key_Down);
        press(Qt::Key_Return);
    }

    frmCadProd window{services};
    QListWidget& list = control<QListWidget>(window, "List1");
    QGroupBox& chooser = control<QGroupBox>(window, "Frame2");
    QSignalSpy changed{&window, &frmCadProd::pumpsChanged};
};

} // namespace

class TestFrmCadProd : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase_data() { BothBackEnds::addRows(); }
    void initTestCase() { platform::prepareApplication(*qApp); }

    void byKeyboard()
    {
        FRESH_STATION(Register, products);
        QCOMPARE(products.statements(), QStringList({SelectStock, SelectProducts}));
        QCOMPARE(entries(products.list), QStringList({u"00008 - Etanol"_s, u"00007 - Gasolina comum"_s}));
        QCOMPARE(namelessControls(products.window), QStringList());
        press(Qt::Key_Return); // on the button that opens the chooser
        QVERIFY(products.chooser.isVisible());
        QCOMPARE(products.chooser.pos(), QPoint(8, 8) * products.window.logicalDpiX() / 96);
        press(Qt::Key_Escape);
        QVERIFY(!products.chooser.isVisible());
        QVERIFY(products.window.isVisible());
        control<QPushButton>(products.window, "cmddir").setFocus();
        press(Qt::Key_Return);
        auto& stock = control<QListWidget>(products.window, "List2");
        const QPoint item = stock.visualItemRect(stock.item(2)).center();
        QTest::mouseClick(stock.viewport(), Qt::LeftButton, {}, item);
        QTest::mouseDClick(stock.viewport(), Qt::LeftButton, {}, item);
        QVERIFY(!products.chooser.isVisible());
        QCOMPARE(products.shown(), u"Óleo diesel|00021|1.234,500"_s);
        QCOMPARE(products.price().selectedText(), u"1.234,500"_s);
        type(u"5,499"_s);
        press(Qt::Key_Backtab);
        QCOMPARE(products.code().selectedText(), u"00021"_s);
        enter(u"21"_s);
        QCOMPARE(products.code().text(), u"00021"_s);
        QCOMPARE(focused(), u"Buttom_Mega1"_s);
        press(Qt::Key_Return);
        const QString price = database.isMySql() ? u"5.499"_s : u"5,499"_s;
        QCOMPARE(products.statements(),
                 QStringList({u"open Select * from estoque where codigo = 21"_s,
                              u"open Select * from CadProdComb where Descritivo = 'Óleo diesel'"_s,
                              u"exec Insert Into CadProdComb(Descritivo, codprod, valor, codigoestoque) values "
                              u"('Óleo diesel','00021','%1','00021')"_s.arg(price),
                              SelectProducts}));
        QCOMPARE(products.price().text(), price); // rewritten for the server, deliberately
        QCOMPARE(focused(), u"Text2"_s);
        press(Qt::Key_Return);
        QCOMPARE(focused(), u"Buttom_Mega1"_s);
        QCOMPARE(products.products().last(), u"Óleo diesel|21|5.499|21"_s);
        QCOMPARE(products.list.count(), 3);
        const QRect place = products.window.geometry();
        press(Qt::Key_Escape);
        QVERIFY(!products.window.isVisible());
        QVERIFY(products.window.x() > place.x() + 500 && products.window.y() > place.y()); // it slid away
        QCOMPARE(products.changed.count(), 1);
    }

    void existing()
    {
        FRESH_STATION(Register, products);
        clickEntry(products.list, 1);
        QCOMPARE(products.shown(), u"Gasolina comum|00007|5,000"_s);
        QCOMPARE(products.statements().last(), u"open Select * from cadprodcomb where codigoestoque = 7"_s);
        const QString update =
            u"exec UPDATE cadProdComb set descritivo = 'Gasolina comum', valor = '%1', codigoestoque = '9' where "
            u"descritivo = 'Gasolina comum';"_s.arg(database.isMySql() ? u"6.5"_s : u"6,5"_s);
        const auto save = [&](MsgBoxResult answer) {
            products.code().setText(u"9"_s);
            products.price().setText(u"6,5"_s);
            QCOMPARE(products.told([&] { click(products.window, "Buttom_Mega1"); }, answer),
                     u"4 Aplicar as alterações para Gasolina comum"_s);
            QCOMPARE(products.statements().contains(update), answer == MsgBoxResult::Yes);
            QCOMPARE(focused(), u"Text2"_s);
        };
        save(MsgBoxResult::No);
        QCOMPARE(products.products().first(), u"Gasolina comum|70|5|7"_s);
        save(MsgBoxResult::Yes);
        const QStringList updated{u"Gasolina comum|70|6.5|9"_s, u"Etanol|8|3.5|8"_s}; // the old codprod stays
        QCOMPARE(products.products(), updated);
        // One more of the description, without a question.
        control<QCheckBox>(products.window, "Check1").setChecked(true);
        products.price().setText(u"7"_s);
        click(products.window, "Buttom_Mega1");
        QCOMPARE(products.products(), updated + QStringList{u"Gasolina comum|9|7|9"_s});

        // What is refused moves the focus and nothing else.
        const QStringList cases[] = {{u"x"_s, u""_s, u"Text2"_s},
                                     {u"x"_s, u"0"_s, u"Text1"_s},
                                     {u"00000"_s, u"0"_s, u"Text1"_s},
                                     {u"7"_s, u"0,000"_s, u"Text2"_s}};
        (void)products.statements();
        for (const QStringList& one : cases) {
            products.code().setText(one[0]);
            products.price().setText(one[1]);
            click(products.window, "Buttom_Mega1");
            QCOMPARE(focused(), one[2]);
            QCOMPARE(products.price().text(), one[1]);
        }
        QCOMPARE(products.statements(), QStringList());
    }

    void apostropheAndGoneItem()
    {
        FRESH_STATION(Register, products);
        products.pick(1);
        QCOMPARE(products.shown(), u"Gasolina d'água|00030|1,000"_s);
        QVERIFY(products.told([&] { click(products.window, "Buttom_Mega1"); })
                    .startsWith(u"16 Erro em tempo de execução"_s));
        QCOMPARE(products.products().size(), 2);

        products.script({u"DELETE FROM Estoque WHERE codigo = 21"_s, u"DELETE FROM CadProdComb"_s});
        products.pick(1); // one on from the last pick
        QCOMPARE(products.shown(), u"Óleo diesel|00021|"_s);
        clickEntry(products.list, 0);
        QCOMPARE(products.shown(), u"Óleo diesel|00021|"_s);
        products.list.clearSelection();
        (void)products.statements();
        press(Qt::Key_Delete); // nothing is selected: nothing is asked
        QCOMPARE(products.statements(), QStringList());
    }

    void longDescription()
    {
        FRESH_STATION(Register, products);
        const QString description = u"ação"_s.repeated(63) + u"çãé"_s; // 255 characters
        products.script({u"UPDATE Estoque SET Discriminacao = '"_s + description + u"' WHERE codigo = 7"_s});
        click(products.window, "Command1");
        products.pick(0);
        click(products.window, "Buttom_Mega1");
        QCOMPARE(products.products().last(), description + u"|7|5.499|7"_s);
        clickEntry(products.list, 0);
        QVERIFY(products.shown().startsWith(description));
    }

    void deleting()
    {
        FRESH_STATION(Register, products);
        clickEntry(products.list, 1);
        (void)products.statements();
        const QString one = u"84 Deseja mesmo excluir o registro 00007 e todos seus vinculados? Esta operação não "
                            u"poderá ser desfeita"_s;
        for (const MsgBoxResult answer : {MsgBoxResult::No, MsgBoxResult::Yes}) {
            QCOMPARE(products.ledger().size(), 3);
            QCOMPARE(products.told([&] { press(Qt::Key_Delete); }, answer), one);
        }
        QCOMPARE(products.statements(),
                 QStringList({u"exec Delete from CadProdComb where codigoestoque = 7"_s,
                              u"exec Delete from ControleProdComb where codProd = 7"_s, SelectProducts}));
        QCOMPARE(products.products(), QStringList({u"Etanol|8|3.5|8"_s}));
        QCOMPARE(products.ledger(), QStringList({u"8|3"_s}));

        const QString all =
            u"84 Deseja mesmo excluir a lista e todos seus vinculados? Esta operação não poderá ser desfeita"_s;
        for (const MsgBoxResult answer : {MsgBoxResult::No, MsgBoxResult::Yes}) {
            QCOMPARE(products.ledger().size(), 1);
            QCOMPARE(products.told([&] { click(products.window, "Command2"); }, answer), all);
        }
        QCOMPARE(products.statements(),
                 QStringList({u"exec Delete from CadProdComb where codigoI >= 0"_s,
                              u"exec Delete from ControleProdComb where codigoI >= 0"_s, SelectProducts}));
        QVERIFY(products.products().isEmpty() && products.ledger().isEmpty());
        QCOMPARE(entries(products.list), QStringList({u"00008 - Etanol"_s})); // the old entry stays, deliberately
        click(products.window, "Command1");
        QCOMPARE(products.statements(), QStringList({SelectStock, SelectProducts}));
    }
};

QTEST_MAIN(TestFrmCadProd)
#include "test_frmCadProd.moc"
