#include "accessfile/format/TableDefinition.h"

#include "accessfile/Error.h"
#include "accessfile/Storage.h"
#include "accessfile/format/TextCodec.h"

#include <algorithm>

namespace accessfile {

namespace {

constexpr std::uint32_t definitionMark = 1625;
constexpr std::uint32_t indexMark = 1923;
constexpr std::size_t columnEntry = 25;
constexpr std::size_t physicalEntry = 52;
constexpr std::size_t logicalEntry = 28;
constexpr std::size_t keySlots = 10;
constexpr std::uint16_t unusedKey = 0xFFFF;

/// Takes the buffer apart from front to back.
class Reader
{
public:
    explicit Reader(ByteView bytes)
        : m_bytes(bytes)
    {}
    ByteView take(std::size_t length)
    {
        if (length > m_bytes.size() - m_at)
            throwDamaged("definição de tabela incompleta");
        const ByteView part = m_bytes.subspan(m_at, length);
        m_at += length;
        return part;
    }
    std::string name()
    {
        std::string text;
        appendUtf16(take(load16(take(2).data())), text);
        return text;
    }
    [[nodiscard]] bool atEnd() const { return m_at + 2 > m_bytes.size() || load16(m_bytes.data() + m_at) == unusedKey; }

private:
    ByteView m_bytes;
    std::size_t m_at = 0;
};

void appendName(Bytes& to, const std::string& name)
{
    const Bytes text = toUtf16(name);
    append16(to, text.size());
    append(to, text);
}

ColumnDefinition readColumn(ByteView entry)
{
    ColumnDefinition column;
    column.entry.assign(entry.begin(), entry.end());
    column.type = static_cast<ColumnType>(entry[0]);
    column.id = load16(entry.data() + 5);
    column.slot = load16(entry.data() + 7);
    column.precision = entry[11];
    column.scale = entry[12];
    column.fixed = (entry[15] & 0x01) != 0;
    column.autonumber = (entry[15] & 0x04) != 0;
    column.autoGuid = (entry[15] & 0x40) != 0;
    column.compressible = (entry[16] & 0x01) != 0;
    column.fixedOffset = load16(entry.data() + 21);
    column.length = load16(entry.data() + 23);
    column.generalOrder = load16(entry.data() + 11) == 0x0409 && entry[13] == 0 && entry[14] == 0;
    return column;
}

PhysicalIndex readPhysical(ByteView entry)
{
    PhysicalIndex index;
    index.entry.assign(entry.begin(), entry.end());
    for (std::size_t i = 0; i < keySlots; ++i) {
        const std::uint8_t* at = entry.data() + 4 + 3 * i;
        if (load16(at) != unusedKey)
            index.columns.push_back({load16(at), at[2] != 0});
    }
    index.ownedMap = loadRowId(entry.data() + 34);
    index.root = load32(entry.data() + 38);
    index.unique = (entry[46] & 0x01) != 0;
    index.skipNulls = (entry[46] & 0x02) != 0;
    index.required = (entry[46] & 0x08) != 0;
    return index;
}

LogicalIndex readLogical(ByteView entry)
{
    LogicalIndex index;
    index.entry.assign(entry.begin(), entry.end());
    index.number = load32(entry.data() + 4);
    index.physical = load32(entry.data() + 8);
    index.relation = entry[12];
    index.kind = entry[23];
    return index;
}

std::size_t storedLength(const Column& column)
{
    switch (column.type) {
    case ColumnType::Bool:
    case ColumnType::Byte:
        return 1;
    case ColumnType::Int:
        return 2;
    case ColumnType::Long:
    case ColumnType::Float:
        return 4;
    case ColumnType::Money:
    case ColumnType::Double:
    case ColumnType::Date:
        return 8;
    case ColumnType::Guid:
        return 16;
    case ColumnType::Numeric:
        return 17;
    case ColumnType::Text:
        return static_cast<std::size_t>(2 * column.length);
    case ColumnType::Binary:
    case ColumnType::BigBinary:
        return static_cast<std::size_t>(column.length);
    case ColumnType::Ole:
    case ColumnType::Memo:
        return 0;
    }
    throw Error(ErrorKind::Syntax, "O tipo da coluna '" + column.name + "' não é conhecido.");
}

bool storedFixed(ColumnType type)
{
    switch (type) {
    case ColumnType::Text:
    case ColumnType::Memo:
    case ColumnType::Ole:
    case ColumnType::Binary:
    case ColumnType::BigBinary:
        return false;
    default:
        return true;
    }
}

} // namespace

void checkName(std::string_view name)
{
    const std::size_t length = toUtf16(name).size() / 2;
    const bool bad = std::any_of(name.begin(), name.end(), [](char c) {
        return static_cast<unsigned char>(c) < 0x20 || std::string_view(".!`[]").find(c) != std::string_view::npos;
    });
    if (length == 0 || length > longestName || bad || name.front() == ' ')
        throw Error(ErrorKind::Syntax, "O nome '" + std::string(name) + "' não é válido.");
}

TableDefinition TableDefinition::parse(ByteView buffer)
{
    TableDefinition definition;
    Reader reader(buffer);
    const ByteView head = reader.take(definition.fixed.size());
    std::copy(head.begin(), head.end(), definition.fixed.begin());
    const std::size_t columnCount = load16(head.data() + 45);
    const std::size_t logicalCount = load32(head.data() + 47);
    const std::size_t physicalCount = load32(head.data() + 51);
    if (columnCount > mostColumns || definition.maxColumns() > mostColumns + 1 || logicalCount > mostColumns ||
        physicalCount > mostColumns || definition.variableSlots() > mostColumns + 1)
        throwDamaged("contagens da definição de tabela");
    const ByteView counts = reader.take(12 * physicalCount);
    definition.counters.assign(counts.begin(), counts.end());
    for (std::size_t i = 0; i < columnCount; ++i)
        definition.columns.push_back(readColumn(reader.take(columnEntry)));
    for (ColumnDefinition& column : definition.columns)
        column.name = reader.name();
    for (std::size_t i = 0; i < physicalCount; ++i)
        definition.physical.push_back(readPhysical(reader.take(physicalEntry)));
    for (std::size_t i = 0; i < logicalCount; ++i)
        definition.logical.push_back(readLogical(reader.take(logicalEntry)));
    for (LogicalIndex& index : definition.logical)
        index.name = reader.name();
    while (!reader.atEnd()) {
        const ByteView item = reader.take(10);
        const int column = definition.columnById(load16(item.data()));
        if (column >= 0) {
            definition.columns[static_cast<std::size_t>(column)].ownedMap = loadRowId(item.data() + 2);
            definition.columns[static_cast<std::size_t>(column)].freeMap = loadRowId(item.data() + 6);
        }
    }
    static_cast<void>(reader.take(2));

    std::array<bool, mostColumns + 1> seen{};
    for (const ColumnDefinition& column : definition.columns) {
        if (column.id >= definition.maxColumns() || column.id > mostColumns || seen[column.id])
            throwDamaged("coluna '" + column.name + "'");
        seen[column.id] = true;
        if (column.fixed && column.type != ColumnType::Bool && column.fixedOffset + column.length > pageSize)
            throwDamaged("coluna '" + column.name + "'");
        if (!column.fixed && column.type != ColumnType::Bool && column.slot >= definition.variableSlots())
            throwDamaged("coluna '" + column.name + "'");
    }
    for (const LogicalIndex& index : definition.logical) {
        if (index.physical >= definition.physical.size())
            throwDamaged("índice '" + index.name + "'");
    }
    // Columns are listed in any order; their ids say the order of declaration.
    std::stable_sort(definition.columns.begin(), definition.columns.end(),
                     [](const ColumnDefinition& left, const ColumnDefinition& right) { return left.id < right.id; });
    return definition;
}

TableDefinition TableDefinition::makeNew(bool system)
{
    TableDefinition definition;
    store32(definition.fixed.data() + 12, definitionMark);
    store32(definition.fixed.data() + incrementAt, 1);
    definition.fixed[40] = system ? systemTable : userTable;
    return definition;
}

void PhysicalIndex::storePlaces()
{
    storeRowId(entry.data() + 34, ownedMap);
    store32(entry.data() + 38, root);
}

void TableDefinition::setMaps(RowId owned, RowId free)
{
    storeRowId(fixed.data() + 55, owned);
    storeRowId(fixed.data() + 59, free);
}

int TableDefinition::columnById(std::uint16_t id) const
{
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (columns[i].id == id)
            return static_cast<int>(i);
    }
    return -1;
}

