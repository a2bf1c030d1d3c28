#include "accessfile/AccessTestTools.h"
#include "accessfile/format/TextCodec.h"
#include "accessfile/table/DefinitionPages.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace accessfile;
using namespace accesstest;

namespace {

/// A file with one table and a row in it, which `prepare` turns into what the engine cannot keep right.
class Station : public MemoryStation
{
public:
    explicit Station(const std::function<void(StorageFile&)>& prepare)
    {
        StorageFile& storage = **this;
        std::array columns = {column("codigo", ColumnType::Long),   column("nome", ColumnType::Text, 20),
                              column("exato", ColumnType::Numeric), column("quando", ColumnType::Date),
                              column("valor", ColumnType::Money),   column("obs", ColumnType::Memo),
                              column("byte", ColumnType::Byte),     column("sinal", ColumnType::Bool)};
        columns[2].precision = 6;
        columns[2].scale = 2;
        columns[3].required = true;
        columns[5].allowZeroLength = false;
        storage.createTable("Bomba", columns,
                            std::array{index("Chave", {{0, true}}, true), index("PorNome", {{1, true}, {3, false}})});
        m_row = table().insert(row(1));
        if (prepare) {
            storage.beginStatement();
            prepare(storage);
            storage.commitStatement();
        }
        reopen();
    }
    static Cells row(std::int32_t code)
    {
        return {code,
                std::string("Gasolina"),
                Numeric{false, {0, 0, 0, 150}, 2},
                DateTime{45000},
                Money{54990},
                std::string("nota"),
                7,
                true};
    }
    Table& table() { return *(*this)->table("Bomba"); }
    [[nodiscard]] RowId rowId() const { return m_row; }

private:
    RowId m_row;
};

/// A designer's property blob with a validation rule of the column "nome".
Bytes validationRule()
{
    const auto counted = [](const char* text) {
        const Bytes wide = toUtf16(text);
        Bytes bytes;
        append16(bytes, wide.size());
        append(bytes, wide);
        return bytes;
    };
    const Bytes owner = counted("nome");
    const Bytes rule = counted("Like \"G*\"");
    Bytes properties;
    append32(properties, static_cast<std::uint32_t>(4 + owner.size()));
    append(properties, owner);
    append16(properties, 6 + rule.size());
    append(properties, Bytes{0, 0x0C, 0, 0});
    append(properties, rule);
    Bytes blob = {'M', 'R', '2', 0};
    for (const auto& [kind, body] : {std::pair(0x80, counted("ValidationRule")), {1, properties}}) {
        append32(blob, static_cast<std::uint32_t>(6 + body.size()));
        append16(blob, static_cast<std::size_t>(kind));
        append(blob, body);
    }
    return blob;
}

} // namespace

Q_DECLARE_METATYPE(std::function<void(StorageFile&)>)
Q_DECLARE_METATYPE(std::function<void(Station&)>)

/// What the engine cannot keep right, or must not take, is refused before a byte changes.
class TestStorageRefusals : public QObject
{
    Q_OBJECT

private slots:
    void tables_data();
    void tables();
    void changes_data();
    void changes();
    void linkedTable();
    void readOnlyFiles();
    void generations_data();
    void generations();
    void passwords();
    void sharedPieces();
    void encodedFile();
};

