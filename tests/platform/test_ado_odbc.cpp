// The ODBC provider against a server of its own.
#include "platform/ado/Connection.h"
#include "platform/ado/OdbcStatements.h"
#include "platform/ado/Recordset.h"
#include "support/BothBackEnds.h"
#include "support/MariaDbServer.h"

#include <QElapsedTimer>
#include <QFile>
#include <QRegularExpression>
#include <QTest>

using ado::Recordset;
using support::errorOf;
using support::MariaDbServer;
using vb::Variant;

namespace {

qint64 residentKilobytes()
{
    QFile file(QStringLiteral("/proc/self/statm"));
    if (!file.open(QIODevice::ReadOnly)) {
        return 0;
    }
    return file.readAll().split(' ').value(1).toLongLong() * 4;
}

} // namespace

class TestAdoOdbc : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        if (!MariaDbServer::isInstalled()) {
            QSKIP("no MariaDB server is installed: whole executable");
        }
    }

    /// Ours is added to what the system registers, not put in its place.
    void registersItsDriver()
    {
        support::BothBackEnds database(QStringLiteral("mysql"));
        QFile ours(qEnvironmentVariable("ODBCSYSINI") + QStringLiteral("/odbcinst.ini"));
        if (!qEnvironmentVariableIsSet("ODBCSYSINI")) {
            QSKIP("the system has a driver of that name");
        }
        QVERIFY(ours.open(QIODevice::ReadOnly));
        const QByteArray content = ours.readAll();
        QCOMPARE(content.count("[MySQL ODBC 3.51 Driver]"), 1);
        QFile systems(QStringLiteral("/etc/odbcinst.ini"));
        QVERIFY(systems.open(QIODevice::ReadOnly));
        QVERIFY(content.startsWith(systems.readAll()));
    }

    void readsTypesOfMySql()
    {
        support::BothBackEnds database(QStringLiteral("mysql"));
        database.script(
            {QStringLiteral("create table t (tiny tinyint, small smallint unsigned, big bigint, huge bigint unsigned, "
                            "flag bit(1), money decimal(10,2), wide decimal(30,8), single float, dbl double, dia date, "
                            "hora time, quando datetime, ano year, letra char(3), latim varchar(40) character set "
                            "latin1, longo text, bytes varbinary(20), fim integer)"),
             QStringLiteral("insert into t values (-128, 65535, -9000000000000000000, 18000000000000000000, 1, "
                            "-12345678.90, 1234567890.12345678, 1.1, 0.30000000000000004, '2024-02-29', '-25:30:00', "
                            "'2024-03-15 23:59:59', 2024, 'é ', 'Ação à vista', repeat('ç', 30000), 'abc', 7)"),
             QStringLiteral(
                 "insert into t (dia, quando, longo, fim) values ('0000-00-00', '0000-00-00 00:00:00', '', 8)"),
             QStringLiteral("insert into t (quando, fim) values ('1899-12-30 06:00:00', 9)")});
        Recordset rows;
        rows.Open(QStringLiteral("select * from t order by fim"), database.connection());
        const QList<std::pair<QString, Variant>> expected = {
            {QStringLiteral("tiny"), Variant(-128)},
            {QStringLiteral("small"), Variant(65535)},
            {QStringLiteral("big"), Variant(-9000000000000000000LL)},
            {QStringLiteral("huge"), Variant(1.8e19)},
            {QStringLiteral("flag"), Variant(-1)},
            {QStringLiteral("money"), Variant(vb::Currency::fromScaled(-123456789000))},
            {QStringLiteral("wide"), Variant(1234567890.12345678)},
            {QStringLiteral("single"), Variant(1.1)},
            {QStringLiteral("dbl"), Variant(0.30000000000000004)},
            {QStringLiteral("dia"), Variant(vb::Date{45351})},
            {QStringLiteral("hora"), Variant(vb::Date{-25.5 / 24})},
            {QStringLiteral("quando"), Variant(vb::Date{45366 + 86399.0 / 86400})},
            {QStringLiteral("ano"), Variant(2024)},
            {QStringLiteral("letra"), Variant(QStringLiteral("é"))},
            {QStringLiteral("latim"), Variant(QStringLiteral("Ação à vista"))},
            {QStringLiteral("longo"), Variant(QString(30000, QChar(u'ç')))},
            {QStringLiteral("bytes"), Variant(QStringLiteral("abc"))},
            {QStringLiteral("fim"), Variant(7)},
        };
        for (const auto& [name, value] : expected) {
            QVERIFY2(rows.Fields(name) == value,
                     qPrintable(name + QStringLiteral(": ") + rows.Fields(name).textOrEmpty()));
        }
        rows.MoveNext();
        QVERIFY(rows.Fields(u"dia").isNull() && rows.Fields(u"quando").isNull());
        QCOMPARE(rows.Fields(u"longo"), Variant(QString()));
        QCOMPARE(rows.Fields(u"fim"), Variant(8));
        rows.MoveNext();
        QCOMPARE(rows.Fields(u"quando"), Variant(vb::Date{0.25}));
        rows.Open(QStringLiteral("Select sum(big), count(*), @@session.max_statement_time from t where fim = 100"),
                  database.connection());
        QVERIFY(rows.Fields(0).isNull());
        QCOMPARE(rows.Fields(1), Variant(0));
        QCOMPARE(rows.Fields(2).textOrEmpty(), QStringLiteral("400")); // the command limit
    }

    /// The row that a generated UPDATE addresses, whatever keys the table has; the server sees no other statement.
    void addressesTheRow_data()
    {
        QTest::addColumn<QString>("definition");
        QTest::addColumn<QString>("select");
        QTest::addColumn<QString>("condition");
        const QString all = QStringLiteral("Select * from Alvo order by b, d desc");
        QTest::newRow("primary key") << QStringLiteral(
                                            "a int auto_increment primary key, b varchar(20), c float, d date")
                                     << all << QStringLiteral("`a` = 1");
        QTest::newRow("unique key") << QStringLiteral("a int, b varchar(20), c float, d date, unique (b, a)") << all
                                    << QStringLiteral("`b` = 'd''água' AND `a` = 1");
        QTest::newRow("key not selected")
            << QStringLiteral("id int auto_increment primary key, a int, b varchar(20), c float, d date")
            << QStringLiteral("Select b, a, d from Alvo order by b, d desc")
            << QStringLiteral("`b` = 'd''água' AND `a` = 1 AND `d` = '2024-03-15' LIMIT 1");
        QTest::newRow("no key") << QStringLiteral("a int, b varchar(20), c float, d date") << all << QString();
    }
    void addressesTheRow()
    {
        QFETCH(QString, definition);
        QFETCH(QString, select);
        QFETCH(QString, condition);
        support::BothBackEnds database(QStringLiteral("mysql"));
        database.script(
            {QStringLiteral("create table alvo (") + definition + QLatin1Char(')'),
             QStringLiteral("insert into alvo (a, b, c, d) values (1, 'd''água', 1.1, '2024-03-15')"),
             QStringLiteral("insert into alvo (a, b, c, d) values (2, 'd''água', 1.2, '0000-00-00')"),
             QStringLiteral("set session sql_mode = 'STRICT_TRANS_TABLES,NO_ZERO_DATE,NO_BACKSLASH_ESCAPES'")});
        MariaDbServer& server = MariaDbServer::shared();
        Recordset rows;
        rows.Open(select, database.connection());
        server.clearStatementLog();
        rows.SetField(u"b", QStringLiteral("novo"));
        rows.Update();
        const QStringList updates = server.statementLog().filter(QStringLiteral("UPDATE"));
        QCOMPARE(updates.size(), 1);
        if (!condition.isEmpty()) {
            QCOMPARE(updates.first(), QStringLiteral("UPDATE `Alvo` SET `b` = 'novo' WHERE ") + condition);
        }
        rows.MoveNext();
        rows.SetField(u"b", QStringLiteral("outro"));
        rows.Update();
        QCOMPARE(database.rows(QStringLiteral("alvo"), QStringLiteral("a b")),
                 (QStringList{QStringLiteral("1|novo"), QStringLiteral("2|outro")}));
        // A row that has gone meanwhile is an error, not a silent success.
        server.run(QStringLiteral("delete from alvo"), database.database());
        rows.SetField(u"b", QStringLiteral("x"));
        QCOMPARE(errorOf([&] { rows.Update(); }).number(), -2147217864);
    }

    void literals_data()
    {
        QTest::addColumn<Variant>("value");
        QTest::addColumn<QString>("expected");
        QTest::newRow("exact") << Variant(0.1 + 0.2) << QStringLiteral("0.30000000000000004");
        QTest::newRow("currency") << Variant(vb::Currency::fromScaled(-5)) << QStringLiteral("-0.0005");
        QTest::newRow("moment") << Variant(vb::Date{45366.75}) << QStringLiteral("'2024-03-15 18:00:00'");
        QTest::newRow("before 1899") << Variant(vb::Date{-1.25}) << QStringLiteral("'1899-12-29 06:00:00'");
        QTest::newRow("almost midnight") << Variant(vb::Date{45366.9999999}) << QStringLiteral("'2024-03-16 00:00:00'");
        QTest::newRow("backslash") << Variant(QStringLiteral("a\\'é"))
                                   << QStringLiteral("CONVERT(0x615c27c3a9 USING utf8mb4)");
    }
    void literals()
    {
        QFETCH(Variant, value);
        QTEST(ado::odbc::literal({true, QStringLiteral("`")}, value), "expected");
    }

    void tableOfAStatement()
    {
        const QString quoted = QStringLiteral("select 'from x', `from` FROM\n`a b`.[c d] where 1");
        QCOMPARE(ado::odbc::tableOf(quoted), (QStringList{QStringLiteral("a b"), QStringLiteral("c d")}));
        QCOMPARE(ado::odbc::tableOf(QStringLiteral("select 1")), QStringList());
    }

    /// Blanks, line breaks and all: what the program says is what the server hears. The driver alone takes the
    /// semicolon off the end.
    void statementsReachTheServerToTheLetter()
    {
        support::BothBackEnds database(QStringLiteral("mysql"));
        database.script({QStringLiteral("create table Leitura (DataLT date, Obs varchar(50))")});
        MariaDbServer& server = MariaDbServer::shared();
        const QStringList statements = {
            QStringLiteral("Insert into Leitura(DataLT, Obs)values('2024-03-15','1.234,50  ç');"),
            QStringLiteral("Update  Leitura set Obs = '50%' where DataLT =  ' 2024/03/15 ' "),
            QStringLiteral("alter table Leitura add column x double;")};
        const QString select = QStringLiteral("Select * from Leitura where DataLT >=  ' 2024/03/15 '   order by Obs ;");
        server.clearStatementLog();
        database.script(statements);
        Recordset rows;
        rows.Open(select, database.connection());
        QCOMPARE(rows.RecordCount(), 1);
        QStringList heard = statements + QStringList{select};
        heard.replaceInStrings(QRegularExpression(QStringLiteral("[; ]+$")), QString());
        QCOMPARE(server.statementLog(), heard);
    }

    /// A result set that is opened only to add never reads its table.
    void addsWithoutReading()
    {
        support::BothBackEnds database(QStringLiteral("mysql"));
        database.script({QStringLiteral("create table diario (id int auto_increment primary key, texto varchar(20))")});
        MariaDbServer& server = MariaDbServer::shared();
        server.clearStatementLog();
        Recordset rows;
        rows.OpenToAdd(QStringLiteral("Select * from diario;"), database.connection());
        rows.AddNew();
        rows.SetField(u"texto", QStringLiteral("um"));
        rows.Update();
        QCOMPARE(server.statementLog(), QStringList{QStringLiteral("INSERT INTO `diario` (`texto`) VALUES ('um')")});
        QVERIFY(errorOf([&] {
                    rows.OpenToAdd(QStringLiteral("Select * from nada;"), database.connection());
                }).number() != 0);
    }

    void errorsAreTheDrivers()
    {
        support::BothBackEnds database(QStringLiteral("mysql"));
        database.script({QStringLiteral("create table cadprodcomb (codigoEstoque double)")});
        const QString statement = QStringLiteral("alter table cadprodcomb add column codigoEstoque double;");
        const ado::Error error = errorOf([&] { database.connection().Execute(statement); });
        QCOMPARE(error.number(), 1060);
        QVERIFY2(error.text().contains(QStringLiteral("Duplicate column name 'codigoEstoque'")),
                 qPrintable(error.text()));
        QCOMPARE(error.statement(), statement);
        ado::Connection refused;
        const QString wrong = MariaDbServer::shared()
                                  .connectionString(database.database())
                                  .replace(MariaDbServer::password(), QStringLiteral("errada"));
        QCOMPARE(errorOf([&] { refused.Open(wrong); }).number(), 1045);
        QVERIFY(!refused.isOpen());
    }

    void muteServerIsGivenUp()
    {
        MariaDbServer server;
        const QString string = server.connectionString(server.makeDatabase());
        server.pause();
        ado::Connection connection;
        connection.setConnectionTimeout(2);
        QElapsedTimer waited;
        waited.start();
        QCOMPARE(errorOf([&] { connection.Open(string); }).number(), -2147217871);
        QVERIFY2(waited.elapsed() >= 1900 && waited.elapsed() < 3500, qPrintable(QString::number(waited.elapsed())));
        // The attempt that still hangs is in nobody's way; nor does it keep this process from ending.
        support::BothBackEnds database(QStringLiteral("mysql"));
        database.script({QStringLiteral("create table a (b int)")});
    }

    void serverGoesBetweenStatements()
    {
        MariaDbServer server;
        const QString database = server.makeDatabase();
        ado::Connection connection;
        connection.setConnectionTimeout(60);
        connection.Open(server.connectionString(database));
        connection.Execute(QStringLiteral("create table Leitura (a varchar(20))"));
        connection.Execute(QStringLiteral("insert into Leitura values ('um')"));
        server.kill();
        const QString statement = QStringLiteral("insert into Leitura values ('dois')");
        const ado::Error gone = errorOf([&] { connection.Execute(statement); });
        QVERIFY2(gone.number() == 2006 || gone.number() == 2013, qPrintable(gone.text()));
        QCOMPARE(gone.statement(), statement);
        Recordset rows;
        QVERIFY(errorOf([&] { rows.Open(QStringLiteral("select * from Leitura"), connection); }).number() != 0);
        QCOMPARE(errorOf([&] { ado::Connection().Open(server.connectionString(database)); }).number(), 2002);

        server.start();
        // The connection is not opened again behind the program's back.
        QVERIFY(errorOf([&] { connection.Execute(statement); }).number() != 0);
        QCOMPARE(server.run(QStringLiteral("select a from Leitura"), database),
                 (QList<QStringList>{{QStringLiteral("um")}}));
    }

    void manyRowsStayLight()
    {
        support::BothBackEnds database(QStringLiteral("mysql"));
        database.script(
            {QStringLiteral("create table Leitura (id int primary key, DataLT date, LeitAtu varchar(50), Obs double)"),
             QStringLiteral("insert into Leitura select seq, '2024-03-15', concat(seq, ',50'), seq / 4 from "
                            "seq_1_to_100000")});
        const qint64 before = residentKilobytes();
        Recordset rows;
        rows.Open(QStringLiteral("select * from Leitura order by id"), database.connection());
        const qint64 grown = residentKilobytes() - before;
        QCOMPARE(rows.RecordCount(), 100'000);
        double sum = 0;
        for (int number = 1; !rows.Eof(); rows.MoveNext(), ++number) {
            if (rows.Fields(u"id") != Variant(number)) {
                QFAIL("rows are out of order");
            }
            sum += std::get<double>(rows.Fields(u"Obs").value());
        }
        QCOMPARE(sum, 100'000.0 * 100'001.0 / 8);
#ifndef __SANITIZE_ADDRESS__
        QVERIFY2(grown < 30 * 1024, qPrintable(QStringLiteral("%1 KB").arg(grown)));
#else
        Q_UNUSED(grown)
#endif
    }
};

QTEST_GUILESS_MAIN(TestAdoOdbc)
#include "test_ado_odbc.moc"
