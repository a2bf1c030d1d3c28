#include "accessfile/AccessTestTools.h"
#include "accessfile/sql/Operators.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <set>

using namespace accessfile;
using namespace accesstest;

namespace {

/// What a table must hold, kept beside it in plain maps.
struct Model
{
    std::vector<Column> columns;
    std::vector<Index> indexes;
    std::map<RowId, std::vector<Value>> rows;
    std::set<std::string> taken; ///< Keys of `rows` in the unique indexes.
    std::int32_t lastNumber = 0;

    /// Keys of a row in the unique indexes, equal for values that an index takes for equal; a null makes none.
    [[nodiscard]] std::set<std::string> keysOf(const std::vector<Value>& row) const
    {
        std::set<std::string> keys;
        for (const Index& index : indexes) {
            std::string key = index.name;
            bool anyNull = !index.unique;
            for (const IndexColumn& part : index.columns) {
                const Value& cell = row[static_cast<std::size_t>(part.column)];
                const auto* text = std::get_if<std::string>(&cell);
                key += '\x1f' + (text != nullptr ? textSortKey(*text).value() : cellText(cell));
                anyNull = anyNull || isNull(cell);
            }
            if (!anyNull)
                keys.insert(key);
        }
        return keys;
    }
    void set(RowId id, std::vector<Value> row)
    {
        remove(id);
        taken.merge(keysOf(row));
        rows[id] = std::move(row);
    }
    void remove(RowId id)
    {
        if (!rows.contains(id))
            return;
        for (const std::string& key : keysOf(rows[id]))
            taken.erase(key);
        rows.erase(id);
    }
    /// Whether a row may stand beside the others.
    [[nodiscard]] bool accepts(const std::vector<Value>& row, std::optional<RowId> except) const
    {
        const std::set<std::string> own = except ? keysOf(rows.at(*except)) : std::set<std::string>();
        const std::set<std::string> keys = keysOf(row);
        return std::none_of(keys.begin(), keys.end(),
                            [&](const std::string& key) { return taken.contains(key) && !own.contains(key); });
    }
};

struct TableShape
{
    const char* name;
    std::vector<Column> columns;
    std::vector<Index> indexes;
};

std::vector<TableShape> shapes()
{
    using enum ColumnType;
    std::vector<TableShape> all = {
        {"Leitura",
         {column("codigo", Long), column("nome", Text, 60), column("quando", Date), column("bomba", Long),
          column("obs", Memo)},
         {index("Chave", {{0, true}}, true), index("NomeData", {{1, true}, {2, false}}), index("Bomba", {{3, true}}),
          index("Data", {{2, true}})}},
        {"Cadastro",
         {column("sigla", Text, 12), column("a", Text, 255), column("b", Text, 255), column("c", Text, 255),
          column("documento", Ole), column("valor", Money), column("d", Text, 255), column("e", Text, 255)},
         {index("Sigla", {{0, true}}, true), index("Valor", {{5, false}}), index("AB", {{1, false}, {2, true}})}},
        {"Numeros",
         {column("n", Long), column("t", Text, 8), column("quando", Date), column("ligado", Bool),
          column("fator", Double), column("byte", Byte), column("curto", Int), column("exato", Numeric),
          column("chave", Guid), column("bits", Binary, 30), column("simples", Float)},
         {index("Composto", {{0, false}, {1, true}, {2, true}}, true), index("Guid", {{8, true}}),
          index("Bits", {{9, true}, {3, false}}), index("Fator", {{4, true}}), index("Exato", {{7, true}}),
          index("Curto", {{6, false}, {5, true}, {10, true}})}}};
    all[0].columns[0].autonumber = true;
    all[1].indexes[1].ignoreNulls = true;
    all[2].columns[7].precision = 12;
    all[2].columns[7].scale = 2;
    return all;
}

class Workload
{
public:
    Workload(unsigned seed, std::size_t cachePages)
        : m_options{.password = "8282", .cachePages = cachePages}
        , m_storage(m_options)
        , m_maker(seed)
    {
        for (const TableShape& shape : shapes())
            make(shape);
    }

