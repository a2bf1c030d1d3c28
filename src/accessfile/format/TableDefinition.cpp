#include "accessfile/format/TableDefinition.h"

#include "accessfile/Error.h"
#include "accessfile/Storage.h"
#include "accessfile/format/TextCodec.h"

#include <algorithm>

namespace accessfile {

namespace {

constexpr std::size_t longestText = 510;
constexpr std::size_t longestBigBinary = 4000;
constexpr int mostDigits = 28;

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
    [[nodiscard]] bool atEnd() const
    {
        return m_at + 2 > m_bytes.size() || load16(m_bytes.data() + m_at) == definition::end;
    }

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
    using namespace columnentry;
    ColumnDefinition column;
    column.entry.assign(entry.begin(), entry.end());
    column.type = static_cast<ColumnType>(entry[0]);
    column.id = load16(entry.data() + idAt);
    column.slot = load16(entry.data() + slotAt);
    column.precision = entry[precisionAt];
    column.scale = entry[scaleAt];
    column.fixed = (entry[flagsAt] & fixedFlag) != 0;
    column.autonumber = (entry[flagsAt] & autonumberFlag) != 0;
    column.autoGuid = (entry[flagsAt] & autoGuidFlag) != 0;
    column.compressible = (entry[moreFlagsAt] & compressibleFlag) != 0;
    column.fixedOffset = load16(entry.data() + fixedOffsetAt);
    column.length = load16(entry.data() + lengthAt);
    column.generalOrder =
        load16(entry.data() + languageAt) == generalLanguage && load16(entry.data() + orderVersionAt) == 0;
    return column;
}

PhysicalIndex readPhysical(ByteView entry)
{
    using namespace physicalentry;
    PhysicalIndex index;
    index.entry.assign(entry.begin(), entry.end());
    for (std::size_t i = 0; i < keySlots; ++i) {
        const std::uint8_t* at = entry.data() + keysAt + keyLength * i;
        if (load16(at) != noColumn)
            index.columns.push_back({load16(at), at[ascendingAt] != 0});
    }
    index.ownedMap = loadRowId(entry.data() + ownedMapAt);
    index.root = load32(entry.data() + rootAt);
    index.unique = (entry[flagsAt] & uniqueFlag) != 0;
    index.skipNulls = (entry[flagsAt] & skipNullsFlag) != 0;
    index.required = (entry[flagsAt] & requiredFlag) != 0;
    return index;
}

LogicalIndex readLogical(ByteView entry)
{
    using namespace logicalentry;
    LogicalIndex index;
    index.entry.assign(entry.begin(), entry.end());
    index.number = load32(entry.data() + numberAt);
    index.physical = load32(entry.data() + physicalAt);
    index.relation = entry[relationAt];
    index.kind = entry[kindAt];
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
    using namespace definition;
    TableDefinition parsed;
    Reader reader(buffer);
    const ByteView head = reader.take(parsed.fixed.size());
    std::copy(head.begin(), head.end(), parsed.fixed.begin());
    const std::size_t columnCount = load16(head.data() + columnCountAt);
    const std::size_t logicalCount = load32(head.data() + logicalCountAt);
    const std::size_t physicalCount = load32(head.data() + physicalCountAt);
    if (columnCount > mostColumns || parsed.maxColumns() > mostColumns + 1 || logicalCount > mostColumns ||
        physicalCount > mostColumns || parsed.variableSlots() > mostColumns + 1)
        throwDamaged("contagens da definição de tabela");
    const ByteView counts = reader.take(counterLength * physicalCount);
    parsed.counters.assign(counts.begin(), counts.end());
    for (std::size_t i = 0; i < columnCount; ++i)
        parsed.columns.push_back(readColumn(reader.take(columnentry::length)));
    for (ColumnDefinition& column : parsed.columns)
        column.name = reader.name();
    for (std::size_t i = 0; i < physicalCount; ++i)
        parsed.physical.push_back(readPhysical(reader.take(physicalentry::length)));
    for (std::size_t i = 0; i < logicalCount; ++i)
        parsed.logical.push_back(readLogical(reader.take(logicalentry::length)));
    for (LogicalIndex& index : parsed.logical)
        index.name = reader.name();
    while (!reader.atEnd()) {
        const ByteView item = reader.take(longmaps::length);
        const int column = parsed.columnById(load16(item.data()));
        if (column >= 0) {
            parsed.columns[static_cast<std::size_t>(column)].ownedMap = loadRowId(item.data() + longmaps::ownedMapAt);
            parsed.columns[static_cast<std::size_t>(column)].freeMap = loadRowId(item.data() + longmaps::freeMapAt);
        }
    }
    static_cast<void>(reader.take(2));

    std::array<bool, mostColumns + 1> seen{};
    for (const ColumnDefinition& column : parsed.columns) {
        if (column.id >= parsed.maxColumns() || column.id > mostColumns || seen[column.id])
            throwDamaged("coluna '" + column.name + "'");
        seen[column.id] = true;
        if (column.fixed && column.type != ColumnType::Bool && column.fixedOffset + column.length > pageSize)
            throwDamaged("coluna '" + column.name + "'");
        if (!column.fixed && column.type != ColumnType::Bool && column.slot >= parsed.variableSlots())
            throwDamaged("coluna '" + column.name + "'");
    }
    for (const LogicalIndex& index : parsed.logical) {
        if (index.physical >= parsed.physical.size())
            throwDamaged("índice '" + index.name + "'");
    }
    // Columns are listed in any order; their ids say the order of declaration.
    std::stable_sort(parsed.columns.begin(), parsed.columns.end(),
                     [](const ColumnDefinition& left, const ColumnDefinition& right) { return left.id < right.id; });
    return parsed;
}

TableDefinition TableDefinition::makeNew(bool system)
{
    TableDefinition made;
    store32(made.fixed.data() + definition::markAt, definition::mark);
    store32(made.fixed.data() + definition::incrementAt, 1);
    made.fixed[definition::kindAt] = system ? definition::systemTable : definition::userTable;
    return made;
}

void PhysicalIndex::storePlaces()
{
    storeRowId(entry.data() + physicalentry::ownedMapAt, ownedMap);
    store32(entry.data() + physicalentry::rootAt, root);
}

void TableDefinition::setMaps(RowId owned, RowId free)
{
    storeRowId(fixed.data() + definition::ownedMapAt, owned);
    storeRowId(fixed.data() + definition::freeMapAt, free);
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
        Bytes item(longmaps::length);
        store16(item.data(), column.id);
        storeRowId(item.data() + longmaps::ownedMapAt, column.ownedMap);
        storeRowId(item.data() + longmaps::freeMapAt, column.freeMap);
        append(buffer, item);
    }
    append16(buffer, definition::end);
    store16(buffer.data() + definition::columnCountAt, columns.size());
    store32(buffer.data() + definition::logicalCountAt, static_cast<std::uint32_t>(logical.size()));
    store32(buffer.data() + definition::physicalCountAt, static_cast<std::uint32_t>(physical.size()));
    store32(buffer.data() + definition::lengthAt, static_cast<std::uint32_t>(buffer.size()));
    return buffer;
}

