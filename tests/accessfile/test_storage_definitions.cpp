#include "accessfile/AccessTestTools.h"
#include "accessfile/DataPage.h"
#include "accessfile/FaultyFiles.h"
#include "accessfile/IndexTree.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace accessfile;
using namespace accesstest;

namespace {

const std::filesystem::path file = "posto.mdb";

Bytes asBytes(std::initializer_list<int> values)
{
    return {values.begin(), values.end()};
}

/// A table of every column type, with rows, an index over two levels, moved rows, and long values of each form.
void fill(Storage& storage)
{
    std::array columns = {column("codigo", ColumnType::Long),   column("nome", ColumnType::Text, 255),
                          column("obs", ColumnType::Memo),      column("quando", ColumnType::Date),
                          column("valor", ColumnType::Money),   column("fator", ColumnType::Double),
                          column("exato", ColumnType::Numeric), column("pequeno", ColumnType::Byte),
                          column("curto", ColumnType::Int),     column("simples", ColumnType::Float),
                          column("chave", ColumnType::Guid),    column("bits", ColumnType::Binary, 40),
                          column("documento", ColumnType::Ole), column("ativo", ColumnType::Bool)};
    columns[0].autonumber = true;
    columns[6].precision = 18;
    columns[6].scale = 3;
    Index key = index("PrimaryKey", {{0, true}}, true);
    key.primary = true;
    storage.createTable("Tudo", columns, std::array{key, index("PorNome", {{1, true}, {3, false}})});
    ValueMaker maker(1);
    storage.beginStatement();
    Table& table = *storage.table("Tudo");
    for (int i = 0; i < 300; ++i) {
        std::vector<std::optional<Value>> row;
        for (const Column& each : columns)
            row.push_back(each.autonumber ? std::nullopt : std::optional(maker.value(each)));
        const RowId id = table.insert(row);
        const std::array longer = {std::pair(1, Value(std::string(250, static_cast<char>('a' + i % 26))))};
        if (i % 10 == 0)
            table.update(id, longer);
    }
    storage.commitStatement();
}

class Fixture
{
public:
    Fixture()
    {
        createStorage(m_files, file, {});
        m_storage = openStorage(m_files, file, {});
    }
    /// With the table of `fill`, made once.
    static Fixture filled()
    {
        static const Bytes bytes = [] {
            Fixture fixture;
            fill(*fixture);
            return fixture.m_files.content(file);
        }();
        return Fixture(bytes);
    }
    StorageFile* operator->() { return m_storage.get(); }
    StorageFile& operator*() { return *m_storage; }
    FaultyFiles& files() { return m_files; }
    void reopen(const std::string& password = {})
    {
        m_storage.reset();
        m_storage = openStorage(m_files, file, {.password = password});
    }
    [[nodiscard]] QString faults() { return joined(m_storage->verify()); }

private:
    explicit Fixture(const Bytes& bytes)
    {
        m_files.setContent(file, bytes);
        m_storage = openStorage(m_files, file, {});
    }
    FaultyFiles m_files;
    std::unique_ptr<StorageFile> m_storage;
};

} // namespace

/// New files, tables, columns and indexes, each checked for what makes Access refuse a file.
class TestStorageDefinitions : public QObject
{
    Q_OBJECT

private slots:
    void blankFile();
    void otherReaderSeesEverything();
    void constantsThatAccessAsksFor();
    void limits_data();
    void limits();
    void longDefinition();
    void rowsOfOldDefinitions();
    void droppedTableGivesEverythingBack();
    void undoneDefinitions();
    void passwordMasksAccounts();
    void autonumber();
    void selfCheckFinds_data();
    void selfCheckFinds();
};

void TestStorageDefinitions::blankFile()
{
    FaultyFiles files;
    createStorage(files, file, {});
    const Bytes bytes = files.content(file);
    QCOMPARE(bytes.size(), 16 * pageSize);
    // Idle commit slots: zeros would make Access demand a repair.
    for (std::size_t i = 0xE00; i < pageSize; i += 2)
        QCOMPARE(load16(bytes.data() + i), std::uint16_t{0x0100});
    QCOMPARE(errorOf([&] { createStorage(files, file, {}); }), ErrorKind::Duplicate);

    // Account ids of a blank file of Access with this creation stamp.
    double stamp = 0;
    const Bytes stored = asBytes({0x3E, 0x85, 0xD3, 0x3B, 0x3E, 0xAB, 0xE4, 0x40});
    std::memcpy(&stamp, stored.data(), sizeof stamp);
    const Header header = Header::makeNew(stamp);
    for (const auto& [plain, masked] :
         {std::pair(asBytes({3, 1}), asBytes({0x64, 0x8B})), std::pair(asBytes({2, 4}), asBytes({0x65, 0x8E}))}) {
        Bytes account = plain;
        applyRc4(header.accountKey(), account);
        QCOMPARE(account, masked);
    }
}

