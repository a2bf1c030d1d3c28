// The ODBC provider against a server of its own.
#include "platform/ado/Connection.h"
#include "platform/ado/OdbcStatements.h"
#include "platform/ado/Recordset.h"
#include "platform/ado/Retry.h"
#include "platform/vb/Conversion.h"
#include "support/BothBackEnds.h"
#include "support/MariaDbServer.h"

#include <QElapsedTimer>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

using ado::Recordset;
using support::errorOf;
using support::MariaDbServer;
using vb::Variant;

namespace {

qint64 residentKilobytes()
{
    QFile file(u"/proc/self/statm"_s);
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
        support::BothBackEnds database(u"mysql"_s);
        QFile ours(qEnvironmentVariable("ODBCSYSINI") + u"/odbcinst.ini"_s);
        if (!qEnvironmentVariableIsSet("ODBCSYSINI")) {
            QSKIP("the system has a driver of that name");
        }
        QVERIFY(ours.open(QIODevice::ReadOnly));
        const QByteArray content = ours.readAll();
        QCOMPARE(content.count("[MySQL ODBC 3.51 Driver]"), 1);
        QFile systems(u"/etc/odbcinst.ini"_s);
        QVERIFY(systems.open(QIODevice::ReadOnly));
        QVERIFY(content.startsWith(systems.readAll()));
        // A registration may hold passwords, as may the statements of a trace.
        const auto others =
            QFile::ReadGroup | QFile::ReadOther | QFile::WriteGroup | QFile::WriteOther | QFile::ExeOther;
        QVERIFY(!(ours.permissions() & others));
        QVERIFY(!(QFile::permissions(qEnvironmentVariable("ODBCSYSINI")) & others));
        const QTemporaryDir folder;
        const QString trace = folder.filePath(u"trace.txt"_s);
        qputenv("PLANILHA_SQL_TRACE", QFile::encodeName(trace));
        database.connection().Execute(u"select 1"_s);
        qunsetenv("PLANILHA_SQL_TRACE");
        QVERIFY(QFile::exists(trace) && !(QFile::permissions(trace) & others));
    }

    void readsTypesOfMySql()
    {
        support::BothBackEnds database(u"mysql"_s);
        database.script(
            {u"create table t (tiny tinyint, small smallint unsigned, big bigint, huge bigint unsigned, flag "
             "bit(1), money decimal(10,2), wide decimal(30,8), single float, dbl double, dia date, hora time, "
             "quando datetime, ano year, letra char(3), latim varchar(40) character set latin1, longo text, bytes "
             "varbinary(20), fim integer)"_s,
             u"insert into t values (-128, 65535, -9000000000000000000, 18000000000000000000, 1, -12345678.90, "
             "1234567890.12345678, 1.1, 0.30000000000000004, '2024-02-29', '-25:30:00', '2024-03-15 23:59:59', "
             "2024, 'é ', 'Ação à vista', repeat('ç', 30000), 'abc', 7)"_s,
             u"insert into t (dia, quando, longo, fim) values ('0000-00-00', '0000-00-00 00:00:00', '', 8)"_s,
             u"insert into t (quando, fim) values ('1899-12-30 06:00:00', 9)"_s});
        Recordset rows;
        rows.Open(u"select * from t order by fim"_s, database.connection());
        const QList<std::pair<QString, Variant>> expected = {
            {u"tiny"_s, Variant(-128)},
            {u"small"_s, Variant(65535)},
            {u"big"_s, Variant(-9000000000000000000LL)},
            {u"huge"_s, Variant(1.8e19)},
            {u"flag"_s, Variant(-1)},
            {u"money"_s, Variant(vb::Currency::fromScaled(-123456789000))},
            {u"wide"_s, Variant(1234567890.12345678)},
            {u"single"_s, Variant(1.1)},
            {u"dbl"_s, Variant(0.30000000000000004)},
            {u"dia"_s, Variant(vb::Date{45351})},
            {u"hora"_s, Variant(vb::Date{-25.5 / 24})},
            {u"quando"_s, Variant(vb::Date{45366 + 86399.0 / 86400})},
            {u"ano"_s, Variant(2024)},
            {u"letra"_s, Variant(u"é"_s)},
            {u"latim"_s, Variant(u"Ação à vista"_s)},
            {u"longo"_s, Variant(QString(30000, QChar(u'ç')))},
            {u"bytes"_s, Variant(u"abc"_s)},
            {u"fim"_s, Variant(7)},
        };
        for (const auto& [name, value] : expected) {
            QVERIFY2(rows.Fields(name) == value, qPrintable(name + u": "_s + rows.Fields(name).textOrEmpty()));
        }
        rows.MoveNext();
        QVERIFY(rows.Fields(u"dia").isNull() && rows.Fields(u"quando").isNull());
        QCOMPARE(rows.Fields(u"longo"), Variant(QString()));
        QCOMPARE(rows.Fields(u"fim"), Variant(8));
        rows.MoveNext();
        QCOMPARE(rows.Fields(u"quando"), Variant(vb::Date{0.25}));
        rows.Open(u"Select sum(big), count(*), @@session.max_statement_time from t where fim = 100"_s,
                  database.connection());
        QVERIFY(rows.Fields(0).isNull());
        QCOMPARE(rows.Fields(1), Variant(0));
        QCOMPARE(rows.Fields(2).textOrEmpty(), u"400"_s); // the command limit
    }

