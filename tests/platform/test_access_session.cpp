// The Access provider behind Connection and Recordset.
#include "platform/ado/Connection.h"
#include "platform/ado/Recordset.h"
#include "support/BothBackEnds.h"

#include <QFile>
#include <QProcess>
#include <QTest>

// Behind the headers of Qt: moc stumbles over <filesystem> when it comes first.
#include "accessfile/Storage.h"

using ado::Recordset;
using support::errorOf;
using vb::Variant;

namespace {

QString odbcString(const QString& file, const QString& password = QStringLiteral("8282"))
{
    return QStringLiteral("Driver={Microsoft Access Driver (*.mdb)};Dbq=%1;Uid=Admin;Pwd=%2;").arg(file, password);
}

QString oleDbString(const QString& file)
{
    return QStringLiteral("Provider=Microsoft.Jet.OLEDB.4.0;Data Source=%1;").arg(file);
}

} // namespace

class TestAccessSession : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_open = m_folder->filePath(QStringLiteral("aberto ç.mdb"));
        m_locked = m_folder->filePath(QStringLiteral("senha.mdb"));
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
        QFile text(m_open + QStringLiteral(".txt"));
        QVERIFY(text.open(QIODevice::WriteOnly) && text.write(QByteArray(8192, 'x')) == 8192);
        text.close();
        QFETCH(QString, string);
        string.replace(QStringLiteral("%1"), m_open).replace(QStringLiteral("%2"), m_locked);
        QFETCH(QString, password);
        ado::Connection connection;
        const ado::Error error = errorOf([&] { connection.Open(string, QStringLiteral("Admin"), password); });
        QTEST(error.number(), "error");
        QCOMPARE(connection.isOpen(), error.number() == 0);
        QVERIFY(error.statement().isEmpty() && !error.text().isEmpty());
        if (connection.isOpen())
            connection.Execute(QStringLiteral("create table T (a long)"));
    }

    /// Every connection of this process reaches the same file; another process does not.
    void sharesAFile()
    {
        const auto otherProcess = [this] {
            QProcess process;
            process.start(QStringLiteral(MDBSQL_PROGRAM),
                          {m_locked, QStringLiteral("--password"), QStringLiteral("8282"), QStringLiteral("-c"),
                           QStringLiteral("Select host from hosts")});
            return process.waitForFinished() ? process.exitCode() : -1;
        };
        {
            ado::Connection first;
            first.Open(odbcString(m_locked));
            first.Execute(QStringLiteral("create table hosts (ativo text(1), host text(20))"));
            first.Execute(QStringLiteral("insert into hosts values ('X', 'servidor')"));
            // Connections of one process share the file; the password is asked all the same.
            ado::Connection second;
            QCOMPARE(errorOf([&] { second.Open(odbcString(m_locked, QStringLiteral("1"))); }).number(), -1905);
            second.Open(odbcString(m_locked));
            second.Execute(QStringLiteral("update hosts set host = 'outro'"));
            Recordset own;
            own.Open(QStringLiteral("Select * from hosts where ativo = 'x';"), odbcString(m_locked));
            QCOMPARE(own.Fields(u"host"), Variant(QStringLiteral("outro")));
            QVERIFY(otherProcess() != 0);
        }
        QCOMPARE(otherProcess(), 0);
    }

    void readsReadOnlyFiles()
    {
        ado::Connection connection;
        {
            ado::Connection maker;
            maker.Open(odbcString(m_open));
            maker.Execute(QStringLiteral("create table T (a long)"));
        }
        QFile::setPermissions(m_open, QFile::ReadOwner);
        if (QFile probe(m_open); probe.open(QIODevice::ReadWrite))
            QSKIP("this user may write everywhere");
        connection.Open(odbcString(m_open));
        Recordset rows;
        rows.Open(QStringLiteral("Select * from T"), connection);
        QVERIFY(rows.Eof());
        QCOMPARE(errorOf([&] { connection.Execute(QStringLiteral("insert into T values (1)")); }).number(), -1809);
    }

    void fieldTypes()
    {
        ado::Connection connection;
        connection.Open(oleDbString(m_open));
        connection.Execute(QStringLiteral("create table T (a yesno, b byte, c short, d counter, e single, f double, "
                                          "g decimal(8,3), h currency, i datetime, j text(20), k memo)"));
        connection.Execute(QStringLiteral("insert into T (a, b, c, e, f, g, h, i, j, k) values (True, 200, -3, 0.5, "
                                          "0.1, '-1.234,567', '5,499', '15/03/2024 ', 'Ação', 'longo')"));
        Recordset rows;
        rows.Open(QStringLiteral("Select T.*, f * 2, '' from T"), connection);
        const QList<Variant> expected = {-1,
                                         200,
                                         -3,
                                         1,
                                         0.5,
                                         0.1,
                                         -1234.567,
                                         vb::Currency::fromScaled(54'990),
                                         vb::Date{45366},
                                         QStringLiteral("Ação"),
                                         QStringLiteral("longo"),
                                         0.2,
                                         QString()};
        QCOMPARE(static_cast<qsizetype>(rows.fieldList().size()), expected.size());
        for (int field = 0; field < static_cast<int>(expected.size()); ++field)
            QCOMPARE(rows.Fields(field), expected[field]);
        connection.Execute(QStringLiteral("delete from T"));
        connection.Execute(QStringLiteral("insert into T (c) values (Null)"));
        rows.Open(QStringLiteral("Select * from T"), connection);
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
        QTest::newRow("column") << QStringLiteral("Select * from  T where nada =  # 03/15/2024 # ") << -3010
                                << QStringLiteral("Too few parameters. Expected 1.");
        QTest::newRow("conversion") << QStringLiteral("Update T set a = 'ç'") << -3030
                                    << QStringLiteral("Data type mismatch in criteria expression.");
        QTest::newRow("added twice") << QStringLiteral("alter table t add column A double;") << -1508
                                     << QStringLiteral("Field 'A' already exists in table 'T'.");
        QTest::newRow("no statement") << QStringLiteral("isto não é SQL") << -3500
                                      << QStringLiteral("Invalid SQL statement; expected 'DELETE', 'INSERT', "
                                                        "'PROCEDURE', 'SELECT', or 'UPDATE'.");
    }
    void errors()
    {
        ado::Connection connection;
        connection.Open(odbcString(m_open));
        connection.Execute(QStringLiteral("create table T (a long)"));
        connection.Execute(QStringLiteral("insert into T values (1)"));
        QFETCH(QString, statement);
        const ado::Error error = errorOf([&] {
            if (statement.startsWith(QStringLiteral("Select")))
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
        support::BothBackEnds database(QStringLiteral("access"));
        ado::Connection& connection = database.connection();
        connection.Execute(QStringLiteral("create table Razao (codigoI counter primary key, CodProd long, DataOP "
                                          "datetime, cred double, nota text(5))"));
        const QString select = QStringLiteral("Select * from Razao;");
        Recordset added;
        added.OpenToAdd(select, connection);
        for (const char* const product : {"00012", "7"}) {
            added.AddNew();
            added.SetField(u"codprod", QString::fromLatin1(product));
            added.SetField(u"DataOP", QStringLiteral("15/03/2024 "));
            added.SetField(u"CRED", QStringLiteral("1.234,50"));
            added.Update();
        }
        // A refused row stays pending, and nothing of it is stored.
        added.AddNew();
        added.SetField(u"nota", QStringLiteral("123456"));
        QCOMPARE(errorOf([&] { added.Update(); }).number(), -3163);
        added.SetField(u"nota", QStringLiteral("12345"));
        added.Update();
        QCOMPARE(errorOf([&] { added.OpenToAdd(QStringLiteral("Select nada from Razao"), connection); }).number(),
                 -3010);

        Recordset rows;
        rows.Open(QStringLiteral("Select cred, nota, codigoi from razao where codprod = 12"), connection);
        rows.SetField(u"cred", vb::Currency::fromScaled(15'000));
        rows.SetField(u"NOTA", 2.5);
        QCOMPARE(errorOf([&] { rows.SetField(u"cred", QStringLiteral("abc")); }).number(), 3421);
        rows.Update();
        rows.SetField(u"cred", QStringLiteral("99")); // pending when the row goes
        connection.Execute(QStringLiteral("delete from razao where codprod = 12"));
        QVERIFY(errorOf([&] { rows.Update(); }).number() != 0);
        rows.Open(QStringLiteral("Select cred from razao where codigoi = 2"), connection);
        rows.SetField(u"cred", Variant());
        rows.Update();
        QCOMPARE(database.rows(QStringLiteral("Razao"), QStringLiteral("codigoI CodProd DataOP cred nota")),
                 (QStringList{QStringLiteral("2|7|2024-03-15 00:00:00|NULL|NULL"),
                              QStringLiteral("3|NULL|NULL|NULL|12345")}));

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
        const QString shared =
            qEnvironmentVariable("PLANILHA_SHARED_DIR") + QStringLiteral("/access/estacao_antiga.mdb");
        if (!QFile::exists(shared))
            QSKIP("PLANILHA_SHARED_DIR names no folder with real files");
        const QString file = m_folder->filePath(QStringLiteral("estacao.mdb"));
        QVERIFY(QFile::copy(shared, file));
        QFile::setPermissions(file, QFile::ReadOwner | QFile::WriteOwner);
        const QStringList columns = {QStringLiteral("CodigoI"), QStringLiteral("DataLT"), QStringLiteral("cdgBomba"),
                                     QStringLiteral("LeitAtu")};
        const QList<QStringList> exported = support::readAccessTable(file, QStringLiteral("Leitura"), columns);
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
        const auto literal = [](QDate date) { return date.toString(QStringLiteral(" '# 'MM/dd/yyyy' # '")); };
        Recordset rows;
        rows.Open(QStringLiteral("Select * from leitura where DataLT >= ") + literal(first) +
                      QStringLiteral(" and DataLT <= ") + literal(last) +
                      QStringLiteral(" and  cdgbomba = 3 order by cdgBomba, dataLT asc"),
                  connection);
        QStringList found;
        for (; !rows.Eof(); rows.MoveNext())
            found << rows.Fields(u"codigoi").textOrEmpty() + u' ' + rows.Fields(u"leitatu").textOrEmpty();
        found.sort();
        QCOMPARE(found, expected);

        // The start-up's upgrade.
        connection.Execute(QStringLiteral("alter table cadprodcomb add codigoEstoque double;"));
        connection.Execute(QStringLiteral("update cadprodcomb set codigoestoque = '12,5'"));
        for (const QStringList& row :
             support::readAccessTable(file, QStringLiteral("CadProdComb"), {QStringLiteral("codigoEstoque")}))
            QCOMPARE(row, QStringList{QStringLiteral("12.5")});
    }

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_open;
    QString m_locked;
};

QTEST_GUILESS_MAIN(TestAccessSession)
#include "test_access_session.moc"
