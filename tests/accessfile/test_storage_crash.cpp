#include "accessfile/AccessTestTools.h"

#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

using namespace accessfile;
using namespace accesstest;

namespace {

struct Statement
{
    const char* name;
    std::function<void(Storage&)> run;
};

Cells reading(int day, const std::string& note)
{
    return {std::nullopt, DateTime{45000.0 + day}, day % 12, std::string("1.234,5") + std::to_string(day), note};
}

/// The statements that a closing and the registers make, and each kind of change of the catalog.
const std::vector<Statement>& statements()
{
    static const std::vector<Statement> all = {
        {"insert", [](Storage& storage) { storage.table("Leitura")->insert(reading(99, "curta")); }},
        {"insert long value",
         [](Storage& storage) { storage.table("Leitura")->insert(reading(98, std::string(9000, 'x'))); }},
        {"closing",
         [](Storage& storage) {
             for (int i = 0; i < 120; ++i)
                 storage.table("Leitura")->insert(reading(100 + i, std::string(static_cast<std::size_t>(i) * 9, 'c')));
         }},
        {"update that moves the row",
         [](Storage& storage) {
             const std::vector<RowId> rows = rowIdsOf(*storage.table("Leitura"));
             for (std::size_t i = 0; i < 8; ++i)
                 storage.table("Leitura")->update(rows[i],
                                                  Changes{{3, std::string(200, 'm')}, {4, std::string(900, 'n')}});
         }},
        {"delete",
         [](Storage& storage) {
             const std::vector<RowId> rows = rowIdsOf(*storage.table("Leitura"));
             for (std::size_t i = 0; i < rows.size(); i += 2)
                 storage.table("Leitura")->erase(rows[i]);
         }},
        {"create table",
         [](Storage& storage) {
             const std::array columns = {column("codigo", ColumnType::Long), column("texto", ColumnType::Memo)};
             storage.createTable("Nova", columns, std::array{index("PorCodigo", {{0, true}}, true)});
         }},
        {"add column", [](Storage& storage) { storage.addColumn("Leitura", column("mais", ColumnType::Memo)); }},
        {"create index",
         [](Storage& storage) {
             storage.createIndex("Leitura", index("PorTexto", {{3, true}, {1, false}}));
         }},
        {"drop table", [](Storage& storage) { storage.dropTable("Leitura"); }},
        {"password", [](Storage& storage) { storage.setPassword("outra"); }},
    };
    return all;
}

const Statement& closing = statements()[2];
const OpenOptions usual{.password = "8282"};

/// A station of 120 readings.
Bytes makeStation()
{
    MemoryStation storage(usual);
    std::array columns = {column("CodigoI", ColumnType::Long), column("DataLT", ColumnType::Date),
                          column("cdgBomba", ColumnType::Long), column("LeitAnt", ColumnType::Text, 255),
                          column("Obs", ColumnType::Memo)};
    columns[0].autonumber = true;
    Index key = index("PrimaryKey", {{0, true}}, true);
    key.primary = true;
    storage->createTable("Leitura", columns,
                         std::array{key, index("PorData", {{1, true}}), index("PorTexto2", {{3, false}, {2, true}})});
    storage->beginStatement();
    for (int i = 0; i < 120; ++i)
        storage->table("Leitura")->insert(reading(i / 10, i % 5 == 0 ? std::string(500, 'o') : "nota"));
    storage->commitStatement();
    // What this table leaves free is there for the sessions to come.
    const std::array once = {column("n", ColumnType::Long), column("texto", ColumnType::Memo)};
    storage->createTable("Outrora", once, std::array{index("PorN", {{0, true}})});
    for (int i = 0; i < 4; ++i)
        storage->table("Outrora")->insert(Cells{i, std::string(6000, 'v')});
    storage->dropTable("Outrora");
    return storage.bytes();
}

FaultyFiles stationFiles()
{
    static const Bytes bytes = makeStation();
    FaultyFiles files;
    files.setContent(stationFile, bytes);
    return files;
}

std::unique_ptr<StorageFile> opened(FaultyFiles& files, const OpenOptions& options = usual)
{
    return openStorage(files, stationFile, options);
}

/// What an opening finds, faults of the self-check among it.
std::string contentAfterOpening(FaultyFiles& files)
{
    std::unique_ptr<StorageFile> storage;
    if (errorOf([&] { storage = opened(files); }) == ErrorKind::WrongPassword)
        storage = opened(files, {.password = "outra"});
    if (storage == nullptr)
        return "not opened";
    const QString faults = joined(storage->verify());
    return (faults.isEmpty() ? "" : "faulty: " + faults.toStdString()) + contentOf(*storage) +
           (storage->acceptsPassword("outra") ? "outra" : "8282");
}

void runAsUnit(StorageFile& storage, const Statement& statement)
{
    storage.beginStatement();
    try {
        statement.run(storage);
        storage.commitStatement();
    } catch (const Error&) {
        storage.rollbackStatement();
        throw;
    }
}

/// Contents of a sound file before and after statements that nothing disturbs.
struct Undisturbed
{
    explicit Undisturbed(const Statement& statement, const Statement* first = nullptr)
    {
        FaultyFiles files = stationFiles();
        if (first != nullptr)
            runAsUnit(*opened(files), *first);
        before = contentAfterOpening(files);
        {
            const auto storage = opened(files);
            files.failAfter(1'000'000, FaultyFiles::Fault::None);
            runAsUnit(*storage, statement);
            changes = files.changes();
        }
        after = contentAfterOpening(files);
        QVERIFY(before != after && !before.starts_with("faulty") && !after.starts_with("faulty"));
    }
    std::string before;
    std::string after;
    std::size_t changes = 0;
};

/// Files of a closing that stopped among its page writes, with its journal.
FaultyFiles stoppedClosing(const Undisturbed& whole)
{
    FaultyFiles files = stationFiles();
    try {
        const auto storage = opened(files);
        files.failAfter(whole.changes - 4, FaultyFiles::Fault::Stop);
        runAsUnit(*storage, closing);
    } catch (const Stopped&) {
    }
    return files;
}

} // namespace

