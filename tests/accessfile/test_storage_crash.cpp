#include "accessfile/AccessTestTools.h"
#include "accessfile/FaultyFiles.h"

#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

using namespace accessfile;
using namespace accesstest;

namespace {

const std::filesystem::path file = "posto.mdb";

struct Statement
{
    const char* name;
    std::function<void(Storage&)> run;
};

std::vector<std::optional<Value>> reading(int day, const std::string& note)
{
    return {std::nullopt, DateTime{45000.0 + day}, day % 12, std::string("1.234,5") + std::to_string(day), note};
}

RowId rowAt(Storage& storage, std::size_t position)
{
    const auto cursor = storage.table("Leitura")->scan();
    for (std::size_t i = 0; i <= position; ++i) {
        if (!cursor->next())
            throw std::runtime_error("no such row");
    }
    return cursor->rowId();
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
             const std::array change = {std::pair(3, Value(std::string(200, 'm'))),
                                        std::pair(4, Value(std::string(900, 'n')))};
             for (std::size_t i = 0; i < 8; ++i)
                 storage.table("Leitura")->update(rowAt(storage, i), change);
         }},
        {"delete",
         [](Storage& storage) {
             std::vector<RowId> rows;
             for (const auto cursor = storage.table("Leitura")->scan(); cursor->next();)
                 rows.push_back(cursor->rowId());
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

/// A station of 120 readings, on files in memory.
Bytes makeStation()
{
    FaultyFiles files;
    createStorage(files, file, "8282");
    const auto storage = openStorage(files, file, {.password = "8282"});
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
    return files.content(file);
}

const Bytes& station()
{
    static const Bytes bytes = makeStation();
    return bytes;
}

std::string contentAfterOpening(FaultyFiles& files, QString& faults)
{
    std::unique_ptr<StorageFile> storage;
    try {
        storage = openStorage(files, file, {.password = "8282"});
    } catch (const Error& error) {
        if (error.kind() != ErrorKind::WrongPassword)
            throw;
        storage = openStorage(files, file, {.password = "outra"});
    }
    faults = joined(storage->verify());
    return contentOf(*storage) + (storage->acceptsPassword("outra") ? "outra" : "8282");
}

static void runAsUnit(StorageFile& storage, const Statement& statement)
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

/// Files of a closing that stopped among its page writes, with its journal; `before` is what the closing found.
FaultyFiles stoppedClosing(std::string& before)
{
    QString faults;
    FaultyFiles whole;
    whole.setContent(file, station());
    before = contentAfterOpening(whole, faults);
    std::size_t changes = 0;
    {
        const auto storage = openStorage(whole, file, {.password = "8282"});
        whole.failAfter(1'000'000, FaultyFiles::Fault::None);
        runAsUnit(*storage, statements()[2]);
        changes = whole.changes();
    }
    FaultyFiles files;
    files.setContent(file, station());
    try {
        const auto storage = openStorage(files, file, {.password = "8282"});
        files.failAfter(changes - 4, FaultyFiles::Fault::Stop);
        runAsUnit(*storage, statements()[2]);
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
        QTest::addColumn<int>("statement");
        for (std::size_t i = 0; i < statements().size(); ++i)
            QTest::newRow(statements()[i].name) << static_cast<int>(i);
    }
};

void TestStorageCrash::stopsAtEveryWrite()
{
    QFETCH(const int, statement);
    std::mt19937 engine(3);
    QString faults;
    FaultyFiles whole;
    whole.setContent(file, station());
    // Another statement comes first in the same session: its journal may still be found.
    runAsUnit(*openStorage(whole, file, {.password = "8282"}), statements()[0]);
    const std::string before = contentAfterOpening(whole, faults);
    runAsUnit(*openStorage(whole, file, {.password = "8282"}), statements()[static_cast<std::size_t>(statement)]);
    const std::string after = contentAfterOpening(whole, faults);
    QCOMPARE(faults, QString());
    QVERIFY(before != after);

    std::size_t absent = 0;
    std::size_t stops = 0;
    for (bool stopped = true; stopped; ++stops) {
        // Twice each: what is lost of the unsynced writes is drawn anew.
        for (int round = 0; round < 2; ++round) {
            FaultyFiles files;
            files.setContent(file, station());
            try {
                const auto storage = openStorage(files, file, {.password = "8282"});
                runAsUnit(*storage, statements()[0]);
                files.failAfter(stops, FaultyFiles::Fault::Stop);
                runAsUnit(*storage, statements()[static_cast<std::size_t>(statement)]);
            } catch (const Stopped&) {
            }
            stopped = files.failed();
            files.heal();
            files.loseUnsynced(engine);
            const std::string found = contentAfterOpening(files, faults);
            QCOMPARE(faults, QString());
            QVERIFY2(found == before || found == after, qPrintable(QString::number(stops)));
            absent += found == before ? 1 : 0;
        }
    }
    QVERIFY(absent > 0 && absent < 2 * stops);
    qInfo("%zu stops, %zu of %zu without the statement", stops, absent, 2 * stops);
}

void TestStorageCrash::stopsWhilePlayingBack()
{
    std::mt19937 engine(5);
    QString faults;
    std::string before;
    FaultyFiles files = stoppedClosing(before);
    QVERIFY(files.failed());
    for (std::size_t stops = 0; files.failed(); ++stops) {
        files.failAfter(stops, FaultyFiles::Fault::Stop);
        try {
            static_cast<void>(openStorage(files, file, {.password = "8282"}));
        } catch (const Stopped&) {
        }
        const bool again = files.failed();
        files.heal();
        files.loseUnsynced(engine);
        if (!again)
            break;
    }
    QCOMPARE(contentAfterOpening(files, faults), before);
    QCOMPARE(faults, QString());
}

void TestStorageCrash::diskFillsAtEveryWrite()
{
    QFETCH(const int, statement);
    QString faults;
    bool failed = true;
    std::size_t failures = 0;
    for (std::size_t writes = 0; failed; ++writes) {
        FaultyFiles files;
        files.setContent(file, station());
        const std::string before = contentAfterOpening(files, faults);
        {
            const auto storage = openStorage(files, file, {.password = "8282"});
            files.failAfter(writes, FaultyFiles::Fault::Full);
            const auto error = errorOf([&] { runAsUnit(*storage, statements()[static_cast<std::size_t>(statement)]); });
            failed = files.failed();
            QCOMPARE(error.has_value(), failed);
            if (failed) {
                // The session goes on with what was there, and can work again once there is room.
                ++failures;
                QCOMPARE(*error, ErrorKind::IoError);
                QCOMPARE(joined(storage->verify()), QString());
                QCOMPARE(contentOf(*storage) + "8282", before);
                files.heal();
                runAsUnit(*storage, statements()[static_cast<std::size_t>(statement)]);
            }
        }
        files.heal();
        QVERIFY(contentAfterOpening(files, faults) != before);
        QCOMPARE(faults, QString());
    }
    QVERIFY(failures > 0);
}

/// A write, sync or removal fails once with an input/output error: the statement is whole or absent, for the session
/// that goes on and after a power cut.
void TestStorageCrash::oneChangeFails()
{
    QFETCH(const int, statement);
    std::mt19937 engine(5);
    QString faults;
    FaultyFiles whole;
    whole.setContent(file, station());
    const std::string before = contentAfterOpening(whole, faults);
    runAsUnit(*openStorage(whole, file, {.password = "8282"}), statements()[static_cast<std::size_t>(statement)]);
    const std::string after = contentAfterOpening(whole, faults);
    bool failed = true;
    std::size_t failures = 0;
    for (std::size_t changes = 0; failed; ++changes) {
        for (const bool powerCut : {false, true}) {
            FaultyFiles files;
            files.setContent(file, station());
            {
                const auto storage = openStorage(files, file, {.password = "8282"});
                files.failAfter(changes, FaultyFiles::Fault::Glitch);
                static_cast<void>(
                    errorOf([&] { runAsUnit(*storage, statements()[static_cast<std::size_t>(statement)]); }));
                failed = files.failed();
                failures += failed ? 1 : 0;
                files.heal();
                if (powerCut)
                    files.loseUnsynced(engine);
            }
            const std::string found = contentAfterOpening(files, faults);
            QCOMPARE(faults, QString());
            QVERIFY2(found == before || found == after, qPrintable(QString::number(changes)));
        }
    }
    QVERIFY(failures > 0);
}

/// A page cannot be read, once, while the file is opened or a statement runs: an error, nothing changed, and the
/// session that stands goes on.
void TestStorageCrash::oneReadFails()
{
    QFETCH(const int, statement);
    const Statement& tried = statements()[static_cast<std::size_t>(statement)];
    QString faults;
    FaultyFiles whole;
    whole.setContent(file, station());
    const std::string before = contentAfterOpening(whole, faults);
    runAsUnit(*openStorage(whole, file, {.password = "8282"}), tried);
    const std::string after = contentAfterOpening(whole, faults);
    std::size_t opened = 0;
    bool failed = true;
    for (std::size_t reads = 0; failed; ++reads) {
        FaultyFiles files;
        files.setContent(file, station());
        files.failReadAfter(reads);
        std::unique_ptr<StorageFile> storage;
        // A small cache lets a long statement read the same page again.
        const OpenOptions options{.password = "8282", .cachePages = 16};
        auto error = errorOf([&] { storage = openStorage(files, file, options); });
        if (storage) {
            error = errorOf([&] { runAsUnit(*storage, tried); });
            failed = files.failed();
            files.heal();
            QCOMPARE(error.has_value(), failed);
            if (failed) {
                ++opened;
                QCOMPARE(joined(storage->verify()), QString());
                runAsUnit(*storage, tried);
            }
            storage.reset();
            QCOMPARE(contentAfterOpening(files, faults), after);
        } else {
            QCOMPARE(contentAfterOpening(files, faults), before);
        }
        QCOMPARE(faults, QString());
        if (failed)
            QCOMPARE(*error, ErrorKind::IoError);
    }
    QVERIFY(opened > 0);
}

/// A journal that cannot be read stays for the next opening: without it the statement would be there in part.
void TestStorageCrash::oneReadFailsWhilePlayingBack()
{
    QString faults;
    std::size_t failures = 0;
    for (bool failed = true; failed;) {
        std::string before;
        FaultyFiles files = stoppedClosing(before);
        files.heal();
        files.failReadAfter(failures);
        const auto error = errorOf([&] { static_cast<void>(openStorage(files, file, {.password = "8282"})); });
        failed = files.failed();
        failures += failed ? 1 : 0;
        QCOMPARE(error.has_value(), failed);
        files.heal();
        QCOMPARE(contentAfterOpening(files, faults), before);
        QCOMPARE(faults, QString());
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
                createStorage(files, file, {});
            } catch (const Stopped&) {
            } catch (const Error&) {
            }
            failed = files.failed();
            files.heal();
            QCOMPARE(files.exists(file), !failed);
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
