#include "accessfile/Database.h"

#include "accessfile/Error.h"
#include "accessfile/sql/Assignment.h"
#include "accessfile/sql/Binder.h"
#include "accessfile/sql/Evaluator.h"
#include "accessfile/sql/Messages.h"
#include "accessfile/sql/Parser.h"
#include "accessfile/sql/Planner.h"
#include "accessfile/sql/Select.h"

#include <algorithm>
#include <set>
#include <utility>

namespace accessfile {

namespace {

using namespace sql;

Table& requireTable(Storage& storage, std::string_view name)
{
    Table* const table = storage.table(name);
    if (table == nullptr)
        throw missingTable(name);
    return *table;
}

Value defaultValue(const Column& column, std::string_view expression, const RegionalConversions& regional)
{
    Parser parser(expression);
    ExpressionPointer parsed = parser.loneExpression();
    Binder binder(nullptr, {}, expression, regional);
    binder.bind(parsed);
    binder.finish();
    return assign(Evaluator(regional).value(*parsed), column, regional);
}

using Changes = std::vector<std::pair<int, Value>>;

/// Keeps the rows of a SELECT.
class RowCollector : public RowSink
{
public:
    void columns(const std::vector<ResultColumn>& /*columns*/) override {}
    void cell(const Value& value) override { m_row.push_back(value); }
    void textCell(std::string_view utf8) override { m_row.emplace_back(std::string(utf8)); }
    void endRow(std::optional<RowId> /*row*/) override { m_rows.push_back(std::exchange(m_row, {})); }

    [[nodiscard]] const std::vector<std::vector<Value>>& rows() const { return m_rows; }

private:
    std::vector<Value> m_row;
    std::vector<std::vector<Value>> m_rows;
};

/// Runs the statements that are not SELECT, inside one unit.
class Executor
{
public:
    Executor(Storage& storage, std::string_view source, const RegionalConversions& regional)
        : m_storage(storage)
        , m_source(source)
        , m_regional(regional)
    {}

    std::size_t operator()(SelectStatement& /*statement*/) { throw invalidStatement(); }
    std::size_t operator()(InsertStatement& statement);
    std::size_t operator()(UpdateStatement& statement);
    std::size_t operator()(DeleteStatement& statement);
    std::size_t operator()(CreateTableStatement& statement);
    std::size_t operator()(AddColumnStatement& statement);
    std::size_t operator()(CreateIndexStatement& statement);
    std::size_t operator()(DropTableStatement& statement);

private:
    [[nodiscard]] static std::vector<int> insertTargets(const Table& table, const InsertStatement& statement,
                                                        std::size_t values);
    void insertRow(Table& table, const std::vector<int>& targets, const std::vector<Value>& values);
    std::size_t insertSelected(Table& table, InsertStatement& statement);
    [[nodiscard]] static Index resolve(const IndexDefinition& definition, std::span<const Column> columns,
                                       std::string_view table);
    [[nodiscard]] static int find(std::span<const Column> columns, std::string_view name);

