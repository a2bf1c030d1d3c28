// The start-up: settings, connection, password, load, and what ends it.

#include "StationFixture.h"

#include "app/ModConec.h"
#include "platform/ui/Application.h"
#include "support/MariaDbServer.h"

#include <QApplication>
#include <QFile>
#include <QTimer>

#include <deque>

namespace {

constexpr auto Mysql = "mysql";

/// Acts on the windows of the start-up one after another, as an operator would: the n-th step runs when a window of
/// its name is up.
class Operator : public QObject
{
public:
    Operator()
    {
        m_timer.setInterval(5);
        connect(&m_timer, &QTimer::timeout, this, &Operator::look);
        m_timer.start();
    }
    void when(const char* window, std::function<void(QWidget&)> act)
    {
        m_steps.emplace_back(QString::fromLatin1(window), std::move(act));
    }
    void types(const char* password)
    {
        when("frmsenha", [password](QWidget& prompt) {
            auto* const box = prompt.findChild<QLineEdit*>(QStringLiteral("Text1"));
            box->setText(QString::fromLatin1(password));
            QTest::keyClick(box, Qt::Key_Return);
        });
    }
    [[nodiscard]] bool isDone() const { return m_steps.empty(); }

private:
    void look()
    {
        if (m_steps.empty())
            return;
        for (QWidget* const window : QApplication::topLevelWidgets()) {
            if (window->isVisible() && window->objectName() == m_steps.front().first) {
                const auto act = std::move(m_steps.front().second);
                m_steps.pop_front();
                act(*window);
                return;
            }
        }
    }

    QTimer m_timer;
    std::deque<std::pair<QString, std::function<void(QWidget&)>>> m_steps;
};

struct Run
{
    QTemporaryDir folder;
    support::TestMessages messages;
    support::TestClock clock{QDateTime(QDate(2024, 3, 15), QTime(8, 30, 5))};
    support::TestPump pump;
    support::TestChooser chooser;
    support::TestDefaultPrinter defaultPrinter;
    support::TestSpooler spooler;
    Operator person;

