// The command line to Access files: what it prints, what it refuses, and its exit codes.
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

class TestMdbsql : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void prints_data();
    void prints();
    void exitCodes_data();
    void exitCodes();
    void lostOutput();

private:
    struct Result
    {
        int code;
        QByteArray output;
        QByteArray errors;
    };

    Result run(const QStringList& arguments, const QByteArray& script)
    {
        QProcess process;
        process.start(QStringLiteral(MDBSQL_PROGRAM), arguments);
        process.write(script);
        process.closeWriteChannel();
        process.waitForFinished();
        return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
    }

    QTemporaryDir m_folder;
    QString m_file = m_folder.filePath(QStringLiteral("x.mdb"));
    bool m_made = run({m_file, QStringLiteral("--create")},
                      "CREATE TABLE T (t MEMO, v CURRENCY, d DOUBLE, s SINGLE, n DECIMAL(28, 10), b YESNO);")
                      .code == 0;
};

/// A script, line by line, and the last line that it prints.
void TestMdbsql::prints_data()
{
    QTest::addColumn<QByteArray>("script");
    QTest::addColumn<QByteArray>("line");
    const auto row = [](const char* name, const QByteArray& script, const QByteArray& line) {
        QTest::addRow("%s", name) << script << line;
    };
    row("numbers in plain digits",
        "INSERT INTO T (v, d, s, n, b) VALUES (922337203685477.5807, 2e5, 0.1, 123456789012345678.0123456789, True);\n"
        "SELECT v, d, s, n, b FROM T WHERE b;",
        "922337203685477.5807\t200000\t0.1\t123456789012345678.0123456789\t-1");
    row("small numbers", "SELECT 0.0001, -1e-7, 5e-324 * 0, 1e22;", "0.0001\t-0.0000001\t0\t10000000000000000000000");
    row("money", "SELECT Sum(v) - Sum(v), Min(v) * 0 + 10.25 FROM T WHERE b;", "0\t10.25");
    row("line ends of a text", "INSERT INTO T (t, d) VALUES ('a\r\nb\nc', 1);\r\nSELECT t FROM T WHERE d = 1;\r\n",
        "a\\r\\nb\\nc");
    row("control characters",
        "SELECT 'x\x1B[31m\x07\x7F\xC2\x9B"
        "2J\xC2\xA0é\t\\';",
        "x\\x1B[31m\\x07\\x7F\\x9B2J\xC2\xA0é\\t\\\\");
    row("names that hold quotes", "-- 'aberto\nSELECT 1 AS\n[D'Água];\nSELECT 2 AS `\"`;", "2");
    row("dates and nothing", "SELECT #03/15/2024 06:30#, Null, '';", "15/03/2024 06:30:00\t\t");
}

void TestMdbsql::prints()
{
    QVERIFY(m_made);
    QFETCH(const QByteArray, script);
    const Result result = run({m_file}, script);
    QCOMPARE(result.errors, QByteArray());
    QCOMPARE(result.code, 0);
    QTEST(result.output.trimmed().split('\n').last() + (result.output.endsWith("\t\t\n") ? "\t\t" : ""), "line");
}

void TestMdbsql::exitCodes_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("code");
    QTest::addColumn<QByteArray>("told"); // on the error output, for help on the other one
    const auto row = [](const QString& arguments, int code, const char* told) {
        QTest::addRow("%s", qPrintable(arguments))
            << arguments.split(u'|', Qt::SkipEmptyParts) << code << QByteArray(told);
    };
    row(QStringLiteral("--help"), 0, "LIKE: %");
    row(QString(), 2, "falta o ARQUIVO");
    row(QStringLiteral("%1|y.mdb"), 2, "mais de um ARQUIVO");
    row(QStringLiteral("%1|-c"), 2, "falta o valor");
    row(QStringLiteral("%1|--nada"), 2, "opção desconhecida: nada");
    row(QStringLiteral("%1|-c|SELECT 1 FROM T;"), 0, "");
    row(QStringLiteral("%1|--verify"), 0, "");
    row(QStringLiteral("%1|-c|SELEC\u001B[2J;"), 1, "-c:1: Invalid SQL statement");
    row(QStringLiteral("%1.nada"), 1, "mdbsql: ");
}

void TestMdbsql::exitCodes()
{
    QFETCH(QStringList, arguments);
    QFETCH(const QByteArray, told);
    const Result result = run(arguments.replaceInStrings(QStringLiteral("%1"), m_file), {});
    QTEST(result.code, "code");
    const QByteArray& text = result.code == 0 ? result.output : result.errors;
    QVERIFY2(text.contains(told), text.constData());
    QVERIFY(!result.errors.contains('\x1B'));
}

/// What went to a full disk is no success.
void TestMdbsql::lostOutput()
{
    QProcess process;
    process.setStandardOutputFile(QStringLiteral("/dev/full"));
    process.start(QStringLiteral(MDBSQL_PROGRAM), {m_file, QStringLiteral("-c"), QStringLiteral("SELECT 'x'")});
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitCode(), 3);
    QVERIFY(!process.readAllStandardError().isEmpty());
}

QTEST_GUILESS_MAIN(TestMdbsql)
#include "test_mdbsql.moc"