    /// The row that a generated UPDATE addresses, whatever keys the table has; the server sees no other statement.
    void addressesTheRow_data()
    {
        QTest::addColumn<QString>("definition");
        QTest::addColumn<QString>("select");
        QTest::addColumn<QString>("condition");
        const QString all = u"Select * from Alvo order by b, d desc"_s;
        QTest::newRow("primary key") << u"a int auto_increment primary key, b varchar(20), c float, d date"_s << all
                                     << u"`a` = 1 AND `b` = 'd''água'"_s;
        QTest::newRow("unique key") << u"a int, b varchar(20), c float, d date, unique (b, a)"_s << all
                                    << u"`a` = 1 AND `b` = 'd''água'"_s;
        QTest::newRow("key not selected")
            << u"id int auto_increment primary key, a int, b varchar(20), c float, d date"_s
            << u"Select b, a, d from Alvo order by b, d desc"_s
            << u"`b` = 'd''água' AND `a` = 1 AND `d` = '2024-03-15' LIMIT 1"_s;
        QTest::newRow("no key") << u"a int, b varchar(20), c float, d date"_s << all << QString();
    }
    void addressesTheRow()
    {
        QFETCH(QString, definition);
        QFETCH(QString, select);
        QFETCH(QString, condition);
        support::BothBackEnds database(u"mysql"_s);
        database.script({u"create table alvo ("_s + definition + QLatin1Char(')'),
                         u"insert into alvo (a, b, c, d) values (1, 'd''água', 1.1, '2024-03-15')"_s,
                         u"insert into alvo (a, b, c, d) values (2, 'd''água', 1.2, '0000-00-00')"_s,
                         u"set session sql_mode = 'STRICT_TRANS_TABLES,NO_ZERO_DATE,NO_BACKSLASH_ESCAPES'"_s});
        MariaDbServer& server = MariaDbServer::shared();
        Recordset rows;
        rows.Open(select, database.connection());
        server.clearStatementLog();
        rows.SetField(u"b", u"novo"_s);
        rows.Update();
        const QStringList updates = server.statementLog().filter(u"UPDATE"_s);
        QCOMPARE(updates.size(), 1);
        if (!condition.isEmpty()) {
            QCOMPARE(updates.first(), u"UPDATE `Alvo` SET `b` = 'novo' WHERE "_s + condition);
        }
        rows.MoveNext();
        rows.SetField(u"b", u"outro"_s);
        rows.Update();
        QCOMPARE(database.rows(u"alvo"_s, u"a b"_s), (QStringList{u"1|novo"_s, u"2|outro"_s}));
        // A row that has gone meanwhile is an error, not a silent success.
        server.run(u"delete from alvo"_s, database.database());
        rows.SetField(u"b", u"x"_s);
        QCOMPARE(errorOf([&] { rows.Update(); }).number(), ado::Error::Conflict);
    }

