// What INSERT, UPDATE, DELETE and the definitions do: every form that the station speaks, values on their way into
// columns, and refusals that leave nothing behind.
#include "accessfile/AccessTestTools.h"
#include "accessfile/SqlShell.h"

#include <QFile>
#include <QTest>

using namespace accesstest;
using accessfile::ErrorKind;

class TestSqlChanges : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void stationStatements();
    void assigns_data();
    void assigns();
    void refusesWhole_data();
    void refusesWhole();
    void definitions();
    void defaultsAndAutonumbers();
    void addsAndUpdatesRows();
    void updateMeetsItsOwnRows();
    void readOnly();
};

/// The station's own tables and, to the letter, those of its statements that ask most of the engine.
void TestSqlChanges::stationStatements()
{
    SqlShell shell;
    QFile schema(qEnvironmentVariable("PLANILHA_SOURCE_DIR") + QStringLiteral("/demo/esquema_access.sql"));
    QVERIFY(schema.open(QIODevice::ReadOnly));
    for (const QByteArray& statement : schema.readAll().split('\n'))
        QVERIFY(statement.isEmpty() || shell.execute(statement) == "0");
    play(shell,
         {
             {"alter table cadprodcomb add codigoEstoque double;",
              "-1508 Field 'codigoEstoque' already exists in table 'CadProdComb'."},
             {"Insert Into CadProdComb(Descritivo, codprod, valor, codigoestoque) values "
              "('GASOLINA','00012','5,499','00012')",
              "1"},
             {"UPDATE cadProdComb set descritivo = 'GASOLINA', valor = '5,599', codigoestoque = '00013' where "
              "descritivo = 'gasolina';",
              "1"},
             {"Select * from cadprodcomb where codigoestoque = 13", "1|'GASOLINA'|12|5.599|13.0"},
             {"INSERT into PlanilhaPosto (numeroDispositivo,Descritivo,Leitura,DataInsert, ProdVinculado, tanq) values "
              "('007','BOMBA 7','1.000,50','14/03/2024 ','00012','TANQUE_1');",
              "1"},
             {"INSERT into PlanilhaPosto (numeroDispositivo,Descritivo,Leitura,DataInsert, ProdVinculado, tanq) values "
              "('8','BOMBA 8','0','14/03/2024 ','','TANQUE_1');",
              "-3030 Data type mismatch in criteria expression."},
             {"Update planilhaPosto set DataInsert = '15/03/2024 ', Leitura = '1234,5' where numerodispositivo = 7",
              "1"},
             {"Select * from PlanilhaPosto order by numerodispositivo",
              "7|'BOMBA 7'|'1234,5'|@2024-03-15|12.0|'TANQUE_1'"},
             {"Insert into Leitura(DataLT,cdgBomba,LeitAnt,LeitAtu,Saldo,Obs,tanq, afericao)values('15/03/2024 ','007',"
              "'1.000,50','1.234,50','234','5,50','TANQUE_1','0');",
              "1"},
             {"Insert into Leitura(DataLT,cdgBomba,LeitAnt,LeitAtu,Saldo,Obs,tanq, afericao)values('16/03/2024 ','007',"
              "'1.234,50','1.300,00','65,5','5,50','TANQUE_1','0');",
              "1"},
             {"Select * from Leitura where DataLT =  # 03/15/2024 # ",
              "1|@2024-03-15|7|'1.000,50'|'1.234,50'|'234'|'5,50'|'TANQUE_1'|'0'"},
             {"Select codigoi from leitura where DataLT >=  # 03/01/2024 #  and DataLT <=  # 03/31/2024 #  and  "
              "cdgbomba "
              "= 7 order by cdgBomba, dataLT asc",
              "1; 2"},
             {"Update Leitura set tanq = 'TANQUE_2' where cdgbomba = 7", "2"},
             {"Delete from Leitura where codigoI = 1", "1"},
             {"Delete from Leitura where codigoI = 1", "0"},
             {"insert into Estoque values (12, 'Óleo 2T', '10,5', '5,499')", "1"},
             {"Select codigo, discriminacao, quantidade from Estoque where discriminacao like '%ÓLEO%' order by "
              "discriminacao;",
              "12|'Óleo 2T'|$10.5000"},
             {"insert into ControleProdComb(CodProd, DataOP, deb) values (12, '15/03/2024', '2,5')", "1"},
             {"Select sum(deb) from ControleProdComb where codProd = 12 and dataOP =  # 03/15/2024 # ", "2.5"},
             {"Select sum(deb) from ControleProdComb where codProd = 12 and dataOP =  # 03/16/2024 # ", "NULL"},
             {"insert into TANQUE_1 (cmA, ltsA) values ('12', '1.234,5')", "1"},
             {"Update TANQUE_1 set cmA = '12,5', ltsA = '   845' where id = 1", "1"},
             {"Update TANQUE_1 set cmA = '12', ltsA = '845' where id = ",
              "-3100 Syntax error (missing operator) in query expression 'id ='."},
             {"Select * from TANQUE_1 order by cma ;", "1|NULL|12.5|'   845'"},
             {"insert into adm values ('Supervisor', '1234')", "1"},
             {"Select * from adm where nome = 'Supervisor' and senh = '' or '1' = '1';",
              "'Supervisor'|'1234'"}, // unescaped, as the program sends it
             {"Select * from config ", ""},
             {"Delete from planilhaposto", "1"},
         });
    QCOMPARE(joined(shell.database().storage().verify()), QString());
}

