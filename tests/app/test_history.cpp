// History of closed readings, their deletion with its log, and the miscellaneous items, on both back ends.

#include "StationFixture.h"

#include "platform/ui/Application.h"
#include "platform/ui/DatePicker.h"
#include "platform/ui/FlexGrid.h"

#include <QAbstractButton>
#include <QApplication>
#include <QListWidget>

using platform::MsgBoxResult;
using Rows = QList<QStringList>;

namespace {

const QString Question =
    QStringLiteral("Deseja mesmo excluir os itens selecionados?\r\n Esta operação não podera ser revertida.  & vbcrlf "
                   "Caso sim devera ser editado manualmente a leitura anterior tambem, alem de que  \r\nnão altera o "
                   "cadastro de estoque por medidas de segurança");

} // namespace

class TestHistory : public QObject
{
    Q_OBJECT

private:
    /// Closed readings: `day pump previous current litres price calibration`, "-" for Null.
    static void addReadings(support::BothBackEnds& database, const QStringList& readings)
    {
        for (const QString& reading : readings) {
            const QStringList parts = reading.split(u' ');
            const QDate day = QDate::fromString(parts[0], Qt::ISODate);
            const QString date = database.isMySql() ? parts[0] : day.toString(QStringLiteral("dd/MM/yyyy"));
            QStringList values;
            for (const QString& part : parts.mid(2))
                values << (part == u"-" ? QStringLiteral("null") : u'\'' + part + u'\'');
            database.script({QStringLiteral("Insert into Leitura (DataLT, cdgBomba, LeitAnt, LeitAtu, Saldo, Obs, "
                                            "afericao) values ('%1', %2, %3)")
                                 .arg(date, parts[1], values.join(QStringLiteral(", ")))});
        }
    }
    static QStringList month()
    {
        return {QStringLiteral("2024-03-14 2 200,00 250,00 50,00 5,50 0"),
                QStringLiteral("2024-03-14 1 1.000,00 1.100,50 100,50 5,50 1,5"),
                QStringLiteral("2024-03-15 1 1.100,50 1.200,50 100,00 6,00 0"),
                QStringLiteral("2024-03-15 7 10,00 10,00 0,00 - 2"),
                QStringLiteral("2024-03-16 1 1.200,50 1.300,50 100,00 x 0"),
                QStringLiteral("2024-03-16 0 1,00 2,00 1,00 1,00 0")};
    }
    static QStringList litres(const StationFixture& station)
    {
        QStringList result;
        for (const QString& row : station.rows("flex2"))
            result << row.section(u'|', 5, 5);
        return result;
    }
    static qsizetype readingsLeft(const support::BothBackEnds& database)
    {
        return database.table(QStringLiteral("Leitura"), {QStringLiteral("cdgBomba")}).size();
    }
    static void mark(StationFixture& station, int row)
    {
        platform::FlexGrid& flex2 = station.grid("flex2");
        flex2.scrollTo(flex2.model()->index(row - 1, 1));
        QTest::mouseClick(flex2.viewport(), Qt::LeftButton, {},
                          flex2.visualRect(flex2.model()->index(row - 1, 1)).center());
    }

private Q_SLOTS:
    void lists_data() { support::BothBackEnds::addRows(); }
    void lists()
    {
        FRESH_DATABASE(database);
        StationFixture station(database);
        addReadings(database, month());
        station.open();
        QCOMPARE(station.grid("flex2").Rows(), 3); // Today's two readings.
        const support::StatementTrace trace;
        station.date("dtpI_0").setValue(QDate(2024, 3, 1));
        station.date("dtpI_1").setValue(QDate(2024, 3, 31));
        const auto literal = [&](const char* mysql, const char* access) {
            return database.isMySql() ? QStringLiteral(" ' %1 ' ").arg(QString::fromLatin1(mysql))
                                      : QStringLiteral(" # %1 # ").arg(QString::fromLatin1(access));
        };
        const QString first = literal("2024/03/01", "03/01/2024");
        const QString last = literal("2024/03/31", "03/31/2024");
        QVERIFY(trace.lines().contains(QStringLiteral("open Select * from Leitura where cdgbomba > 0 and DataLT >= ") +
                                       first + QStringLiteral(" and DataLT <= ") + last +
                                       QStringLiteral("  order by  DataLT, cdgBomba ")));

        // Pump 0 is left out, an unreadable price counts as 0, and the order is date, then pump.
        QStringList rows = station.rows("flex2");
        for (QString& row : rows)
            row = row.section(u'|', 0, 7); // Without the key.
        QCOMPARE(rows, QStringList({QStringLiteral("1|Gasolina A|1.000,00|1.100,50|14/03/24|100,50|5,500|552,75"),
                                    QStringLiteral("2|Gasolina B|200,00|250,00|14/03/24|50,00|5,500|275,00"),
                                    QStringLiteral("1|Gasolina A|1.100,50|1.200,50|15/03/24|100,00|6,000|600,00"),
                                    QStringLiteral("7|Etanol pátio|10,00|10,00|15/03/24|0,00|0,000|0,00"),
                                    QStringLiteral("1|Gasolina A|1.200,50|1.300,50|16/03/24|100,00|0,000|0,00")}));
        QCOMPARE(station.label("Label10"), QStringLiteral("350,50"));
        QCOMPARE(station.label("Label17"), QStringLiteral("1.427,75"));
        QCOMPARE(station.label("Label15"), QStringLiteral("350,50"));
        QCOMPARE(station.label("Label14"), QStringLiteral("1.427,75"));
        const platform::FlexGrid& flex2 = station.grid("flex2");
        QCOMPARE(flex2.CellBackColor(5, 5), 12648447U);
        QCOMPARE(flex2.CellBackColor(5, 7), 8454143U);
        QCOMPARE(flex2.CellBackColor(5, 0), 0U);

        // The sheet's date lists its own day; a day without readings leaves list and totals.
        station.date("DTP").setValue(QDate(2024, 3, 15));
        QCOMPARE(litres(station), QStringList({QStringLiteral("100,00"), QStringLiteral("0,00")}));
        station.date("DTP").setValue(QDate(2024, 3, 20));
        QCOMPARE(litres(station).size(), 2);
        QCOMPARE(station.label("Label17"), QStringLiteral("600,00"));

        // Selecting a pump lists its own readings of the period.
        station.grid("flex").setFocus();
        station.key(Qt::Key_Return);
        QVERIFY(trace.lines().contains(QStringLiteral("open Select * from Leitura where DataLT >= ") + first +
                                       QStringLiteral(" and DataLT <= ") + last +
                                       QStringLiteral(" and  cdgbomba = 1  order by  DataLT, cdgBomba ")));
        QCOMPARE(litres(station).size(), 3);

        // One row a pump with readings: sums, first date, average price, last key.
        station.child<QAbstractButton>("opt_1").click();
        QVERIFY(trace.lines().contains(QStringLiteral("open Select * from leitura where DataLT >= ") + first +
                                       QStringLiteral(" and DataLT <= ") + last +
                                       QStringLiteral(" and  cdgbomba = 7 order by cdgBomba, dataLT asc")));
        rows = station.rows("flex2");
        QCOMPARE(rows.size(), 3);
        QCOMPARE(rows[0].section(u'|', 0, 7),
                 QStringLiteral("1|Gasolina A|3.301,00|-> 3.601,50|14/03/24|300,50|3,836|1.152,75"));
        QCOMPARE(rows[2].section(u'|', 0, 7), QStringLiteral("7|Etanol pátio|10,00|-> 10,00|15/03/24|0,00|0,000|0,00"));
        QCOMPARE(rows[0].section(u'|', 8, 8), QStringLiteral("5")); // The fifth reading that was stored.
        QCOMPARE(flex2.model()->index(0, 0).data(Qt::ToolTipRole).toString(),
                 QStringLiteral("Leituras: 3\nAferição: 1,50"));
        QCOMPARE(station.label("Label10"), QStringLiteral("350,50"));
        QCOMPARE(station.label("Label17"), QStringLiteral("1.427,75"));
        station.date("dtpI_0").setValue(QDate(2024, 3, 30));
        QCOMPARE(flex2.Rows(), 1);
        QCOMPARE(station.label("Label17"), QStringLiteral("0,00"));
    }