    Storage& m_storage;
    std::string_view m_source;
    const RegionalConversions& m_regional;
};

std::vector<int> Executor::insertTargets(const Table& table, const InsertStatement& statement, std::size_t values)
{
    std::vector<int> targets;
    if (statement.columns.empty()) {
        for (std::size_t i = 0; i < table.columns().size(); ++i)
            targets.push_back(static_cast<int>(i));
    }
    for (const std::string& name : statement.columns) {
        const int column = table.columnIndex(name);
        if (column < 0)
            throw unknownInsertField(name);
        if (std::find(targets.begin(), targets.end(), column) != targets.end())
            throw duplicateDestination(name);
        targets.push_back(column);
    }
    if (targets.size() != values)
        throw valueCount();
    return targets;
}

std::size_t Executor::operator()(InsertStatement& statement)
{
    Table& table = requireTable(m_storage, statement.table);
    if (statement.source)
        return insertSelected(table, statement);
    const std::vector<int> targets = insertTargets(table, statement, statement.values.size());
    Binder binder(nullptr, {}, m_source, m_regional);
    for (ExpressionPointer& value : statement.values)
        binder.bind(value);
    binder.finish();
    Evaluator evaluator(m_regional);
    std::vector<Value> values;
    values.reserve(targets.size());
    for (const ExpressionPointer& value : statement.values)
        values.push_back(evaluator.value(*value));
    insertRow(table, targets, values);
    return 1;
}

/// All rows are read before the first is added: a table may be added to itself.
std::size_t Executor::insertSelected(Table& table, InsertStatement& statement)
{
    SelectStatement& source = *statement.source;
    const Table* const from = source.table.empty() ? nullptr : &requireTable(m_storage, source.table);
    const Selection selection(source, from, m_source, m_regional);
    const std::vector<int> targets = insertTargets(table, statement, selection.columnCount());
    RowCollector collected;
    selection.run(collected);
    for (const std::vector<Value>& row : collected.rows())
        insertRow(table, targets, row);
    return collected.rows().size();
}

void Executor::insertRow(Table& table, const std::vector<int>& targets, const std::vector<Value>& values)
{
    std::vector<std::optional<Value>> row(table.columns().size());
    for (std::size_t i = 0; i < targets.size(); ++i) {
        const auto column = static_cast<std::size_t>(targets[i]);
        row[column] = assign(values[i], table.columns()[column], m_regional);
    }
    table.insert(row);
}

std::size_t Executor::operator()(UpdateStatement& statement)
{
    Table& table = requireTable(m_storage, statement.table);
    Binder binder(&table, statement.alias, m_source, m_regional);
    std::vector<int> targets;
    for (auto& [name, value] : statement.changes) {
        const int column = binder.column(*name);
        if (column >= 0 && std::find(targets.begin(), targets.end(), column) != targets.end())
            throw duplicateDestination(name->name);
        targets.push_back(column);
        binder.bind(value);
    }
    if (statement.where != nullptr)
        binder.bind(statement.where);
    binder.finish();
    for (const int target : targets) {
        const Column& column = table.columns()[static_cast<std::size_t>(target)];
        if (column.autonumber)
            throw notUpdatable(column.name);
    }

    // All new values are known before the first row changes: an update never meets its own rows again.
    std::vector<std::pair<RowId, Changes>> rows;
    Evaluator evaluator(m_regional);
    forEachRow(table, statement.where.get(), evaluator, [&](const Cursor& cursor) {
        Changes changes;
        changes.reserve(targets.size());
        for (std::size_t i = 0; i < targets.size(); ++i)
            changes.emplace_back(targets[i], assign(evaluator.value(*statement.changes[i].second),
                                                    table.columns()[static_cast<std::size_t>(targets[i])], m_regional));
        rows.emplace_back(cursor.rowId(), std::move(changes));
    });
    for (const auto& [row, changes] : rows)
        table.update(row, changes);
    return rows.size();
}

std::size_t Executor::operator()(DeleteStatement& statement)
{
    Table& table = requireTable(m_storage, statement.table);
    if (statement.where != nullptr) {
        Binder binder(&table, {}, m_source, m_regional);
        binder.bind(statement.where);
        binder.finish();
    }
    std::vector<RowId> rows;
    Evaluator evaluator(m_regional);
    forEachRow(table, statement.where.get(), evaluator, [&](const Cursor& cursor) { rows.push_back(cursor.rowId()); });
    for (const RowId row : rows)
        table.erase(row);
    return rows.size();
}

int Executor::find(std::span<const Column> columns, std::string_view name)
{
    const auto found =
        std::find_if(columns.begin(), columns.end(), [&](const Column& column) { return sameName(column.name, name); });
    return found == columns.end() ? -1 : static_cast<int>(found - columns.begin());
}

Index Executor::resolve(const IndexDefinition& definition, std::span<const Column> columns, std::string_view table)
{
    Index index;
    index.name = definition.name;
    index.unique = definition.unique;
    index.primary = definition.primary;
    index.required = definition.required;
    index.ignoreNulls = definition.ignoreNulls;
    for (const auto& [name, ascending] : definition.columns) {
        const int column = find(columns, name);
        if (column < 0)
            throw unknownField(name, table);
        index.columns.push_back({column, ascending});
    }
    return index;
}

std::size_t Executor::operator()(CreateTableStatement& statement)
{
    if (m_storage.table(statement.table) != nullptr)
        throw tableExists(statement.table);
    for (std::size_t i = 0; i < statement.columns.size(); ++i) {
        if (find(statement.columns, statement.columns[i].name) != static_cast<int>(i))
            throw fieldExists(statement.columns[i].name, statement.table);
    }
    std::vector<Index> indexes;
    for (const IndexDefinition& definition : statement.indexes) {
        const bool second = definition.primary && std::any_of(indexes.begin(), indexes.end(),
                                                              [](const Index& index) { return index.primary; });
        if (second)
            throw primaryKeyExists();
        if (std::any_of(indexes.begin(), indexes.end(),
                        [&](const Index& index) { return sameName(index.name, definition.name); }))
            throw indexExists(definition.name, statement.table);
        indexes.push_back(resolve(definition, statement.columns, statement.table));
    }
    m_storage.createTable(statement.table, statement.columns, indexes);
    return 0;
}

std::size_t Executor::operator()(AddColumnStatement& statement)
{
    for (const ColumnDefinition& definition : statement.columns) {
        const Table& table = requireTable(m_storage, statement.table);
        if (table.columnIndex(definition.column.name) >= 0)
            throw fieldExists(definition.column.name, table.name());
        const std::string name = table.name();
        m_storage.addColumn(name, definition.column);
        for (const IndexDefinition& index : definition.indexes) {
            CreateIndexStatement create{name, index};
            (*this)(create);
        }
    }
    return 0;
}

std::size_t Executor::operator()(CreateIndexStatement& statement)
{
    const Table& table = requireTable(m_storage, statement.table);
    for (const Index& index : table.indexes()) {
        if (sameName(index.name, statement.index.name))
            throw indexExists(statement.index.name, table.name());
        if (index.primary && statement.index.primary)
            throw primaryKeyExists();
    }
    const std::string name = table.name();
    m_storage.createIndex(name, resolve(statement.index, table.columns(), name));
    return 0;
}

std::size_t Executor::operator()(DropTableStatement& statement)
{
    m_storage.dropTable(requireTable(m_storage, statement.table).name());
    return 0;
}

SelectStatement parseSelect(std::string_view text)
{
    Statement statement = Parser(text).statement();
    SelectStatement* const select = std::get_if<SelectStatement>(&statement);
    if (select == nullptr)
        throw invalidStatement();
    return std::move(*select);
}

const Table* tableOfSelect(Storage& storage, const SelectStatement& select)
{
    return select.table.empty() ? nullptr : &requireTable(storage, select.table);
}

/// Columns by name with their converted values.
Changes assignments(const Table& table, const std::vector<std::pair<std::string, Value>>& values,
                    const RegionalConversions& regional)
{
    std::set<std::string> unknown;
    Changes changes;
    for (const auto& [name, value] : values) {
        const int column = table.columnIndex(name);
        if (column < 0)
            unknown.insert(foldCase(name));
        else if (unknown.empty())
            changes.emplace_back(column, assign(value, table.columns()[static_cast<std::size_t>(column)], regional));
    }
    if (!unknown.empty())
        throw tooFewParameters(unknown.size());
    return changes;
}

} // namespace

Database::Database(std::unique_ptr<Storage> storage, const RegionalConversions& regional)
    : m_storage(std::move(storage))
    , m_regional(regional)
{
    m_storage->setDefaultEvaluator([this](const Column& column, std::string_view expression) {
        return defaultValue(column, expression, m_regional);
    });
}

Database::~Database() = default;

void Database::select(std::string_view statement, RowSink& sink)
{
    m_storage->read([&] {
        SelectStatement parsed = parseSelect(statement);
        const Selection selection(parsed, tableOfSelect(*m_storage, parsed), statement, m_regional);
        selection.run(sink);
    });
}

std::size_t Database::execute(std::string_view statement)
{
    Statement first = Parser(statement).statement();
    if (SelectStatement* const select = std::get_if<SelectStatement>(&first)) {
        // Its rows have no receiver here; that it could run is all there is to know.
        m_storage->read([&] { Selection(*select, tableOfSelect(*m_storage, *select), statement, m_regional); });
        return 0;
    }
    std::size_t rows = 0;
    std::optional<Statement> parsed(std::move(first));
    m_storage->change([&] {
        // Parsed anew for each further run: names are bound to the tables as they are then.
        Statement run = parsed ? std::move(*parsed) : Parser(statement).statement();
        parsed.reset();
        rows = std::visit(Executor(*m_storage, statement, m_regional), run);
    });
    return rows;
}

std::string Database::tableOf(std::string_view select)
{
    std::string name;
    m_storage->read([&] {
        SelectStatement parsed = parseSelect(select);
        const Table* const table = tableOfSelect(*m_storage, parsed);
        if (table == nullptr)
            throw syntaxError("FROM clause");
        const Selection check(parsed, table, select, m_regional);
        name = table->name();
    });
    return name;
}

void Database::addRow(std::string_view table, const std::vector<std::pair<std::string, Value>>& values)
{
    m_storage->change([&] {
        Table& target = requireTable(*m_storage, table);
        std::vector<std::optional<Value>> row(target.columns().size());
        for (auto& [column, value] : assignments(target, values, m_regional))
            row[static_cast<std::size_t>(column)] = std::move(value);
        target.insert(row);
    });
}

void Database::updateRow(std::string_view table, RowId row, const std::vector<std::pair<std::string, Value>>& changes,
                         const std::function<bool()>& unchanged)
{
    m_storage->change([&] {
        if (unchanged && !unchanged())
            throw Error(ErrorKind::Conflict,
                        "Outro programa alterou ou excluiu este registro depois que ele foi lido. Nada foi gravado.");
        Table& target = requireTable(*m_storage, table);
        target.update(row, assignments(target, changes, m_regional));
    });
}

} // namespace accessfile
