// History of closed readings, their deletion with its log, and the miscellaneous items, on both back ends.

#include "StationFixture.h"

#include "platform/ui/Application.h"

using namespace Qt::StringLiterals;
using namespace support;
using platform::MsgBoxResult;

namespace {

const QString Question =
    u"4 Deseja mesmo excluir os itens selecionados?\r\n Esta operação não podera ser revertida.  & vbcrlf "
    u"Caso sim devera ser editado manualmente a leitura anterior tambem, alem de que  \r\nnão altera o "
    u"cadastro de estoque por medidas de segurança"_s;
const QDate MonthBegin(2024, 3, 1);
const QDate MonthEnd(2024, 3, 31);

/// The station with readings of three days, and the main window on it.
struct History : StationFixture
{
    explicit History(BothBackEnds& used)
        : StationFixture(used)
    {
        insert(u"Leitura"_s, u"DataLT, cdgBomba, LeitAnt, LeitAtu, Saldo, Obs, afericao"_s,
               {u"@2024-03-14@, 2, '200,00', '250,00', '50,00', '5,50', '0'"_s,
                u"@2024-03-14@, 1, '1.000,00', '1.100,50', '100,50', '5,50', '1,5'"_s,
                u"@2024-03-15@, 1, '1.100,50', '1.200,50', '100,00', '6,00', '0'"_s,
                u"@2024-03-15@, 7, '10,00', '10,00', '0,00', null, '2'"_s,
                u"@2024-03-16@, 1, '1.200,50', '1.300,50', '100,00', 'x', '0'"_s,
                u"@2024-03-16@, 0, '1,00', '2,00', '1,00', '1,00', '0'"_s});
        open();
    }
    void listMonth()
    {
        date("dtpI_0").setValue(MonthBegin);
        date("dtpI_1").setValue(MonthEnd);
    }
    /// Rows of the list without their keys.
    QStringList list() const
    {
        QStringList rows = shown("flex2");
        for (QString& row : rows)
            row = row.section(u'|', 0, 7);
        return rows;
    }
    QStringList litres() const
    {
        QStringList cells;
        for (const QString& row : shown("flex2"))
            cells << row.section(u'|', 5, 5);
        return cells;
    }
    QString totals() const { return label("Label10") + u" | "_s + label("Label17"); }
    qsizetype readingsLeft() const { return rows(u"Leitura"_s, u"cdgBomba"_s).size(); }
    QString deletes(MsgBoxResult answer)
    {
        return told([&] { QTest::keyClick(&grid("flex2"), Qt::Key_Delete); }, answer);
    }
};

} // namespace