    void deletion_data() { support::BothBackEnds::addRows(); }
    void deletion()
    {
        FRESH_DATABASE(database);
        StationFixture station(database);
        addReadings(database, month());
        station.open();
        platform::FlexGrid& flex2 = station.grid("flex2");
        station.date("dtpI_0").setValue(QDate(2024, 3, 1));
        station.date("dtpI_1").setValue(QDate(2024, 3, 31));
        QCOMPARE(flex2.Rows(), 6);
        flex2.setFocus();

        station.knowsPassword = false;
        mark(station, 2);
        station.key(Qt::Key_Delete, &flex2);
        QCOMPARE(station.prompts, 1);
        QCOMPARE(readingsLeft(database), 6);

        station.knowsPassword = true;
        station.messages.expect(MsgBoxResult::No);
        station.key(Qt::Key_Delete, &flex2);
        QCOMPARE(station.messages.shown().last(), (support::TestMessages::Shown{Question, 4, QString()}));
        QCOMPARE(readingsLeft(database), 6);
        QCOMPARE(flex2.CellBackColor(2, 0), 0U); // The list has been read again.

        // Marks: a click marks, another one takes it back; a pale cell of an unmarked row clears the row's colours.
        mark(station, 1);
        mark(station, 3);
        mark(station, 4);
        station.key(Qt::Key_Space, &flex2); // The keyboard's click.
        QCOMPARE(flex2.CellBackColor(1, 8), 65535U);
        QCOMPARE(flex2.CellBackColor(4, 0), 0U);
        QTest::mouseClick(flex2.viewport(), Qt::LeftButton, {}, flex2.visualRect(flex2.model()->index(4, 5)).center());
        QCOMPARE(flex2.CellBackColor(5, 5), 0U);
        QCOMPARE(flex2.CellBackColor(5, 0), 0U);

        const support::StatementTrace trace;
        station.messages.expect(MsgBoxResult::Yes);
        station.key(Qt::Key_Delete, &flex2);
        QCOMPARE(station.prompts, 2); // Accepted once: not asked again.
        QCOMPARE(trace.lines().mid(0, 2),
                 QStringList({QStringLiteral("exec Delete from Leitura where codigoI = 2"),
                              QStringLiteral("exec Insert into ExcluidosLeituraBomba(produto, DataE, leitura, total) "
                                             "values ('Gasolina A','15/03/2024','100,50','5,500');")}));
        QCOMPARE(readingsLeft(database), 4);
        QCOMPARE(litres(station),
                 QStringList({QStringLiteral("50,00"), QStringLiteral("0,00"), QStringLiteral("100,00")}));
        const Rows log =
            database.table(QStringLiteral("ExcluidosLeituraBomba"),
                           {QStringLiteral("produto"), QStringLiteral("leitura"), QStringLiteral("total")});
        QCOMPARE(log, (Rows{{QStringLiteral("Gasolina A"), QStringLiteral("100,50"), QStringLiteral("5,500")},
                            {QStringLiteral("Gasolina A"), QStringLiteral("100,00"), QStringLiteral("6,000")}}));

        station.messages.expect(MsgBoxResult::Yes); // Nothing is marked: nothing goes.
        station.key(Qt::Key_Delete, &flex2);
        QCOMPARE(readingsLeft(database), 4);
        QCOMPARE(station.prompts, 2);

        // A description with an apostrophe breaks the log statement: the reading is gone, the error is told.
        database.script(
            {QStringLiteral("update PlanilhaPosto set Descritivo = 'D''água' where numeroDispositivo = 2")});
        station.date("dtpI_0").setValue(QDate(2024, 3, 2));
        mark(station, 1);
        station.messages.expect(MsgBoxResult::Yes);
        station.messages.expect();
        station.key(Qt::Key_Delete, &flex2);
        QVERIFY(station.messages.shown().last().prompt.startsWith(QStringLiteral("Erro em tempo de execução '")));
        QCOMPARE(readingsLeft(database), 3);
    }

