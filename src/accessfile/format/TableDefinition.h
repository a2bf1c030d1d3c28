#pragma once

#include "accessfile/format/DataPage.h"

#include <array>
#include <string>
#include <vector>

namespace accessfile {

struct Column;
struct Index;

inline constexpr std::size_t mostColumns = 255;
inline constexpr std::size_t mostLogicalIndexes = 32;
inline constexpr std::size_t longestRow = 4060;
inline constexpr std::size_t longestName = 64;

/// A column as declared. `entry` keeps the stored bytes, unknown ones included.
struct ColumnDefinition
{
    Bytes entry;
    std::string name;
    ColumnType type = ColumnType::Text;
    std::uint16_t id = 0;
    std::uint16_t slot = 0;
    std::uint16_t fixedOffset = 0;
    std::uint16_t length = 0; ///< Bytes.
    std::uint8_t precision = 0;
    std::uint8_t scale = 0;
    bool fixed = false;
    bool autonumber = false;
    bool autoGuid = false;
    bool compressible = false;
    bool generalOrder = true; ///< Text whose keys this engine can compute.
    RowId ownedMap;           ///< Of long values; page 0 when there is none.
    RowId freeMap;

    [[nodiscard]] bool isText() const { return type == ColumnType::Text || type == ColumnType::Memo; }
    [[nodiscard]] bool isLongValue() const { return type == ColumnType::Memo || type == ColumnType::Ole; }
};

struct KeyColumn
{
    std::uint16_t id = 0;
    bool ascending = true;
};

struct PhysicalIndex
{
    Bytes entry;
    std::vector<KeyColumn> columns;
    RowId ownedMap;
    PageNumber root = 0;
    bool unique = false;
    bool skipNulls = false;
    bool required = false;

    /// Writes `ownedMap` and `root` into `entry`.
    void storePlaces();
};

struct LogicalIndex
{
    Bytes entry;
    std::string name;
    std::uint32_t number = 0;
    std::uint32_t physical = 0;
    std::uint8_t relation = 0; ///< 0: takes part in no relationship.
    std::uint8_t kind = 0;     ///< 0 plain, 1 primary, 2 foreign key.
};

/// The definition of a table: one buffer, which table/DefinitionPages reads from and writes over a chain of pages.
class TableDefinition
{
public:
    /// Raises Damaged for a definition that cannot be followed.
    static TableDefinition parse(ByteView buffer);
    static TableDefinition makeNew(bool system);

    [[nodiscard]] Bytes compose() const;

    [[nodiscard]] std::size_t maxColumns() const { return load16(fixed.data() + 41); }
    [[nodiscard]] std::size_t variableSlots() const { return load16(fixed.data() + 43); }
    [[nodiscard]] RowId ownedMap() const { return loadRowId(fixed.data() + 55); }
    [[nodiscard]] RowId freeMap() const { return loadRowId(fixed.data() + 59); }
    [[nodiscard]] bool isSystem() const { return fixed[40] != userTable; }
    void setMaps(RowId owned, RowId free);
    [[nodiscard]] int columnById(std::uint16_t id) const;
    /// Bytes of the fixed area of a row.
    [[nodiscard]] std::size_t fixedArea() const;

    /// Appends a column, which gets the next id and place. Long values get their maps from the caller first.
    void addColumn(const Column& column, RowId longOwned, RowId longFree, std::size_t leastFixedOffset);
    /// Puts the slots of long values behind those of other columns; only for a table without rows.
    void orderSlots();
    void addIndex(const Index& index, const std::vector<KeyColumn>& columns, RowId map, PageNumber root);

    std::array<std::uint8_t, 63> fixed{};
    Bytes counters; ///< 12 bytes for each physical index.
    std::vector<ColumnDefinition> columns;
    std::vector<PhysicalIndex> physical;
    std::vector<LogicalIndex> logical;
    std::vector<PageNumber> pages;

    static constexpr std::uint8_t userTable = 0x4E;
    static constexpr std::uint8_t systemTable = 0x53;
    // Places in the first page of what changes with every row.
    static constexpr std::size_t rowCountAt = 16;
    static constexpr std::size_t lastNumberAt = 20;
    static constexpr std::size_t incrementAt = 24;
    static constexpr std::size_t countersAt = 63;
};

/// Name that a table, column or index may have; raises Syntax otherwise.
void checkName(std::string_view name);

} // namespace accessfile