class TestHistory : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase_data() { BothBackEnds::addRows(); }
    void initTestCase() { platform::prepareApplication(*qApp); }

    void lists()
    {
        FRESH_STATION(History, station);
        const platform::FlexGrid& flex2 = station.grid("flex2");
        QCOMPARE(flex2.Rows(), 3); // Today's two readings.
        station.listMonth();
        const QString period = station.literal(MonthBegin) + u" and DataLT <= "_s + station.literal(MonthEnd);
        QVERIFY(station.statements().contains(u"open Select * from Leitura where cdgbomba > 0 and DataLT >= "_s +
                                              period + u"  order by  DataLT, cdgBomba "_s));

        // Pump 0 is left out, an unreadable price counts as 0, and the order is date, then pump.
        QCOMPARE(station.list(), QStringList({u"1|Gasolina A|1.000,00|1.100,50|14/03/24|100,50|5,500|552,75"_s,
                                              u"2|Gasolina B|200,00|250,00|14/03/24|50,00|5,500|275,00"_s,
                                              u"1|Gasolina A|1.100,50|1.200,50|15/03/24|100,00|6,000|600,00"_s,
                                              u"7|Etanol pátio|10,00|10,00|15/03/24|0,00|0,000|0,00"_s,
                                              u"1|Gasolina A|1.200,50|1.300,50|16/03/24|100,00|0,000|0,00"_s}));
        QCOMPARE(station.totals(), u"350,50 | 1.427,75"_s);
        QCOMPARE(station.label("Label15"), u"350,50"_s); // For the paper.
        QCOMPARE(station.label("Label14"), u"1.427,75"_s);
        QCOMPARE(flex2.CellBackColor(5, 5), 12648447U);
        QCOMPARE(flex2.CellBackColor(5, 7), 8454143U);
        QCOMPARE(flex2.CellBackColor(5, 0), 0U);

        // The sheet's date lists its own day; a day without readings leaves list and totals.
        for (const int day : {15, 20}) {
            station.date("DTP").setValue(QDate(2024, 3, day));
            QCOMPARE(station.litres(), QStringList({u"100,00"_s, u"0,00"_s}));
            QCOMPARE(station.totals(), u"100,00 | 600,00"_s);
        }

        // Selecting a pump lists its own readings of the period.
        station.grid("flex").setFocus();
        press(Qt::Key_Return);
        QVERIFY(station.statements().contains(u"open Select * from Leitura where DataLT >= "_s + period +
                                              u" and  cdgbomba = 1  order by  DataLT, cdgBomba "_s));
        QCOMPARE(station.litres().size(), 3);

        // One row a pump with readings: sums, first date, average price, last key (the fifth reading that was stored).
        station.click("opt_1");
        QVERIFY(station.statements().contains(u"open Select * from leitura where DataLT >= "_s + period +
                                              u" and  cdgbomba = 7 order by cdgBomba, dataLT asc"_s));
        QCOMPARE(station.list().size(), 3);
        QCOMPARE(station.shown("flex2").first(),
                 u"1|Gasolina A|3.301,00|-> 3.601,50|14/03/24|300,50|3,836|1.152,75|5"_s);
        QCOMPARE(station.list().last(), u"7|Etanol pátio|10,00|-> 10,00|15/03/24|0,00|0,000|0,00"_s);
        QCOMPARE(flex2.model()->index(0, 0).data(Qt::ToolTipRole).toString(), u"Leituras: 3\nAferição: 1,50"_s);
        QCOMPARE(station.totals(), u"350,50 | 1.427,75"_s);
        station.date("dtpI_0").setValue(QDate(2024, 3, 30));
        QCOMPARE(flex2.Rows(), 1);
        QCOMPARE(station.totals(), u"0,00 | 0,00"_s);
    }

    // A value is rounded once: 10,05 times 5,899 is 59,28495, and two of them are 118,5699.
    void valuesAreRoundedOnce()
    {
        FRESH_STATION(History, station);
        station.insert(u"Leitura"_s, u"DataLT, cdgBomba, LeitAnt, LeitAtu, Saldo, Obs, afericao"_s,
                       {u"@2024-04-01@, 1, '0,00', '10,05', '10,05', '5,899', '0'"_s,
                        u"@2024-04-01@, 1, '0,00', '10,05', '10,05', '5,899', '0'"_s,
                        u"@2024-04-01@, 2, '-922.337.203.685.477,58', '922.337.203.685.477,58', '0', '0', '0'"_s});
        const QString largest = u"2|Gasolina B|-922.337.203.685.477,58|"_s;
        const QString rest = u"922.337.203.685.477,58|01/04/24|0,00|0,000|0,00"_s;
        const QString once = u"1|Gasolina A|0,00|10,05|01/04/24|10,05|5,899|59,28"_s;
        station.date("DTP").setValue(QDate(2024, 4, 1));
        QCOMPARE(station.list(), QStringList({once, once, largest + rest}));
        QCOMPARE(station.totals(), u"20,10 | 118,57"_s);
        station.click("opt_1");
        station.date("dtpI_0").setValue(QDate(2024, 4, 1));
        station.date("dtpI_1").setValue(QDate(2024, 4, 1));
        QCOMPARE(station.list(),
                 QStringList({u"1|Gasolina A|0,00|-> 20,10|01/04/24|20,10|5,899|118,57"_s, largest + u"-> "_s + rest}));
        QCOMPARE(station.totals(), u"20,10 | 118,57"_s);
    }

    void deletion()
    {
        FRESH_STATION(History, station);
        station.listMonth();
        platform::FlexGrid& flex2 = station.grid("flex2");
        QCOMPARE(flex2.Rows(), 6);
        flex2.setFocus();

        station.knowsPassword = false;
        clickRow(flex2, 2);
        press(Qt::Key_Delete);
        QCOMPARE(station.prompts, 1);
        QCOMPARE(station.readingsLeft(), 6);

        station.knowsPassword = true;
        QCOMPARE(station.deletes(MsgBoxResult::No), Question);
        QCOMPARE(station.readingsLeft(), 6);
        QCOMPARE(flex2.CellBackColor(2, 0), 0U); // The list has been read again.

        // Marks: a click marks, another one takes it back; a pale cell of an unmarked row clears the row's colours.
        for (const int row : {1, 3, 4})
            clickRow(flex2, row);
        press(Qt::Key_Space); // The keyboard's click.
        QCOMPARE(flex2.CellBackColor(1, 8), 65535U);
        QCOMPARE(flex2.CellBackColor(4, 0), 0U);
        clickRow(flex2, 5, 5);
        QCOMPARE(flex2.CellBackColor(5, 5), 0U);
        QCOMPARE(flex2.CellBackColor(5, 0), 0U);

        (void)station.statements();
        QCOMPARE(station.deletes(MsgBoxResult::Yes), Question);
        QCOMPARE(station.prompts, 2); // Accepted once: not asked again.
        QCOMPARE(station.statements().mid(0, 2),
                 QStringList({u"exec Delete from Leitura where codigoI = 2"_s,
                              u"exec Insert into ExcluidosLeituraBomba(produto, DataE, leitura, total) "
                              u"values ('Gasolina A','15/03/2024','100,50','5,500');"_s}));
        QCOMPARE(station.readingsLeft(), 4);
        QCOMPARE(station.litres(), QStringList({u"50,00"_s, u"0,00"_s, u"100,00"_s}));
        QCOMPARE(station.rows(u"ExcluidosLeituraBomba"_s, u"produto leitura total"_s),
                 QStringList({u"Gasolina A|100,50|5,500"_s, u"Gasolina A|100,00|6,000"_s}));

        QCOMPARE(station.deletes(MsgBoxResult::Yes), Question); // Nothing is marked: nothing goes.
        QCOMPARE(station.readingsLeft(), 4);
        QCOMPARE(station.prompts, 2);

        // A description with an apostrophe breaks the log statement: the reading is gone, the error is told.
        database.script({u"update PlanilhaPosto set Descritivo = 'D''água' where numeroDispositivo = 2"_s});
        station.date("dtpI_0").setValue(QDate(2024, 3, 2));
        clickRow(flex2, 1);
        station.messages.expect(MsgBoxResult::Yes);
        QVERIFY(station.deletes(MsgBoxResult::Ok).startsWith(Question + u"\n16 Erro em tempo de execução '"_s));
        QCOMPARE(station.readingsLeft(), 3);
    }

    void logList()
    {
        FRESH_STATION(StationFixture, station);
        station.insert(u"ExcluidosLeituraBomba"_s, u"produto, DataE, leitura, total"_s,
                       {u"'Gasolina', '15/03/2024', '100,50', '5,500'"_s,
                        u"'Gasolina aditivada podium', '16/03/2024', '1.234.567.890,50', '5,500'"_s,
                        u"'Exatamente vinte let', '17/03/2024', '1.234.567,890', '12.345.678,90'"_s});
        station.open();
        station.click("Buttom_Mega6");
        QCOMPARE(entries(station.child<QListWidget>("List1")),
                 QStringList({u"Descritivo.......... Data           Leitura       TotalR$"_s,
                              u"Gasolina............ 15/03/24        100,50         5,500"_s,
                              u"Gasolina aditivada p 16/03/24 1.234.567.890,50         5,500"_s,
                              u"Exatamente vinte let 17/03/24 1.234.567,890 12.345.678,90"_s}));
    }

    void items()
    {
        FRESH_STATION(StationFixture, station);
        station.open();
        platform::FlexGrid& flexD = station.grid("FlexD");
        flexD.setRow(2);
        flexD.setFocus();
        press(Qt::Key_Return);
        QCOMPARE(focused(), u"Text2"_s);
        enter(u"x"_s);
        QCOMPARE(flexD.Rows(), 3); // No number: nothing happens.
        (void)station.statements();
        typeInto(station.child<QLineEdit>("Text2"), u"2,5"_s);
        press(Qt::Key_Return);
        QCOMPARE(station.statements(),
                 QStringList({u"open Select * from ControleProdComb;"_s,
                              u"open Select codigo, quantidade from EstoqueDiversos where codigo = 21"_s}));
        QCOMPARE(station.shown("FlexD"), QStringList(u"20|Aditivo|5,00|0"_s));
        QStringList ledger =
            station.rows(u"ControleProdComb"_s, u"CodProd DataOP descritivo fornecedor NumeroNota cred deb"_s);
        ledger.replaceInStrings(u"NULL"_s, QString()); // The Access reader's word for an empty text.
        QCOMPARE(ledger,
                 QStringList(u"21|%1|Óleo 1 L|OperEmpresa||0|2.5"_s.arg(station.shownDate(QDate(2024, 3, 15)))));
        const auto quantities = [&] { return station.rows(u"EstoqueDiversos"_s, u"quantidade"_s).join(u' '); };
        QCOMPARE(quantities(), u"7,50 5,00"_s);

        press(Qt::Key_Return); // The last row: the grid keeps its header.
        QCOMPARE(flexD.Rows(), 1);
        press(Qt::Key_Return); // Nothing is left to issue.
        QCOMPARE(quantities(), u"7,50 2,50"_s);
        station.click("Buttom_Mega2");
        QCOMPARE(station.shown("FlexD"), QStringList({u"20|Aditivo|2,50|2,5"_s, u"21|Óleo 1 L|7,50|2,5"_s}));
    }

    void eventsDuringAFill()
    {
        FRESH_STATION(History, station);
        platform::FlexGrid& flex2 = station.grid("flex2");
        flex2.setFocus();
        // A newer list wins, and the older one adds nothing to it.
        station.during(2, [&] { station.date("DTP").setValue(QDate(2024, 3, 15)); });
        station.date("dtpI_0").setValue(MonthBegin);
        QCOMPARE(station.litres(), QStringList({u"100,00"_s, u"0,00"_s}));
        QCOMPARE(station.label("Label10"), u"100,00"_s);
        QVERIFY(flex2.Redraw());
        // A newer list without rows leaves the older one to end.
        station.during(2, [&] { station.date("DTP").setValue(QDate(2024, 3, 25)); });
        station.date("dtpI_1").setValue(MonthEnd);
        QCOMPARE(station.litres().size(), 5);
        // Delete in the middle: what is filled in cannot have been marked.
        station.during(2, [&] { QTest::keyClick(&flex2, Qt::Key_Delete); });
        station.date("dtpI_0").setValue(QDate(2024, 3, 2));
        QCOMPARE(station.prompts, 0);
        QCOMPARE(station.litres().size(), 5);
        // The descriptions cannot be read in the middle of one: no part of it stays beside the totals of the list
        // before.
        station.during(1, [&] { database.script({u"drop table PlanilhaPosto"_s}); });
        QVERIFY(station.told([&] { station.date("dtpI_0").setValue(MonthBegin); }).startsWith(u"16 Erro em tempo"_s));
        QCOMPARE(station.litres(), QStringList());
        QCOMPARE(station.totals(), u"0,00 | 0,00"_s);
        // The window closes in the middle of a fill.
        station.during(1, [&] { station.window().close(); });
        station.click("Buttom_Mega2");
        QVERIFY(station.window().isClosed());
    }
};

QTEST_MAIN(TestHistory)
#include "test_history.moc"
