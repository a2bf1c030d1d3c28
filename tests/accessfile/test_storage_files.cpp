#include "accessfile/AccessTestTools.h"
#include "accessfile/Error.h"
#include "accessfile/OtherProgram.h"
#include "accessfile/file/Location.h"

#include <QDirIterator>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <sstream>

#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

using namespace accessfile;
using namespace accesstest;

namespace {

QString program(const QStringList& arguments, int* code = nullptr)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QStringLiteral(MDBSQL_PROGRAM), arguments);
    process.closeWriteChannel();
    process.waitForFinished(60'000);
    if (code != nullptr)
        *code = process.exitCode();
    return QString::fromUtf8(process.readAll());
}

void makeStation(const QString& file)
{
    Storage::create(file.toStdString());
    const auto storage = Storage::open(file.toStdString(), {});
    storage->createTable("Conta", std::array{column("n", ColumnType::Long), column("valor", ColumnType::Long)},
                         std::array{index("PorN", {{0, true}}, true)});
    storage->beginStatement();
    for (int n = 1; n <= 4; ++n)
        storage->table("Conta")->insert(Cells{n, 0});
    storage->commitStatement();
}

void change(Storage& storage)
{
    storage.change([&] {
        const auto cursor = storage.table("Conta")->scan();
        cursor->next();
        const int value = std::get<std::int32_t>(cursor->value(1));
        storage.table("Conta")->update(cursor->rowId(), Changes{{1, value + 1}});
    });
}

void touch(const QString& file)
{
    QFile made(file);
    QVERIFY(made.open(QIODevice::WriteOnly));
}

} // namespace

/// The data file and its companions as files of the system, and several processes at them.
class TestStorageFiles : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_folder.emplace();
        m_file = m_folder->filePath(QStringLiteral("posto.mdb"));
        makeStation(m_file);
    }
    void companionsOfALink();
    void companionsThatAreNone_data();
    void companionsThatAreNone();
    void lockFileNames();
    void otherProgramInProcess();
    void processes();
    void location_data();
    void location();

private:
    [[nodiscard]] std::unique_ptr<Storage> opened(int wait = 300) const
    {
        OpenOptions options;
        options.wait = std::chrono::milliseconds(wait);
        return Storage::open(m_file.toStdString(), options);
    }
    std::optional<QTemporaryDir> m_folder;
    QString m_file;
};

/// Journal and lock file lie beside the file itself, with its group and rights.
void TestStorageFiles::companionsOfALink()
{
    const QTemporaryDir elsewhere;
    const QString link = elsewhere.filePath(QStringLiteral("atalho.mdb"));
    QVERIFY(QFile::link(m_file, link));
    QFile::remove(m_folder->filePath(QStringLiteral("posto.ldb")));
    QVERIFY(::chmod(qPrintable(m_file), 0640) == 0);
    const auto storage = Storage::open(link.toStdString(), {});
    change(*storage);
    for (const char* name : {"posto.mdb-diario", "posto.ldb"}) {
        struct stat found = {};
        QVERIFY(::lstat(qPrintable(m_folder->filePath(QString::fromLatin1(name))), &found) == 0);
        QCOMPARE(found.st_mode & 07777U, 0640U);
    }
    QCOMPARE(QDir(elsewhere.path()).entryList(QDir::Files), QStringList{QStringLiteral("atalho.mdb")});
}

void TestStorageFiles::companionsThatAreNone_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("kind");
    for (const char* name : {"posto.mdb-diario", "posto.ldb", "posto.mdb"}) {
        for (const char* kind : {"pipe", "device", "link", "second name", "foreign"}) {
            const bool ofData = qstrcmp(name, "posto.mdb") == 0;
            if (!ofData || kind[0] == 'p' || kind[0] == 'd')
                QTest::addRow("%s: %s", name, kind) << QString::fromLatin1(name) << QString::fromLatin1(kind);
        }
    }
}