void TestStorageDefinitions::otherReaderSeesEverything()
{
    if (!exporterInstalled())
        QSKIP("mdb-export is not installed.");
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("posto.mdb"));
    Storage::create(path.toStdString(), "8282");
    const auto storage = Storage::open(path.toStdString(), {.password = "8282"});
    fill(*storage);
    storage->addColumn("Tudo", column("depois", ColumnType::Text, 30));
    QProcess process;
    process.start(QStringLiteral("mdb-tables"), {QStringLiteral("-1"), path});
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.readAllStandardOutput(), QByteArray("Tudo\n"));
    std::size_t cells = 0;
    QCOMPARE(exportDifference(*storage, path, &cells), QString());
    QCOMPARE(cells, std::size_t{300 * 15});
    QCOMPARE(joined(storage->verify()), QString());
}

void TestStorageDefinitions::constantsThatAccessAsksFor()
{
    Fixture storage = Fixture::filled();
    storage->addColumn("Tudo", column("depois", ColumnType::Text, 30));
    storage->createIndex("Tudo", index("Mais", {{4, true}}));
    const TableDefinition definition = storage->tableFile("Tudo")->definition();
    const PagePointer page = storage->context().pager.page(definition.pages.front());
    const std::size_t length = load32(page->data() + 8);
    QCOMPARE(load16(page->data() + length - 2), std::uint16_t{0xFFFF});
    QCOMPARE(load32(page->data() + 12), std::uint32_t{1625});
    for (const ColumnDefinition& each : definition.columns)
        QCOMPARE(load32(each.entry.data() + 1), std::uint32_t{1625});
    for (const PhysicalIndex& each : definition.physical) {
        QCOMPARE(load32(each.entry.data()), std::uint32_t{1923});
        QCOMPARE(each.entry[46] & 0x80, 0x80);
    }
    // Without variable columns a row keeps two bytes, or Access reads every truth value as false.
    storage->createTable("Sinais", std::array{column("ligado", ColumnType::Bool)}, {});
    const std::array<std::optional<Value>, 1> on = {Value(true)};
    const RowId row = storage->table("Sinais")->insert(on);
    QCOMPARE(datapage::row(*storage->context().pager.page(row.page), row.slot).size(), std::size_t{2 + 2 + 1});
}

void TestStorageDefinitions::limits_data()
{
    QTest::addColumn<std::vector<int>>("textLengths");
    QTest::addColumn<int>("indexes");
    QTest::addColumn<int>("nameLength");
    QTest::addColumn<bool>("accepted");
    const std::vector<int> one = {10};
    QTest::newRow("longest text") << std::vector<int>{255} << 0 << 5 << true;
    QTest::newRow("text too long") << std::vector<int>{256} << 0 << 5 << false;
    QTest::newRow("no text") << std::vector<int>{0} << 0 << 5 << false;
    QTest::newRow("name of 64") << one << 0 << 64 << true;
    QTest::newRow("name of 65") << one << 0 << 65 << false;
    QTest::newRow("32 indexes") << one << 32 << 5 << true;
    QTest::newRow("33 indexes") << one << 33 << 5 << false;
    QTest::newRow("255 columns") << std::vector<int>(255, 10) << 0 << 5 << true;
    QTest::newRow("256 columns") << std::vector<int>(256, 10) << 0 << 5 << false;
}

void TestStorageDefinitions::limits()
{
    QFETCH(const std::vector<int>, textLengths);
    QFETCH(const int, indexes);
    QFETCH(const int, nameLength);
    QFETCH(const bool, accepted);
    Fixture storage;
    std::vector<Column> columns;
    for (std::size_t i = 0; i < textLengths.size(); ++i) {
        std::string name = std::to_string(i);
        name.insert(0, static_cast<std::size_t>(nameLength) - name.size(), 'c');
        columns.push_back(column(name.c_str(), ColumnType::Text, textLengths[i]));
    }
    std::vector<Index> made;
    for (int i = 0; i < indexes; ++i)
        made.push_back(index(("i" + std::to_string(i)).c_str(), {{0, true}}));
    const Bytes before = storage.files().content(file);
    const auto error = errorOf([&] { storage->createTable("T", columns, made); });
    QCOMPARE(!error.has_value(), accepted);
    if (!accepted)
        QCOMPARE(storage.files().content(file), before);
    QCOMPARE(storage.faults(), QString());
}