/// Whatever happens to the process, the disk or the power: a statement is wholly there or not at all.
class TestStorageCrash : public QObject
{
    Q_OBJECT

private slots:
    void stopsAtEveryWrite_data() { addStatements(); }
    void stopsAtEveryWrite();
    void stopsWhilePlayingBack();
    void diskFillsAtEveryWrite_data() { addStatements(); }
    void diskFillsAtEveryWrite();
    void oneChangeFails_data() { addStatements(); }
    void oneChangeFails();
    void oneReadFails_data() { addStatements(); }
    void oneReadFails();
    void oneReadFailsWhilePlayingBack();
    void creationIsWholeOrAbsent();
    void killedAtRandomMoments();

private:
    static void addStatements()
    {
        QTest::addColumn<std::size_t>("number");
        for (std::size_t i = 0; i < statements().size(); ++i)
            QTest::newRow(statements()[i].name) << i;
    }
    static const Statement& statement()
    {
        QFETCH(const std::size_t, number);
        return statements()[number];
    }
};

void TestStorageCrash::stopsAtEveryWrite()
{
    std::mt19937 engine(3);
    // Another statement comes first in the same session: its journal may still be found.
    const Statement& first = statements()[0];
    const Undisturbed whole(statement(), &first);
    std::size_t absent = 0;
    std::size_t stops = 0;
    for (bool stopped = true; stopped; ++stops) {
        // Twice each: what is lost of the unsynced writes is drawn anew.
        for (int round = 0; round < 2; ++round) {
            FaultyFiles files = stationFiles();
            try {
                const auto storage = opened(files);
                runAsUnit(*storage, first);
                files.failAfter(stops, FaultyFiles::Fault::Stop);
                runAsUnit(*storage, statement());
            } catch (const Stopped&) {
            }
            stopped = files.failed();
            files.heal();
            files.loseUnsynced(engine);
            const std::string found = contentAfterOpening(files);
            QVERIFY2(found == whole.before || found == whole.after, qPrintable(QString::number(stops)));
            absent += found == whole.before ? 1 : 0;
        }
    }
    QVERIFY(absent > 0 && absent < 2 * stops);
    qInfo("%zu stops, %zu of %zu without the statement", stops, absent, 2 * stops);
}