/// A value on its way into a column of another type.
void TestSqlChanges::assigns_data()
{
    QTest::addColumn<QByteArray>("type");
    QTest::addColumn<QByteArray>("literal");
    QTest::addColumn<QByteArray>("stored");
    const auto row = [](const char* type, const char* literal, const char* stored) {
        QTest::addRow("%s = %s", type, literal) << QByteArray(type) << QByteArray(literal) << QByteArray(stored);
    };
    constexpr const char* mismatch = "-3030";
    constexpr const char* overflow = "-3062";
    constexpr const char* tooLong = "-3163";
    row("DOUBLE", "'5,499'", "5.499");
    row("DOUBLE", "' R$ 1.234,5- '", "-1234.5");
    row("DOUBLE", "'1.5'", "15.0"); // a point is no decimal sign here
    row("DOUBLE", "''", mismatch);
    row("DOUBLE", "#01/02/1900#", "3.0");
    row("DOUBLE", "True", "-1.0");
    row("DOUBLE", "1e999", overflow);
    row("DATETIME", "'15/03/2024 '", "@2024-03-15");
    row("DATETIME", "'15/03/2024 06:30:15'", "@2024-03-15 06:30:15");
    row("DATETIME", "#03/04/2024#", "@2024-03-04");
    row("DATETIME", "'03/04/2024'", "@2024-04-03");
    row("DATETIME", "45366.25", "@2024-03-15 06:00:00");
    row("DATETIME", "'45366'", mismatch);
    row("DATETIME", "3000000", overflow);
    row("LONG", "'00012'", "12");
    row("LONG", "2.5", "2");
    row("LONG", "'3,5'", "4");
    row("LONG", "-2147483648", "-2147483648");
    row("LONG", "'2.147.483.648'", overflow);
    row("SHORT", "32768", overflow);
    row("BYTE", "255", "255");
    row("BYTE", "-1", overflow);
    row("CURRENCY", "'1.234,56785'", "$1234.5678"); // half to even
    row("CURRENCY", "1e15", overflow);
    row("CURRENCY", "922337203685477.5807", "$922337203685477.5807");
    row("CURRENCY", "'-922.337.203.685.477,5808'", "$-922337203685477.5808");
    row("CURRENCY", "-922337203685477.58085", "$-922337203685477.5808");
    row("CURRENCY", "922337203685477.5808", overflow);
    row("SINGLE", "0.1", "0.1f");
    row("SINGLE", "1e39", overflow);
    row("DECIMAL(6,2)", "'1234,567'", "1234.56d");
    row("DECIMAL(6,2)", "12345", overflow);
    row("DECIMAL(6,2)", "1e-40", "0.00d");
    row("DECIMAL(28,5)", "12345678901234567890123.45678", "12345678901234567890123.45678d");
    row("DECIMAL(28,4)", "'-123.456.789.012.345.678.901.234,56789'", "-123456789012345678901234.5678d");
    row("YESNO", "'yes'", "True");
    row("YESNO", "0", "False");
    row("YESNO", "Null", "False");
    row("YESNO", "'talvez'", mismatch);
    row("TEXT(5)", "1.5", "'1,5'");
    row("TEXT(5)", "'ação'", "'ação'");
    row("TEXT(5)", "'123456'", tooLong);
    row("TEXT(5)", "#03/15/2024#", tooLong);
    row("TEXT(10)", "#03/15/2024#", "'15/03/2024'");
    row("TEXT(5)", "''", "''");
    row("TEXT(5)", "'a  '", "'a  '");
    row("MEMO", "'\xF0\x9F\x9B\xA2 日本'", "'\xF0\x9F\x9B\xA2 日本'");
    row("LONGBINARY", "'x'", mismatch);
    row("DOUBLE", "2 * 3 + '1,5'", "7.5");
    row("DOUBLE", "litros", "-3010");
}

