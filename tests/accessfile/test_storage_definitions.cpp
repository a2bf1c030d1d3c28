#include "accessfile/AccessTestTools.h"
#include "accessfile/format/DataPage.h"
#include "accessfile/format/TextCodec.h"
#include "accessfile/table/IndexTree.h"

#include <QTest>

#include <random>

using namespace accessfile;
using namespace accesstest;

namespace {

/// A table of every column type, with rows, an index over two levels, moved rows, and long values of each form.
void fill(Storage& storage)
{
    std::vector columns = {column("codigo", ColumnType::Long),   column("nome", ColumnType::Text, 255),
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
        const RowId id = table.insert(maker.row(columns));
        if (i % 10 == 0)
            table.update(id, Changes{{1, std::string(250, static_cast<char>('a' + i % 26))}});
    }
    storage.commitStatement();
}

/// With the table of `fill`, made once.
MemoryStation filledStation()
{
    static const Bytes bytes = [] {
        MemoryStation station;
        fill(*station);
        return station.bytes();
    }();
    return MemoryStation({}, bytes);
}

} // namespace

/// New files, tables, columns and indexes, each checked for what makes Access refuse a file.
class TestStorageDefinitions : public QObject
{
    Q_OBJECT

private slots:
    void blankFile();
    void constantsThatAccessAsksFor();
    void limits_data();
    void limits();
    void longDefinition();
    void rowsOfOldDefinitions();
    void droppedTableGivesEverythingBack();
    void undoneDefinitions();
    void passwordMasksAccounts();
    void autonumber();
    void textOutsideTheOrder();
    void boundsFollowDeletions();
    void selfCheckFinds_data();
    void selfCheckFinds();
};

void TestStorageDefinitions::blankFile()
{
    MemoryStation storage;
    const Bytes bytes = storage.bytes();
    QCOMPARE(bytes.size(), 16 * pageSize);
    // Idle commit slots: zeros would make Access demand a repair. The making itself counts in the first one.
    for (std::size_t i = 0xE00; i < pageSize; i += 2)
        QCOMPARE(load16(bytes.data() + i), static_cast<std::uint16_t>(i == 0xE00 ? 0x0101 : 0x0100));
    QCOMPARE(errorOf([&] { createStorage(storage.files(), stationFile, {}); }), ErrorKind::Duplicate);

    // Account ids of a blank file of Access with this creation stamp.
    const Bytes stamp = {0x3E, 0x85, 0xD3, 0x3B, 0x3E, 0xAB, 0xE4, 0x40};
    const Header header = Header::makeNew(loadDouble(stamp.data()));
    for (const auto& [plain, masked] : {std::pair(Bytes{3, 1}, Bytes{0x64, 0x8B}), {{2, 4}, {0x65, 0x8E}}}) {
        Bytes account = plain;
        applyRc4(header.accountKey(), account);
        QCOMPARE(account, masked);
    }
}

void TestStorageDefinitions::constantsThatAccessAsksFor()
{
    MemoryStation storage = filledStation();
    storage->addColumn("Tudo", column("depois", ColumnType::Text, 30));
    storage->createIndex("Tudo", index("Mais", {{4, true}}));
    const TableDefinition definition = storage->tableFile("Tudo")->definition();
    const PagePointer page = storage->space().pager.page(definition.pages.front());
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
    const RowId row = storage->table("Sinais")->insert(Cells{true});
    QCOMPARE(datapage::row(*storage->space().pager.page(row.page), row.slot).size(), std::size_t{2 + 2 + 1});
}

void TestStorageDefinitions::limits_data()
{
    QTest::addColumn<int>("columns");
    QTest::addColumn<int>("length");
    QTest::addColumn<int>("indexes");
    QTest::addColumn<int>("nameLength");
    QTest::addColumn<bool>("accepted");
    QTest::newRow("longest text") << 1 << 255 << 0 << 5 << true;
    QTest::newRow("text too long") << 1 << 256 << 0 << 5 << false;
    QTest::newRow("no text") << 1 << 0 << 0 << 5 << false;
    QTest::newRow("name of 64") << 1 << 10 << 0 << 64 << true;
    QTest::newRow("name of 65") << 1 << 10 << 0 << 65 << false;
    QTest::newRow("32 indexes") << 1 << 10 << 32 << 5 << true;
    QTest::newRow("33 indexes") << 1 << 10 << 33 << 5 << false;
    QTest::newRow("255 columns") << 255 << 10 << 0 << 5 << true;
    QTest::newRow("256 columns") << 256 << 10 << 0 << 5 << false;
}