void TestStorageDefinitions::longDefinition()
{
    Fixture storage;
    std::vector<Column> columns;
    for (int i = 0; i < 180; ++i)
        columns.push_back(column(("uma_coluna_de_nome_comprido_" + std::to_string(i)).c_str(),
                                 i % 3 == 0 ? ColumnType::Text : ColumnType::Long, i % 3 == 0 ? 50 : 0));
    storage->createTable("Larga", columns, std::array{index("Primeira", {{0, true}})});
    QVERIFY(storage->tableFile("Larga")->definition().pages.size() > 3);
    for (int i = 0; i < 40; ++i) {
        storage->addColumn("Larga", column(("mais_uma_coluna_" + std::to_string(i)).c_str(), ColumnType::Text, 20));
        std::vector<std::optional<Value>> row(storage->table("Larga")->columns().size());
        row.front() = std::string("linha");
        row.back() = std::to_string(i);
        storage->table("Larga")->insert(row);
    }
    storage.reopen();
    QCOMPARE(storage.faults(), QString());
    const Rows rows = rowsOf(*storage->table("Larga"));
    QCOMPARE(rows.size(), std::size_t{40});
    QCOMPARE(rows[39][219], std::string("39"));
    QCOMPARE(rows[38][218], std::string("38"));
    QCOMPARE(rows[38][219], std::string());
}

void TestStorageDefinitions::rowsOfOldDefinitions()
{
    Fixture storage;
    storage->createTable("T", std::array{column("sinal", ColumnType::Bool), column("n", ColumnType::Byte)}, {});
    std::vector<RowId> ids;
    storage->beginStatement();
    for (int i = 0; i < 400; ++i) {
        const std::array<std::optional<Value>, 2> row = {Value(i % 2 == 0), Value(i % 200)};
        ids.push_back(storage->table("T")->insert(row));
    }
    storage->commitStatement();
    // The first variable column, a number for every row, and a fixed column behind both.
    storage->addColumn("T", column("texto", ColumnType::Text, 20));
    Column number = column("numero", ColumnType::Long);
    number.autonumber = true;
    storage->addColumn("T", number);
    storage->addColumn("T", column("valor", ColumnType::Double));
    QCOMPARE(errorOf([&] { storage->addColumn("T", column("TEXTO", ColumnType::Long)); }), ErrorKind::Duplicate);
    number.name = "outro";
    QCOMPARE(errorOf([&] { storage->addColumn("T", number); }), ErrorKind::Duplicate);
    const std::array change = {std::pair(2, Value(std::string("mudou"))), std::pair(4, Value(2.5))};
    storage->table("T")->update(ids[7], change);
    storage.reopen();
    QCOMPARE(storage.faults(), QString());
    const Rows rows = rowsOf(*storage->table("T"));
    QCOMPARE(rows.size(), ids.size());
    QCOMPARE(rows[6], (std::vector<std::string>{"1", "6", "", "7", ""}));
    QCOMPARE(rows[7], (std::vector<std::string>{"0", "7", "mudou", "8", "2.5"}));
}

void TestStorageDefinitions::droppedTableGivesEverythingBack()
{
    Fixture storage;
    storage->createTable("Fica", std::array{column("n", ColumnType::Long)}, {});
    fill(*storage);
    const std::size_t size = storage.files().content(file).size();
    for (int i = 0; i < 3; ++i) {
        storage->dropTable("tudo");
        QCOMPARE(storage->tableNames(), std::vector<std::string>{"Fica"});
        QCOMPARE(storage.faults(), QString());
        fill(*storage);
        QCOMPARE(storage.faults(), QString());
    }
    QVERIFY(storage.files().content(file).size() <= size + 4 * pageSize);
}

void TestStorageDefinitions::undoneDefinitions()
{
    Fixture storage = Fixture::filled();
    const std::string before = contentOf(*storage);
    const Bytes bytes = storage.files().content(file);
    storage->beginStatement();
    storage->createTable("Nova", std::array{column("n", ColumnType::Long)}, {});
    const std::array<std::optional<Value>, 1> row = {Value(1)};
    storage->table("Nova")->insert(row);
    storage->addColumn("Tudo", column("mais", ColumnType::Memo));
    storage->createIndex("Tudo", index("Outro", {{3, true}}));
    storage->dropTable("Nova");
    storage->setPassword("x");
    storage->rollbackStatement();
    QCOMPARE(contentOf(*storage), before);
    QVERIFY(storage->acceptsPassword({}));
    // A definition that fails inside a longer statement takes the whole statement back.
    storage->beginStatement();
    storage->addColumn("Tudo", column("mais", ColumnType::Memo));
    QVERIFY(errorOf([&] { storage->createIndex("Tudo", index("Unico", {{13, true}}, true)); }).has_value());
    QCOMPARE(errorOf([&] { storage->commitStatement(); }), ErrorKind::IoError);
    QCOMPARE(contentOf(*storage), before);
    QCOMPARE(storage.files().content(file), bytes);
    QCOMPARE(storage.faults(), QString());
}

