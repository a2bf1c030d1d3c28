// The Access provider behind Connection and Recordset.
#include "platform/ado/Connection.h"
#include "platform/ado/Recordset.h"
#include "support/BothBackEnds.h"

#include <QFile>
#include <QProcess>
#include <QTest>

// Behind the headers of Qt: moc stumbles over <filesystem> when it comes first.
#include "accessfile/Storage.h"

using namespace Qt::StringLiterals;

using ado::Recordset;
using support::errorOf;
using vb::Variant;

namespace {

QString odbcString(const QString& file, const QString& password = u"8282"_s)
{
    return u"Driver={Microsoft Access Driver (*.mdb)};Dbq=%1;Uid=Admin;Pwd=%2;"_s.arg(file, password);
}

QString oleDbString(const QString& file)
{
    return u"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=%1;"_s.arg(file);
}

} // namespace

class TestAccessSession : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_open = m_folder->filePath(u"aberto ç.mdb"_s);
        m_locked = m_folder->filePath(u"senha.mdb"_s);
        accessfile::Storage::create(m_open.toStdString());
        accessfile::Storage::create(m_locked.toStdString(), "8282");
    }

    void opens_data()
    {
        QTest::addColumn<QString>("string"); // %1 is the file without password, %2 the one with
        QTest::addColumn<QString>("password");
        QTest::addColumn<int>("error");
        const auto row = [](const char* name, const char* string, int error, const char* password = "") {
            QTest::newRow(name) << QString::fromUtf8(string) << QString::fromLatin1(password) << error;
        };
        row("odbc", "Driver={Microsoft Access Driver (*.mdb)};Dbq=%2;Uid=Admin;Pwd=8282;", 0);
        row("odbc, another user", "driver={MICROSOFT ACCESS DRIVER (*.MDB)};pwd=8282 ; DBQ = %2;uid=outro", 0);
        row("odbc, wrong", "Driver={Microsoft Access Driver (*.mdb)};Dbq=%2;Uid=Admin;Pwd=8283;", -1905);
        row("odbc, none", "Driver={Microsoft Access Driver (*.mdb)};Dbq=%2;", -1905);
        row("odbc, as argument", "Driver={Microsoft Access Driver (*.mdb)};Dbq=%2;", 0, "8282");
        row("odbc, missing", "Driver={Microsoft Access Driver (*.mdb)};Dbq=%1.x;Uid=Admin;Pwd=8282;", -1811);
        row("odbc, no path", "Driver={Microsoft Access Driver (*.mdb)};Dbq=;Uid=Admin;Pwd=8282;", -1811);
        row("odbc, no database", "Driver={Microsoft Access Driver (*.mdb)};Dbq=%1.txt;Uid=Admin;Pwd=8282;", -1206);
        row("ole db", "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=%1;", 0);
        row("ole db, none", "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=%2;", -1905);
        row("ole db, password", "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=%2;Jet OLEDB:Database Password=8282", 0);
        row("ole db, missing", "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=%1.x;", -1811);
    }
    void opens()
    {
        QFile text(m_open + u".txt"_s);
        QVERIFY(text.open(QIODevice::WriteOnly) && text.write(QByteArray(8192, 'x')) == 8192);
        text.close();
        QFETCH(QString, string);
        string.replace(u"%1"_s, m_open).replace(u"%2"_s, m_locked);
        QFETCH(QString, password);
        ado::Connection connection;
        const ado::Error error = errorOf([&] { connection.Open(string, u"Admin"_s, password); });
        QTEST(error.number(), "error");
        QCOMPARE(connection.isOpen(), error.number() == 0);
        QVERIFY(error.statement().isEmpty() && !error.text().isEmpty());
        if (connection.isOpen())
            connection.Execute(u"create table T (a long)"_s);
    }

    /// Every connection of this process reaches the same file; another process does not.
    void sharesAFile()
    {
        const auto otherProcess = [this] {
            QProcess process;
            process.start(QStringLiteral(MDBSQL_PROGRAM),
                          {m_locked, u"--password"_s, u"8282"_s, u"-c"_s, u"Select host from hosts"_s});
            return process.waitForFinished() ? process.exitCode() : -1;
        };
        {
            ado::Connection first;
            first.Open(odbcString(m_locked));
            first.Execute(u"create table hosts (ativo text(1), host text(20))"_s);
            first.Execute(u"insert into hosts values ('X', 'servidor')"_s);
            // Connections of one process share the file; the password is asked all the same.
            ado::Connection second;
            QCOMPARE(errorOf([&] { second.Open(odbcString(m_locked, u"1"_s)); }).number(), -1905);
            second.Open(odbcString(m_locked));
            second.Execute(u"update hosts set host = 'outro'"_s);
            Recordset own;
            own.Open(u"Select * from hosts where ativo = 'x';"_s, odbcString(m_locked));
            QCOMPARE(own.Fields(u"host"), Variant(u"outro"_s));
            QCOMPARE(otherProcess(), 0);
        }
        QCOMPARE(otherProcess(), 0);
    }

    void fieldTypes()
    {
        ado::Connection connection;
        connection.Open(oleDbString(m_open));
        connection.Execute(
            u"create table T (a yesno, b byte, c short, d counter, e single, f double, g decimal(8,3), h currency, "
            "i datetime, j text(20), k memo)"_s);
        connection.Execute(
            u"insert into T (a, b, c, e, f, g, h, i, j, k) values (True, 200, -3, 0.5, 0.1, '-1.234,567', '5,499', "
            "'15/03/2024 ', 'Ação', 'longo')"_s);
        Recordset rows;
        rows.Open(u"Select T.*, f * 2, '' from T"_s, connection);
        const QList<Variant> expected = {-1,
                                         200,
                                         -3,
                                         1,
                                         0.5,
                                         0.1,
                                         -1234.567,
                                         vb::Currency::fromScaled(54'990),
                                         vb::Date{45366},
                                         u"Ação"_s,
                                         u"longo"_s,
                                         0.2,
                                         QString()};
        QCOMPARE(static_cast<qsizetype>(rows.fieldList().size()), expected.size());
        for (int field = 0; field < static_cast<int>(expected.size()); ++field)
            QCOMPARE(rows.Fields(field), expected[field]);
        connection.Execute(u"delete from T"_s);
        connection.Execute(u"insert into T (c) values (Null)"_s);
        rows.Open(u"Select * from T"_s, connection);
        QCOMPARE(rows.Fields(u"A"), Variant(0)); // a yes/no has no null
        for (const QStringView name : {u"b", u"c", u"e", u"f", u"g", u"h", u"i", u"j", u"k"})
            QVERIFY(rows.Fields(name).isNull());
    }

    /// Number, text and the statement to the letter.
    void errors_data()
    {
        QTest::addColumn<QString>("statement");
        QTest::addColumn<int>("number");
        QTest::addColumn<QString>("text");
        QTest::newRow("column") << u"Select * from  T where nada =  # 03/15/2024 # "_s << -3010
                                << u"Too few parameters. Expected 1."_s;
        QTest::newRow("conversion") << u"Update T set a = 'ç'"_s << -3030
                                    << u"Data type mismatch in criteria expression."_s;
        QTest::newRow("added twice") << u"alter table t add column A double;"_s << -1508
                                     << u"Field 'A' already exists in table 'T'."_s;
        QTest::newRow("no statement")
            << u"isto não é SQL"_s << -3500
            << u"Invalid SQL statement; expected 'DELETE', 'INSERT', 'PROCEDURE', 'SELECT', or 'UPDATE'."_s;
    }
    void errors()
    {
        ado::Connection connection;
        connection.Open(odbcString(m_open));
        connection.Execute(u"create table T (a long)"_s);
        connection.Execute(u"insert into T values (1)"_s);
        QFETCH(QString, statement);
        const ado::Error error = errorOf([&] {
            if (statement.startsWith(u"Select"_s))
                Recordset().Open(statement, connection);
            else
                connection.Execute(statement);
        });
        QTEST(error.number(), "number");
        QTEST(error.text(), "text");
        QCOMPARE(error.statement(), statement);
    }

    void recordsetChanges()
    {
        support::BothBackEnds database(u"access"_s);
        ado::Connection& connection = database.connection();
        connection.Execute(
            u"create table Razao (codigoI counter primary key, CodProd long, DataOP datetime, cred double, nota "
            "text(5))"_s);
        const QString select = u"Select * from Razao;"_s;
        Recordset added;
        added.OpenToAdd(select, connection);
        for (const char* const product : {"00012", "7"}) {
            added.AddNew();
            added.SetField(u"codprod", QString::fromLatin1(product));
            added.SetField(u"DataOP", u"15/03/2024 "_s);
            added.SetField(u"CRED", u"1.234,50"_s);
            added.Update();
        }
        // A refused row stays pending, and nothing of it is stored.
        added.AddNew();
        added.SetField(u"nota", u"123456"_s);
        QCOMPARE(errorOf([&] { added.Update(); }).number(), -3163);
        added.SetField(u"nota", u"12345"_s);
        added.Update();
        QCOMPARE(errorOf([&] { added.OpenToAdd(u"Select nada from Razao"_s, connection); }).number(), -3010);

        Recordset rows;
        rows.Open(u"Select cred, nota, codigoi from razao where codprod = 12"_s, connection);
        rows.SetField(u"cred", vb::Currency::fromScaled(15'000));
        rows.SetField(u"NOTA", 2.5);
        QCOMPARE(errorOf([&] { rows.SetField(u"cred", u"abc"_s); }).number(), 3421);
        rows.Update();
        rows.SetField(u"cred", u"99"_s); // pending when the row goes
        connection.Execute(u"delete from razao where codprod = 12"_s);
        QVERIFY(errorOf([&] { rows.Update(); }).number() != 0);
        rows.Open(u"Select cred from razao where codigoi = 2"_s, connection);
        rows.SetField(u"cred", Variant());
        rows.Update();
        QCOMPARE(database.rows(u"Razao"_s, u"codigoI CodProd DataOP cred nota"_s),
                 (QStringList{u"2|7|2024-03-15 00:00:00|NULL|NULL"_s, u"3|NULL|NULL|NULL|12345"_s}));

        // A total is no row of a table.
        for (const char* const total : {"Select sum(cred) as s from razao", "Select 1 as s"}) {
            rows.Open(QString::fromLatin1(total), connection);
            rows.SetField(u"s", 1.0);
            QCOMPARE(errorOf([&] { rows.Update(); }).number(), 3251);
        }
    }

    /// The station's file of another writer, asked by clauses and by hand from what the other reader exports.
    void agreesWithTheExport()
    {
        const QString beside = qEnvironmentVariable("PLANILHA_SOURCE_DIR") + u"/../shared/access"_s;
        const QString shared = qEnvironmentVariable("PLANILHA_REAL_FILES", beside) + u"/estacao_antiga.mdb"_s;
        if (!QFile::exists(shared))
            QSKIP("PLANILHA_REAL_FILES names no folder with real files");
        const QString file = m_folder->filePath(u"estacao.mdb"_s);
        QVERIFY(QFile::copy(shared, file));
        QFile::setPermissions(file, QFile::ReadOwner | QFile::WriteOwner);
        const QStringList columns = {u"CodigoI"_s, u"DataLT"_s, u"cdgBomba"_s, u"LeitAtu"_s};
        const QList<QStringList> exported = support::readAccessTable(file, u"Leitura"_s, columns);
        QVERIFY(exported.size() > 300);
        const QDate first = QDate::fromString(exported.first()[1].left(10), Qt::ISODate).addDays(10);
        const QDate last = first.addDays(20);
        QStringList expected;
        for (const QStringList& row : exported) {
            const QDate date = QDate::fromString(row[1].left(10), Qt::ISODate);
            if (date >= first && date <= last && row[2].toInt() == 3)
                expected << row[0] + u' ' + row[3];
        }
        expected.sort();
        QVERIFY(expected.size() > 10);

        ado::Connection connection;
        connection.Open(odbcString(file));
        const auto literal = [](QDate date) { return date.toString(u" '# 'MM/dd/yyyy' # '"_s); };
        Recordset rows;
        rows.Open(u"Select * from leitura where DataLT >= "_s + literal(first) + u" and DataLT <= "_s + literal(last) +
                      u" and  cdgbomba = 3 order by cdgBomba, dataLT asc"_s,
                  connection);
        QStringList found;
        for (; !rows.Eof(); rows.MoveNext())
            found << rows.Fields(u"codigoi").textOrEmpty() + u' ' + rows.Fields(u"leitatu").textOrEmpty();
        found.sort();
        QCOMPARE(found, expected);

        // The start-up's upgrade.
        connection.Execute(u"alter table cadprodcomb add codigoEstoque double;"_s);
        connection.Execute(u"update cadprodcomb set codigoestoque = '12,5'"_s);
        for (const QStringList& row : support::readAccessTable(file, u"CadProdComb"_s, {u"codigoEstoque"_s}))
            QCOMPARE(row, QStringList{u"12.5"_s});
    }

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_open;
    QString m_locked;
};

QTEST_GUILESS_MAIN(TestAccessSession)
#include "test_access_session.moc"