    /// A column that an Update overwrites must still hold what was read of it, however the server writes that.
    void changedMeanwhile_data()
    {
        QTest::addColumn<QString>("type");
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QString>("changed"); // By somebody else; empty where no comparison is possible.
        const auto row = [](const QString& type, const QString& stored, const QString& changed) {
            QTest::addRow("%s %s", qPrintable(type), qPrintable(stored)) << type << stored << changed;
        };
        for (const QString& number : {u"1234567.5"_s, u"999999.6"_s, u"0.1"_s, u"-16777216"_s, u"1e30"_s, u"0"_s})
            row(u"float"_s, number, u"77"_s);
        row(u"float(12,2)"_s, u"1234567.25"_s, u"1234568.25"_s);
        for (const QString& number : {u"1234567.8912345"_s, u"0.30000000000000004"_s, u"-1e300"_s})
            row(u"double"_s, number, u"1234567.9"_s);
        row(u"double(12,2)"_s, u"1234567.89"_s, u"1234567.88"_s);
        row(u"decimal(14,4)"_s, u"1234567.8912"_s, u"1234567.8913"_s);
        row(u"decimal(30,8)"_s, u"1234567890.12345678"_s, u"1234567890.2"_s);
        row(u"bigint unsigned"_s, u"18000000000000000001"_s, u"3"_s);
        row(u"bit(1)"_s, u"1"_s, u"0"_s);
        row(u"date"_s, u"'2024-03-15'"_s, u"'2024-03-16'"_s);
        row(u"date"_s, u"'0000-00-00'"_s, u"'2024-03-16'"_s);
        for (const QString& moment :
             {u"'2024-03-15 10:00:00.7'"_s, u"'2024-03-15 23:59:59.9'"_s, u"'1899-12-28 00:00:00'"_s})
            row(u"datetime(6)"_s, moment, u"'2024-03-15 10:00:05'"_s);
        row(u"time"_s, u"'-25:30:00'"_s, u"'10:00:00'"_s);
        row(u"varchar(20) character set latin1"_s, u"'D''água '"_s, u"'1.234,50'"_s);
        row(u"varchar(20) collate utf8mb4_unicode_ci"_s, u"'a\\\\b'"_s, u"'b'"_s);
        row(u"varchar(20)"_s, u"null"_s, u"''"_s);
        row(u"text"_s, u"repeat('ç', 30000)"_s, u"'c'"_s);
        row(u"varbinary(9)"_s, u"x'ff00'"_s, {});
    }
    void changedMeanwhile()
    {
        QFETCH(QString, type);
        QFETCH(QString, stored);
        QFETCH(QString, changed);
        support::BothBackEnds database(u"mysql"_s);
        database.script({u"create table t (id int primary key, outra int, v "_s + type + u')',
                         u"insert into t values (1, 0, "_s + stored + u')'});
        MariaDbServer& server = MariaDbServer::shared();
        const auto overwrite = [&](const QString& meanwhile) {
            Recordset row;
            row.Open(u"Select * from t"_s, database.connection());
            server.run(meanwhile, database.database());
            row.SetField(u"v", Variant());
            row.Update();
        };
        if (!changed.isEmpty())
            QCOMPARE(errorOf([&] { overwrite(u"update t set v = "_s + changed); }).number(), ado::Error::Conflict);
        server.run(u"update t set v = "_s + stored, database.database());
        QCOMPARE(errorOf([&] { overwrite(u"update t set outra = 5"_s); }).number(), 0);
        QCOMPARE(database.rows(u"t"_s, u"outra v"_s), QStringList(u"5|NULL"_s));
    }

    void conflictsAreTriedAgain()
    {
        support::BothBackEnds database(u"mysql"_s);
        database.script({u"create table t (id int primary key, q double)"_s, u"insert into t values (1, 1234567.5)"_s});
        for (const int conflicts : {0, 3, 4}) {
            int tries = 0;
            const int number =
                errorOf([&] {
                    ado::againOnConflict([&] {
                        Recordset row;
                        row.Open(u"Select * from t"_s, database.connection());
                        if (tries++ < conflicts)
                            MariaDbServer::shared().run(u"update t set q = q - 100"_s, database.database());
                        row.SetField(u"q", vb::CCur(row.Fields(u"q")) - vb::CCur(0.25));
                        row.Update();
                    });
                }).number();
            QCOMPARE(number, conflicts == 4 ? ado::Error::Conflict : 0);
            QCOMPARE(tries, std::min(conflicts + 1, 4));
        }
        QCOMPARE(database.rows(u"t"_s, u"q"_s), QStringList(u"1233867"_s));
    }

