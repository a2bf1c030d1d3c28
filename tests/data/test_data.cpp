// The dialects' date texts and the settings file.

#include "data/Dialect.h"
#include "data/Settings.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

class TestData : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void dialects_data()
    {
        QTest::addColumn<QString>("connectionType");
        QTest::addColumn<QString>("literal");
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QString>("withTime");
        QTest::addColumn<QString>("empty");
        const QString access = QStringLiteral(" # 03/15/2024 # "); // Month first here, day first when stored.
        for (const char* type : {"", "access", "MySQL", "mysql "})
            QTest::addRow("'%s' is Access", type)
                << QString::fromLatin1(type) << access << QStringLiteral("15/03/2024 ")
                << QStringLiteral("15/03/2024 08:30:05") << QStringLiteral(" ");
        QTest::newRow("mysql") << QStringLiteral("mysql") << QStringLiteral(" ' 2024/03/15 ' ")
                               << QStringLiteral("2024-03-15 00:00:00") << QStringLiteral("2024-03-15 08:30:05")
                               << QStringLiteral("1899-12-30 00:00:00");
    }
    void dialects()
    {
        QFETCH(QString, connectionType);
        const data::Dialect dialect(connectionType);
        QTEST(dialect.dateLiteral(QDate(2024, 3, 15)), "literal");
        const QString day = QStringLiteral("15/03/2024");
        QTEST(dialect.SqlDateTime(day, QString()), "stored");
        QTEST(dialect.SqlDateTime(day, QStringLiteral("08:30:05")), "withTime");
        QTEST(dialect.SqlDateTime(QString(), QString()), "empty");
    }

    void settings()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("ConfigINI.ini"));
        const auto read = [&](const char* section, const char* key) {
            return data::ReadSetting(QString::fromLatin1(section), QString::fromLatin1(key), path);
        };
        QCOMPARE(read("Geral", "Caminho"), QString()); // No file: no setting, no error.
        {
            QFile file(path);
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write("; posto\r\n[geral]\r\nCAMINHO = \"C:\\Posto\\S\xE3o.mdb\" \r\nTipoConexao_BD=mysql \r\nLongo=" +
                       QByteArray(300, 'x') + "\r\n");
        }
        QCOMPARE(read("Geral", "Caminho"), QStringLiteral("C:\\Posto\\São.mdb"));
        QCOMPARE(read("Geral", "TipoConexao_BD"), QStringLiteral("mysql"));
        QCOMPARE(read("Geral", "Longo").size(), 254); // The buffer of 255 holds the end mark, too.
        data::WriteSetting(QStringLiteral("Conexao"), QStringLiteral("Senha"), QStringLiteral("a=b ç"), path);
        QCOMPARE(read("Conexao", "senha"), QStringLiteral("a=b ç"));
    }
};

QTEST_APPLESS_MAIN(TestData)
#include "test_data.moc"