    void step()
    {
        auto entry = m_models.begin();
        std::advance(entry, static_cast<std::ptrdiff_t>(m_maker.below(m_models.size())));
        auto& [name, model] = *entry;
        Table& table = *m_storage->table(name);
        const std::size_t kind = m_maker.below(1000);
        if (kind < 5)
            define(name, model);
        else if (kind < 25)
            undone(table, model);
        else if (kind < 60)
            search(table, model);
        else if (model.rows.size() < 40 + m_maker.below(700))
            insert(table, model);
        else if (kind % 3 == 0)
            erase(table, model);
        else
            update(table, model);
    }

    [[nodiscard]] QString difference()
    {
        const QString faults = m_storage.faults();
        if (!faults.isEmpty())
            return faults;
        for (const auto& [name, model] : m_models) {
            const Table& table = *m_storage->table(name);
            std::map<RowId, std::vector<Value>> rows;
            for (const auto cursor = table.scan(); cursor->next();) {
                for (std::size_t i = 0; i < table.columns().size(); ++i)
                    rows[cursor->rowId()].push_back(cursor->value(static_cast<int>(i)));
            }
            if (rows != model.rows)
                return QString::fromStdString(name + ": rows differ");
        }
        return m_fault;
    }

    void reopen() { m_storage.reopen(m_options); }
    MemoryStation& storage() { return m_storage; }

private:
    void make(const TableShape& shape)
    {
        m_storage->createTable(shape.name, shape.columns, shape.indexes);
        m_models[shape.name] = {shape.columns, shape.indexes, {}, {}, 0};
    }

    std::vector<Value> randomRow(const Model& model)
    {
        std::vector<Value> row;
        for (const Column& each : model.columns) {
            // Long texts now and then, so that rows outgrow their page.
            Value value = m_maker.value(each);
            if (each.length == 255 && std::holds_alternative<std::string>(value) && m_maker.below(3) == 0)
                value = std::string(100 + m_maker.below(150), static_cast<char>('a' + m_maker.below(26)));
            row.push_back(std::move(value));
        }
        return row;
    }

    void insert(Table& table, Model& model)
    {
        std::vector<Value> row = randomRow(model);
        Cells given(row.begin(), row.end());
        std::int32_t last = model.lastNumber;
        for (std::size_t i = 0; i < row.size(); ++i) {
            if (!model.columns[i].autonumber)
                continue;
            row[i] = ++last;
            given[i].reset();
        }
        const bool accepted = model.accepts(row, std::nullopt);
        RowId id;
        const auto error = errorOf([&] { id = table.insert(given); });
        expect(accepted, error, "insert");
        if (!error) {
            model.set(id, std::move(row));
            model.lastNumber = last;
        }
    }

    RowId anyRow(const Model& model)
    {
        auto row = model.rows.begin();
        std::advance(row, static_cast<std::ptrdiff_t>(m_maker.below(model.rows.size())));
        return row->first;
    }

    void update(Table& table, Model& model)
    {
        const RowId id = anyRow(model);
        std::vector<Value> row = model.rows[id];
        const std::vector<Value> fresh = randomRow(model);
        std::map<int, Value> changes;
        for (std::size_t i = m_maker.below(4) + 1; i > 0; --i) {
            const std::size_t position = m_maker.below(row.size());
            if (!model.columns[position].autonumber)
                changes[static_cast<int>(position)] = row[position] = fresh[position];
        }
        const Changes list(changes.begin(), changes.end());
        const auto error = errorOf([&] { table.update(id, list); });
        expect(model.accepts(row, id), error, "update");
        if (!error)
            model.set(id, std::move(row));
    }

    void erase(Table& table, Model& model)
    {
        const RowId id = anyRow(model);
        table.erase(id);
        model.remove(id);
    }

    /// Several changes that are taken back.
    void undone(Table& table, Model copy)
    {
        m_storage->beginStatement();
        for (int i = 0; i < 8; ++i) {
            if (copy.rows.size() < 20 || i % 2 == 0)
                insert(table, copy);
            else if (i % 3 == 0)
                erase(table, copy);
            else
                update(table, copy);
        }
        m_storage->rollbackStatement();
    }