/// A pipe, a device, a link or a stranger's file in place of a file of ours: refused at once, and what it leads to is
/// left alone.
void TestStorageFiles::companionsThatAreNone()
{
    QFETCH(const QString, name);
    QFETCH(const QString, kind);
    const QString place = m_folder->filePath(name);
    const QString victim = m_folder->filePath(QStringLiteral("alheio"));
    touch(victim);
    QFile::remove(place);
    const bool strange = kind == u"foreign" || kind == u"device";
    if (strange && ::geteuid() != 0)
        QSKIP("needs root");
    if (kind == u"pipe")
        QVERIFY(::mkfifo(qPrintable(place), 0666) == 0);
    else if (kind == u"device")
        QVERIFY(::mknod(qPrintable(place), S_IFCHR | 0666, makedev(1, 5)) == 0);
    else if (kind == u"link")
        QVERIFY(QFile::link(victim, place));
    else if (kind == u"second name")
        QVERIFY(::link(qPrintable(victim), qPrintable(place)) == 0);
    else {
        touch(place);
        QVERIFY(::chown(qPrintable(place), 12345, 12345) == 0);
    }
    QElapsedTimer clock;
    clock.start();
    QVERIFY(errorOf([&] { change(*opened()); }).has_value());
    QVERIFY(clock.elapsed() < 3000);
    QCOMPARE(fileBytes(victim).size(), 0);
    QFile::remove(place);
    if (name != u"posto.mdb")
        change(*opened());
}

/// A stale lock file shuts nobody out, one with its name in capitals is the one, and one that is deleted under way is
/// made again.
void TestStorageFiles::lockFileNames()
{
    const QString small = m_folder->filePath(QStringLiteral("posto.ldb"));
    const QString capital = m_folder->filePath(QStringLiteral("POSTO.LDB"));
    const auto storage = opened();
    QFile::remove(small);
    touch(capital);
    change(*storage);
    QVERIFY(!QFile::exists(small));
    QCOMPARE(fileBytes(capital).size(), 64);
    storage->takeTurn();
    QVERIFY(QFile::remove(capital));
    change(*storage);
    storage->giveTurnBack();
    change(*storage);
    QVERIFY(QFile::exists(capital));
    QCOMPARE(joined(storage->verify().faults), QString());
}

/// Open file locks keep two openings of one process apart, also from one who is no program of ours.
void TestStorageFiles::otherProgramInProcess()
{
    const auto storage = opened();
    OtherProgram other(nativeFileSystem(), m_file.toStdString(), 9);
    // Open for writing without a byte in the lock file: seen by the lease, where the system gives one.
    QCOMPARE(errorOf([&] { change(*storage); }), ErrorKind::Locked);
    QVERIFY(other.enter());
    QCOMPARE(errorOf([&] { change(*storage); }), ErrorKind::Locked);
    QCOMPARE(errorOf([&] { static_cast<void>(opened()->verify()); }), std::nullopt);
    other.leave();
    change(*storage);
    const auto second = opened();
    storage->takeTurn();
    QCOMPARE(errorOf([&] { change(*second); }), ErrorKind::Locked);
    storage->giveTurnBack();
    change(*second);
}