    void logList_data() { support::BothBackEnds::addRows(); }
    void logList()
    {
        FRESH_DATABASE(database);
        StationFixture station(database);
        const QString insert =
            QStringLiteral("Insert into ExcluidosLeituraBomba(produto, DataE, leitura, total) values (");
        database.script(
            {insert + QStringLiteral("'Gasolina', '15/03/2024', '100,50', '5,500')"),
             insert + QStringLiteral("'Gasolina aditivada podium', '16/03/2024', '1.234.567.890,50', '5,500')"),
             insert + QStringLiteral("'Exatamente vinte let', '17/03/2024', '1.234.567,890', '12.345.678,90')")});
        station.open();
        station.child<QAbstractButton>("Buttom_Mega6").click();
        const QListWidget& list = station.child<QListWidget>("List1");
        QStringList lines;
        for (int row = 0; row < list.count(); ++row)
            lines << list.item(row)->text();
        QCOMPARE(lines, QStringList({QStringLiteral("Descritivo.......... Data           Leitura       TotalR$"),
                                     QStringLiteral("Gasolina............ 15/03/24        100,50         5,500"),
                                     QStringLiteral("Gasolina aditivada p 16/03/24 1.234.567.890,50         5,500"),
                                     QStringLiteral("Exatamente vinte let 17/03/24 1.234.567,890 12.345.678,90")}));
    }