void TestStorageDefinitions::limits()
{
    QFETCH(const int, columns);
    QFETCH(const int, length);
    QFETCH(const int, indexes);
    QFETCH(const int, nameLength);
    QFETCH(const bool, accepted);
    MemoryStation storage;
    std::vector<Column> declared;
    for (int i = 0; i < columns; ++i) {
        std::string name = std::to_string(i);
        name.insert(0, static_cast<std::size_t>(nameLength) - name.size(), 'c');
        declared.push_back(column(name.c_str(), ColumnType::Text, length));
    }
    std::vector<Index> made;
    for (int i = 0; i < indexes; ++i)
        made.push_back(index(("i" + std::to_string(i)).c_str(), {{0, true}}));
    const Bytes before = storage.bytes();
    const auto error = errorOf([&] { storage->createTable("T", declared, made); });
    QCOMPARE(!error.has_value(), accepted);
    QCOMPARE(storage.bytes() == before, !accepted);
    QCOMPARE(storage.faults(), QString());
}

void TestStorageDefinitions::longDefinition()
{
    MemoryStation storage;
    std::vector<Column> columns;
    for (int i = 0; i < 180; ++i)
        columns.push_back(column(("uma_coluna_de_nome_comprido_" + std::to_string(i)).c_str(),
                                 i % 3 == 0 ? ColumnType::Text : ColumnType::Long, i % 3 == 0 ? 50 : 0));
    storage->createTable("Larga", columns, std::array{index("Primeira", {{0, true}})});
    QVERIFY(storage->tableFile("Larga")->definition().pages.size() > 3);
    for (int i = 0; i < 40; ++i) {
        storage->addColumn("Larga", column(("mais_uma_coluna_" + std::to_string(i)).c_str(), ColumnType::Text, 20));
        Cells row(storage->table("Larga")->columns().size());
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
    MemoryStation storage;
    storage->createTable("T", std::array{column("sinal", ColumnType::Bool), column("n", ColumnType::Byte)}, {});
    std::vector<RowId> ids;
    storage->beginStatement();
    for (int i = 0; i < 400; ++i)
        ids.push_back(storage->table("T")->insert(Cells{i % 2 == 0, i % 200}));
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
    storage->table("T")->update(ids[7], Changes{{2, std::string("mudou")}, {4, 2.5}});
    storage.reopen();
    QCOMPARE(storage.faults(), QString());
    const Rows rows = rowsOf(*storage->table("T"));
    QCOMPARE(rows.size(), ids.size());
    QCOMPARE(rows[6], (std::vector<std::string>{"1", "6", "", "7", ""}));
    QCOMPARE(rows[7], (std::vector<std::string>{"0", "7", "mudou", "8", "2.5"}));
}

void TestStorageDefinitions::droppedTableGivesEverythingBack()
{
    MemoryStation storage;
    storage->createTable("Fica", std::array{column("n", ColumnType::Long)}, {});
    fill(*storage);
    const std::size_t size = storage.bytes().size();
    const auto rights = [&] { return rowIdsOf(*storage->tableFile("MSysACEs")).size(); };
    const std::size_t granted = rights();
    for (int i = 0; i < 3; ++i) {
        storage->dropTable("tudo");
        QCOMPARE(storage->tableNames(), std::vector<std::string>{"Fica"});
        QCOMPARE(storage.faults(), QString());
        fill(*storage);
        QCOMPARE(storage.faults(), QString());
        QCOMPARE(rights(), granted);
    }
    QVERIFY(storage.bytes().size() <= size + 4 * pageSize);
}

void TestStorageDefinitions::undoneDefinitions()
{
    MemoryStation storage = filledStation();
    const std::string before = contentOf(*storage);
    const Bytes bytes = storage.bytes();
    storage->beginStatement();
    storage->createTable("Nova", std::array{column("n", ColumnType::Long)}, {});
    storage->table("Nova")->insert(Cells{1});
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
    QCOMPARE(storage.bytes(), bytes);
    QCOMPARE(storage.faults(), QString());
}

void TestStorageDefinitions::passwordMasksAccounts()
{
    MemoryStation storage = filledStation();
    const std::string content = contentOf(*storage);
    std::string current;
    for (const std::string password : {"8282", "uma senha comprida!!", "ção", ""}) {
        storage->setPassword(password);
        QCOMPARE(storage.faults(), QString());
        if (current != password && !password.empty())
            QCOMPARE(errorOf([&] { storage.reopen({.password = current + "?"}); }), ErrorKind::WrongPassword);
        storage.reopen({.password = password});
        QCOMPARE(storage.faults(), QString());
        QCOMPARE(contentOf(*storage), content);
        current = password;
    }
    storage.reopen({.password = "qualquer uma"});
    QCOMPARE(errorOf([&] { storage->setPassword("vinte e um caracteres"); }), ErrorKind::TooLong);
    // A password put into the header alone leaves the accounts masked with the old key.
    Header header = storage->space().header;
    header.setPassword(toUtf16("8282"));
    storage->beginStatement();
    storage->space().pager.modify(0) = header.stored();
    storage->commitStatement();
    storage.reopen({.password = "8282"});
    QVERIFY(storage.faults().contains(QStringLiteral("não confere com o cabeçalho")));
}

void TestStorageDefinitions::autonumber()
{
    MemoryStation storage;
    std::array columns = {column("n", ColumnType::Long), column("t", ColumnType::Text, 10)};
    columns[0].autonumber = true;
    storage->createTable("T", columns, std::array{index("Chave", {{0, true}}, true)});
    const auto add = [&](std::optional<Value> number) {
        return storage->table("T")->insert(Cells{std::move(number), std::string("x")});
    };
    add(std::nullopt);
    add(10);
    add(5);
    storage->table("T")->erase(add(std::nullopt));
    add(Null{});
    QCOMPARE(errorOf([&] { add(10); }), ErrorKind::DuplicateKey);
    storage.reopen();
    // A number once given is not given again.
    QCOMPARE(rowsOf(*storage->table("T")), (Rows{{"1", "x"}, {"10", "x"}, {"5", "x"}, {"12", "x"}}));
    QCOMPARE(storage.faults(), QString());
}

/// The table of `fill`, opened to be damaged.
struct Damaged
{
    StorageFile& storage;
    Pager& pager = storage.space().pager;
    TableFile& table = *storage.tableFile("Tudo");
    const TableDefinition& definition = table.definition();

    [[nodiscard]] std::vector<PageNumber> pagesOf(RowId map) { return UsageMap(pager, map).pages(); }
    /// First and last data page.
    PageBytes& first() { return pager.modify(pagesOf(definition.ownedMap()).front()); }
    PageBytes& last() { return pager.modify(pagesOf(definition.ownedMap()).back()); }
    /// A leaf of the index over two columns.
    PageBytes& leaf(std::size_t number = 0)
    {
        for (const PageNumber page : pagesOf(definition.physical[1].ownedMap)) {
            if (isType(*pager.page(page), PageType::IndexLeaf) && number-- == 0)
                return pager.modify(page);
        }
        throw std::runtime_error("no such index page");
    }
};

Q_DECLARE_METATYPE(std::function<void(Damaged&)>)

void TestStorageDefinitions::selfCheckFinds_data()
{
    using Damage = std::function<void(Damaged&)>;
    QTest::addColumn<Damage>("damage");
    QTest::addColumn<QString>("fault");
    QTest::addColumn<bool>("harmless");
    const auto row = [](const char* name, const QString& fault, Damage damage, bool harmless = false) {
        QTest::newRow(name) << std::move(damage) << fault << harmless;
    };
    row(
        "row count", QStringLiteral("contagem de registros"),
        [](Damaged& file) { ++file.pager.modify(file.table.page())[definition::rowCountAt]; }, true);
    row("autonumber behind", QStringLiteral("último número automático"),
        [](Damaged& file) { store32(file.pager.modify(file.table.page()).data() + definition::lastNumberAt, 299); });
    row("page used and free", QStringLiteral("marcada como livre"), [](Damaged& file) {
        const PageNumber page = file.pagesOf(file.definition.ownedMap()).front();
        PageBytes& maps = file.pager.modify(1);
        std::uint8_t& bits = maps[datapage::slot(maps, 0).offset + 5 + page / 8];
        bits = static_cast<std::uint8_t>(bits | 1U << (page % 8));
    });
    row("page of two owners", QStringLiteral("dois donos"), [](Damaged& file) {
        UsageMap(file.pager, file.definition.physical[0].ownedMap)
            .add(file.pagesOf(file.definition.ownedMap()).front(), file.storage.space().allocator);
    });
    row(
        "page of nobody", QStringLiteral("não são livres nem de ninguém"),
        [](Damaged& file) { static_cast<void>(file.storage.space().allocator.allocate()); }, true);
    row("page of another type", QStringLiteral("não é de registros"), [](Damaged& file) { file.last()[0] = 9; });
    const auto beyondTheEnd = [](Damaged& file) {
        UsageMap(file.pager, file.definition.ownedMap())
            .add(file.pager.pageCount() + 3, file.storage.space().allocator);
    };
    row("page beyond the end", QStringLiteral("além do fim"), beyondTheEnd, true);
    row("page beyond the end, rows missing", QStringLiteral("faltam registros"), [beyondTheEnd](Damaged& file) {
        ++file.pager.modify(file.table.page())[definition::rowCountAt];
        beyondTheEnd(file);
    });
    row(
        "autonumber that starts over", {},
        [](Damaged& file) {
            store(file.pager.modify(file.table.page()).data() + definition::lastNumberAt, std::int32_t{-2147483648});
        },
        true);
    row(
        "empty page in the map", QStringLiteral("está vazia"),
        [](Damaged& file) {
            const PageNumber page = file.storage.space().allocator.allocate();
            UsageMap(file.pager, file.definition.ownedMap()).add(page, file.storage.space().allocator);
        },
        true);
    row("free space", QStringLiteral("espaço livre"), [](Damaged& file) { ++file.first()[2]; });
    row("row offset", QStringLiteral("posição de um registro"),
        [](Damaged& file) { store16(file.first().data() + 16, 0x1FFF); });
    row("stub without its row", QStringLiteral("deslocado"), [](Damaged& file) {
        for (const PageNumber page : file.pagesOf(file.definition.ownedMap())) {
            for (std::size_t i = 0; i < datapage::slotCount(*file.pager.page(page)); ++i) {
                if (datapage::slot(*file.pager.page(page), i).kind == datapage::SlotKind::Target)
                    return datapage::erase(file.pager.modify(page), i);
            }
        }
    });
    row("leaf with a level", QStringLiteral("traz um nível"), [](Damaged& file) { file.leaf()[26] = 1; });
    row("leaf chain", QStringLiteral("não está encadeada"), [](Damaged& file) { store32(file.leaf().data() + 16, 0); });
    row("index key", QStringLiteral("índice"), [](Damaged& file) {
        std::uint8_t& byte = file.leaf(1)[482];
        byte = static_cast<std::uint8_t>(byte ^ 1U);
    });
    row("index without a row", QStringLiteral("índice"), [](Damaged& file) {
        IndexTree tree(file.storage.space(), file.table.page(), file.definition.physical[0]);
        IndexPosition position = tree.find({});
        const ByteView entry = *position.entry();
        tree.erase(keyOf(entry), rowOf(entry));
    });
    row("long value without its row", QStringLiteral("registro"), [](Damaged& file) {
        for (const PageNumber page : file.pagesOf(file.definition.columns[2].ownedMap))
            datapage::erase(file.pager.modify(page), 0);
    });
    row("chain stamp", QStringLiteral("selo"), [](Damaged& file) {
        for (const PageNumber page : file.pagesOf(file.definition.columns[12].ownedMap))
            ++file.pager.modify(page)[8];
    });
    row("nobody's rights", QStringLiteral("direitos"), [](Damaged& file) {
        TableFile rights(file.storage.space(), 3, "MSysACEs", {});
        rights.allowSystem();
        rights.reload({});
        const std::vector<RowId> rows = rowIdsOf(rights);
        rights.erase(rows.back());
        rights.erase(rows[rows.size() - 2]);
    });
}

void TestStorageDefinitions::selfCheckFinds()
{
    QFETCH(const std::function<void(Damaged&)>, damage);
    QFETCH(const QString, fault);
    QFETCH(const bool, harmless);
    MemoryStation storage = filledStation();
    QCOMPARE(storage.faults(), QString());
    storage->beginStatement();
    Damaged damaged{*storage};
    damage(damaged);
    storage->commitStatement();
    storage.reopen();
    QVERIFY2(storage.faults().contains(fault), qPrintable(storage.faults()));
    QCOMPARE(storage->verify().faults.empty(), harmless);
}

/// Access orders more letters than this engine does: a row that it entered can still be changed and deleted.
void TestStorageDefinitions::textOutsideTheOrder()
{
    MemoryStation storage;
    const std::array columns = {column("t", ColumnType::Text, 10), column("n", ColumnType::Long)};
    storage->createTable("T", columns, std::array{index("PorT", {{0, true}}), index("PorN", {{1, true}})});
    storage->beginStatement();
    std::vector<RowId> rows;
    for (int i = 0; i < 600; ++i)
        rows.push_back(storage->table("T")->insert(Cells{std::string(i < 3 ? "ab" : "outro"), i}));
    for (std::size_t i = 0; i < 3; ++i) {
        PageBytes& page = storage->space().pager.modify(rows[i].page);
        const datapage::Slot slot = datapage::slot(page, rows[i].slot);
        const Bytes from = toUtf16("ab");
        const Bytes to = toUtf16("日本");
        const auto end = page.begin() + static_cast<std::ptrdiff_t>(slot.offset + slot.length);
        const auto at =
            std::search(page.begin() + static_cast<std::ptrdiff_t>(slot.offset), end, from.begin(), from.end());
        QVERIFY(at != end);
        std::copy(to.begin(), to.end(), at);
    }
    storage->commitStatement();
    Table& table = *storage->table("T");
    table.erase(rows[0]);
    table.update(rows[1], Changes{{1, 5000}});
    table.update(rows[2], Changes{{0, std::string("latino")}});
    QCOMPARE(errorOf([&] { table.update(rows[2], Changes{{0, std::string("日本")}}); }), ErrorKind::TypeMismatch);
    table.erase(rows[1]);
    QCOMPARE(storage.faults(), QString());
    QCOMPARE(rowsOf(table).size(), std::size_t{598});
}

namespace {

/// Last entry below a page; fails where a node's entry for a child is another than that child's last.
Bytes lastBelow(const Pager& pager, PageNumber number, bool& exact)
{
    const IndexPage page = IndexPage::read(*pager.page(number));
    Bytes last;
    for (std::size_t i = 0; i < page.entries.size() + (page.leaf ? 0 : 1); ++i) {
        if (!page.leaf)
            last = lastBelow(pager, page.child(i), exact);
        if (i < page.entries.size()) {
            const ByteView entry = page.leafPart(i);
            exact = exact && (page.leaf || std::equal(last.begin(), last.end(), entry.begin(), entry.end()));
            last.assign(entry.begin(), entry.end());
        }
    }
    return last;
}

} // namespace

void TestStorageDefinitions::boundsFollowDeletions()
{
    MemoryStation storage;
    const std::array columns = {column("t", ColumnType::Text, 200)};
    storage->createTable("T", columns, std::array{index("PorT", {{0, true}})});
    storage->beginStatement();
    std::vector<RowId> rows;
    for (int i = 0; i < 2500; ++i)
        rows.push_back(
            storage->table("T")->insert(Cells{std::string(150, static_cast<char>('a' + i % 26)) + std::to_string(i)}));
    std::mt19937 engine(11);
    std::shuffle(rows.begin(), rows.end(), engine);
    const PageNumber root = storage->tableFile("T")->definition().physical[0].root;
    QVERIFY(IndexPage::read(*storage->space().pager.page(root)).level > 1);
    for (std::size_t i = 0; i < rows.size(); ++i) {
        storage->table("T")->erase(rows[i]);
        bool exact = true;
        if (i % 50 == 0)
            static_cast<void>(lastBelow(storage->space().pager, root, exact));
        QVERIFY2(exact, qPrintable(QString::number(i)));
    }
    storage->commitStatement();
    QCOMPARE(storage.faults(), QString());
}

QTEST_GUILESS_MAIN(TestStorageDefinitions)
#include "test_storage_definitions.moc"