void TestSqlChanges::assigns()
{
    QFETCH(const QByteArray, type);
    QFETCH(const QByteArray, literal);
    QFETCH(const QByteArray, stored);
    SqlShell shell;
    shell.script({"CREATE TABLE T (x " + type + ", y LONG)", "INSERT INTO T (y) VALUES (1)"});
    const bool isRefused = stored.startsWith("-3") && stored.size() == 5;
    const QByteArray answer = isRefused ? stored : "1";
    play(shell, {{"INSERT INTO T (x, y) VALUES (" + literal + ", 2)", answer},
                 {"UPDATE T SET x = " + literal + " WHERE y = 1", answer}});
    if (!isRefused)
        QCOMPARE(shell.select("SELECT x FROM T"), stored + "; " + stored);
}

/// A statement that fails, at whatever row, leaves the file as it was.
void TestSqlChanges::refusesWhole_data()
{
    addSteps({
        {"insert into P (k, nome) values (3, 'x')", "-1605"},
        {"insert into P (k, nome) values (99, 'DOIS ')", "-1605"}, // a unique text: case and blanks do not count
        {"insert into P (nome) values ('sem chave')", "-3701"},
        {"insert into P (k) values (99)", "-3701"}, // nome is required
        {"insert into P (k, nome, nada) values (99, 'x', 1)", "-1507"},
        {"insert into P (k, nome, K) values (99, 'x', 1)", "-3505"},
        {"insert into P (k, nome) values (99)", "-3500"},
        {"insert into P values (99, 'x')", "-3500"},
        {"insert into P (k, nome) values (99, nada)", "-3010"},
        {"insert into P k values (99)", "-3502"},
        {"insert into P (k, nome) select k + 3, nome & k from P", "-1605"}, // fails at the first row
        {"insert into P (k, nome) select k + 9, iif(k = 3, Null, nome & 'x') from P", "-3701"}, // at the third
        {"insert into P (k, nome) select k from P", "-3500"},
        {"insert into P (select k from P)", "-3500 SELECT inside of another statement is not supported."},
        {"update P inner join Q on P.k = Q.k set v = 1", "-3500 JOIN is not supported."},
        {"delete P.* from P left join Q on P.k = Q.k", "-3500 JOIN is not supported."},
        {"update P set k = k + 1", "-1605"}, // meets the next row
        {"update P set k = 7", "-1605"},
        {"update P set nome = Null where k = 2", "-3701"},
        {"update P set v = 10 / (k - 3)", "-3061"}, // fails at the third row
        {"update P set v = nome", "-3030"},
        {"update P set v = '1,5', v = 2", "-3505"},
        {"update P set nada = 1", "-3010"},
        {"update P set nome = '012345678901'", "-3163"},
        {"update P set v = 1 where nome = 3", "-3030"},
        {"update P v = 1", "-3503"},
        {"delete from P where k / (k - 3) > 0", "-3061"},
        {"delete from P where nada", "-3010"},
        {"delete from nada", "-1305"},
        {"delete P", "-3506"},
        {"alter table P add column v double", "-1508"},
        {"alter table P add nova double, v double", "-1508"}, // the first one is not kept either
        {"alter table P add nova nada", "-3553"},
        {"alter table nada add nova double", "-1305"},
        {"alter table P drop column v", "-3500"},
        {"create table p (a long)", "-1303"},
        {"create table Q (a long, A text(5))", "-1508"},
        {"create table Q (a long primary key, b long primary key)", "-1402"},
        {"create table Q (a text(300))", "-3163"},
        {"create unique index u on P (v)", "-1605"}, // two rows hold the same
        {"create index i on P (nada)", "-3055"},
        {"create index PrimaryKey on P (v)", "-1403"},
        {"drop table nada", "-1305"},
        {"truncate table P", "-3500"},
    });
}