void TestStorageRefusals::tables_data()
{
    using Prepare = std::function<void(StorageFile&)>;
    QTest::addColumn<Prepare>("prepare");
    QTest::addColumn<QString>("reason");
    const auto row = [](const char* name, const QString& reason, Prepare prepare) {
        QTest::newRow(name) << std::move(prepare) << reason;
    };
    const auto patched = [&](const char* name, const QString& reason, void (*patch)(TableDefinition&)) {
        row(name, reason, [patch](StorageFile& storage) {
            TableDefinition definition = storage.tableFile("Bomba")->definition();
            patch(definition);
            writeDefinition(definition, storage.space().pager, storage.space().allocator);
        });
    };
    const auto withProperties = [&](const char* name, const QString& reason, const Bytes& blob) {
        row(name, reason, [blob](StorageFile& storage) {
            storage.catalog().update(storage.entries().back().row,
                                     Changes{{storage.catalog().columnIndex("LvProp"), blob}});
        });
    };
    patched("enforced relationship", QStringLiteral("relacionamento"),
            [](TableDefinition& definition) { definition.logical[0].entry[12] = 1; });
    patched("foreign key", QStringLiteral("relacionamento"),
            [](TableDefinition& definition) { definition.logical[1].entry[23] = 2; });
    patched("another order of an indexed text", QStringLiteral("ordem"),
            [](TableDefinition& definition) { definition.columns[1].entry[11] = 0x16; });
    patched("newer order", QStringLiteral("ordem"),
            [](TableDefinition& definition) { definition.columns[1].entry[14] = 1; });
    patched("descending decimal key", QStringLiteral("índice"), [](TableDefinition& definition) {
        definition.physical[1].entry[7] = 2;
        definition.physical[1].entry[9] = 0;
    });
    patched("unknown column type", QStringLiteral("tipo"),
            [](TableDefinition& definition) { definition.columns[6].entry[0] = 0x12; });
    patched("system table", QStringLiteral("sistema"),
            [](TableDefinition& definition) { definition.fixed[40] = definition::systemTable; });
    row("replica", QStringLiteral("réplica"),
        [](StorageFile& storage) { storage.addColumn("Bomba", column("s_Generation", ColumnType::Long)); });
    withProperties("validation rule", QStringLiteral("validação"), validationRule());
    withProperties("properties that cannot be read", QStringLiteral("propriedades"), Bytes(20, 0xEE));
}

void TestStorageRefusals::tables()
{
    QFETCH(const std::function<void(StorageFile&)>, prepare);
    QFETCH(const QString, reason);
    Station station(prepare);
    Table& table = station.table();
    QCOMPARE(rowsOf(table).size(), std::size_t{1}); // It can be read all the same.
    const Bytes before = station.bytes();
    Cells row(table.columns().size());
    row[0] = 2;
    const std::array<std::function<void()>, 6> attempts = {
        [&] { table.insert(row); },
        [&] {
            table.update(station.rowId(), Changes{{0, 3}});
        },
        [&] { table.erase(station.rowId()); },
        [&] { station->addColumn("Bomba", column("mais", ColumnType::Long)); },
        [&] {
            station->createIndex("Bomba", index("Mais", {{0, true}}));
        },
        [&] { station->dropTable("Bomba"); }};
    for (const auto& attempt : attempts) {
        try {
            attempt();
            QFAIL("not refused");
        } catch (const Error& error) {
            QCOMPARE(error.kind(), ErrorKind::ReadOnly);
            QVERIFY2(QString::fromUtf8(error.what()).contains(reason), error.what());
        }
    }
    QCOMPARE(station.bytes(), before);
}

void TestStorageRefusals::changes_data()
{
    using Change = std::function<void(Station&)>;
    QTest::addColumn<Change>("change");
    QTest::addColumn<int>("kind");
    const auto row = [](const char* name, ErrorKind kind, int column, const Value& value) {
        QTest::newRow(name) << Change([column, value](Station& station) {
            Cells cells = Station::row(2);
            cells[static_cast<std::size_t>(column)] = value;
            // Whether it comes with a new row or an old one makes no difference.
            const auto first = errorOf([&] { station.table().insert(cells); });
            if (column != 0)
                QCOMPARE(errorOf([&] { station.table().update(station.rowId(), Changes{{column, value}}); }), first);
            station.table().insert(cells);
        }) << static_cast<int>(kind);
    };
    row("repeated key", ErrorKind::DuplicateKey, 0, 1);
    row("text too long", ErrorKind::TooLong, 1, std::string(21, 'x'));
    row("letter outside the order", ErrorKind::TypeMismatch, 1, std::string("日本"));
    row("broken UTF-8", ErrorKind::TypeMismatch, 1, std::string("\xC3("));
    row("decimal too large", ErrorKind::Overflow, 2, Numeric{false, {0, 0, 0, 1000000}, 2});
    row("null where required", ErrorKind::NullNotAllowed, 3, Null{});
    row("date out of range", ErrorKind::Overflow, 3, DateTime{3000000});
    row("no number", ErrorKind::TypeMismatch, 4, std::string("5,49"));
    row("empty text", ErrorKind::NullNotAllowed, 5, std::string());
    row("byte too large", ErrorKind::Overflow, 6, 256);
    row("no truth value", ErrorKind::TypeMismatch, 7, 1);
    const auto define = [](const char* name, ErrorKind kind, const std::function<void(Station&)>& action) {
        QTest::newRow(name) << action << static_cast<int>(kind);
    };
    const auto many = [](int count, ColumnType type, int length) {
        std::vector<Column> columns;
        for (int i = 0; i < count; ++i) {
            columns.push_back(column(("c" + std::to_string(i)).c_str(), type, length));
            columns.back().precision = 18;
        }
        return columns;
    };
    define("table that exists", ErrorKind::Duplicate,
           [=](Station& station) { station->createTable("BOMBA", many(1, ColumnType::Long, 0), {}); });
    define("name of a table", ErrorKind::Syntax,
           [=](Station& station) { station->createTable("a.b", many(1, ColumnType::Long, 0), {}); });
    define("table without columns", ErrorKind::Syntax, [](Station& station) { station->createTable("T", {}, {}); });
    define("columns over the row limit", ErrorKind::TooLong,
           [=](Station& station) { station->createTable("T", many(250, ColumnType::Numeric, 0), {}); });
    define("index over eleven columns", ErrorKind::Syntax, [=](Station& station) {
        Index wide;
        wide.name = "Todos";
        for (int i = 0; i < 11; ++i)
            wide.columns.push_back({i, true});
        station->createTable("T", many(11, ColumnType::Long, 0), std::array{wide});
    });
    define("index of repeated values", ErrorKind::DuplicateKey, [](Station& station) {
        station.table().insert(Station::row(2));
        station->createIndex("Bomba", index("Unico", {{1, true}}, true));
    });
    define("row that is too long", ErrorKind::TooLong, [=](Station& station) {
        station->createTable("Larga", many(16, ColumnType::Text, 255), {});
        station->table("Larga")->insert(Cells(16, std::string(254, 'x')));
    });
}