std::size_t TableDefinition::fixedArea() const
{
    std::size_t length = 0;
    for (const ColumnDefinition& column : columns) {
        if (column.fixed && column.type != ColumnType::Bool)
            length = std::max<std::size_t>(length, std::size_t{column.fixedOffset} + column.length);
    }
    // With no variable trailer behind it, a row keeps at least two bytes here.
    return variableSlots() == 0 ? std::max<std::size_t>(length, 2) : length;
}

Bytes TableDefinition::compose() const
{
    Bytes buffer(fixed.begin(), fixed.end());
    append(buffer, counters);
    for (const ColumnDefinition& column : columns)
        append(buffer, column.entry);
    for (const ColumnDefinition& column : columns)
        appendName(buffer, column.name);
    for (const PhysicalIndex& index : physical)
        append(buffer, index.entry);
    for (const LogicalIndex& index : logical)
        append(buffer, index.entry);
    for (const LogicalIndex& index : logical)
        appendName(buffer, index.name);
    for (const ColumnDefinition& column : columns) {
        if (!column.isLongValue() || column.ownedMap.page == 0)
            continue;
        Bytes item(10);
        store16(item.data(), column.id);
        storeRowId(item.data() + 2, column.ownedMap);
        storeRowId(item.data() + 6, column.freeMap);
        append(buffer, item);
    }
    append16(buffer, unusedKey);
    store16(buffer.data() + 45, columns.size());
    store32(buffer.data() + 47, static_cast<std::uint32_t>(logical.size()));
    store32(buffer.data() + 51, static_cast<std::uint32_t>(physical.size()));
    store32(buffer.data() + 8, static_cast<std::uint32_t>(buffer.size()));
    return buffer;
}