    void define(const std::string& name, Model& model)
    {
        const std::size_t kind = m_maker.below(4);
        if (kind == 0 && model.columns.size() < 24) {
            static constexpr std::array types = {ColumnType::Text, ColumnType::Long, ColumnType::Memo, ColumnType::Bool,
                                                 ColumnType::Double};
            const ColumnType type = types[m_maker.below(types.size())];
            const Column added =
                column(("c" + std::to_string(model.columns.size())).c_str(), type, type == ColumnType::Text ? 40 : 0);
            m_storage->addColumn(name, added);
            model.columns.push_back(added);
            for (auto& [id, row] : model.rows)
                row.push_back(type == ColumnType::Bool ? Value(false) : Value(Null{}));
        } else if (kind == 1 && model.indexes.size() < 12) {
            const std::size_t position = m_maker.below(model.columns.size());
            const ColumnType type = model.columns[position].type;
            if (type == ColumnType::Ole || type == ColumnType::Memo)
                return;
            Index added = index(("i" + std::to_string(model.indexes.size())).c_str(),
                                {{static_cast<int>(position), type == ColumnType::Numeric || m_maker.below(2) == 0}});
            added.ignoreNulls = m_maker.below(2) == 0;
            m_storage->createIndex(name, added);
            model.indexes.push_back(added);
        } else if (kind == 2 && m_maker.below(6) == 0) {
            m_storage->dropTable(name);
            for (const TableShape& shape : shapes()) {
                if (shape.name == name)
                    make(shape);
            }
        }
    }

    /// A range over an index finds the rows that a look at all of them finds.
    void search(const Table& table, const Model& model)
    {
        const std::size_t chosen = m_maker.below(model.indexes.size());
        const int first = table.indexes()[chosen].columns.front().column;
        const Column& key = table.columns()[static_cast<std::size_t>(first)];
        if (table.indexes()[chosen].ignoreNulls || !table.usableForRange(static_cast<int>(chosen)))
            return;
        KeyRange range;
        const auto bound = [&](std::optional<Value>& to, bool& inclusive) {
            inclusive = m_maker.below(2) == 0;
            Value value = m_maker.below(2) == 0 && !model.rows.empty()
                              ? model.rows.at(anyRow(model))[static_cast<std::size_t>(first)]
                              : m_maker.value(key);
            if (!isNull(value))
                to = std::move(value);
        };
        bound(range.lower, range.lowerInclusive);
        bound(range.upper, range.upperInclusive);
        std::set<RowId> expected;
        for (const auto& [id, row] : model.rows) {
            const Value& cell = row[static_cast<std::size_t>(first)];
            const auto inside = [&](const Value& limit, bool inclusive, bool upper) {
                const int order = upper ? compare(cell, limit) : compare(limit, cell);
                return order < 0 || (order == 0 && inclusive);
            };
            if (!isNull(cell) && (!range.lower || inside(*range.lower, range.lowerInclusive, false)) &&
                (!range.upper || inside(*range.upper, range.upperInclusive, true)))
                expected.insert(id);
        }
        std::set<RowId> found;
        for (const auto cursor = table.range(static_cast<int>(chosen), range); cursor->next();)
            found.insert(cursor->rowId());
        if (found != expected)
            m_fault += QString::fromStdString("range over " + table.name() + "." + key.name + "\n");
    }

    /// Order of two values of one type; of the types that a range can be over.
    static int compare(const Value& left, const Value& right)
    {
        if (const auto* text = std::get_if<std::string>(&left))
            return textSortKey(*text)->compare(*textSortKey(std::get<std::string>(right)));
        if (const auto* guid = std::get_if<Guid>(&left))
            return std::memcmp(guid->bytes.data(), std::get<Guid>(right).bytes.data(), guid->bytes.size());
        // Truth is -1 and comes before falsehood.
        return sql::toDouble(left) < sql::toDouble(right) ? -1 : sql::toDouble(left) > sql::toDouble(right) ? 1 : 0;
    }

    void expect(bool accepted, std::optional<ErrorKind> error, const char* doing)
    {
        if (accepted != !error || (error && *error != ErrorKind::DuplicateKey))
            m_fault += QStringLiteral("%1: accepted by one side only\n").arg(QLatin1String(doing));
    }