void TestStorageRefusals::changes()
{
    QFETCH(const std::function<void(Station&)>, change);
    QFETCH(const int, kind);
    Station station({});
    const std::string before = contentOf(*station);
    station->beginStatement();
    QCOMPARE(errorOf([&] { change(station); }), static_cast<ErrorKind>(kind));
    station->rollbackStatement();
    QCOMPARE(contentOf(*station), before);
    QCOMPARE(station.faults(), QString());
}

void TestStorageRefusals::linkedTable()
{
    Station station([](StorageFile& storage) {
        TableFile& catalog = storage.catalog();
        Cells row(catalog.columns().size());
        const auto cell = [&](const char* name) -> std::optional<Value>& {
            return row[static_cast<std::size_t>(catalog.columnIndex(name))];
        };
        cell("Id") = -5;
        cell("ParentId") = 0x0F000001;
        cell("Name") = std::string("Ligada");
        cell("Type") = CatalogEntry::linkedType;
        catalog.insert(row);
    });
    QCOMPARE(errorOf([&] { static_cast<void>(station->table("ligada")); }), ErrorKind::MissingTable);
    QCOMPARE(station->tableNames(), std::vector<std::string>{"Bomba"});
    QCOMPARE(errorOf([&] { station->createTable("ligada", std::array{column("n", ColumnType::Long)}, {}); }),
             ErrorKind::Duplicate);
}

void TestStorageRefusals::readOnlyFiles()
{
    MemoryStation storage;
    storage->createTable("T", std::array{column("n", ColumnType::Long)}, {});
    const Bytes before = storage.bytes();
    const std::size_t filesBefore = storage.files().fileCount(); // lock file and journal among them
    for (const bool byFolder : {false, true}) {
        storage.files().readOnlyFolder(byFolder);
        storage.reopen({.password = {}, .readOnly = !byFolder});
        QVERIFY(storage->isReadOnly());
        QCOMPARE(errorOf([&] { storage->table("T")->insert(Cells{1}); }), ErrorKind::ReadOnly);
        QCOMPARE(errorOf([&] { storage->beginStatement(); }), ErrorKind::ReadOnly);
        QCOMPARE(errorOf([&] { storage->createTable("U", storage->table("T")->columns(), {}); }), ErrorKind::ReadOnly);
        QCOMPARE(errorOf([&] { storage->setPassword("x"); }), ErrorKind::ReadOnly);
        QCOMPARE(storage.faults(), QString());
    }
    QCOMPARE(storage.bytes(), before);
    QVERIFY(storage.files().fileCount() <= filesBefore);
}