void TableDefinition::addColumn(const Column& column, RowId longOwned, RowId longFree, std::size_t leastFixedOffset)
{
    checkName(column.name);
    const std::size_t id = maxColumns();
    if (id >= mostColumns)
        throw Error(ErrorKind::TooLong, "A tabela chegou ao máximo de 255 colunas.");
    const std::size_t length = storedLength(column);
    const bool sized = column.type == ColumnType::Text || column.type == ColumnType::Binary;
    if ((sized && (length == 0 || length > 510)) || (column.type == ColumnType::BigBinary && length > 4000))
        throw Error(ErrorKind::TooLong, "O tamanho da coluna '" + column.name + "' não é válido.");
    if (column.type == ColumnType::Numeric &&
        (column.precision < 1 || column.precision > 28 || column.scale > column.precision))
        throw Error(ErrorKind::TooLong, "A precisão da coluna '" + column.name + "' não é válida.");
    if (column.autonumber && column.type != ColumnType::Long && column.type != ColumnType::Guid)
        throw Error(ErrorKind::TypeMismatch, "A coluna '" + column.name + "' não pode ser numerada automaticamente.");

    ColumnDefinition added;
    added.name = column.name;
    added.type = column.type;
    added.fixed = storedFixed(column.type);
    Bytes entry(columnEntry, 0);
    entry[0] = static_cast<std::uint8_t>(column.type);
    store32(entry.data() + 1, definitionMark);
    store16(entry.data() + 5, id);
    store16(entry.data() + 7, variableSlots());
    store16(entry.data() + 9, id);
    if (column.type == ColumnType::Numeric) {
        entry[11] = column.precision;
        entry[12] = column.scale;
    } else {
        store16(entry.data() + 11, 0x0409);
    }
    unsigned flags = added.fixed ? 0x03U : 0x02U;
    if (column.autonumber)
        flags |= column.type == ColumnType::Guid ? 0x40U : 0x04U;
    entry[15] = static_cast<std::uint8_t>(flags);
    entry[16] = added.isText() ? 1 : 0;
    if (added.fixed && column.type != ColumnType::Bool) {
        std::size_t offset = leastFixedOffset;
        for (const ColumnDefinition& each : columns) {
            if (each.fixed && each.type != ColumnType::Bool)
                offset = std::max<std::size_t>(offset, std::size_t{each.fixedOffset} + each.length);
        }
        store16(entry.data() + 21, offset);
    }
    store16(entry.data() + 23, length);
    ColumnDefinition parsed = readColumn(entry);
    parsed.name = column.name;
    parsed.ownedMap = longOwned;
    parsed.freeMap = longFree;
    columns.push_back(std::move(parsed));
    store16(fixed.data() + 41, id + 1);
    if (!added.fixed)
        store16(fixed.data() + 43, variableSlots() + 1);
    const std::size_t declared =
        2 + fixedArea() + (variableSlots() == 0 ? 0 : 2 * (variableSlots() + 1) + 2) + (maxColumns() + 7) / 8;
    if (declared > longestRow)
        throw Error(ErrorKind::TooLong, "As colunas da tabela passam do tamanho máximo de um registro.");
}

