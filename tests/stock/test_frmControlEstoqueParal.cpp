#include "platform/ui/Application.h"
#include "platform/ui/DatePicker.h"
#include "platform/ui/FlexGrid.h"
#include "stock/frmControlEstoqueParal.h"
#include "support/WindowTest.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>

#include <stdexcept>

using namespace Qt::StringLiterals;
using namespace support;
using platform::DatePicker;
using platform::FlexGrid;

namespace {

/// The open ledger over two products (row keys 1 and 2) and movements of the first one around the month.
struct Ledger : WindowTest
{
    explicit Ledger(BothBackEnds& used)
        : WindowTest(used)
    {
        insert(u"CadProdComb"_s, u"Descritivo, codprod, codigoEstoque"_s,
               {u"'Óleo diesel', 7, 7"_s, u"'Álcool', 8, 8"_s});
        insert(u"Fornece"_s, u"razao"_s, {u"'Usina São João'"_s, u"'Distribuidora Ipê'"_s});
        insert(u"ControleProdComb"_s, u"CodProd, DataOP, descritivo, fornecedor, NumeroNota, cred, deb"_s,
               {u"1, @2026-03-14@, 'Óleo diesel', 'F', 'N2', 0, 250.5"_s,
                u"1, @2026-03-01@, 'Óleo diesel', 'F', 'N1', 1000, 0"_s,
                u"1, @2026-02-28@, 'Óleo diesel', 'F', 'N0', 5, 0"_s,
                u"1, @2026-03-15@, 'Óleo diesel', 'F', 'N3', 7, NULL"_s});
        open(window);
    }
    QString select(int product) const
    {
        return u"open Select * from ControleProdComb where codProd = %1  and DataOP >= "_s.arg(product) +
               literal(QDate(2026, 3, 1)) + u" and DataOP <= "_s + literal(QDate(2026, 3, 14)) +
               u"  order by DataOP;"_s;
    }
    QLineEdit& tx(int index) { return control<QLineEdit>(window, index == 0 ? "tx_0" : "tx_1"); }
    QString totals()
    {
        return control<QLabel>(window, "lbt_0").text() + u'|' + control<QLabel>(window, "lbt_1").text();
    }
    /// What the window has written, behind the four movements of the beginning. An empty text of an Access file reads
    /// as Null.
    QStringList written()
    {
        return rows(u"ControleProdComb"_s, u"CodProd DataOP descritivo cred deb fornecedor NumeroNota"_s)
            .mid(4)
            .replaceInStrings(u"NULL"_s, QString());
    }

    QStringList printed;
    bool printerFails = false;
    frmControlEstoqueParal window{services, [this](const LedgerListing& listing) {
                                      if (printerFails)
                                          throw std::runtime_error("no paper");
                                      printed << listing.product << listing.first.toString(u"dd/MM/yyyy"_s)
                                              << listing.last.toString(u"dd/MM/yyyy"_s) << listing.totalCredit
                                              << listing.totalDebit << QString::number(listing.grid.Rows());
                                  }};
    QListWidget& list = control<QListWidget>(window, "List1");
    FlexGrid& grid = control<FlexGrid>(window, "flex");
    QComboBox& supplier = control<QComboBox>(window, "Combo1");
};

} // namespace