void TestStorageDefinitions::passwordMasksAccounts()
{
    Fixture storage = Fixture::filled();
    const std::string content = contentOf(*storage);
    std::string current;
    for (const std::string password : {"8282", "uma senha comprida!!", "ção", ""}) {
        storage->setPassword(password);
        QCOMPARE(storage.faults(), QString());
        if (current != password && !password.empty())
            QCOMPARE(errorOf([&] { storage.reopen(current + "?"); }), ErrorKind::WrongPassword);
        storage.reopen(password);
        QCOMPARE(storage.faults(), QString());
        QCOMPARE(contentOf(*storage), content);
        current = password;
    }
    storage.reopen("qualquer uma");
    QCOMPARE(errorOf([&] { storage->setPassword("vinte e um caracteres"); }), ErrorKind::TooLong);
    // A password put into the header alone leaves the accounts masked with the old key.
    Header header = storage->context().header;
    header.setPassword("8282");
    storage->beginStatement();
    storage->context().pager.modify(0) = header.stored();
    storage->commitStatement();
    storage.reopen("8282");
    QVERIFY(storage.faults().contains(QStringLiteral("não confere com o cabeçalho")));
}

void TestStorageDefinitions::autonumber()
{
    Fixture storage;
    std::array columns = {column("n", ColumnType::Long), column("t", ColumnType::Text, 10)};
    columns[0].autonumber = true;
    storage->createTable("T", columns, std::array{index("Chave", {{0, true}}, true)});
    Table& table = *storage->table("T");
    const auto add = [&](std::optional<Value> number) {
        const std::array<std::optional<Value>, 2> row = {std::move(number), Value(std::string("x"))};
        return table.insert(row);
    };
    add(std::nullopt);
    add(Value(10));
    add(Value(5));
    const RowId last = add(std::nullopt);
    table.erase(last);
    add(Value(Null{}));
    QCOMPARE(errorOf([&] { add(Value(10)); }), ErrorKind::DuplicateKey);
    storage.reopen();
    std::vector<std::string> numbers;
    for (const auto& row : rowsOf(*storage->table("T")))
        numbers.push_back(row[0]);
    // A number once given is not given again.
    QCOMPARE(numbers, (std::vector<std::string>{"1", "10", "5", "12"}));
    QCOMPARE(storage.faults(), QString());
}

Q_DECLARE_METATYPE(std::function<void(StorageFile&)>)