    void literals_data()
    {
        QTest::addColumn<Variant>("value");
        QTest::addColumn<QString>("expected");
        QTest::newRow("exact") << Variant(0.1 + 0.2) << u"0.30000000000000004"_s;
        QTest::newRow("currency") << Variant(vb::Currency::fromScaled(-5)) << u"-0.0005"_s;
        QTest::newRow("moment") << Variant(vb::Date{45366.75}) << u"'2024-03-15 18:00:00'"_s;
        QTest::newRow("before 1899") << Variant(vb::Date{-1.25}) << u"'1899-12-29 06:00:00'"_s;
        QTest::newRow("almost midnight") << Variant(vb::Date{45366.9999999}) << u"'2024-03-16'"_s;
        QTest::newRow("backslash") << Variant(u"a\\'é"_s) << u"CONVERT(0x615c27c3a9 USING utf8mb4)"_s;
    }
    void literals()
    {
        QFETCH(Variant, value);
        QTEST(ado::odbc::literal({true, u"`"_s}, value), "expected");
    }

    void tableOfAStatement()
    {
        const QString quoted = u"select 'from x', `from` FROM\n`a b`.[c d] where 1"_s;
        QCOMPARE(ado::odbc::tableOf(quoted), (QStringList{u"a b"_s, u"c d"_s}));
        QCOMPARE(ado::odbc::tableOf(u"select 1"_s), QStringList());
    }

    /// Blanks, line breaks and all: what the program says is what the server hears. The driver alone takes the
    /// semicolon off the end.
    void statementsReachTheServerToTheLetter()
    {
        support::BothBackEnds database(u"mysql"_s);
        database.script({u"create table Leitura (DataLT date, Obs varchar(50))"_s});
        MariaDbServer& server = MariaDbServer::shared();
        const QStringList statements = {u"Insert into Leitura(DataLT, Obs)values('2024-03-15','1.234,50  ç');"_s,
                                        u"Update  Leitura set Obs = '50%' where DataLT =  ' 2024/03/15 ' "_s,
                                        u"alter table Leitura add column x double;"_s};
        const QString select = u"Select * from Leitura where DataLT >=  ' 2024/03/15 '   order by Obs ;"_s;
        server.clearStatementLog();
        database.script(statements);
        Recordset rows;
        rows.Open(select, database.connection());
        QCOMPARE(rows.RecordCount(), 1);
        QStringList heard = statements + QStringList{select};
        heard.replaceInStrings(QRegularExpression(u"[; ]+$"_s), QString());
        QCOMPARE(server.statementLog(), heard);
    }

    /// A result set that is opened only to add never reads its table.
    void addsWithoutReading()
    {
        support::BothBackEnds database(u"mysql"_s);
        database.script({u"create table diario (id int auto_increment primary key, texto varchar(20))"_s});
        MariaDbServer& server = MariaDbServer::shared();
        server.clearStatementLog();
        Recordset rows;
        rows.OpenToAdd(u"Select * from diario;"_s, database.connection());
        rows.AddNew();
        rows.SetField(u"texto", u"um"_s);
        rows.Update();
        QCOMPARE(server.statementLog(), QStringList{u"INSERT INTO `diario` (`texto`) VALUES ('um')"_s});
        QVERIFY(errorOf([&] { rows.OpenToAdd(u"Select * from nada;"_s, database.connection()); }).number() != 0);
    }