/// Four processes at one file, one of them killed again and again: each acknowledged change is there once.
void TestStorageFiles::processes()
{
    constexpr int changes = 60;
    QByteArray script;
    for (int i = 0; i < changes; ++i)
        script += "UPDATE Conta SET valor = valor + 1 WHERE n = %1;\nUPDATE Conta SET valor = valor + 1 WHERE n = 4;\n";
    std::vector<std::unique_ptr<QProcess>> running;
    const auto start = [&](int n, const QByteArray& text) {
        auto process = std::make_unique<QProcess>();
        process->start(QStringLiteral(MDBSQL_PROGRAM), {m_file, QStringLiteral("--wait"), QStringLiteral("60")});
        process->write(QByteArray(text).replace("%1", QByteArray::number(n)));
        process->closeWriteChannel();
        running.push_back(std::move(process));
    };
    for (int n = 1; n <= 3; ++n)
        start(n, script);
    int kills = 0;
    while (running[0]->state() != QProcess::NotRunning && kills < 10) {
        start(3, "UPDATE Conta SET valor = valor + 1 WHERE n = 99;\nINSERT INTO Conta (n, valor) VALUES (" +
                     QByteArray::number(1000 + kills) + ", 7);\n" +
                     QByteArray("UPDATE Conta SET valor = valor WHERE n > 999;\n").repeated(50));
        QTest::qWait(60);
        running.back()->kill();
        ++kills;
    }
    for (const auto& process : running) {
        QVERIFY(process->state() == QProcess::NotRunning || process->waitForFinished(120'000));
        QVERIFY2(process->exitStatus() == QProcess::CrashExit || process->exitCode() == 0,
                 process->readAllStandardError().constData());
    }
    const auto storage = opened();
    QCOMPARE(joined(storage->verify().faults), QString());
    Rows rows = rowsOf(*storage->table("Conta"));
    QVERIFY(rows.size() >= 4);
    for (std::size_t n = 0; n < 3; ++n)
        QCOMPARE(rows[n][1], std::to_string(changes));
    QCOMPARE(rows[3][1], std::to_string(3 * changes));
    if (exporterInstalled())
        QCOMPARE(exportDifference(*storage, m_file), QString());
    int code = -1;
    const QString copy = m_folder->filePath(QStringLiteral("copia.mdb"));
    program({m_file, QStringLiteral("--backup"), copy}, &code);
    QCOMPARE(code, 0);
    QCOMPARE(fileBytes(copy), fileBytes(m_file));
    QVERIFY(program({m_file, QStringLiteral("--backup"), copy}, &code).contains(u"já existe"));
    QCOMPARE(code, 1);
}

void TestStorageFiles::location_data()
{
    QTest::addColumn<QString>("mounts");
    QTest::addColumn<QString>("server");
    QTest::addColumn<QString>("refused"); // Contained; empty: nothing.
    QTest::addColumn<QString>("warned");
    const QString disk = QStringLiteral("1 0 8:1 / / rw - ext4 /dev/sda1 rw\n");
    const auto share = [&](const char* options) {
        return disk + QStringLiteral("2 1 0:50 / /dados\\040do\\040posto rw - cifs //srv/dados rw,%1\n")
                          .arg(QLatin1String(options));
    };
    const QString served = QStringLiteral("[global]\n workgroup = X\n[posto]\n path = /dados do posto\n");
    QTest::newRow("a disk") << disk << QString() << QString() << QString();
    QTest::newRow("a share") << share("vers=3.1.1,cache=none") << QString() << QString() << QString();
    QTest::newRow("nobrl") << share("cache=none,nobrl") << QString() << QStringLiteral("nobrl") << QString();
    QTest::newRow("cached") << share("cache=strict") << QString() << QString() << QStringLiteral("cache=none");
    QTest::newRow("old protocol") << share("cache=none,vers=1.0") << QString() << QString()
                                  << QStringLiteral("vers=2.1");
    QTest::newRow("another folder's share") << disk << QStringLiteral("[x]\npath=/outra\n") << QString() << QString();
    QTest::newRow("served") << disk << served << QString() << QStringLiteral("veto oplock files");
    QTest::newRow("served, locks not strict") << disk << served + QStringLiteral("oplocks = no\n") << QString()
                                              << QStringLiteral("\"strict locking = yes\".");
    QTest::newRow("served as it should be")
        << disk << served + QStringLiteral("Veto Oplock Files = /*.MDB/*.ldb/\nstrict locking = Yes\n") << QString()
        << QString();
    QTest::newRow("served, kernel oplocks")
        << disk << QStringLiteral("[global]\nkernel oplocks=yes\n") + served << QString() << QString();
    QTest::newRow("nfs") << disk + QStringLiteral("2 1 0:50 / /dados\\040do\\040posto rw - nfs4 srv:/d rw\n")
                         << QString() << QString() << QStringLiteral("nfs4");
}

void TestStorageFiles::location()
{
    QFETCH(const QString, mounts);
    QFETCH(const QString, server);
    QFETCH(const QString, refused);
    QFETCH(const QString, warned);
    std::istringstream mountText(mounts.toStdString());
    std::istringstream serverText(server.toStdString());
    const Location found = examineLocation("/dados do posto/ano/posto.mdb", mountText, serverText);
    QCOMPARE(found.refusal.empty(), refused.isEmpty());
    QVERIFY(QString::fromStdString(found.refusal).contains(refused));
    QCOMPARE(found.warnings.empty(), warned.isEmpty());
    QVERIFY2(joined(found.warnings).contains(warned), qPrintable(joined(found.warnings)));
}

QTEST_GUILESS_MAIN(TestStorageFiles)
#include "test_storage_files.moc"