void TestStorageCrash::stopsWhilePlayingBack()
{
    std::mt19937 engine(5);
    const Undisturbed whole(closing);
    FaultyFiles files = stoppedClosing(whole);
    QVERIFY(files.failed());
    for (std::size_t stops = 0; files.failed(); ++stops) {
        files.failAfter(stops, FaultyFiles::Fault::Stop);
        try {
            static_cast<void>(opened(files));
        } catch (const Stopped&) {
        }
        files.heal();
        files.loseUnsynced(engine);
    }
    QCOMPARE(contentAfterOpening(files), whole.before);
}

void TestStorageCrash::diskFillsAtEveryWrite()
{
    const Undisturbed whole(statement());
    bool failed = true;
    std::size_t failures = 0;
    for (std::size_t writes = 0; failed; ++writes) {
        FaultyFiles files = stationFiles();
        {
            const auto storage = opened(files);
            files.failAfter(writes, FaultyFiles::Fault::Full);
            const auto error = errorOf([&] { runAsUnit(*storage, statement()); });
            failed = files.failed();
            QCOMPARE(error.has_value(), failed);
            files.heal();
            if (failed) {
                // The session goes on with what was there, and can work again once there is room.
                ++failures;
                QCOMPARE(*error, ErrorKind::IoError);
                QCOMPARE(joined(storage->verify()), QString());
                QCOMPARE(contentOf(*storage) + "8282", whole.before);
                runAsUnit(*storage, statement());
            }
        }
        QCOMPARE(contentAfterOpening(files), whole.after);
    }
    QVERIFY(failures > 0);
}

/// A write, sync or removal fails once with an input/output error: the statement is whole or absent, for the session
/// that goes on and after a power cut.
void TestStorageCrash::oneChangeFails()
{
    std::mt19937 engine(5);
    const Undisturbed whole(statement());
    bool failed = true;
    std::size_t failures = 0;
    for (std::size_t changes = 0; failed; ++changes) {
        for (const bool powerCut : {false, true}) {
            FaultyFiles files = stationFiles();
            {
                const auto storage = opened(files);
                files.failAfter(changes, FaultyFiles::Fault::Glitch);
                static_cast<void>(errorOf([&] { runAsUnit(*storage, statement()); }));
                failed = files.failed();
                failures += failed ? 1 : 0;
                files.heal();
                if (powerCut)
                    files.loseUnsynced(engine);
            }
            const std::string found = contentAfterOpening(files);
            QVERIFY2(found == whole.before || found == whole.after, qPrintable(QString::number(changes)));
        }
    }
    QVERIFY(failures > 0);
}

/// A page cannot be read, once, while the file is opened or a statement runs: an error, nothing changed, and the
/// session that stands goes on.
void TestStorageCrash::oneReadFails()
{
    const Undisturbed whole(statement());
    std::size_t failures = 0;
    bool failed = true;
    for (std::size_t reads = 0; failed; ++reads) {
        FaultyFiles files = stationFiles();
        files.failReadAfter(reads);
        std::unique_ptr<StorageFile> storage;
        // A small cache lets a long statement read the same page again.
        auto error = errorOf([&] { storage = opened(files, {.password = "8282", .cachePages = 16}); });
        const bool isOpen = storage != nullptr;
        if (isOpen) {
            error = errorOf([&] { runAsUnit(*storage, statement()); });
            failed = files.failed();
            files.heal();
            QCOMPARE(error.has_value(), failed);
            if (failed) {
                ++failures;
                QCOMPARE(joined(storage->verify()), QString());
                runAsUnit(*storage, statement());
            }
            storage.reset();
        }
        QCOMPARE(contentAfterOpening(files), isOpen ? whole.after : whole.before);
        if (failed)
            QCOMPARE(*error, ErrorKind::IoError);
    }
    QVERIFY(failures > 0);
}

