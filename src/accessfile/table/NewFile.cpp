#include "accessfile/Error.h"
#include "accessfile/Value.h"
#include "accessfile/format/DataPage.h"
#include "accessfile/format/TextCodec.h"
#include "accessfile/table/DefinitionPages.h"
#include "accessfile/table/NewTable.h"
#include "accessfile/table/StorageFile.h"

#include <algorithm>
#include <random>

// A blank file: header, global page maps and the four tables of the catalog, laid out as Access lays them out.
namespace accessfile {

namespace {

constexpr PageNumber mapsPage = 1;
constexpr PageNumber objectsPage = 2;
constexpr PageNumber rightsPage = 3;
constexpr PageNumber queriesPage = 4;
constexpr PageNumber relationshipsPage = 5;
constexpr std::size_t mapRow = 69;
constexpr std::size_t mapHeader = 5;
constexpr int longText = 255;
constexpr int longBinary = 510;

constexpr std::int32_t tablesId = 0x0F000001;
constexpr std::int32_t databasesId = 0x0F000002;
constexpr std::int32_t relationshipsId = 0x0F000003;
constexpr std::int32_t containersId = 0x0F000000;
constexpr std::int32_t databaseId = 0x10000000;
constexpr auto systemObject = static_cast<std::int32_t>(0x80000000);

/// Accounts as they stand in every file that no workgroup protects.
using Account = std::array<std::uint8_t, 2>;
constexpr Account admin = {0x03, 0x01};
constexpr Account users = {0x02, 0x01};
constexpr Account engine = {0x02, 0x03};
constexpr Account creator = {0x02, 0x04};

Column column(const char* name, ColumnType type, int length = 0)
{
    Column result;
    result.name = name;
    result.type = type;
    result.length = length;
    return result;
}

Index index(const char* name, std::vector<int> columns, bool primary = false)
{
    Index result;
    result.name = name;
    result.primary = primary;
    for (const int each : columns)
        result.columns.push_back({each, true});
    return result;
}

struct SystemTable
{
    PageNumber page;
    std::vector<Column> columns;
    std::vector<Index> indexes;
    std::uint8_t indexFlags; ///< Of all its indexes.
};

std::vector<SystemTable> systemTables()
{
    using enum ColumnType;
    return {
        {objectsPage,
         {column("Id", Long), column("ParentId", Long), column("Name", Text, longText), column("Type", Int),
          column("DateCreate", Date), column("DateUpdate", Date), column("Owner", Binary, longBinary),
          column("Flags", Long), column("Database", Memo), column("Connect", Memo),
          column("ForeignName", Text, longText), column("RmtInfoShort", Binary, longBinary), column("RmtInfoLong", Ole),
          column("Lv", Ole), column("LvProp", Ole), column("LvModule", Ole), column("LvExtra", Ole)},
         {index("ParentIdName", {1, 2}), index("Id", {0}, true)},
         physicalentry::usualFlag | physicalentry::uniqueFlag},
        {rightsPage,
         {column("ObjectId", Long), column("SID", Binary, longBinary), column("ACM", Long),
          column("FInheritable", Bool)},
         {index("ObjectId", {0})},
         physicalentry::usualFlag | physicalentry::requiredFlag},
        {queriesPage,
         {column("ObjectId", Long), column("Attribute", Byte), column("Order", Binary, longBinary),
          column("Name1", Text, longText), column("Name2", Text, longText), column("Expression", Memo),
          column("Flag", Int), column("LvExtra", Long)},
         {index("ObjectIdAttribute", {0, 1, 2}, true)},
         physicalentry::usualFlag | physicalentry::uniqueFlag},
        {relationshipsPage,
         {column("szRelationship", Text, longText), column("grbit", Long), column("ccolumn", Long),
          column("icolumn", Long), column("szObject", Text, longText), column("szColumn", Text, longText),
          column("szReferencedObject", Text, longText), column("szReferencedColumn", Text, longText)},
         {index("szRelationship", {0}), index("szObject", {4}), index("szReferencedObject", {6})},
         physicalentry::usualFlag | physicalentry::skipNullsFlag}};
}

/// Entries of the catalog's own tables carry flags of their own, and their columns stand in the order of their names.
void markSystem(TableDefinition& definition, std::uint8_t indexFlags)
{
    using namespace columnentry;
    for (ColumnDefinition& each : definition.columns) {
        const bool account = each.name == "Owner" || each.name == "SID";
        each.entry[flagsAt] = static_cast<std::uint8_t>(each.entry[flagsAt] | systemFlag | (account ? accountFlag : 0));
        each.entry[moreFlagsAt] = 0;
        store16(each.entry.data() + secondIdAt, 0);
    }
    for (PhysicalIndex& each : definition.physical)
        each.entry[physicalentry::flagsAt] = indexFlags;
    std::sort(definition.columns.begin(), definition.columns.end(),
              [](const ColumnDefinition& left, const ColumnDefinition& right) {
                  return foldName(left.name) < foldName(right.name);
              });
}

class CatalogWriter
{
public:
    explicit CatalogWriter(TableSpace& space)
        : m_space(space)
        , m_key(space.header.accountKey())
        , m_now(localSecond())
    {}

