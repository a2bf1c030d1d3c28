// Connection and Recordset as every window uses them, the same on both back ends.
#include "platform/ado/Connection.h"
#include "platform/ado/Recordset.h"
#include "platform/vb/Error.h"
#include "support/BothBackEnds.h"
#include "support/StatementTrace.h"

#include <QTest>

using namespace Qt::StringLiterals;

using ado::Recordset;
using support::errorOf;
using vb::Variant;

namespace {

vb::Date day(int year, int month, int dayOfMonth, double time = 0)
{
    return vb::Date{static_cast<double>(QDate(1899, 12, 30).daysTo(QDate(year, month, dayOfMonth))) + time};
}

} // namespace

class TestRecordset : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsEveryType_data() { support::BothBackEnds::addRows(); }
    void readsEveryType()
    {
        FRESH_DATABASE(database);
        database.script({u"create table Coisas (codigo integer, litros double, nome varchar(50), data datetime)"_s,
                         u"insert into Coisas (codigo, litros, nome, data) values (7, 0.1, 'Óleo ''Ação'' \U0001F6E2', "
                         "'2024-03-15 06:00:00')"_s,
                         u"insert into Coisas (codigo) values (-2000000000)"_s,
                         u"insert into Coisas (codigo, nome, data) values (8, '', '1850-01-02')"_s});
        Recordset rows;
        rows.Open(u"Select * from Coisas order by codigo;"_s, database.connection());
        QCOMPARE(rows.RecordCount(), 3);
        QVERIFY(!rows.Eof());
        QCOMPARE(rows.Fields(u"CODIGO"), Variant(-2000000000));
        for (const QStringView name : {u"litros", u"nome", u"Data"})
            QVERIFY(rows.Fields(name).isNull());
        rows.MoveNext();
        QCOMPARE(rows.Fields(0), Variant(7));
        QCOMPARE(rows.Fields(1), Variant(0.1));
        QCOMPARE(rows.Fields(rows.fieldIndex(u"NOME")), Variant(u"Óleo 'Ação' \U0001F6E2"_s));
        QCOMPARE(rows.Fields(u"data"), Variant(day(2024, 3, 15, 0.25)));
        rows.MoveNext();
        QCOMPARE(rows.Fields(u"nome"), Variant(QString()));
        QCOMPARE(rows.Fields(u"data"), Variant(day(1850, 1, 2)));
        rows.MoveNext();
        QVERIFY(rows.Eof());
        QVERIFY_THROWS_EXCEPTION(vb::Error, rows.MoveNext());
        QVERIFY_THROWS_EXCEPTION(vb::Error, (void)rows.Fields(u"nome"));
        QCOMPARE(errorOf([&] { (void)rows.Fields(u"nomes"); }).number(), 3265);
        QCOMPARE(errorOf([&] { (void)rows.Fields(4); }).number(), 3265);
    }

    void addsAndChangesRows_data() { support::BothBackEnds::addRows(); }
    void addsAndChangesRows()
    {
        FRESH_DATABASE(database);
        database.script(
            {u"create table Razao (CodProd double, DataOP datetime, descritivo varchar(80), cred double, nota "
             "varchar(20))"_s});
        const QString source = u"Select * from Razao;"_s;
        Recordset added;
        added.OpenToAdd(source, database.connection());
        QVERIFY(added.Eof());
        added.AddNew();
        added.SetField(u"codprod", u"00012"_s);
        added.SetField(u"DataOP", day(2024, 3, 15));
        added.SetField(u"descritivo", u"Gasolina d'água \\ \"aditivada\""_s);
        added.SetField(u"cred", u"1.234,50"_s);
        added.SetField(u"nota", 1.5); // A number becomes its regional text in a text column.
        added.Update();
        added.AddNew();
        added.SetField(u"codprod", 13.0);
        added.SetField(u"nota", QString());
        added.Update();
        added.AddNew();
        added.SetField(u"inexistente", 1.0);
        QVERIFY(errorOf([&] { added.Update(); }).number() != 0);

        Recordset rows;
        rows.Open(source, database.connection());
        QCOMPARE(rows.RecordCount(), 2);
        QCOMPARE(rows.Fields(u"cred"), Variant(1234.5));
        rows.SetField(u"cred", vb::Currency::fromScaled(-10'000));
        rows.SetField(u"nota", Variant());
        QCOMPARE(rows.Fields(u"cred"), Variant(-1.0));
        rows.Update();
        rows.SetField(u"cred", 2.25); // The same row once more: its old values are now the new ones.
        rows.Update();
        rows.MoveNext();
        QCOMPARE(rows.Fields(u"CodProd"), Variant(13.0));
        QCOMPARE(rows.Fields(u"nota"), Variant(QString()));
        QVERIFY_THROWS_EXCEPTION(ado::Error, rows.SetField(u"cred", u"abc"_s));
        rows.SetField(u"descritivo", u"x"_s);
        rows.MoveNext(); // Writes what is pending.
        QVERIFY(rows.Eof());
        QVERIFY_THROWS_EXCEPTION(vb::Error, rows.SetField(u"cred", 1.0));

        // The reader of Access files shows an empty text as null.
        const QString empty = backEnd == u"access"_s ? u"NULL"_s : QString();
        QCOMPARE(database.rows(u"Razao"_s, u"CodProd DataOP descritivo cred nota"_s),
                 (QStringList{u"12|2024-03-15 00:00:00|Gasolina d'água \\ \"aditivada\"|2.25|NULL"_s,
                              u"13|NULL|x|NULL|"_s + empty}));
    }

    /// Rows that hold the same in every selected column: one Update changes one row.
    void changesOneOfEqualRows_data() { support::BothBackEnds::addRows(); }
    void changesOneOfEqualRows()
    {
        FRESH_DATABASE(database);
        database.script({u"create table Estoque (codigo integer, quantidade double)"_s,
                         u"insert into Estoque (codigo, quantidade) values (5, 100)"_s,
                         u"insert into Estoque (codigo, quantidade) values (5, 100)"_s});
        Recordset rows;
        rows.Open(u"Select quantidade, codigo from estoque where codigo = 5"_s, database.connection());
        rows.SetField(u"quantidade", 40.5);
        rows.Update();
        rows.Close();
        QCOMPARE(errorOf([&] { (void)rows.RecordCount(); }).number(), 3704);
        QCOMPARE(database.rows(u"Estoque"_s, u"quantidade"_s), (QStringList{u"40.5"_s, u"100"_s}));
    }

    void tracesAndReportsStatements_data() { support::BothBackEnds::addRows(); }
    void tracesAndReportsStatements()
    {
        FRESH_DATABASE(database);
        const support::StatementTrace trace;
        const QString create = u"create table  config  (baixardoestoqueplanilha varchar(20)) "_s;
        const QString select = u"Select * from config "_s;
        const QString insert = u"insert into config (baixardoestoqueplanilha)\r\nvalues('não')"_s;
        const QString wrong = u"Select * from  inexistente where a = ' x '"_s;
        database.script({create, insert});
        Recordset rows;
        rows.Open(select, database.connection());
        rows.SetField(u"baixardoestoqueplanilha", u"nao"_s);
        rows.Update();
        Recordset other;
        other.Open(select, database.connectionString());
        QCOMPARE(other.Fields(0), Variant(u"nao"_s));
        const ado::Error error = errorOf([&] { rows.Open(wrong, database.connection()); });
        QCOMPARE(error.statement(), wrong);
        QVERIFY(error.number() != 0 && error.text().contains(u"inexistente"_s));
        QVERIFY_THROWS_EXCEPTION(ado::Error, database.connection().Execute(u"isto não é SQL"_s));
        QCOMPARE(
            trace.lines(),
            (QStringList{u"exec "_s + create, u"exec insert into config (baixardoestoqueplanilha)\\nvalues('não')"_s,
                         u"open "_s + select, u"open "_s + select, u"open "_s + wrong, u"exec isto não é SQL"_s}));
    }

    void closedConnection()
    {
        ado::Connection connection;
        Recordset rows;
        QCOMPARE(errorOf([&] { connection.Execute(u"Update x set y = 1"_s); }).number(), 3704);
        QCOMPARE(errorOf([&] { rows.Open(u"Select * from x"_s, connection); }).number(), 3704);
        QCOMPARE(errorOf([&] { rows.OpenToAdd(u"Select * from x"_s, connection); }).number(), 3704);
        QCOMPARE(errorOf([&] { (void)rows.Eof(); }).number(), 3704);
        QVERIFY(errorOf([&] { connection.Open(u"DRIVER={Não existe};server=x"_s); }).number() != 0);
        QVERIFY(!connection.isOpen());
    }
};

QTEST_GUILESS_MAIN(TestRecordset)
#include "test_recordset.moc"