void TestSqlChanges::refusesWhole()
{
    SqlShell shell;
    shell.script({"create table P (k long primary key, nome text(10) not null, v double)",
                  "create unique index porNome on P (nome)", "insert into P values (1, 'um', 1)",
                  "insert into P values (2, 'dois', 5)", "insert into P values (3, 'três', 5)",
                  "insert into P values (4, 'quatro', Null)"});
    accessfile::Storage& storage = shell.database().storage();
    const std::string before = contentOf(storage);
    QFETCH(const QByteArray, statement);
    QFETCH(const QByteArray, answer);
    play(shell, {{statement, answer}});
    QCOMPARE(contentOf(storage), before);
    QCOMPARE(joined(storage.verify()), QString());
    play(shell, {{"insert into P values (5, 'cinco', 1)", "1"}});
}

void TestSqlChanges::definitions()
{
    SqlShell shell;
    play(shell,
         {
             {"create table [Com Espaço] ([Código 1] counter constraint chave primary key, [order] varchar(20) default "
              "'x', unico long unique, b binary(4), m decimal(10, 3))",
              "0"},
             {"insert into [com espaço] ([ORDER], unico, m) values ('a', Null, '1,5')", "1"},
             {"insert into [com espaço] (unico) values (Null)", "1"}, // several nulls are no duplicates
             {"select [código 1], [order], [com espaço].m from [Com Espaço]", "1|'a'|1.500d; 2|'x'|NULL"},
             {"create index i1 on [Com Espaço] ([order] desc, m asc) with ignore null", "0"},
             {"create unique index i2 on [Com Espaço] ([order])", "0"},
             {"alter table [com espaço] add column nova double;", "0"},
             {"alter table [com espaço] add outra text(5) default 'novo', certa yesno", "0"},
             {"select nova, outra, certa from [com espaço]", "NULL|NULL|False; NULL|NULL|False"},
             {"insert into [com espaço] (nova, [order]) values ('5,5', 'b')", "1"},
             {"select nova, outra, [código 1] from [com espaço] where [order] = 'B'", "5.5|'novo'|3"},
             {"create table Chave (a long, b text(5), constraint dupla primary key (a, b))", "0"},
             {"insert into Chave values (1, 'x')", "1"},
             {"insert into Chave values (1, 'y')", "1"},
             {"create table Outra (a long)", "0"},
             {"create index i on Outra (a) with primary", "0"},
             {"drop table chave", "0"},
             {"create table Chave (a long)", "0"},
             {"select * from Chave", ""},
             {"insert into Outra values (Null)", "-3701"},
             {"insert into Outra select [código 1] + 10 from [com espaço] where unico is null", "3"},
             {"insert into Outra (a) select max(a) + 1 from Outra", "1"},
             {"insert into Outra select 20", "1"},
             {"insert into Outra select top 2 a + 50 from Outra order by a", "2"}, // its own rows, once each
             {"select a from Outra order by a", "11; 12; 13; 14; 20; 61; 62"},
             {"delete Outra.* from Outra where a > 14", "3"},
         });
    QCOMPARE(joined(shell.database().storage().verify()), QString());
    QCOMPARE(exportDifference(shell.database().storage(), shell.path()), QString());
}

void TestSqlChanges::defaultsAndAutonumbers()
{
    SqlShell shell;
    const QByteArray today = QDate::currentDate().toString(Qt::ISODate).toUtf8();
    play(shell,
         {{"create table D (n counter, a double default 1.5, b text(10) default \"D'Ávila\", c datetime default "
           "Date(), d datetime default Now(), e yesno default True, f long default -3, g datetime default "
           "#03/15/2024#)",
           "0"},
          {"insert into D (a) values (2)", "1"},
          {"insert into D (a, b, f) values (Null, Null, Null)", "1"},
          {"select n, a, b, e, f, g from D", "1|2.0|'D'Ávila'|True|-3|@2024-03-15; 2|NULL|NULL|True|NULL|@2024-03-15"},
          {"insert into D (n) values (10)", "1"},
          {"insert into D (a) values (0)", "1"},
          {"delete from D where n = 11", "1"},
          {"insert into D (a) values (0)", "1"},
          {"select n from D where n > 2", "10; 12"}, // a number is never given twice
          {"update D set n = 5", "-1048 Cannot update 'n'; field not updateable."}});
    QCOMPARE(shell.select("select c from D where n = 1"), '@' + today);
    QVERIFY(shell.select("select d from D where n = 1 and d > Date() - 1 and d <= Now").startsWith('@' + today));
}