/// A journal that cannot be read stays for the next opening: without it the statement would be there in part.
void TestStorageCrash::oneReadFailsWhilePlayingBack()
{
    const Undisturbed whole(closing);
    std::size_t failures = 0;
    for (bool failed = true; failed;) {
        FaultyFiles files = stoppedClosing(whole);
        files.heal();
        files.failReadAfter(failures);
        const auto error = errorOf([&] { static_cast<void>(opened(files)); });
        failed = files.failed();
        failures += failed ? 1 : 0;
        // A read that fails at the closing only leaves the void journal there.
        QVERIFY(failed || !error.has_value());
        files.heal();
        QCOMPARE(contentAfterOpening(files), whole.before);
    }
    QVERIFY(failures > 10);
}

void TestStorageCrash::creationIsWholeOrAbsent()
{
    for (const auto fault : {FaultyFiles::Fault::Stop, FaultyFiles::Fault::Full}) {
        bool failed = true;
        for (std::size_t writes = 0; failed; ++writes) {
            FaultyFiles files;
            files.failAfter(writes, fault);
            try {
                static_cast<void>(errorOf([&] { createStorage(files, stationFile, {}); }));
            } catch (const Stopped&) {
            }
            failed = files.failed();
            files.heal();
            QCOMPARE(files.exists(stationFile), !failed);
            if (fault == FaultyFiles::Fault::Full)
                QCOMPARE(files.fileCount(), failed ? std::size_t{0} : std::size_t{1});
        }
    }
}

void TestStorageCrash::killedAtRandomMoments()
{
    const QString tool = QStringLiteral(MDBSQL_PROGRAM);
    QTemporaryDir folder;
    const QString database = folder.filePath(QStringLiteral("posto.mdb"));
    QByteArray script;
    for (int i = 0; i < 2000; ++i)
        script += "INSERT INTO Venda (texto, obs) VALUES ('" + QByteArray::number(i) + "', '" +
                  QByteArray(i % 50 * 30, 'x') + "');\n";
    Storage::create(database.toStdString());
    {
        const auto storage = Storage::open(database.toStdString(), {});
        std::array columns = {column("codigo", ColumnType::Long), column("texto", ColumnType::Text, 20),
                              column("obs", ColumnType::Memo)};
        columns[0].autonumber = true;
        storage->createTable("Venda", columns,
                             std::array{index("PorCodigo", {{0, true}}, true), index("PorTexto", {{1, true}})});
    }
    std::size_t rows = 0;
    int midway = 0;
    QRandomGenerator generator(11);
    for (int round = 0; round < 12; ++round) {
        QProcess process;
        process.start(tool, {database});
        process.write(script);
        process.closeWriteChannel();
        QTest::qWait(generator.bounded(20, 250));
        midway += process.state() == QProcess::Running ? 1 : 0;
        process.kill();
        process.waitForFinished();
        const auto storage = Storage::open(database.toStdString(), {});
        QCOMPARE(joined(storage->verify()), QString());
        const Rows found = rowsOf(*storage->table("Venda"));
        QVERIFY(found.size() >= rows);
        // Statements of one run are there from its first on, without a gap.
        for (std::size_t i = rows; i < found.size(); ++i)
            QCOMPARE(found[i][1], std::to_string(i - rows));
        rows = found.size();
    }
    QVERIFY(midway > 0);
    QVERIFY(rows > 0);
}

QTEST_GUILESS_MAIN(TestStorageCrash)
#include "test_storage_crash.moc"
