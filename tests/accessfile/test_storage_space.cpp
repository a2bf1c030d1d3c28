#include "accessfile/AccessTestTools.h"
#include "accessfile/table/MapRow.h"

#include <QTemporaryDir>
#include <QTest>

using namespace accessfile;
using namespace accesstest;

/// How a file grows up to its limit, and how what was freed in it is taken again.
class TestStorageSpace : public QObject
{
    Q_OBJECT

private slots:
    void grows_data();
    void grows();
    void freedPagesAreTaken_data();
    void freedPagesAreTaken();
    void mapThatLies();
    void damageIsTold_data();
    void damageIsTold();
    void cutFile();
};

namespace {

constexpr std::uint64_t mostPages = largestFile / pageSize;

void createNotes(Storage& storage, const char* name)
{
    const std::array columns = {column("n", ColumnType::Long), column("nota", ColumnType::Memo)};
    storage.createTable(name, columns, std::array{index("PorN", {{0, true}}, true)});
}

/// Adds rows of three pages each in one unit, or none.
void addNotes(Storage& storage, const char* name, int count, int first = 0)
{
    storage.beginStatement();
    try {
        for (int i = first; i < first + count; ++i)
            storage.table(name)->insert(Cells{i, std::string(5000, static_cast<char>('a' + i % 26))});
        storage.commitStatement();
    } catch (...) {
        storage.rollbackStatement();
        throw;
    }
}

} // namespace