/// The row-wise way of a result set: the same conversions, one unit each.
void TestSqlChanges::addsAndUpdatesRows()
{
    SqlShell shell;
    shell.script({"create table R (k long primary key, v double default 7, d datetime, t text(5))"});
    accessfile::Database& database = shell.database();
    QCOMPARE(database.tableOf("Select v, [K] from r where k = 1 order by v;"), std::string("R"));
    QCOMPARE(errorOf([&] { static_cast<void>(database.tableOf("Select nada from R")); }), ErrorKind::MissingColumn);
    database.addRow("r", {{"K", 1}, {"d", std::string("15/03/2024 ")}});
    database.addRow("R", {{"k", std::string("00002")}, {"V", accessfile::Money{15000}}, {"t", 2.5}});
    QCOMPARE(errorOf([&] { database.addRow("R", {{"k", 2}}); }), ErrorKind::DuplicateKey);
    QCOMPARE(errorOf([&] { database.addRow("R", {{"k", 3}, {"nada", 1}}); }), ErrorKind::MissingColumn);
    QCOMPARE(errorOf([&] { database.addRow("R", {{"k", 3}, {"d", std::string("x")}}); }), ErrorKind::TypeMismatch);
    QCOMPARE(shell.select("select * from R"), QByteArray("1|7.0|@2024-03-15|NULL; 2|1.5|NULL|'2,5'"));

    const accessfile::RowId first = rowIdsOf(*database.storage().table("R")).front();
    database.updateRow("R", first, {{"k", 9}, {"v", accessfile::Null{}}});
    QCOMPARE(errorOf([&] { database.updateRow("R", first, {{"v", 1}, {"k", 2}}); }), ErrorKind::DuplicateKey);
    QCOMPARE(shell.select("select k, v from R order by k"), QByteArray("2|1.5; 9|NULL"));
    shell.script({"delete from R where k = 9"});
    QVERIFY(errorOf([&] { database.updateRow("R", first, {{"v", 1}}); }).has_value());
}

/// An update that moves rows along the index that it reads them by meets each row once.
void TestSqlChanges::updateMeetsItsOwnRows()
{
    SqlShell shell;
    // Few keys to a page of the index: what moves to its end lies before a reader that walks it.
    shell.script({"create table S (k text(255) primary key, n long, t text(200))"});
    for (int n = 101; n <= 400; ++n) {
        const QByteArray number = QByteArray::number(n);
        shell.script({"insert into S values ('" + number + QByteArray(150, 'k') + "', " + number + ", 'x')"});
    }
    play(shell, {{"update S set k = 'z' & k, n = n + 1000, t = '" + QByteArray(200, 'y') + "' where k > '201'", "200"},
                 {"select count(*), sum(n), max(n) from S where k > 'z'", "200|260100.0|1400"},
                 {"delete from S where n between 150 and 1300", "151"},
                 {"select count(*), min(n) from S where t like 'y%'", "100|1301"}});
    QCOMPARE(joined(shell.database().storage().verify()), QString());
}

void TestSqlChanges::readOnly()
{
    SqlShell shell;
    shell.script({"create table T (a long)", "insert into T values (1)"});
    shell.open(true);
    play(shell, {{"select a from T", "1"},
                 {"insert into T values (2)", "-1809"},
                 {"update T set a = 2", "-1809"},
                 {"delete from T", "-1809"},
                 {"alter table T add b long", "-1809"},
                 {"create table U (a long)", "-1809"},
                 {"drop table T", "-1809"}});
    shell.open(false);
    play(shell, {{"update T set a = 2", "1"}});
}

QTEST_GUILESS_MAIN(TestSqlChanges)
#include "test_sql_changes.moc"