void TestStorageRefusals::generations_data()
{
    QTest::addColumn<int>("at");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("told");
    QTest::newRow("Access 97") << 0x14 << QByteArray(1, '\0') << QStringLiteral("Access 97");
    QTest::newRow("Access 2007") << 0x14 << QByteArray(1, '\2') << QStringLiteral(".accdb");
    QTest::newRow("accdb name") << 4 << QByteArray("Standard ACE DB") << QStringLiteral(".accdb");
    QTest::newRow("another program's") << 0 << QByteArray("SQLite format 3") << QStringLiteral("não é um banco");
}

void TestStorageRefusals::generations()
{
    QFETCH(const int, at);
    QFETCH(const QByteArray, bytes);
    QFETCH(const QString, told);
    Bytes content = MemoryStation().bytes();
    std::copy(bytes.begin(), bytes.end(), content.begin() + at);
    FaultyFiles files;
    files.setContent(stationFile, content);
    try {
        static_cast<void>(openStorage(files, stationFile, {}));
        QFAIL("opened");
    } catch (const Error& error) {
        QCOMPARE(error.kind(), ErrorKind::NotADatabase);
        QVERIFY2(QString::fromUtf8(error.what()).contains(told), error.what());
    }
    QCOMPARE(files.content(stationFile), content);
}

void TestStorageRefusals::passwords()
{
    MemoryStation storage({.password = "8282"});
    for (const char* wrong : {"", "828", "82822", "8282 "})
        QCOMPARE(errorOf([&] { storage.reopen({.password = wrong}); }), ErrorKind::WrongPassword);
    storage.reopen({.password = "8282"});
    QVERIFY(storage->acceptsPassword("8282"));
    MemoryStation().reopen({.password = "qualquer"});
}

/// Two rows that name one chain: a small file could read as more than any memory holds.
void TestStorageRefusals::sharedPieces()
{
    MemoryStation station;
    station->createTable("T", std::array{column("n", ColumnType::Long), column("m", ColumnType::Memo)}, {});
    station->beginStatement();
    for (const int n : {1, 2})
        static_cast<void>(station->table("T")->insert(Cells{n, std::string(12000, 'x')}));
    station->commitStatement();
    Bytes bytes = station.bytes();
    const std::array<std::uint8_t, 4> length = {0xC0, 0x5D, 0, 0}; // 24,000 bytes, as both descriptors begin
    const auto first = std::search(bytes.begin(), bytes.end(), length.begin(), length.end());
    const auto second = std::search(first + 1, bytes.end(), length.begin(), length.end());
    QVERIFY(second != bytes.end());
    std::copy_n(first, 12, second);
    station.files().setContent(stationFile, bytes);
    station.reopen();
    const auto cursor = station->table("T")->scan();
    QVERIFY(cursor->next());
    for (int times = 0; times < 2; ++times)
        QCOMPARE(std::get<std::string>(cursor->value(1)).size(), std::size_t{12000});
    QVERIFY(cursor->next());
    QCOMPARE(errorOf([&] { static_cast<void>(cursor->value(1)); }), ErrorKind::Damaged);
}

void TestStorageRefusals::encodedFile()
{
    // Page encoding is a stream over each page but the first, with a key in the header.
    constexpr std::uint32_t key = 0x1234ABCD;
    MemoryStation plain;
    plain->createTable("T", std::array{column("n", ColumnType::Text, 20)}, {});
    Bytes content = plain.bytes();
    PageBytes first{};
    std::copy_n(content.begin(), pageSize, first.begin());
    applyHeaderMask(first);
    store32(first.data() + 0x3E, key);
    applyHeaderMask(first);
    std::copy(first.begin(), first.end(), content.begin());
    for (std::uint32_t page = 1; page < content.size() / pageSize; ++page)
        applyRc4(key ^ page, std::span(content).subspan(page * pageSize, pageSize));
    MemoryStation storage({}, content);
    QCOMPARE(errorOf([&] { storage->table("T")->insert(Cells{std::string("Posto Modelo da Encosta")}); }),
             ErrorKind::TooLong);
    for (int i = 0; i < 500; ++i)
        storage->table("T")->insert(Cells{std::string("Posto Modelo")});
    storage.reopen();
    QCOMPARE(rowsOf(*storage->table("T")), Rows(500, {"Posto Modelo"}));
    QCOMPARE(storage.faults(), QString());
    const Bytes stored = storage.bytes();
    const std::string text = "Modelo";
    QVERIFY(std::search(stored.begin(), stored.end(), text.begin(), text.end()) == stored.end());
}

QTEST_GUILESS_MAIN(TestStorageRefusals)
#include "test_storage_refusals.moc"