    void items_data() { support::BothBackEnds::addRows(); }
    void items()
    {
        FRESH_DATABASE(database);
        StationFixture station(database);
        station.open();
        platform::FlexGrid& flexD = station.grid("FlexD");
        QLineEdit& text2 = station.child<QLineEdit>("Text2");
        flexD.setRow(2);
        flexD.setFocus();
        station.key(Qt::Key_Return);
        QVERIFY(text2.hasFocus());
        QTest::keyClicks(&text2, QStringLiteral("x"));
        station.key(Qt::Key_Return);
        QCOMPARE(flexD.Rows(), 3); // No number: nothing happens.
        text2.clear();
        QTest::keyClicks(&text2, QStringLiteral("2,5"));
        const support::StatementTrace trace;
        station.key(Qt::Key_Return);
        QCOMPARE(
            trace.lines(),
            QStringList({QStringLiteral("open Select * from ControleProdComb;"),
                         QStringLiteral("open Select codigo, quantidade from EstoqueDiversos where codigo = 21")}));
        QCOMPARE(station.rows("FlexD"), QStringList(QStringLiteral("20|Aditivo|5,00|0")));
        Rows ledger = database.table(QStringLiteral("ControleProdComb"),
                                     {QStringLiteral("CodProd"), QStringLiteral("DataOP"), QStringLiteral("descritivo"),
                                      QStringLiteral("fornecedor"), QStringLiteral("NumeroNota"),
                                      QStringLiteral("cred"), QStringLiteral("deb")});
        QCOMPARE(ledger.size(), 1);
        ledger[0][1] = ledger[0][1].left(10);
        ledger[0].replaceInStrings(QStringLiteral("NULL"), QString()); // The Access reader's word for an empty text.
        QCOMPARE(ledger[0].join(u'|'), QStringLiteral("21|2024-03-15|Óleo 1 L|OperEmpresa||0|2.5"));
        const auto quantities = [&] {
            QStringList result;
            for (const QStringList& row :
                 database.table(QStringLiteral("EstoqueDiversos"), {QStringLiteral("quantidade")}))
                result << row.first();
            return result;
        };
        QCOMPARE(quantities(), QStringList({QStringLiteral("7,50"), QStringLiteral("5,00")}));

        station.key(Qt::Key_Return, &text2); // The last row: the grid keeps its header.
        QCOMPARE(flexD.Rows(), 1);
        station.key(Qt::Key_Return, &text2); // Nothing is left to issue.
        QCOMPARE(quantities(), QStringList({QStringLiteral("7,50"), QStringLiteral("2,50")}));
        station.child<QAbstractButton>("Buttom_Mega2").click();
        QCOMPARE(station.rows("FlexD"),
                 QStringList({QStringLiteral("20|Aditivo|2,50|2,5"), QStringLiteral("21|Óleo 1 L|7,50|2,5")}));
    }

    void eventsDuringAFill_data() { support::BothBackEnds::addRows(); }
    void eventsDuringAFill()
    {
        FRESH_DATABASE(database);
        StationFixture station(database);
        addReadings(database, month());
        frmprincipal& window = station.open();
        platform::FlexGrid& flex2 = station.grid("flex2");
        flex2.setFocus();
        const auto during = [&](const std::function<void()>& action) {
            station.pump.at(station.pump.count() + 2, action);
        };
        // A newer list wins, and the older one adds nothing to it.
        during([&] { station.date("DTP").setValue(QDate(2024, 3, 15)); });
        station.date("dtpI_0").setValue(QDate(2024, 3, 1));
        QCOMPARE(litres(station), QStringList({QStringLiteral("100,00"), QStringLiteral("0,00")}));
        QCOMPARE(station.label("Label10"), QStringLiteral("100,00"));
        QVERIFY(flex2.Redraw());
        // A newer list without rows leaves the older one to end.
        during([&] { station.date("DTP").setValue(QDate(2024, 3, 25)); });
        station.date("dtpI_1").setValue(QDate(2024, 3, 31));
        QCOMPARE(litres(station).size(), 5);
        // Delete in the middle: what is filled in cannot have been marked.
        during([&] { station.key(Qt::Key_Delete, &flex2); });
        station.date("dtpI_0").setValue(QDate(2024, 3, 2));
        QCOMPARE(station.prompts, 0);
        QCOMPARE(litres(station).size(), 5);
        // The window closes in the middle of a fill.
        during([&] { window.close(); });
        station.child<QAbstractButton>("opt_1").click();
        QVERIFY(window.isClosed());
    }
};

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    platform::prepareApplication(application);
    TestHistory test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_history.moc"