    void settings(const char* text) const
    {
        QFile file(folder.filePath(QStringLiteral("ConfigINI.ini")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(text);
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
        support::makeStation(database);
        // An older database: without the stock code column.
        if (database.isMySql())
            database.script({QStringLiteral("alter table CadProdComb drop column codigoEstoque")});
        Run run;
        writeSettings(run.folder.path(), database);
        for (int start = 0; start < 2; ++start) { // The second one finds the upgraded database.
            const support::StatementTrace trace;
            for (int wrong = 0; wrong < 3; ++wrong) {
                run.messages.expect();
                run.person.types("errada");
            }
            run.person.types("1234");
            run.person.when("frmprincipal", [](QWidget& window) { QTest::keyClick(&window, Qt::Key_Escape); });
            QCOMPARE(run.main(), 0);
            QVERIFY(run.person.isDone());
            QCOMPARE(run.messages.shown().size(), 3 * (start + 1));
            QCOMPARE(run.messages.shown().last().prompt, QStringLiteral("Esta senha de supervisor não é valida"));
            const QString add = database.isMySql() ? QStringLiteral("add column") : QStringLiteral("add");
            QStringList expected{
                QStringLiteral("exec alter table cadprodcomb %1 codigoEstoque double;").arg(add),
                QStringLiteral("open Select * from DatEmit;"),
                QStringLiteral("open Select * from adm where nome = 'Supervisor' and senh = 'errada';"),
                QStringLiteral("open Select * from adm where nome = 'Supervisor' and senh = 'errada';"),
                QStringLiteral("open Select * from adm where nome = 'Supervisor' and senh = 'errada';"),
                QStringLiteral("open Select * from adm where nome = 'Supervisor' and senh = '1234';"),
                QStringLiteral("open Select * from PlanilhaPosto order by numerodispositivo")};
            if (database.isMySql())
                expected.prepend(QStringLiteral("open Select * from hosts where ativo = 'X';"));
            QCOMPARE(trace.lines().mid(0, expected.size()), expected);
            QStringList last{QStringLiteral("open Select * from EstoqueDiversos order by discriminacao;")};
            if (database.isMySql())
                last << QStringLiteral("exec ALTER TABLE leitura CHANGE LeitAnt LeitAnt varchar(50)")
                     << QStringLiteral("exec ALTER TABLE leitura CHANGE LeitAtu LeitAtu varchar(50)")
                     << QStringLiteral("exec ALTER TABLE leitura CHANGE Saldo Saldo varchar(50)")
                     << QStringLiteral("exec ALTER TABLE EstoqueDiversos CHANGE quantidade quantidade varchar(50)");
            last << QStringLiteral("open Select * from config ");
            QCOMPARE(trace.lines().mid(trace.lines().size() - last.size()), last);
        }
    }

    void escapeAtThePrompt_data() { support::BothBackEnds::addRows(); }
    void escapeAtThePrompt()
    {
        FRESH_DATABASE(database);
        support::makeStation(database);
        Run run;
        writeSettings(run.folder.path(), database);
        const support::StatementTrace trace;
        run.person.when("frmsenha", [](QWidget& prompt) {
            QCOMPARE(prompt.findChild<QLabel*>(QStringLiteral("Label2"))->text(),
                     QStringLiteral("Auto Posto Três Ipês Ltda"));
            QTest::keyClick(&prompt, Qt::Key_Escape);
        });
        QCOMPARE(run.main(), 0);
        QVERIFY(run.person.isDone());
        QVERIFY(!trace.lines().last().contains(QStringLiteral("PlanilhaPosto"))); // No main window was loaded.
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
        QVERIFY(run.messages.shown().last().prompt.startsWith(QStringLiteral("Erro em tempo de execução '")));
    }

    void unguardedLoad_data()
    {
        QTest::addColumn<QString>("backEnd");
        QTest::addColumn<QString>("damage");
        QTest::addColumn<QString>("error");
        for (const char* backEnd : {"access", Mysql}) {
            QTest::addRow("%s config without a row", backEnd)
                << QString::fromLatin1(backEnd) << QStringLiteral("delete from config") << QStringLiteral("'3021'");
            QTest::addRow("%s no table of items", backEnd)
                << QString::fromLatin1(backEnd) << QStringLiteral("drop table EstoqueDiversos") << QString();
        }
    }
    void unguardedLoad()
    {
        FRESH_DATABASE(database);
        QFETCH(QString, damage);
        QFETCH(QString, error);
        support::makeStation(database);
        database.script({damage});
        Run run;
        writeSettings(run.folder.path(), database);
        run.person.types("1234");
        run.messages.expect();
        QCOMPARE(run.main(), 1);
        QVERIFY(run.messages.shown().last().prompt.contains(error));
    }

    void hosts()
    {
        if (!support::MariaDbServer::isInstalled())
            QSKIP("no MariaDB server is installed");
        support::BothBackEnds database{QString::fromLatin1(Mysql)};
        support::makeStation(database);
        support::MariaDbServer& server = support::MariaDbServer::shared();
        const QString user = support::MariaDbServer::user();
        const QString password = support::MariaDbServer::password();
        Run run;
        run.settings("[Geral]\r\nTipoConexao_BD=mysql\r\n");
        const QString x = QStringLiteral("X");
        support::makeHosts(run.folder.path(),
                           {{QString(), QStringLiteral("127.0.0.1"), QStringLiteral("nenhuma"), user, password},
                            {x, server.host(), database.database(), user, password},
                            {x, QStringLiteral("127.0.0.1"), QStringLiteral("outra"), user, password}});
        run.person.types("1234");
        run.person.when("frmprincipal", [](QWidget& window) { window.close(); });
        QCOMPARE(run.main(), 0);
        QVERIFY(run.person.isDone());
        QFile file(run.folder.filePath(QStringLiteral("ConfigINI.ini")));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromLatin1(file.readAll()),
                 QStringLiteral("[Geral]\r\nTipoConexao_BD=mysql\r\n[Conexao]\r\nhost=%1\r\nbase=%2\r\nusuarioD=%3\r\n"
                                "Senha=%4\r\n")
                     .arg(server.host(), database.database(), user, password));

        // No active profile: there is no current record.
        Run none;
        none.settings("[Geral]\r\nTipoConexao_BD=mysql\r\n");
        support::makeHosts(none.folder.path(), {{QString(), server.host(), database.database(), user, password}});
        none.messages.expect();
        QCOMPARE(none.main(), 1);
        QVERIFY(none.messages.shown().last().prompt.contains(QStringLiteral("'3021'")));
    }

    void serverDown()
    {
        Run run;
        run.settings("[Geral]\r\nTipoConexao_BD=mysql\r\n");
        support::makeHosts(run.folder.path(),
                           {{QStringLiteral("X"), QStringLiteral("127.0.0.99"), QStringLiteral("estacao"),
                             QStringLiteral("posto"), QStringLiteral("x")}});
        run.messages.expect(); // The connection's own message; the start-up goes on,
        run.messages.expect(); // and the first unguarded statement ends it.
        run.person.types("1234");
        QCOMPARE(run.main(), 1);
        QVERIFY(run.person.isDone());
        QCOMPARE(run.messages.shown().first().prompt,
                 QStringLiteral("Houve erro de conexão, com a base de dados verifique erro(GRT8282)"));
        QVERIFY(run.messages.shown().last().prompt.startsWith(QStringLiteral("Erro em tempo de execução '")));
    }

    void windowsOfTheProgramAreWorkable()
    {
        support::BothBackEnds database(QStringLiteral("access"));
        StationFixture station(database);
        frmprincipal& window = station.open();
        // Every control that takes the focus has a name that a screen reader can say.
        for (const QWidget* control : window.findChildren<QWidget*>()) {
            const QString name = control->objectName();
            if (control->focusPolicy() & Qt::TabFocus && !name.isEmpty() && !name.startsWith(QStringLiteral("qt_")))
                QVERIFY2(!control->accessibleName().isEmpty(), qPrintable(name));
        }
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