    void errorsAreTheDrivers()
    {
        support::BothBackEnds database(u"mysql"_s);
        database.script({u"create table cadprodcomb (codigoEstoque double)"_s});
        const QString statement = u"alter table cadprodcomb add column codigoEstoque double;"_s;
        const ado::Error error = errorOf([&] { database.connection().Execute(statement); });
        QCOMPARE(error.number(), 1060);
        QVERIFY2(error.text().contains(u"Duplicate column name 'codigoEstoque'"_s), qPrintable(error.text()));
        QCOMPARE(error.statement(), statement);
        ado::Connection refused;
        const QString wrong = MariaDbServer::shared()
                                  .connectionString(database.database())
                                  .replace(MariaDbServer::password(), u"errada"_s);
        QCOMPARE(errorOf([&] { refused.Open(wrong); }).number(), 1045);
        QVERIFY(!refused.isOpen());
    }

    void idleAndMuteServer()
    {
        MariaDbServer server(u"wait_timeout=1\nlower_case_table_names=0\n"_s);
        const QString string = server.connectionString(server.makeDatabase());
        ado::Connection idle;
        idle.Open(string);
        idle.Execute(u"create table PlanilhaPosto (a int)"_s);
        QTest::qSleep(2500);
        Recordset rows;
        rows.Open(u"Select * from PlanilhaPosto"_s, idle);
        // This server tells capitals apart, and the error says what to do.
        const auto error = [&](ado::Connection& used) {
            return errorOf([&] { rows.Open(u"Select * from planilhaposto"_s, used); }).text();
        };
        QVERIFY2(error(idle).contains(u"lower_case_table_names=1"_s), qPrintable(error(idle)));

        server.pause();
        ado::Connection connection;
        connection.setConnectionTimeout(2);
        QElapsedTimer waited;
        waited.start();
        QCOMPARE(errorOf([&] { connection.Open(string); }).number(), -2147217871);
        QVERIFY2(waited.elapsed() >= 1900 && waited.elapsed() < 3500, qPrintable(QString::number(waited.elapsed())));
        // The attempt that still hangs is in nobody's way; nor does it keep this process from ending.
        support::BothBackEnds database(u"mysql"_s);
        database.script({u"create table a (b int)"_s});
        QVERIFY(!error(database.connection()).isEmpty());
        QVERIFY(!error(database.connection()).contains(u"lower_case"_s));
    }

    void serverGoesBetweenStatements()
    {
        MariaDbServer server;
        const QString database = server.makeDatabase();
        ado::Connection connection;
        connection.setConnectionTimeout(60);
        connection.Open(server.connectionString(database));
        connection.Execute(u"create table Leitura (a varchar(20))"_s);
        connection.Execute(u"insert into Leitura values ('um')"_s);
        server.kill();
        const QString statement = u"insert into Leitura values ('dois')"_s;
        const ado::Error gone = errorOf([&] { connection.Execute(statement); });
        QVERIFY2(gone.number() == 2006 || gone.number() == 2013, qPrintable(gone.text()));
        QCOMPARE(gone.statement(), statement);
        Recordset rows;
        QVERIFY(errorOf([&] { rows.Open(u"select * from Leitura"_s, connection); }).number() != 0);
        QCOMPARE(errorOf([&] { ado::Connection().Open(server.connectionString(database)); }).number(), 2002);

        server.start();
        // The connection is not opened again behind the program's back.
        QVERIFY(errorOf([&] { connection.Execute(statement); }).number() != 0);
        QCOMPARE(server.run(u"select a from Leitura"_s, database), (QList<QStringList>{{u"um"_s}}));
    }

    void manyRowsStayLight()
    {
        support::BothBackEnds database(u"mysql"_s);
        database.script(
            {u"create table Leitura (id int primary key, DataLT date, LeitAtu varchar(50), Obs double)"_s,
             u"insert into Leitura select seq, '2024-03-15', concat(seq, ',50'), seq / 4 from seq_1_to_100000"_s});
        const qint64 before = residentKilobytes();
        Recordset rows;
        rows.Open(u"select * from Leitura order by id"_s, database.connection());
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
        QVERIFY2(grown < 30 * 1024, qPrintable(u"%1 KB"_s.arg(grown)));
#else
        Q_UNUSED(grown)
#endif
    }
};

QTEST_GUILESS_MAIN(TestAdoOdbc)
#include "test_ado_odbc.moc"