    void writeObjects()
    {
        struct Object
        {
            const char* name;
            std::int32_t id;
            std::int32_t parent;
            std::int32_t type;
            Account owner;
        };
        constexpr std::array<Object, 8> objects = {{{"Tables", tablesId, containersId, 3, engine},
                                                    {"Databases", databasesId, containersId, 3, engine},
                                                    {"Relationships", relationshipsId, containersId, 3, engine},
                                                    {"MSysDb", databaseId, databasesId, 2, admin},
                                                    {"MSysObjects", objectsPage, tablesId, 1, engine},
                                                    {"MSysACEs", rightsPage, tablesId, 1, engine},
                                                    {"MSysQueries", queriesPage, tablesId, 1, engine},
                                                    {"MSysRelationships", relationshipsPage, tablesId, 1, engine}}};
        TableFile table = open(objectsPage, "MSysObjects");
        for (const Object& object : objects) {
            std::vector<std::optional<Value>> row(table.columns().size());
            const auto set = [&](const char* name, Value value) {
                row[static_cast<std::size_t>(table.columnIndex(name))] = std::move(value);
            };
            set("Id", object.id);
            set("ParentId", object.parent);
            set("Name", std::string(object.name));
            set("Type", object.type);
            set("DateCreate", DateTime{m_now});
            set("DateUpdate", DateTime{m_now});
            set("Owner", masked(object.owner));
            set("Flags", systemObject);
            table.insert(row);
        }
    }

    void writeRights()
    {
        struct Right
        {
            std::int32_t object;
            std::int32_t rights;
            bool inheritable;
            Account account;
        };
        constexpr std::array<Right, 16> rights = {{{objectsPage, 0x60000, false, admin},
                                                   {rightsPage, 0x60000, false, admin},
                                                   {queriesPage, 0x60000, false, admin},
                                                   {relationshipsPage, 0xE0000, false, admin},
                                                   {tablesId, 0xF00FE, true, creator},
                                                   {tablesId, 0x60001, false, admin},
                                                   {relationshipsId, 0xF00FE, true, creator},
                                                   {relationshipsId, 0x60001, false, admin},
                                                   {databasesId, 0x60000, false, admin},
                                                   {databaseId, 0x6000E, false, admin},
                                                   {databaseId, 0x0000E, false, users},
                                                   {queriesPage, 0x00014, false, users},
                                                   {relationshipsPage, 0x00014, false, users},
                                                   {objectsPage, 0x00014, false, users},
                                                   {tablesId, 0xFFEFF, true, users},
                                                   {relationshipsId, 0xFFFFF, true, users}}};
        TableFile table = open(rightsPage, "MSysACEs");
        for (const Right& right : rights) {
            const std::array<std::optional<Value>, 4> row = {Value(right.object), Value(masked(right.account)),
                                                             Value(right.rights), Value(right.inheritable)};
            table.insert(row);
        }
    }

private:
    [[nodiscard]] TableFile open(PageNumber page, const char* name)
    {
        TableFile table(m_space, page, name, {});
        table.allowSystem();
        table.reload({});
        return table;
    }
    [[nodiscard]] Bytes masked(const Account& account) const
    {
        Bytes bytes(account.begin(), account.end());
        applyRc4(m_key, bytes);
        return bytes;
    }

    TableSpace& m_space;
    std::uint32_t m_key;
    double m_now;
};

/// Header and global page maps: what a file needs before pages can be taken from it.
void writeFirstPages(FileDevice& device, std::string_view password)
{
    Header header = Header::makeNew(localTime());
    header.setPassword(toUtf16(password));
    device.write(0, header.stored());
    PageBytes page{};
    datapage::initialise(page, mapsPage);
    Bytes map(mapRow, 0xFF);
    std::fill_n(map.begin(), mapHeader, std::uint8_t{0});
    map[mapHeader] = 0xFC;
    static_cast<void>(datapage::append(page, map));
    static_cast<void>(datapage::append(page, Bytes(mapRow, 0)));
    device.write(pageSize, page);
}

void writeCatalog(FileSystem& files, const std::filesystem::path& file)
{
    PagerOptions alone;
    alone.company = Company::Alone;
    TableSpace space(files, file, alone);
    ChangeGuard change(space);
    change.start();
    std::vector<SystemTable> tables = systemTables();
    for (SystemTable& table : tables)
        table.page = space.allocator.allocate();
    PageNumber mapPage = 0;
    for (const SystemTable& table : tables) {
        TableDefinition definition = declareTable(table.columns, table.indexes, true);
        giveTablePages(space, definition, table.page, mapPage);
        markSystem(definition, table.indexFlags);
        writeDefinition(definition, space.pager, space.allocator);
    }
    CatalogWriter catalog(space);
    catalog.writeObjects();
    catalog.writeRights();
    change.finish();
}

/// A name beside `file` that no other program is using.
std::filesystem::path draftName(const std::filesystem::path& file)
{
    std::filesystem::path draft = file;
    draft += "-novo-" + std::to_string(std::random_device{}());
    return draft;
}

} // namespace

void createStorage(FileSystem& files, const std::filesystem::path& file, std::string_view password)
{
    if (files.exists(file)) {
        const std::u8string name = file.u8string();
        throw Error(ErrorKind::Duplicate, "O arquivo '" + std::string(name.begin(), name.end()) + "' já existe.");
    }
    // The file gets its name when it is whole.
    const std::filesystem::path draft = draftName(file);
    {
        const auto device = files.createNew(draft);
        try {
            writeFirstPages(*device, password);
        } catch (...) {
            files.remove(draft);
            throw;
        }
    }
    try {
        writeCatalog(files, draft);
        files.publish(draft, file);
    } catch (...) {
        files.remove(draft);
        throw;
    }
}

void Storage::create(const std::filesystem::path& file, std::string_view password)
{
    createStorage(nativeFileSystem(), file, password);
}

} // namespace accessfile
