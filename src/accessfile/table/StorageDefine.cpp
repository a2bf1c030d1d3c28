#include "accessfile/Error.h"
#include "accessfile/Value.h"
#include "accessfile/format/TextCodec.h"
#include "accessfile/table/DefinitionPages.h"
#include "accessfile/table/NewTable.h"
#include "accessfile/table/StorageFile.h"

#include <algorithm>

// Changes of the catalog: tables, columns, indexes, the password.
namespace accessfile {

namespace {

constexpr PageNumber rightsPage = 3;
constexpr std::int32_t tablesId = 0x0F000001;
constexpr std::int32_t databaseId = 0x10000000;
constexpr std::int32_t fullRights = 0x000FFEFF;
constexpr std::size_t accountLength = 2;
constexpr std::array<std::uint8_t, accountLength> creatorAccount = {0x02, 0x04};

Bytes bytesAt(const Cursor& cursor, int column)
{
    Value value = cursor.value(column);
    Bytes* bytes = std::get_if<Bytes>(&value);
    return bytes == nullptr ? Bytes() : std::move(*bytes);
}

std::int32_t numberAt(const Cursor& cursor, int column)
{
    const Value value = cursor.value(column);
    const auto* number = std::get_if<std::int32_t>(&value);
    return number == nullptr ? 0 : *number;
}

/// A row of a system table, filled by column name.
class SystemRow
{
public:
    explicit SystemRow(TableFile& table)
        : m_table(table)
        , m_cells(table.columns().size())
    {}
    SystemRow& set(const char* column, Value value)
    {
        m_cells[position(m_table, column)] = std::move(value);
        return *this;
    }
    void insert() { m_table.insert(m_cells); }
    static std::size_t position(const TableFile& table, const char* column)
    {
        const int found = table.columnIndex(column);
        if (found < 0)
            throwDamaged("catálogo de tabelas");
        return static_cast<std::size_t>(found);
    }

private:
    TableFile& m_table;
    std::vector<std::optional<Value>> m_cells;
};

int columnOf(const TableFile& table, const char* column)
{
    return static_cast<int>(SystemRow::position(table, column));
}

} // namespace

void StorageFile::define(const std::function<void()>& work)
{
    const bool own = !m_space.pager.inUnit();
    if (own)
        beginStatement();
    m_definitionsChanged = true;
    try {
        work();
        readCatalog();
    } catch (...) {
        m_space.halfway = true;
        if (own)
            rollbackStatement();
        throw;
    }
    if (own)
        commitStatement();
}

TableFile& StorageFile::definable(const std::string& table)
{
    TableFile* const found = tableFile(table);
    if (found == nullptr)
        throw Error(ErrorKind::MissingTable, "A tabela '" + table + "' não existe.");
    found->checkWritable();
    return *found;
}

TableFile StorageFile::rights()
{
    TableFile table(m_space, rightsPage, "MSysACEs", {});
    table.allowSystem();
    table.reload({});
    return table;
}

void StorageFile::checkNewText(const Column& column) const
{
    const bool isText = column.type == ColumnType::Text || column.type == ColumnType::Memo;
    if (isText && !m_space.header.generalOrder())
        throw Error(ErrorKind::ReadOnly, "O arquivo usa outra ordem de classificação: colunas de texto não podem ser "
                                         "acrescentadas a ele.");
}

void StorageFile::createTable(const std::string& name, std::span<const Column> columns, std::span<const Index> indexes)
{
    if (isReadOnly())
        throw Error(ErrorKind::ReadOnly, m_space.pager.readOnlyReason());
    checkName(name);
    if (find(name) != nullptr)
        throw Error(ErrorKind::Duplicate, "A tabela '" + name + "' já existe.");
    TableDefinition definition = declareTable(columns, indexes, false);
    definition.orderSlots();
    Properties properties({});
    for (const Column& column : columns) {
        checkNewText(column);
        properties.addColumn(column);
    }
    define([&] {
        const PageNumber page = m_space.allocator.allocate();
        PageNumber mapPage = 0;
        giveTablePages(m_space, definition, page, mapPage);
        writeDefinition(definition, m_space.pager, m_space.allocator);
        addCatalogRow(name, page, properties.blob());
        addRights(static_cast<std::int32_t>(page));
        m_tables.erase(page);
    });
}

void StorageFile::addCatalogRow(const std::string& name, PageNumber page, const Bytes& properties)
{
    const Bytes owner = ownerOf(databaseId);
    SystemRow row(m_catalog);
    const DateTime now{localSecond()};
    row.set("Id", static_cast<std::int32_t>(page)).set("ParentId", tablesId).set("Name", name);
    row.set("Type", CatalogEntry::tableType).set("Flags", 0).set("DateCreate", now).set("DateUpdate", now);
    if (!owner.empty())
        row.set("Owner", owner);
    if (!properties.empty())
        row.set("LvProp", properties);
    row.insert();
}

void StorageFile::addRights(std::int32_t object)
{
    // Accounts whose rights pass on to new tables keep them; the owner gets what the file lets a creator have.
    TableFile table = rights();
    const int objectColumn = columnOf(table, "ObjectId");
    const int accountColumn = columnOf(table, "SID");
    const int rightsColumn = columnOf(table, "ACM");
    const int inheritColumn = columnOf(table, "FInheritable");
    Bytes creator(creatorAccount.begin(), creatorAccount.end());
    applyRc4(m_space.header.accountKey(), creator);
    std::int32_t ownerRights = fullRights;
    std::vector<std::pair<Bytes, std::int32_t>> given;
    for (const auto cursor = table.scan(); cursor->next();) {
        if (numberAt(*cursor, objectColumn) != tablesId || cursor->value(inheritColumn) != Value(true))
            continue;
        Bytes account = bytesAt(*cursor, accountColumn);
        const std::int32_t granted = numberAt(*cursor, rightsColumn);
        if (account == creator)
            ownerRights = granted;
        else if (!account.empty() &&
                 std::none_of(given.begin(), given.end(), [&](const auto& each) { return each.first == account; }))
            given.emplace_back(std::move(account), granted);
    }
    const Bytes owner = ownerOf(object);
    if (!owner.empty() &&
        std::none_of(given.begin(), given.end(), [&](const auto& each) { return each.first == owner; }))
        given.emplace_back(owner, ownerRights);
    for (const auto& [account, granted] : given)
        SystemRow(table)
            .set("ObjectId", object)
            .set("SID", account)
            .set("ACM", granted)
            .set("FInheritable", false)
            .insert();
}

Bytes StorageFile::ownerOf(std::int32_t object)
{
    const int idColumn = columnOf(m_catalog, "Id");
    const int ownerColumn = columnOf(m_catalog, "Owner");
    for (const auto cursor = m_catalog.scan(); cursor->next();) {
        if (numberAt(*cursor, idColumn) == object)
            return bytesAt(*cursor, ownerColumn);
    }
    return {};
}

void StorageFile::touchCatalogRow(PageNumber page, std::optional<Bytes> properties)
{
    const auto entry = std::find_if(m_entries.begin(), m_entries.end(), [&](const CatalogEntry& each) {
        return each.type == CatalogEntry::tableType && static_cast<PageNumber>(each.id) == page;
    });
    if (entry == m_entries.end())
        throwDamaged("catálogo de tabelas");
    std::vector<std::pair<int, Value>> changes;
    changes.emplace_back(columnOf(m_catalog, "DateUpdate"), DateTime{localSecond()});
    if (properties)
        changes.emplace_back(columnOf(m_catalog, "LvProp"), std::move(*properties));
    m_catalog.update(entry->row, changes);
}

void StorageFile::addColumn(const std::string& table, const Column& column)
{
    TableFile& target = definable(table);
    checkNewText(column);
    Properties properties = target.properties();
    const Bytes before = properties.blob();
    properties.addColumn(column);
    Bytes after = properties.blob();
    define([&] {
        target.addColumn(column);
        touchCatalogRow(target.page(), after == before ? std::nullopt : std::optional<Bytes>(after));
        target.reload(after);
    });
}

void StorageFile::createIndex(const std::string& table, const Index& index)
{
    TableFile& target = definable(table);
    define([&] {
        target.addIndex(index);
        touchCatalogRow(target.page(), std::nullopt);
        target.reload(target.properties().blob());
    });
}

void StorageFile::dropTable(const std::string& table)
{
    TableFile& target = definable(table);
    define([&] {
        const PageNumber page = target.page();
        const auto object = static_cast<std::int32_t>(page);
        TableFile given = rights();
        const int objectColumn = columnOf(given, "ObjectId");
        std::vector<RowId> rows;
        for (const auto cursor = given.scan(); cursor->next();) {
            if (numberAt(*cursor, objectColumn) == object)
                rows.push_back(cursor->rowId());
        }
        for (const RowId row : rows)
            given.erase(row);
        target.releasePages();
        const auto entry = std::find_if(m_entries.begin(), m_entries.end(), [&](const CatalogEntry& each) {
            return each.type == CatalogEntry::tableType && each.id == object;
        });
        m_catalog.erase(entry->row);
        m_tables.erase(page);
    });
}

void StorageFile::setPassword(std::string_view password)
{
    if (isReadOnly())
        throw Error(ErrorKind::ReadOnly, m_space.pager.readOnlyReason());
    Header changed = m_space.header;
    changed.setPassword(toUtf16(password));
    const auto maskAnew = [&](TableFile& table, const char* column) {
        const int account = columnOf(table, column);
        std::vector<std::pair<RowId, Bytes>> rows;
        for (const auto cursor = table.scan(); cursor->next();)
            rows.emplace_back(cursor->rowId(), bytesAt(*cursor, account));
        for (auto& [row, bytes] : rows) {
            if (bytes.empty())
                continue;
            applyRc4(m_space.header.accountKey(), bytes);
            applyRc4(changed.accountKey(), bytes);
            const std::pair<int, Value> change(account, std::move(bytes));
            table.update(row, {&change, 1});
        }
    };
    define([&] {
        maskAnew(m_catalog, "Owner");
        TableFile given = rights();
        maskAnew(given, "SID");
        m_space.pager.modify(0) = changed.stored();
        m_space.header = changed;
    });
}

} // namespace accessfile