void TableDefinition::addColumn(const Column& column, RowId longOwned, RowId longFree, std::size_t leastFixedOffset)
{
    using namespace columnentry;
    checkName(column.name);
    const std::size_t id = maxColumns();
    if (id >= mostColumns)
        throw Error(ErrorKind::TooLong, "A tabela chegou ao máximo de 255 colunas.");
    const std::size_t length = storedLength(column);
    const bool sized = column.type == ColumnType::Text || column.type == ColumnType::Binary;
    if ((sized && (length == 0 || length > longestText)) ||
        (column.type == ColumnType::BigBinary && length > longestBigBinary))
        throw Error(ErrorKind::TooLong, "O tamanho da coluna '" + column.name + "' não é válido.");
    if (column.type == ColumnType::Numeric &&
        (column.precision < 1 || column.precision > mostDigits || column.scale > column.precision))
        throw Error(ErrorKind::TooLong, "A precisão da coluna '" + column.name + "' não é válida.");
    if (column.autonumber && column.type != ColumnType::Long && column.type != ColumnType::Guid)
        throw Error(ErrorKind::TypeMismatch, "A coluna '" + column.name + "' não pode ser numerada automaticamente.");

    ColumnDefinition added;
    added.name = column.name;
    added.type = column.type;
    added.fixed = storedFixed(column.type);
    Bytes entry(columnentry::length, 0);
    entry[0] = static_cast<std::uint8_t>(column.type);
    store32(entry.data() + columnentry::markAt, definition::mark);
    store16(entry.data() + idAt, id);
    store16(entry.data() + slotAt, variableSlots());
    store16(entry.data() + secondIdAt, id);
    if (column.type == ColumnType::Numeric) {
        entry[precisionAt] = column.precision;
        entry[scaleAt] = column.scale;
    } else {
        store16(entry.data() + languageAt, generalLanguage);
    }
    unsigned flags = usualFlag;
    if (added.fixed)
        flags |= fixedFlag;
    if (column.autonumber)
        flags |= column.type == ColumnType::Guid ? autoGuidFlag : autonumberFlag;
    entry[flagsAt] = static_cast<std::uint8_t>(flags);
    entry[moreFlagsAt] = added.isText() ? compressibleFlag : 0;
    if (added.fixed && column.type != ColumnType::Bool) {
        std::size_t offset = leastFixedOffset;
        for (const ColumnDefinition& each : columns) {
            if (each.fixed && each.type != ColumnType::Bool)
                offset = std::max<std::size_t>(offset, std::size_t{each.fixedOffset} + each.length);
        }
        store16(entry.data() + fixedOffsetAt, offset);
    }
    store16(entry.data() + columnentry::lengthAt, length);
    ColumnDefinition parsed = readColumn(entry);
    parsed.name = column.name;
    parsed.ownedMap = longOwned;
    parsed.freeMap = longFree;
    columns.push_back(std::move(parsed));
    store16(fixed.data() + definition::maxColumnsAt, id + 1);
    if (!added.fixed)
        store16(fixed.data() + definition::variableSlotsAt, variableSlots() + 1);
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
            store16(column.entry.data() + columnentry::slotAt, column.slot);
        }
    }
}