void TableDefinition::orderSlots()
{
    std::uint16_t slot = 0;
    for (const bool longValues : {false, true}) {
        for (ColumnDefinition& column : columns) {
            if (column.fixed || column.isLongValue() != longValues)
                continue;
            column.slot = slot++;
            store16(column.entry.data() + 7, column.slot);
        }
    }
}

void TableDefinition::addIndex(const Index& index, const std::vector<KeyColumn>& keyColumns, RowId map, PageNumber root)
{
    checkName(index.name);
    if (keyColumns.empty() || keyColumns.size() > keySlots)
        throw Error(ErrorKind::Syntax, "Um índice tem de 1 a 10 colunas.");
    if (logical.size() >= mostLogicalIndexes)
        throw Error(ErrorKind::TooLong, "A tabela chegou ao máximo de 32 índices.");
    Bytes entry(physicalEntry, 0);
    store32(entry.data(), indexMark);
    for (std::size_t i = 0; i < keySlots; ++i) {
        std::uint8_t* at = entry.data() + 4 + 3 * i;
        store16(at, i < keyColumns.size() ? keyColumns[i].id : unusedKey);
        at[2] = i < keyColumns.size() && keyColumns[i].ascending ? 1 : 0;
    }
    storeRowId(entry.data() + 34, map);
    store32(entry.data() + 38, root);
    entry[46] =
        static_cast<std::uint8_t>(0x80 | (index.unique || index.primary ? 0x01 : 0) | (index.ignoreNulls ? 0x02 : 0) |
                                  (index.required || index.primary ? 0x08 : 0));
    Bytes block(logicalEntry, 0);
    std::uint32_t number = 0;
    for (const LogicalIndex& each : logical)
        number = std::max(number, each.number + 1);
    store32(block.data(), definitionMark);
    store32(block.data() + 4, number);
    store32(block.data() + 8, static_cast<std::uint32_t>(physical.size()));
    store32(block.data() + 13, 0xFFFFFFFF);
    block[21] = 4;
    block[22] = 4;
    block[23] = index.primary ? 1 : 0;
    LogicalIndex added = readLogical(block);
    added.name = index.name;
    physical.push_back(readPhysical(entry));
    counters.resize(counters.size() + 12);
    const auto place = std::find_if(logical.begin(), logical.end(), [&](const LogicalIndex& each) {
        return foldName(each.name) > foldName(index.name);
    });
    logical.insert(place, std::move(added));
}

} // namespace accessfile
