#include "accessfile/AccessTestTools.h"
#include "accessfile/FaultyFiles.h"
#include "accessfile/TextCodec.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace accessfile;
using namespace accesstest;

namespace {

const std::filesystem::path file = "posto.mdb";

/// A file with one table and a row in it, which `prepare` turns into what the engine cannot keep right.
class Station
{
public:
    explicit Station(const std::function<void(StorageFile&)>& prepare)
    {
        createStorage(m_files, file, {});
        m_storage = openStorage(m_files, file, {});
        std::array columns = {column("codigo", ColumnType::Long),   column("nome", ColumnType::Text, 20),
                              column("exato", ColumnType::Numeric), column("quando", ColumnType::Date),
                              column("valor", ColumnType::Money),   column("obs", ColumnType::Memo),
                              column("byte", ColumnType::Byte),     column("sinal", ColumnType::Bool)};
        columns[2].precision = 6;
        columns[2].scale = 2;
        columns[3].required = true;
        columns[5].allowZeroLength = false;
        m_storage->createTable(
            "Bomba", columns, std::array{index("Chave", {{0, true}}, true), index("PorNome", {{1, true}, {3, false}})});
        m_row = m_storage->table("Bomba")->insert(row());
        if (prepare) {
            m_storage->beginStatement();
            prepare(*m_storage);
            m_storage->commitStatement();
        }
        m_storage.reset();
        m_storage = openStorage(m_files, file, {});
    }
    static std::vector<std::optional<Value>> row(std::int32_t code = 1)
    {
        return {Value(code),
                Value(std::string("Gasolina")),
                Value(Numeric{false, {0, 0, 0, 150}, 2}),
                Value(DateTime{45000}),
                Value(Money{54990}),
                Value(std::string("nota")),
                Value(7),
                Value(true)};
    }
    StorageFile& storage() { return *m_storage; }
    [[nodiscard]] RowId rowId() const { return m_row; }
    [[nodiscard]] Bytes bytes() const { return m_files.content(file); }

private:
    FaultyFiles m_files;
    std::unique_ptr<StorageFile> m_storage;
    RowId m_row;
};

void patchDefinition(StorageFile& storage, const std::function<void(TableDefinition&)>& patch)
{
    TableDefinition definition = storage.tableFile("Bomba")->definition();
    patch(definition);
    definition.write(storage.context().pager, storage.context().allocator);
}

/// A designer's property blob with one text property of the column "nome".
Bytes propertyBlob(const std::string& property, const std::string& text)
{
    Bytes blob = {'M', 'R', '2', 0};
    const auto chunk = [&blob](std::uint16_t kind, const Bytes& body) {
        append32(blob, static_cast<std::uint32_t>(6 + body.size()));
        append16(blob, kind);
        append(blob, body);
    };
    const auto counted = [](const std::string& each) {
        const Bytes wide = toUtf16(each);
        Bytes bytes;
        append16(bytes, wide.size());
        append(bytes, wide);
        return bytes;
    };
    chunk(0x80, counted(property));
    Bytes body;
    append32(body, static_cast<std::uint32_t>(4 + counted("nome").size()));
    append(body, counted("nome"));
    append16(body, 6 + counted(text).size());
    append(body, Bytes{0, 0x0C, 0, 0});
    append(body, counted(text));
    chunk(1, body);
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
    void locks();
    void passwords();
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
    row("enforced relationship", QStringLiteral("relacionamento"), [](StorageFile& storage) {
        patchDefinition(storage, [](TableDefinition& definition) { definition.logical[0].entry[12] = 1; });
    });
    row("foreign key", QStringLiteral("relacionamento"), [](StorageFile& storage) {
        patchDefinition(storage, [](TableDefinition& definition) { definition.logical[1].entry[23] = 2; });
    });
    row("another order of an indexed text", QStringLiteral("ordem"), [](StorageFile& storage) {
        patchDefinition(storage, [](TableDefinition& definition) { definition.columns[1].entry[11] = 0x16; });
    });
    row("newer order", QStringLiteral("ordem"), [](StorageFile& storage) {
        patchDefinition(storage, [](TableDefinition& definition) { definition.columns[1].entry[14] = 1; });
    });
    row("descending decimal key", QStringLiteral("índice"), [](StorageFile& storage) {
        patchDefinition(storage, [](TableDefinition& definition) {
            definition.physical[1].entry[7] = 2;
            definition.physical[1].entry[9] = 0;
        });
    });
    row("unknown column type", QStringLiteral("tipo"), [](StorageFile& storage) {
        patchDefinition(storage, [](TableDefinition& definition) { definition.columns[6].entry[0] = 0x12; });
    });
    row("replica", QStringLiteral("réplica"),
        [](StorageFile& storage) { storage.addColumn("Bomba", column("s_Generation", ColumnType::Long)); });
    row("validation rule", QStringLiteral("validação"), [](StorageFile& storage) {
        const std::array change = {
            std::pair(storage.catalog().columnIndex("LvProp"), Value(propertyBlob("ValidationRule", "Like \"G*\"")))};
        storage.catalog().update(storage.entries().back().row, change);
    });
    row("properties that cannot be read", QStringLiteral("propriedades"), [](StorageFile& storage) {
        const std::array change = {std::pair(storage.catalog().columnIndex("LvProp"), Value(Bytes(20, 0xEE)))};
        storage.catalog().update(storage.entries().back().row, change);
    });
    row("system table", QStringLiteral("sistema"), [](StorageFile& storage) {
        patchDefinition(storage,
                        [](TableDefinition& definition) { definition.fixed[40] = TableDefinition::systemTable; });
    });
}

void TestStorageRefusals::tables()
{
    QFETCH(const std::function<void(StorageFile&)>, prepare);
    QFETCH(const QString, reason);
    Station station(prepare);
    StorageFile& storage = station.storage();
    Table& table = *storage.table("Bomba");
    QCOMPARE(rowsOf(table).size(), std::size_t{1}); // It can be read all the same.
    const Bytes before = station.bytes();
    std::vector<std::optional<Value>> row(table.columns().size());
    row[0] = 2;
    const std::array change = {std::pair(0, Value(3))};
    const std::array<std::function<void()>, 6> attempts = {
        [&] { table.insert(row); },
        [&] { table.update(station.rowId(), change); },
        [&] { table.erase(station.rowId()); },
        [&] { storage.addColumn("Bomba", column("mais", ColumnType::Long)); },
        [&] {
            storage.createIndex("Bomba", index("Mais", {{0, true}}));
        },
        [&] { storage.dropTable("Bomba"); }};
    for (const auto& attempt : attempts) {
        QCOMPARE(errorOf(attempt), ErrorKind::ReadOnly);
        try {
            attempt();
        } catch (const Error& error) {
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
            std::vector<std::optional<Value>> cells = Station::row(2);
            cells[static_cast<std::size_t>(column)] = value;
            // Whether it comes with a new row or an old one makes no difference.
            const auto first = errorOf([&] { station.storage().table("Bomba")->insert(cells); });
            const std::array update = {std::pair(column, value)};
            if (column != 0)
                QCOMPARE(errorOf([&] { station.storage().table("Bomba")->update(station.rowId(), update); }), first);
            station.storage().table("Bomba")->insert(cells);
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
    const auto define = [](const char* name, ErrorKind kind, const std::function<void(StorageFile&)>& action) {
        QTest::newRow(name) << Change([action](Station& station) { action(station.storage()); })
                            << static_cast<int>(kind);
    };
    define("table that exists", ErrorKind::Duplicate,
           [](StorageFile& storage) { storage.createTable("BOMBA", std::array{column("n", ColumnType::Long)}, {}); });
    define("name of a table", ErrorKind::Syntax,
           [](StorageFile& storage) { storage.createTable("a.b", std::array{column("n", ColumnType::Long)}, {}); });
    define("table without columns", ErrorKind::Syntax, [](StorageFile& storage) { storage.createTable("T", {}, {}); });
    define("columns over the row limit", ErrorKind::TooLong, [](StorageFile& storage) {
        std::vector<Column> columns;
        for (int i = 0; i < 250; ++i) {
            columns.push_back(column(("c" + std::to_string(i)).c_str(), ColumnType::Numeric));
            columns.back().precision = 18;
        }
        storage.createTable("T", columns, {});
    });
    define("index over eleven columns", ErrorKind::Syntax, [](StorageFile& storage) {
        std::vector<Column> columns;
        Index wide;
        wide.name = "Todos";
        for (int i = 0; i < 11; ++i) {
            columns.push_back(column(("c" + std::to_string(i)).c_str(), ColumnType::Long));
            wide.columns.push_back({i, true});
        }
        storage.createTable("T", columns, std::array{wide});
    });
    define("index of repeated values", ErrorKind::DuplicateKey, [](StorageFile& storage) {
        storage.table("Bomba")->insert(Station::row(2));
        storage.createIndex("Bomba", index("Unico", {{1, true}}, true));
    });
    define("row that is too long", ErrorKind::TooLong, [](StorageFile& storage) {
        std::vector<Column> columns;
        std::vector<std::optional<Value>> cells;
        for (int i = 0; i < 16; ++i) {
            columns.push_back(column(("c" + std::to_string(i)).c_str(), ColumnType::Text, 255));
            cells.emplace_back(std::string(254, 'x'));
        }
        storage.createTable("Larga", columns, {});
        storage.table("Larga")->insert(cells);
    });
}

void TestStorageRefusals::changes()
{
    QFETCH(const std::function<void(Station&)>, change);
    QFETCH(const int, kind);
    Station station({});
    const std::string before = contentOf(station.storage());
    station.storage().beginStatement();
    const auto error = errorOf([&] { change(station); });
    QVERIFY(error.has_value());
    QCOMPARE(static_cast<int>(*error), kind);
    station.storage().rollbackStatement();
    QCOMPARE(contentOf(station.storage()), before);
    QCOMPARE(joined(station.storage().verify()), QString());
}

void TestStorageRefusals::linkedTable()
{
    Station station([](StorageFile& storage) {
        std::vector<std::optional<Value>> row(storage.catalog().columns().size());
        const auto set = [&](const char* name, Value value) {
            row[static_cast<std::size_t>(storage.catalog().columnIndex(name))] = std::move(value);
        };
        set("Id", -5);
        set("ParentId", 0x0F000001);
        set("Name", std::string("Ligada"));
        set("Type", CatalogEntry::linkedType);
        storage.catalog().insert(row);
    });
    QCOMPARE(errorOf([&] { static_cast<void>(station.storage().table("ligada")); }), ErrorKind::MissingTable);
    QCOMPARE(station.storage().tableNames(), std::vector<std::string>{"Bomba"});
    QCOMPARE(errorOf([&] { station.storage().createTable("ligada", std::array{column("n", ColumnType::Long)}, {}); }),
             ErrorKind::Duplicate);
}

void TestStorageRefusals::readOnlyFiles()
{
    FaultyFiles files;
    createStorage(files, file, {});
    openStorage(files, file, {})->createTable("T", std::array{column("n", ColumnType::Long)}, {});
    const Bytes before = files.content(file);
    for (const bool byFolder : {false, true}) {
        files.readOnlyFolder(byFolder);
        const auto storage = openStorage(files, file, {.password = {}, .readOnly = !byFolder});
        QVERIFY(storage->isReadOnly());
        const std::array<std::optional<Value>, 1> row = {Value(1)};
        QCOMPARE(errorOf([&] { storage->table("T")->insert(row); }), ErrorKind::ReadOnly);
        QCOMPARE(errorOf([&] { storage->beginStatement(); }), ErrorKind::ReadOnly);
        QCOMPARE(errorOf([&] { storage->createTable("U", storage->table("T")->columns(), {}); }), ErrorKind::ReadOnly);
        QCOMPARE(errorOf([&] { storage->setPassword("x"); }), ErrorKind::ReadOnly);
        QCOMPARE(joined(storage->verify()), QString());
    }
    QCOMPARE(files.content(file), before);
    QCOMPARE(files.fileCount(), std::size_t{1});
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
    FaultyFiles files;
    createStorage(files, file, {});
    Bytes content = files.content(file);
    std::copy(bytes.begin(), bytes.end(), content.begin() + at);
    files.setContent(file, content);
    try {
        static_cast<void>(openStorage(files, file, {}));
        QFAIL("opened");
    } catch (const Error& error) {
        QCOMPARE(error.kind(), ErrorKind::NotADatabase);
        QVERIFY2(QString::fromUtf8(error.what()).contains(told), error.what());
    }
    QCOMPARE(files.content(file), content);
}

void TestStorageRefusals::locks()
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("posto.mdb"));
    const auto open = [&] { return Storage::open(path.toStdString(), {}); };
    QCOMPARE(errorOf([&] { open(); }), ErrorKind::CannotOpen);
    Storage::create(path.toStdString());
    {
        const auto storage = open();
        QCOMPARE(errorOf([&] { open(); }), ErrorKind::Locked);
        QProcess other;
        other.start(QStringLiteral(MDBSQL_PROGRAM), {path, QStringLiteral("--verify")});
        QVERIFY(other.waitForFinished());
        QCOMPARE(other.exitCode(), 1);
        QVERIFY(QString::fromUtf8(other.readAllStandardError()).contains(QStringLiteral("em uso por outro programa")));
    }
    // Access on another computer.
    QFile users(folder.filePath(QStringLiteral("posto.ldb")));
    QVERIFY(users.open(QIODevice::WriteOnly));
    QCOMPARE(errorOf([&] { open(); }), ErrorKind::Locked);
    QVERIFY(users.remove());
    static_cast<void>(open());
}

void TestStorageRefusals::passwords()
{
    FaultyFiles files;
    createStorage(files, file, "8282");
    for (const char* wrong : {"", "828", "82822", "8282 "})
        QCOMPARE(errorOf([&] { static_cast<void>(openStorage(files, file, {.password = wrong})); }),
                 ErrorKind::WrongPassword);
    QVERIFY(openStorage(files, file, {.password = "8282"})->acceptsPassword("8282"));
    FaultyFiles open;
    createStorage(open, file, {});
    static_cast<void>(openStorage(open, file, {.password = "qualquer"}));
}

void TestStorageRefusals::encodedFile()
{
    // Page encoding is a stream over each page but the first, with a key in the header.
    constexpr std::uint32_t key = 0x1234ABCD;
    FaultyFiles files;
    createStorage(files, file, {});
    openStorage(files, file, {})->createTable("T", std::array{column("n", ColumnType::Text, 20)}, {});
    Bytes content = files.content(file);
    PageBytes first{};
    std::copy_n(content.begin(), pageSize, first.begin());
    applyHeaderMask(first);
    store32(first.data() + 0x3E, key);
    applyHeaderMask(first);
    std::copy(first.begin(), first.end(), content.begin());
    for (std::uint32_t page = 1; page < content.size() / pageSize; ++page)
        applyRc4(key ^ page, std::span(content).subspan(page * pageSize, pageSize));
    files.setContent(file, content);
    const std::array<std::optional<Value>, 1> row = {Value(std::string("Posto Modelo da Encosta"))};
    const std::array<std::optional<Value>, 1> fitting = {Value(std::string("Posto Modelo"))};
    {
        const auto storage = openStorage(files, file, {});
        QCOMPARE(errorOf([&] { storage->table("T")->insert(row); }), ErrorKind::TooLong);
        for (int i = 0; i < 500; ++i)
            storage->table("T")->insert(fitting);
    }
    const auto storage = openStorage(files, file, {});
    QCOMPARE(rowsOf(*storage->table("T")).size(), std::size_t{500});
    QCOMPARE(joined(storage->verify()), QString());
    const Bytes stored = files.content(file);
    const std::string text = "Modelo";
    QVERIFY(std::search(stored.begin(), stored.end(), text.begin(), text.end()) == stored.end());
}

QTEST_GUILESS_MAIN(TestStorageRefusals)
#include "test_storage_refusals.moc"
