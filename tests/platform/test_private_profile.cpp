#include "platform/os/PrivateProfile.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using platform::GetPrivateProfileString;
using platform::WritePrivateProfileString;

namespace {

constexpr int SettingSize = 255;

} // namespace

class TestPrivateProfile : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_file = m_directory.filePath(QStringLiteral("ConfigINI.ini"));
        QFile::remove(m_file);
    }

    void reads_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("expected"); // of [Geral] Caminho, with "nada" standing in
        const auto row = [](const char* name, const char* bytes, const QString& expected) {
            QTest::newRow(name) << QByteArray(bytes) << expected;
        };
        const QString missing = QStringLiteral("nada");
        const QString path = QStringLiteral("C:\\dados\\posto.mdb");
        row("backslashes stay", "[Geral]\r\nCaminho=C:\\dados\\posto.mdb\r\n", path);
        row("no line break at the end", "[Geral]\nCaminho=C:\\dados\\posto.mdb", path);
        row("blanks around key and value", "  [ Geral ]\r\n\t Caminho \t=  C:\\dados\\posto.mdb \t\r\n", path);
        row("letter case of names", "[GERAL]\r\ncaMINHO=C:\\dados\\posto.mdb\r\n", path);
        row("text behind the section", "[Geral] ; a nota\r\nCaminho=C:\\dados\\posto.mdb\r\n", path);
        row("semicolon and commas in a value", "[Geral]\r\nCaminho=a;b, c=d\r\n", QStringLiteral("a;b, c=d"));
        row("double quotes", "[Geral]\r\nCaminho=\" a b \"\r\n", QStringLiteral(" a b "));
        row("single quotes", "[Geral]\r\nCaminho='a'\r\n", QStringLiteral("a"));
        row("only one pair", "[Geral]\r\nCaminho=\"\"a\"\"\r\n", QStringLiteral("\"a\""));
        row("unlike quotes", "[Geral]\r\nCaminho=\"a'\r\n", QStringLiteral("\"a'"));
        row("one quote alone", "[Geral]\r\nCaminho=\"\r\n", QStringLiteral("\""));
        row("Windows-1252", "[Geral]\r\nCaminho=Jo\xE3o \x80 \x97\r\n", QStringLiteral("João € —"));
        row("empty value", "[Geral]\r\nCaminho=\r\n", QString());
        row("key without equals sign", "[Geral]\r\nCaminho\r\n", missing);
        row("first key wins", "[Geral]\r\nCaminho=a\r\nCaminho=b\r\n", QStringLiteral("a"));
        row("first section wins", "[Geral]\r\nOutro=a\r\n[Geral]\r\nCaminho=b\r\n", missing);
        row("key of another section", "[Outra]\r\nCaminho=a\r\n[Geral]\r\n[Mais]\r\nCaminho=b\r\n", missing);
        row("key before any section", "Caminho=a\r\n[Geral]\r\n", missing);
        row("longer names", "[Geral2]\r\nCaminho=a\r\n[Geral]\r\nCaminho2=b\r\n", missing);
    }
    void reads()
    {
        QFETCH(QByteArray, bytes);
        store(bytes);
        QTEST(GetPrivateProfileString(QStringLiteral("Geral"), QStringLiteral("Caminho"), QStringLiteral("nada"),
                                      SettingSize, m_file),
              "expected");
    }

    void bufferCutsTheValue_data()
    {
        QTest::addColumn<int>("length");
        QTest::addColumn<int>("size");
        QTest::addColumn<int>("expected");
        QTest::newRow("fits") << 254 << SettingSize << 254;
        QTest::newRow("one too long") << 255 << SettingSize << 254;
        QTest::newRow("room for the end alone") << 10 << 1 << 0;
        QTest::newRow("no room") << 10 << 0 << 0;
    }
    void bufferCutsTheValue()
    {
        QFETCH(int, length);
        QFETCH(int, size);
        const QString value(length, QChar(0xE7));
        store("[Geral]\r\nCaminho=" + QByteArray(length, '\xE7') + "\r\n");
        for (const QString& key : {QStringLiteral("Caminho"), QStringLiteral("falta")}) {
            const QString read = GetPrivateProfileString(QStringLiteral("Geral"), key, value, size, m_file);
            QTEST(static_cast<int>(read.size()), "expected");
            QVERIFY(value.startsWith(read));
        }
    }

    void writes_data()
    {
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QByteArray>("after"); // with [Conexao] host = value
        const auto row = [](const char* name, const char* before, const QString& value, const char* after) {
            QTest::newRow(name) << QByteArray(before) << value << QByteArray(after);
        };
        const QString host = QStringLiteral("10.0.0.1");
        row("in place, all other bytes kept",
            "; nota \xE7\x81\r\n\r\n[Geral]\r\n Caminho = C:\\a;b\r\n[Conexao]\r\n host = velho  \r\nbase=b\r\n\r\n; "
            "fim\x1A",
            host,
            "; nota \xE7\x81\r\n\r\n[Geral]\r\n Caminho = C:\\a;b\r\n[Conexao]\r\n host =10.0.0.1\r\nbase=b\r\n\r\n; "
            "fim\x1A");
        row("mixed line ends stay", "[a]\r\nb=c\n[conexao]\nHOST=x\nbase=y\r\n", host,
            "[a]\r\nb=c\n[conexao]\nHOST=10.0.0.1\nbase=y\r\n");
        row("first of two keys", "[Conexao]\r\nhost=a\r\nhost=b\r\n", host, "[Conexao]\r\nhost=10.0.0.1\r\nhost=b\r\n");
        row("last line without a break", "[Conexao]\r\nhost=a", host, "[Conexao]\r\nhost=10.0.0.1");
        row("new key before the blank lines", "[Conexao]\r\nbase=b\r\n\r\n[Geral]\r\nhost=x\r\n", host,
            "[Conexao]\r\nbase=b\r\nhost=10.0.0.1\r\n\r\n[Geral]\r\nhost=x\r\n");
        row("new key in an empty section", "[Conexao]\r\n[Geral]\r\n", host,
            "[Conexao]\r\nhost=10.0.0.1\r\n[Geral]\r\n");
        row("new key behind an open line", "[Conexao]\r\nbase=b", host, "[Conexao]\r\nbase=b\r\nhost=10.0.0.1\r\n");
        row("a comment is no key", "[Conexao]\r\n;host=a\r\n", host, "[Conexao]\r\n;host=a\r\nhost=10.0.0.1\r\n");
        row("new section", "[Geral]\r\na=b\r\n", host, "[Geral]\r\na=b\r\n[Conexao]\r\nhost=10.0.0.1\r\n");
        row("new section behind an open line", "[Geral]\r\na=b", host,
            "[Geral]\r\na=b\r\n[Conexao]\r\nhost=10.0.0.1\r\n");
        row("file of bare line feeds", "[Geral]\na=b\n", host, "[Geral]\na=b\n[Conexao]\nhost=10.0.0.1\n");
        row("empty file", "", host, "[Conexao]\r\nhost=10.0.0.1\r\n");
        row("empty value", "[Conexao]\r\nhost=a\r\n", QString(), "[Conexao]\r\nhost=\r\n");
        row("accents, and what Windows-1252 lacks", "[Conexao]\r\n", QStringLiteral("João € ж"),
            "[Conexao]\r\nhost=Jo\xE3o \x80 ?\r\n");
        row("a value stays one line", "[Conexao]\r\n", QStringLiteral("a\r\n[Geral]"),
            "[Conexao]\r\nhost=a  [Geral]\r\n");
    }
    void writes()
    {
        QFETCH(QByteArray, before);
        QFETCH(QString, value);
        store(before);
        QVERIFY(WritePrivateProfileString(QStringLiteral("Conexao"), QStringLiteral("host"), value, m_file));
        QTEST(stored(), "after");
    }

    void everyWindowsCharacterComesBack()
    {
        // A missing file is made; the value holds every byte but the line breaks, quotes and outer blanks.
        QByteArray bytes;
        for (int code = 0x21; code <= 0xFF; ++code)
            bytes += static_cast<char>(code);
        const QString file = m_directory.filePath(QStringLiteral("novo.ini"));
        store("[a]\r\nb=" + bytes + "\r\n");
        const QString text = GetPrivateProfileString(QStringLiteral("a"), QStringLiteral("b"), QString(), 1000, m_file);
        QVERIFY(WritePrivateProfileString(QStringLiteral("a"), QStringLiteral("b"), text, file));
        const QByteArray old = stored();
        m_file = file;
        QCOMPARE(stored(), old);
    }

    void failedWriteKeepsTheFile()
    {
        const QString section = QStringLiteral("Conexao");
        const QString key = QStringLiteral("host");
        // No such folder, and a folder where the file should be.
        QVERIFY(!WritePrivateProfileString(section, key, key, m_directory.filePath(QStringLiteral("falta/a.ini"))));
        QVERIFY(!WritePrivateProfileString(section, key, key, m_directory.path()));
        QCOMPARE(GetPrivateProfileString(section, key, key, SettingSize, m_directory.path()), key);

        // No write leaves anything but the file behind.
        store("[Conexao]\r\nhost=a\r\n");
        QVERIFY(WritePrivateProfileString(section, key, QStringLiteral("b"), m_file));
        QCOMPARE(QDir(m_directory.path()).entryList({QStringLiteral("ConfigINI*")}, QDir::Files).size(), 1);
    }

private:
    void store(const QByteArray& bytes) const
    {
        QFile file(m_file);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    [[nodiscard]] QByteArray stored() const
    {
        QFile file(m_file);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("missing");
    }

    QTemporaryDir m_directory;
    QString m_file;
};

QTEST_GUILESS_MAIN(TestPrivateProfile)
#include "test_private_profile.moc"