class TestFrmControlEstoqueParal : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase_data() { BothBackEnds::addRows(); }
    void initTestCase() { platform::prepareApplication(*qApp); }

    void opening()
    {
        FRESH_STATION(Ledger, ledger);
        const QString selectProducts = u"open Select * from CadProdComb order by Descritivo"_s;
        QCOMPARE(ledger.statements(), QStringList({u"open Select * from Fornece order by razao;"_s, selectProducts}));
        QCOMPARE(entries(ledger.list), QStringList({u"00002 - Álcool"_s, u"00001 - Óleo diesel"_s}));
        QCOMPARE(rowsOf(ledger.grid), QStringList(u"|CodgProd|DatOP|Descritivo|Cred|Deb|NºNota|"_s));
        QCOMPARE(ledger.totals(), u"0,00|0,00"_s);
        QCOMPARE(ledger.supplier.currentText(), u"DISTRIBUIDORA IPÊ"_s);
        QCOMPARE(control<QLabel>(ledger.window, "Label5").text(), u"14/03/2026"_s);
        QCOMPARE(control<DatePicker>(ledger.window, "dtp_0").Value(), QDate(2026, 3, 1));
        QCOMPARE(control<DatePicker>(ledger.window, "dtp_1").Value(), QDate(2026, 3, 14));
        QCOMPARE(namelessControls(ledger.window), QStringList());

        // A product that came while the window was away is there when it is shown again.
        ledger.window.close();
        ledger.script({u"INSERT INTO CadProdComb (Descritivo) VALUES ('Arla')"_s});
        open(ledger.window);
        QCOMPARE(ledger.statements(), QStringList({selectProducts}));
        QCOMPARE(ledger.list.count(), 3);
        QCOMPARE(ledger.supplier.count(), 2);
    }

    void listing()
    {
        FRESH_STATION(Ledger, ledger);
        (void)ledger.statements();
        clickEntry(ledger.list, 1);
        QCOMPARE(ledger.statements(), QStringList({ledger.select(1)}));
        QCOMPARE(rowsOf(ledger.grid).mid(1), // both ends of the period
                 QStringList({u"2|1|01/03/26|Óleo diesel|1.000,00|0,00|N1|F"_s,
                              u"1|1|14/03/26|Óleo diesel|0,00|250,50|N2|F"_s}));
        for (int row = 1; row < 3; ++row) {
            QCOMPARE(ledger.grid.CellBackColor(row, 4), 0xC0FFC0U);
            QCOMPARE(ledger.grid.CellBackColor(row, 5), 0xC0E0FFU);
            QCOMPARE(ledger.grid.CellBackColor(row, 3), 0U);
        }
        QCOMPARE(ledger.totals(), u"1.000,00|250,50"_s);

        control<DatePicker>(ledger.window, "dtp_1").setValue(QDate(2026, 3, 15));
        click(ledger.window, "btI"); // the listing as it is shown, whatever the controls say by now
        QCOMPARE(ledger.printed, QStringList({u"00001 - Óleo diesel"_s, u"01/03/2026"_s, u"14/03/2026"_s, u"1.000,00"_s,
                                              u"250,50"_s, u"3"_s}));
        ledger.printerFails = true;
        QVERIFY(ledger.told([&] { click(ledger.window, "btI"); }).contains(u"no paper"_s));

        clickEntry(ledger.list, 1);
        QCOMPARE(ledger.totals(), u"1.007,00|250,50"_s);
        QCOMPARE(ledger.grid.TextMatrix(3, 5), QString()); // an empty debit
        control<QListWidget>(ledger.window, "List1").setFocus();
        press(Qt::Key_Up);
        QCOMPARE(ledger.grid.Rows(), 1);
        QCOMPARE(ledger.totals(), u"0,00|0,00"_s);
    }

    /// Suppliers and products are read one apart from the other.
    void oneListWithoutTheOther()
    {
        FRESH_STATION(Ledger, ledger);
        ledger.script({u"DROP TABLE Fornece"_s});
        frmControlEstoqueParal products(ledger.services, {});
        QVERIFY(ledger.told([&] { open(products); }).contains(u"Fornece"_s, Qt::CaseInsensitive));
        QCOMPARE(control<QListWidget>(products, "List1").count(), 2);
        ledger.script({u"CREATE TABLE Fornece (razao VARCHAR(50))"_s, u"INSERT INTO Fornece (razao) VALUES ('F')"_s,
                       u"DROP TABLE CadProdComb"_s});
        frmControlEstoqueParal suppliers(ledger.services, {});
        QVERIFY(ledger.told([&] { open(suppliers); }).contains(u"CadProdComb"_s, Qt::CaseInsensitive));
        QCOMPARE(control<QComboBox>(suppliers, "Combo1").count(), 1);
    }

    void newerListingWins()
    {
        FRESH_STATION(Ledger, ledger);
        ledger.script({u"UPDATE ControleProdComb SET CodProd = 2 WHERE CodigoI = 2"_s});
        ledger.pump.at(ledger.pump.count() + 1, [&] { clickEntry(ledger.list, 0); });
        clickEntry(ledger.list, 1);
        QCOMPARE(ledger.grid.Rows(), 2);
        QCOMPARE(ledger.grid.TextMatrix(1, 1), u"2"_s);
        QVERIFY(ledger.grid.Redraw());
        QCOMPARE(ledger.totals(), u"1.000,00|0,00"_s);
    }

    void byKeyboard()
    {
        FRESH_STATION(Ledger, ledger);
        QCOMPARE(focused(), u"List1"_s);
        press({Qt::Key_Down, Qt::Key_Down});
        (void)ledger.statements();
        press(Qt::Key_Return);
        QCOMPARE(focused(), u"tx_0"_s);
        enter(u"1000"_s);
        QCOMPARE(ledger.tx(0).text(), u"1.000,00"_s);
        QCOMPARE(focused(), u"tx_1"_s);
        enter(u"NF 77"_s);
        QCOMPARE(focused(), u"Combo1"_s);
        press({Qt::Key_Down, Qt::Key_Return});
        QCOMPARE(focused(), u"BTM"_s);
        press(Qt::Key_Return);
        QCOMPARE(ledger.statements(), QStringList({u"open Select * from ControleProdComb;"_s, ledger.select(1)}));
        const QString day = ledger.shownDate(QDate(2026, 3, 14));
        QCOMPARE(ledger.written(), QStringList({u"1|%1|Óleo diesel|1000|0|USINA SÃO JOÃO|NF 77"_s.arg(day)}));
        QCOMPARE(ledger.totals(), u"2.000,00|250,50"_s);
        QCOMPARE(focused(), u"List1"_s);

        // A debit, without supplier and invoice number; an apostrophe is no harm here.
        press({Qt::Key_Tab, Qt::Key_Right, Qt::Key_Tab});
        QCOMPARE(ledger.tx(0).selectedText(), u"1.000,00"_s);
        enter(u"2,5"_s);
        enter(u"d'água"_s);
        press({Qt::Key_Backspace, Qt::Key_Return, Qt::Key_Return});
        QCOMPARE(ledger.written().last(), u"1|%1|Óleo diesel|0|2.5||d'água"_s.arg(day));
        QCOMPARE(ledger.totals(), u"2.000,00|253,00"_s);
        press(Qt::Key_Escape);
        QVERIFY(!ledger.window.isVisible());
    }

    void litres()
    {
        FRESH_STATION(Ledger, ledger);
        (void)ledger.statements();
        const QStringList cases[] = {{u"abc"_s, u"0"_s}, {u""_s, u"0"_s}, {u"0"_s, u"0,00"_s}};
        for (const QStringList& one : cases) {
            typeInto(ledger.tx(0), one[0]);
            click(ledger.window, "BTM");
            QCOMPARE(ledger.tx(0).text(), one[1]);
            QCOMPARE(ledger.statements(), QStringList());
        }
        const QStringList typed[] = {{u"12.5"_s, u"12,50"_s}, {u"1.000,00"_s, u"1.000,00"_s}, {u"1.000"_s, u"1,00"_s}};
        for (const QStringList& one : typed) {
            typeInto(ledger.tx(0), one[0]);
            ledger.tx(1).setFocus();
            QCOMPARE(ledger.tx(0).text(), one[1]); // a point alone is the decimal comma
        }
        // Without a selected product the row belongs to none.
        ledger.tx(0).setText(u"-3"_s);
        click(ledger.window, "BTM");
        QCOMPARE(ledger.statements(), QStringList({u"open Select * from ControleProdComb;"_s, ledger.select(0)}));
        QCOMPARE(ledger.written(),
                 QStringList({u"0|%1||-3|0|DISTRIBUIDORA IPÊ|"_s.arg(ledger.shownDate(QDate(2026, 3, 14)))}));
    }
};

QTEST_MAIN(TestFrmControlEstoqueParal)
#include "test_frmControlEstoqueParal.moc"
