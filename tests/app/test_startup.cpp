// The start-up: settings, connection, password, load, and what ends it.

#include "app/ModConec.h"
#include "platform/ui/Application.h"
#include "support/BothBackEnds.h"
#include "support/Doubles.h"
#include "support/MariaDbServer.h"
#include "support/Operator.h"
#include "support/PrintDoubles.h"
#include "support/StatementTrace.h"
#include "support/StationSchema.h"

#include <QAction>
#include <QApplication>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

struct Run
{
    QTemporaryDir folder;
    support::TestMessages messages;
    support::TestClock clock{QDateTime(QDate(2024, 3, 15), QTime(8, 30, 5))};
    support::TestPump pump;
    support::TestChooser chooser;
    support::TestDefaultPrinter defaultPrinter;
    support::TestSpooler spooler;
    support::Operator person;

    void settings(const char* text) const
    {
        QFile file(folder.filePath(u"ConfigINI.ini"_s));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(text);
    }
    void useStation(support::BothBackEnds& database) const
    {
        support::makeStation(database);
        support::writeSettings(folder.path(), database.isMySql(), database.database());
    }
    int main() { return ModConec::Main({folder.path(), messages, clock, pump, {chooser, defaultPrinter, spooler}}); }
};

} // namespace

class TestStartup : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void wholeSequence_data() { support::BothBackEnds::addRows(); }
    void wholeSequence()
    {
        FRESH_DATABASE(database);
        Run run;
        run.useStation(database);
        // An older database: without the stock code column.
        if (database.isMySql())
            database.script({u"alter table CadProdComb drop column codigoEstoque"_s});
        // The last two make the statement find rows, but none of them is the supervisor's with that password.
        const char* const wrong[] = {"errada", "' or 'a'='a", "x' or nome = 'Supervisor' and 'a' = 'a"};
        for (int start = 0; start < 2; ++start) { // The second one finds the upgraded database.
            const support::StatementTrace trace;
            for (const char* text : wrong) {
                run.messages.expect();
                run.person.types(text);
            }
            run.person.types("1234");
            run.person.when("frmprincipal", [](QWidget& window) { QTest::keyClick(&window, Qt::Key_Escape); });
            QCOMPARE(run.main(), 0);
            QVERIFY(run.person.isDone());
            QCOMPARE(run.messages.shown().size(), 3 * (start + 1));
            QCOMPARE(run.messages.shown().last().prompt, u"Esta senha de supervisor não é valida"_s);
            const QString add = database.isMySql() ? u"add column"_s : u"add"_s;
            QStringList expected{u"exec alter table cadprodcomb %1 codigoEstoque double;"_s.arg(add),
                                 u"open Select * from DatEmit;"_s};
            for (const char* text : wrong)
                expected << u"open Select * from adm where nome = 'Supervisor' and senh = '%1';"_s.arg(
                    QString::fromLatin1(text));
            expected << u"open Select * from adm where nome = 'Supervisor' and senh = '1234';"_s
                     << u"open Select * from PlanilhaPosto order by numerodispositivo"_s;
            if (database.isMySql())
                expected.prepend(u"open Select * from hosts where ativo = 'X';"_s);
            QCOMPARE(trace.lines().mid(0, expected.size()), expected);
            QStringList last{u"open Select * from EstoqueDiversos order by discriminacao;"_s};
            if (database.isMySql())
                last << u"exec ALTER TABLE leitura CHANGE LeitAnt LeitAnt varchar(50)"_s
                     << u"exec ALTER TABLE leitura CHANGE LeitAtu LeitAtu varchar(50)"_s
                     << u"exec ALTER TABLE leitura CHANGE Saldo Saldo varchar(50)"_s
                     << u"exec ALTER TABLE EstoqueDiversos CHANGE quantidade quantidade varchar(50)"_s;
            last << u"open Select * from config "_s;
            QCOMPARE(trace.lines().mid(trace.lines().size() - last.size()), last);
        }
    }

    void escapeAtThePrompt_data() { support::BothBackEnds::addRows(); }
    void escapeAtThePrompt()
    {
        FRESH_DATABASE(database);
        Run run;
        run.useStation(database);
        const support::StatementTrace trace;
        run.person.when("frmsenha", [](QWidget& prompt) {
            QCOMPARE(prompt.findChild<QLabel*>(u"Label2"_s)->text(), u"Auto Posto Três Ipês Ltda"_s);
            QTest::keyClick(&prompt, Qt::Key_Escape);
        });
        QCOMPARE(run.main(), 0);
        QVERIFY(run.person.isDone());
        QVERIFY(!trace.lines().last().contains(u"PlanilhaPosto"_s)); // No main window was loaded.
    }

    /// A password with apostrophes opens where the row has it: case, accents, width and trailing blanks do not matter.
    void apostrophesInThePassword_data() { support::BothBackEnds::addRows(); }
    void apostrophesInThePassword()
    {
        FRESH_DATABASE(database);
        Run run;
        run.useStation(database);
        database.script({u"INSERT INTO adm (nome, senh) VALUES ('SUPERVISOR ', ''' Or ''Á''=''A ')"_s});
        run.person.types("' or 'a'='a");
        run.person.when("frmprincipal", [](QWidget& window) { QTest::keyClick(&window, Qt::Key_Escape); });
        QCOMPARE(run.main(), 0);
        QVERIFY(run.person.isDone());
    }

    /// An error while the password is checked: the start ends with it, over the main window the prompt stays.
    void errorAtThePrompt()
    {
        support::BothBackEnds database{u"access"_s};
        Run run;
        run.useStation(database);
        run.person.types("a'b");
        run.messages.expect();
        QCOMPARE(run.main(), 1);

        run.person.types("1234");
        run.person.when("frmprincipal", [](QWidget& window) {
            QTimer::singleShot(0, &window, [&] { window.findChild<QAction*>(u"cddiversos"_s)->trigger(); });
        });
        run.person.types("a'b");
        run.messages.expect();
        run.person.types("1234");
        run.person.when("frmdiversos", [](QWidget& window) { window.close(); });
        run.person.when("frmprincipal", [](QWidget& window) { window.close(); });
        QCOMPARE(run.main(), 0);
        QVERIFY(run.person.isDone());
        QCOMPARE(run.messages.shown().size(), 2);
        for (const auto& box : run.messages.shown())
            QVERIFY(box.prompt.startsWith(u"Erro em tempo de execução '"_s));
    }

    void endsWithTheError_data()
    {
        QTest::addColumn<QByteArray>("settings");
        QTest::newRow("no settings file: Access without a path") << QByteArray();
        QTest::newRow("capitals select Access") << QByteArray("[Geral]\r\nTipoConexao_BD=MySQL\r\n");
        QTest::newRow("a file that is not there") << QByteArray("[Geral]\r\nCaminho=/nada/posto.mdb\r\n");
        QTest::newRow("mysql without Host.mdb") << QByteArray("[Geral]\r\nTipoConexao_BD=mysql\r\n");
    }
    void endsWithTheError()
    {
        QFETCH(QByteArray, settings);
        Run run;
        if (!settings.isEmpty())
            run.settings(settings.constData());
        run.messages.expect();
        QCOMPARE(run.main(), 1);
        QCOMPARE(run.messages.shown().size(), 1);
        QVERIFY(run.messages.shown().last().prompt.startsWith(u"Erro em tempo de execução '"_s));
    }

    void unguardedLoad_data()
    {
        QTest::addColumn<QString>("backEnd");
        QTest::addColumn<QString>("damage");
        QTest::addColumn<QString>("error");
        for (const QString& backEnd : {u"access"_s, u"mysql"_s}) {
            QTest::addRow("%s config without a row", qPrintable(backEnd))
                << backEnd << u"delete from config"_s << u"'3021'"_s;
            QTest::addRow("%s no table of items", qPrintable(backEnd))
                << backEnd << u"drop table EstoqueDiversos"_s << QString();
        }
    }
    void unguardedLoad()
    {
        FRESH_DATABASE(database);
        QFETCH(QString, damage);
        QFETCH(QString, error);
        Run run;
        run.useStation(database);
        database.script({damage});
        run.person.types("1234");
        run.messages.expect();
        QCOMPARE(run.main(), 1);
        QVERIFY(run.messages.shown().last().prompt.contains(error));
    }

    void hosts()
    {
        if (!support::MariaDbServer::isInstalled())
            QSKIP("no MariaDB server is installed");
        support::BothBackEnds database{u"mysql"_s};
        support::makeStation(database);
        support::MariaDbServer& server = support::MariaDbServer::shared();
        const QString user = support::MariaDbServer::user();
        const QString password = support::MariaDbServer::password();
        Run run;
        run.settings("[Geral]\r\nTipoConexao_BD=mysql\r\n");
        const QString x = u"X"_s;
        support::makeHosts(run.folder.path(), {{QString(), u"127.0.0.1"_s, u"nenhuma"_s, user, password},
                                               {x, server.host(), database.database(), user, password},
                                               {x, u"127.0.0.1"_s, u"outra"_s, user, password}});
        run.person.types("1234");
        run.person.when("frmprincipal", [](QWidget& window) { window.close(); });
        QCOMPARE(run.main(), 0);
        QVERIFY(run.person.isDone());
        QFile file(run.folder.filePath(u"ConfigINI.ini"_s));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromLatin1(file.readAll()),
                 u"[Geral]\r\nTipoConexao_BD=mysql\r\n[Conexao]\r\nhost=%1\r\nbase=%2\r\nusuarioD=%3\r\n"
                 u"Senha=%4\r\n"_s.arg(server.host(), database.database(), user, password));

        // No active profile: there is no current record.
        Run none;
        none.settings("[Geral]\r\nTipoConexao_BD=mysql\r\n");
        support::makeHosts(none.folder.path(), {{QString(), server.host(), database.database(), user, password}});
        none.messages.expect();
        QCOMPARE(none.main(), 1);
        QVERIFY(none.messages.shown().last().prompt.contains(u"'3021'"_s));
    }

    void serverDown()
    {
        Run run;
        run.settings("[Geral]\r\nTipoConexao_BD=mysql\r\n");
        support::makeHosts(run.folder.path(), {{u"X"_s, u"127.0.0.99"_s, u"estacao"_s, u"posto"_s, QString()}});
        run.messages.expect(); // The connection's own message; the start-up goes on,
        run.messages.expect(); // and the first unguarded statement ends it.
        run.person.types("1234");
        QCOMPARE(run.main(), 1);
        QVERIFY(run.person.isDone());
        QCOMPARE(run.messages.shown().first().prompt,
                 u"Houve erro de conexão, com a base de dados verifique erro(GRT8282)"_s);
        QVERIFY(run.messages.shown().last().prompt.startsWith(u"Erro em tempo de execução '"_s));
    }
};

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    platform::prepareApplication(application);
    QApplication::setQuitOnLastWindowClosed(false);
    TestStartup test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_startup.moc"