    OpenOptions m_options;
    MemoryStation m_storage;
    std::map<std::string, Model> m_models;
    ValueMaker m_maker;
    QString m_fault;
};

} // namespace

/// A long seeded run of everything against a model in memory.
class TestStorageWorkload : public QObject
{
    Q_OBJECT

private slots:
    void agreesWithTheModel_data();
    void agreesWithTheModel();
    void deepIndexShrinks_data();
    void deepIndexShrinks();
};

void TestStorageWorkload::agreesWithTheModel_data()
{
    QTest::addColumn<unsigned>("seed");
    QTest::addColumn<int>("cachePages");
    QTest::newRow("usual cache") << 1U << 4096;
    QTest::newRow("small cache") << 2U << 16;
    QTest::newRow("third file") << 3U << 200;
}

void TestStorageWorkload::agreesWithTheModel()
{
    QFETCH(const unsigned, seed);
    QFETCH(const int, cachePages);
    constexpr int steps = 7000;
    constexpr int between = 500;
    Workload workload(seed, static_cast<std::size_t>(cachePages));
    for (int i = 1; i <= steps; ++i) {
        workload.step();
        if (i % between == 0) {
            QCOMPARE(workload.difference(), QString());
            workload.reopen();
        }
    }
    QCOMPARE(workload.difference(), QString());
    if (!exporterInstalled())
        QSKIP("mdb-export is not installed.");
    QTemporaryDir folder;
    QFile copy(folder.filePath(QStringLiteral("posto.mdb")));
    QVERIFY(copy.open(QIODevice::WriteOnly));
    const Bytes bytes = workload.storage().bytes();
    copy.write(QByteArrayView(bytes.data(), bytes.size()).toByteArray());
    copy.close();
    std::size_t cells = 0;
    QCOMPARE(exportDifference(*workload.storage(), copy.fileName(), &cells), QString());
    qInfo("%d steps, %zu pages, %zu cells exported", steps, bytes.size() / pageSize, cells);
}

void TestStorageWorkload::deepIndexShrinks_data()
{
    QTest::addColumn<int>("order");
    QTest::newRow("from the front") << 0;
    QTest::newRow("from the back") << 1;
    QTest::newRow("at random") << 2;
}

void TestStorageWorkload::deepIndexShrinks()
{
    QFETCH(const int, order);
    MemoryStation storage;
    // Long keys that differ at their beginning: few to a page, so that the tree grows to four levels.
    storage->createTable("T", std::array{column("t", ColumnType::Text, 255)}, std::array{index("I", {{0, true}})});
    Table& table = *storage->table("T");
    std::mt19937 engine(4);
    std::set<unsigned> numbers;
    while (numbers.size() < 2600)
        numbers.insert(static_cast<unsigned>(engine() % 90000 + 10000));
    std::vector<unsigned> shuffled(numbers.begin(), numbers.end());
    std::shuffle(shuffled.begin(), shuffled.end(), engine);
    storage->beginStatement();
    std::map<unsigned, RowId> rows;
    for (const unsigned number : shuffled)
        rows[number] = table.insert(Cells{std::to_string(number) + std::string(245, 'k')});
    storage->commitStatement();
    QCOMPARE(storage.faults(), QString());
    std::vector<RowId> ids;
    for (const auto& [number, id] : rows)
        ids.push_back(id);
    if (order == 1)
        std::reverse(ids.begin(), ids.end());
    if (order == 2)
        std::shuffle(ids.begin(), ids.end(), engine);
    for (std::size_t done = 0; done < ids.size();) {
        storage->beginStatement();
        for (int i = 0; i < 100; ++i)
            table.erase(ids[done++]);
        storage->commitStatement();
        // Closely watched towards the end, where levels go away.
        if (done % 500 == 0 || done > 2300)
            QCOMPARE(storage.faults(), QString());
    }
    QCOMPARE(rowsOf(table).size(), std::size_t{0});
}

QTEST_GUILESS_MAIN(TestStorageWorkload)
#include "test_storage_workload.moc"