void TestStorageSpace::grows_data()
{
    QTest::addColumn<quint64>("pages");
    QTest::newRow("behind the bits of the row") << quint64{31'980};
    QTest::newRow("behind the first page of bits") << quint64{maprow::bitmapPageBits - 20};
    QTest::newRow("behind a later page of bits") << quint64{7 * maprow::bitmapPageBits - 20};
    QTest::newRow("to the end of what the format can") << quint64{mostPages - 150};
}

void TestStorageSpace::grows()
{
    QFETCH(const quint64, pages);
    const QTemporaryDir folder;
    const QString name = folder.filePath(QStringLiteral("a.mdb"));
    const std::filesystem::path file = name.toStdString();
    Storage::create(file);
    {
        const auto storage = Storage::open(file, {});
        createNotes(*storage, "Antes");
        addNotes(*storage, "Antes", 180); // All pages that the map of a new file has bits for.
    }
    // Pages without a use, which the disk does not hold.
    std::filesystem::resize_file(file, pages * pageSize);
    {
        const auto storage = Storage::open(file, {});
        addNotes(*storage, "Antes", 30, 180);
        createNotes(*storage, "Depois");
        const bool full = pages + 150 == mostPages;
        const auto size = std::filesystem::file_size(file);
        const auto failure = errorOf([&] { addNotes(*storage, "Depois", 40); });
        QCOMPARE(failure, full ? std::optional(ErrorKind::TooLong) : std::nullopt);
        if (full)
            QCOMPARE(std::filesystem::file_size(file), size);
    }
    QVERIFY(std::filesystem::file_size(file) <= largestFile);
    const auto grown = std::filesystem::file_size(file);
    {
        const auto storage = Storage::open(file, {});
        QCOMPARE(joined(storage->verify().faults), QString());
        QCOMPARE(rowsOf(*storage->table("Antes")).size(), std::size_t{210});
        if (exporterInstalled())
            QCOMPARE(exportDifference(*storage, name), QString());
        storage->dropTable("Depois");
    }
    // What a session freed is found by the next one in the map of references.
    const auto storage = Storage::open(file, {});
    createNotes(*storage, "De novo");
    addNotes(*storage, "De novo", 8);
    QCOMPARE(joined(storage->verify().faults), QString());
    QVERIFY(std::filesystem::file_size(file) <= (pages + 150 == mostPages ? largestFile : grown));
}

void TestStorageSpace::freedPagesAreTaken_data()
{
    QTest::addColumn<bool>("drops");
    QTest::newRow("tables made and dropped") << true;
    QTest::newRow("long values written anew") << false;
}

void TestStorageSpace::freedPagesAreTaken()
{
    QFETCH(const bool, drops);
    MemoryStation storage;
    createNotes(*storage, "T");
    addNotes(*storage, "T", 20);
    std::size_t settled = 0;
    for (int session = 0; session < 60; ++session) {
        storage.reopen();
        if (drops) {
            storage->dropTable("T");
            storage.reopen();
            createNotes(*storage, "T");
            addNotes(*storage, "T", 20);
        } else {
            for (const RowId row : rowIdsOf(*storage->table("T")))
                storage->table("T")->update(row,
                                            Changes{{1, std::string(5000, static_cast<char>('A' + session % 26))}});
        }
        if (session == 5)
            settled = storage.bytes().size();
    }
    QCOMPARE(storage.bytes().size(), settled);
    QCOMPARE(storage.faults(), QString());
}

/// The map calls every page free, and nothing that stands in the file may be written over.
void TestStorageSpace::mapThatLies()
{
    MemoryStation storage;
    createNotes(*storage, "T");
    addNotes(*storage, "T", 20);
    storage->table("T")->insert(Cells{100, std::string(700, 'u')});
    createNotes(*storage, "Sobra");
    addNotes(*storage, "Sobra", 5);
    storage->dropTable("Sobra");
    storage->beginStatement();
    PageBytes& maps = storage->space().pager.modify(1);
    const datapage::Slot slot = datapage::slot(maps, 0);
    std::fill_n(maps.begin() + static_cast<std::ptrdiff_t>(slot.offset + maprow::inlineHeader),
                slot.length - maprow::inlineHeader, std::uint8_t{0xFF});
    storage->commitStatement();
    const std::string before = contentOf(*storage);
    const std::size_t size = storage.bytes().size();
    storage.reopen();
    createNotes(*storage, "Nova");
    addNotes(*storage, "Nova", 5);
    QCOMPARE(storage.bytes().size(), size);
    addNotes(*storage, "Nova", 30, 5);
    storage.reopen();
    storage->dropTable("Nova");
    QCOMPARE(contentOf(*storage), before);
}

Q_DECLARE_METATYPE(std::function<void(StorageFile&)>)

void TestStorageSpace::damageIsTold_data()
{
    using Damage = std::function<void(StorageFile&)>;
    QTest::addColumn<Damage>("damage");
    QTest::addColumn<QString>("told");
    const auto firstOf = [](StorageFile& storage, RowId map) {
        return UsageMap(storage.space().pager, map).pages().front();
    };
    const auto notes = [](StorageFile& storage) { return storage.tableFile("T")->definition().columns[1].ownedMap; };
    QTest::newRow("page of another table") << Damage([firstOf](StorageFile& storage) {
        const PageNumber page = firstOf(storage, storage.tableFile("T")->definition().ownedMap());
        store32(storage.space().pager.modify(page).data() + datapage::ownerAt, 3);
    }) << QStringLiteral("não é da tabela");
    QTest::newRow("long value in a circle") << Damage([firstOf, notes](StorageFile& storage) {
        const PageNumber page = firstOf(storage, notes(storage));
        PageBytes& bytes = storage.space().pager.modify(page);
        storeRowId(bytes.data() + datapage::slot(bytes, 0).offset, {page, 0});
    }) << QStringLiteral("texto longo");
    QTest::newRow("long value of another length") << Damage([firstOf](StorageFile& storage) {
        const PageNumber page = firstOf(storage, storage.tableFile("T")->definition().ownedMap());
        PageBytes& bytes = storage.space().pager.modify(page);
        // The descriptor is the variable cell behind the number.
        std::uint8_t& length = bytes[datapage::slot(bytes, 0).offset + 2 + 4];
        length = static_cast<std::uint8_t>(length - 1);
    }) << QStringLiteral("texto longo");
}

void TestStorageSpace::damageIsTold()
{
    QFETCH(const std::function<void(StorageFile&)>, damage);
    QFETCH(const QString, told);
    MemoryStation storage;
    createNotes(*storage, "T");
    addNotes(*storage, "T", 20);
    storage->beginStatement();
    damage(*storage);
    storage->commitStatement();
    storage.reopen();
    QString error;
    try {
        static_cast<void>(rowsOf(*storage->table("T")));
    } catch (const Error& raised) {
        QCOMPARE(raised.kind(), ErrorKind::Damaged);
        error = QString::fromStdString(raised.what());
    }
    QVERIFY2(error.contains(told) && error.contains(QStringLiteral("página ")), qPrintable(error));
    QVERIFY(!storage->verify().faults.empty());
}

/// The end of a file is missing: what stood there is told, and the file is not written any more.
void TestStorageSpace::cutFile()
{
    MemoryStation whole;
    createNotes(*whole, "T");
    addNotes(*whole, "T", 400);
    Bytes bytes = whole.bytes();
    bytes.resize(bytes.size() / 2 / pageSize * pageSize);
    MemoryStation cut({}, bytes);
    QCOMPARE(errorOf([&] { static_cast<void>(rowsOf(*cut->table("T"))); }), ErrorKind::Damaged);
    QCOMPARE(errorOf([&] { addNotes(*cut, "T", 1, 500); }), ErrorKind::ReadOnly);
    QVERIFY(!cut->verify().faults.empty());
}

QTEST_GUILESS_MAIN(TestStorageSpace)
#include "test_storage_space.moc"