void TestStorageDefinitions::selfCheckFinds_data()
{
    using Damage = std::function<void(StorageFile&)>;
    QTest::addColumn<Damage>("damage");
    QTest::addColumn<QString>("fault");
    const auto row = [](const char* name, const QString& fault, Damage damage) {
        QTest::newRow(name) << std::move(damage) << fault;
    };
    const auto ownPages = [](StorageFile& storage) {
        return UsageMap(storage.context().pager, storage.tableFile("Tudo")->definition().ownedMap()).pages();
    };
    /// First page of the index over two columns whose first byte is `type`.
    const auto indexPage = [](StorageFile& storage, PageType type, std::size_t number = 0) -> PageBytes& {
        const PhysicalIndex& found = storage.tableFile("Tudo")->definition().physical[1];
        for (const PageNumber page : UsageMap(storage.context().pager, found.ownedMap).pages()) {
            if (isType(*storage.context().pager.page(page), type) && number-- == 0)
                return storage.context().pager.modify(page);
        }
        throw std::runtime_error("no such index page");
    };
    row("row count", QStringLiteral("contagem de registros"), [](StorageFile& storage) {
        ++storage.context().pager.modify(storage.tableFile("Tudo")->page())[TableDefinition::rowCountAt];
    });
    row("autonumber behind", QStringLiteral("último número automático"), [](StorageFile& storage) {
        store32(storage.context().pager.modify(storage.tableFile("Tudo")->page()).data() +
                    TableDefinition::lastNumberAt,
                299);
    });
    row("page used and free", QStringLiteral("marcada como livre"), [=](StorageFile& storage) {
        const PageNumber page = ownPages(storage).front();
        PageBytes& maps = storage.context().pager.modify(1);
        const std::size_t at = datapage::slot(maps, 0).offset + 5 + page / 8;
        maps[at] = static_cast<std::uint8_t>(maps[at] | 1U << (page % 8));
    });
    row("page of two owners", QStringLiteral("dois donos"), [=](StorageFile& storage) {
        UsageMap(storage.context().pager, storage.tableFile("Tudo")->definition().physical[0].ownedMap)
            .add(ownPages(storage).front(), storage.context().allocator);
    });
    row("page of nobody", QStringLiteral("não é livre nem de ninguém"),
        [](StorageFile& storage) { static_cast<void>(storage.context().allocator.allocate()); });
    row("page of another type", QStringLiteral("não é de registros"),
        [=](StorageFile& storage) { storage.context().pager.modify(ownPages(storage).back())[0] = 9; });
    row("page beyond the end", QStringLiteral("não existe"), [](StorageFile& storage) {
        UsageMap(storage.context().pager, storage.tableFile("Tudo")->definition().ownedMap())
            .add(storage.context().pager.pageCount() + 3, storage.context().allocator);
    });
    row("free space", QStringLiteral("espaço livre"),
        [=](StorageFile& storage) { ++storage.context().pager.modify(ownPages(storage).front())[2]; });
    row("row offset", QStringLiteral("posição de um registro"), [=](StorageFile& storage) {
        store16(storage.context().pager.modify(ownPages(storage).front()).data() + 16, 0x1FFF);
    });
    row("stub without its row", QStringLiteral("deslocado"), [=](StorageFile& storage) {
        for (const PageNumber page : ownPages(storage)) {
            for (std::size_t i = 0; i < datapage::slotCount(*storage.context().pager.page(page)); ++i) {
                if (datapage::slot(*storage.context().pager.page(page), i).kind == datapage::SlotKind::Target)
                    return datapage::erase(storage.context().pager.modify(page), i);
            }
        }
    });
    row("leaf with a level", QStringLiteral("traz um nível"),
        [=](StorageFile& storage) { indexPage(storage, PageType::IndexLeaf)[26] = 1; });
    row("leaf chain", QStringLiteral("não está encadeada"),
        [=](StorageFile& storage) { store32(indexPage(storage, PageType::IndexLeaf).data() + 16, 0); });
    row("index key", QStringLiteral("índice"), [=](StorageFile& storage) {
        PageBytes& page = indexPage(storage, PageType::IndexLeaf, 1);
        page[482] = static_cast<std::uint8_t>(page[482] ^ 1U);
    });
    row("index without a row", QStringLiteral("índice"), [](StorageFile& storage) {
        IndexTree tree(storage.context(), storage.tableFile("Tudo")->page(),
                       storage.tableFile("Tudo")->definition().physical[0]);
        IndexPosition position = tree.find({});
        const ByteView entry = *position.entry();
        tree.erase(keyOf(entry), rowOf(entry));
    });
    row("long value without its row", QStringLiteral("registro"), [](StorageFile& storage) {
        const ColumnDefinition& memo = storage.tableFile("Tudo")->definition().columns[2];
        for (const PageNumber page : UsageMap(storage.context().pager, memo.ownedMap).pages())
            datapage::erase(storage.context().pager.modify(page), 0);
    });
    row("chain stamp", QStringLiteral("selo"), [](StorageFile& storage) {
        const ColumnDefinition& document = storage.tableFile("Tudo")->definition().columns[12];
        for (const PageNumber page : UsageMap(storage.context().pager, document.ownedMap).pages())
            ++storage.context().pager.modify(page)[8];
    });
    row("nobody's rights", QStringLiteral("direitos"), [](StorageFile& storage) {
        TableFile rights(storage.context(), 3, "MSysACEs", {});
        rights.allowSystem();
        rights.reload({});
        std::vector<RowId> rows;
        for (const auto cursor = rights.scan(); cursor->next();)
            rows.push_back(cursor->rowId());
        rights.erase(rows.back());
        rights.erase(rows[rows.size() - 2]);
    });
}

void TestStorageDefinitions::selfCheckFinds()
{
    QFETCH(const std::function<void(StorageFile&)>, damage);
    QFETCH(const QString, fault);
    Fixture storage = Fixture::filled();
    QCOMPARE(storage.faults(), QString());
    storage->beginStatement();
    damage(*storage);
    storage->commitStatement();
    storage.reopen();
    QVERIFY2(storage.faults().contains(fault), qPrintable(storage.faults()));
}

QTEST_GUILESS_MAIN(TestStorageDefinitions)
#include "test_storage_definitions.moc"