void TableDefinition::addIndex(const Index& index, const std::vector<KeyColumn>& keyColumns, RowId map, PageNumber root)
{
    checkName(index.name);
    if (keyColumns.empty() || keyColumns.size() > physicalentry::keySlots)
        throw Error(ErrorKind::Syntax, "Um índice tem de 1 a 10 colunas.");
    if (logical.size() >= mostLogicalIndexes)
        throw Error(ErrorKind::TooLong, "A tabela chegou ao máximo de 32 índices.");
    Bytes entry(physicalentry::length, 0);
    store32(entry.data(), physicalentry::mark);
    for (std::size_t i = 0; i < physicalentry::keySlots; ++i) {
        std::uint8_t* at = entry.data() + physicalentry::keysAt + physicalentry::keyLength * i;
        store16(at, i < keyColumns.size() ? keyColumns[i].id : physicalentry::noColumn);
        at[physicalentry::ascendingAt] = i < keyColumns.size() && keyColumns[i].ascending ? 1 : 0;
    }
    storeRowId(entry.data() + physicalentry::ownedMapAt, map);
    store32(entry.data() + physicalentry::rootAt, root);
    unsigned flags = physicalentry::usualFlag;
    if (index.unique || index.primary)
        flags |= physicalentry::uniqueFlag;
    if (index.ignoreNulls)
        flags |= physicalentry::skipNullsFlag;
    if (index.required || index.primary)
        flags |= physicalentry::requiredFlag;
    entry[physicalentry::flagsAt] = static_cast<std::uint8_t>(flags);
    Bytes block(logicalentry::length, 0);
    std::uint32_t number = 0;
    for (const LogicalIndex& each : logical)
        number = std::max(number, each.number + 1);
    store32(block.data(), definition::mark);
    store32(block.data() + logicalentry::numberAt, number);
    store32(block.data() + logicalentry::physicalAt, static_cast<std::uint32_t>(physical.size()));
    store32(block.data() + logicalentry::relatedIndexAt, logicalentry::noIndex);
    block[logicalentry::cascadeUpdatesAt] = logicalentry::noCascade;
    block[logicalentry::cascadeDeletionsAt] = logicalentry::noCascade;
    block[logicalentry::kindAt] = index.primary ? 1 : 0;
    LogicalIndex added = readLogical(block);
    added.name = index.name;
    physical.push_back(readPhysical(entry));
    counters.resize(counters.size() + definition::counterLength);
    const auto place = std::find_if(logical.begin(), logical.end(), [&](const LogicalIndex& each) {
        return foldName(each.name) > foldName(index.name);
    });
    logical.insert(place, std::move(added));
}

} // namespace accessfile
