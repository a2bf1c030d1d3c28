#pragma once

#include "accessfile/format/DataPage.h"

#include <array>
#include <string>
#include <vector>

namespace accessfile {

struct Column;
struct Index;

// Layout of a definition, over a chain of pages that table/DefinitionPages puts together:
//
//   offset size
//        0    4  as every page
//        4    4  next page of the chain, 0 for none
//        8    4  length of the definition, its final FF FF included
//       12    4  1625
//       16    4  rows
//       20    4  autonumber given out last
//       24    4  autonumber increment
//       40    1  'N' user table, 'S' system table
//       41    2  columns ever declared: the next column's id
//       43    2  variable slots ever declared
//       45    2  columns
//       47    4  logical indexes
//       51    4  physical indexes
//       55    4  pointer to the map of the table's data pages
//       59    4  pointer to the map of those with room
//       63  12n  counters of each physical index: entries at the last compacting, distinct keys, 0
//
// then the columns' entries, their names, the physical indexes, the logical ones, their names, for each long-value
// column its maps, and FF FF.
namespace definition {
inline constexpr std::size_t nextPageAt = 4;
inline constexpr std::size_t lengthAt = 8;
inline constexpr std::size_t markAt = 12;
inline constexpr std::size_t rowCountAt = 16;
inline constexpr std::size_t lastNumberAt = 20;
inline constexpr std::size_t incrementAt = 24;
inline constexpr std::size_t numbersLength = 12; ///< Rows, last autonumber, increment: what changes with every row.
inline constexpr std::size_t kindAt = 40;
inline constexpr std::size_t maxColumnsAt = 41;
inline constexpr std::size_t variableSlotsAt = 43;
inline constexpr std::size_t columnCountAt = 45;
inline constexpr std::size_t logicalCountAt = 47;
inline constexpr std::size_t physicalCountAt = 51;
inline constexpr std::size_t ownedMapAt = 55;
inline constexpr std::size_t freeMapAt = 59;
inline constexpr std::size_t headLength = 63;
inline constexpr std::size_t counterLength = 12;
inline constexpr std::size_t distinctAt = 4; ///< In a counter.
inline constexpr std::uint32_t mark = 1625;
inline constexpr std::uint8_t userTable = 'N';
inline constexpr std::uint8_t systemTable = 'S';
inline constexpr std::uint16_t end = 0xFFFF;
} // namespace definition

// Layout of a column's entry:
//
//   offset size
//        0    1  type
//        1    4  1625
//        5    2  id: the column's bit in the mask of a row
//        7    2  slot of a variable column; of a fixed one, variable columns declared before it
//        9    2  id again; 0 in system tables
//       11    2  text: language of its order; Numeric: precision, scale
//       14    1  text: version of its order
//       15    1  flags
//       16    1  more flags
//       21    2  offset of a fixed column in the fixed area
//       23    2  length in bytes
namespace columnentry {
inline constexpr std::size_t markAt = 1;
inline constexpr std::size_t idAt = 5;
inline constexpr std::size_t slotAt = 7;
inline constexpr std::size_t secondIdAt = 9;
inline constexpr std::size_t languageAt = 11;
inline constexpr std::size_t precisionAt = 11;
inline constexpr std::size_t scaleAt = 12;
inline constexpr std::size_t orderVersionAt = 13; ///< Two bytes, both 0 for the General order.
inline constexpr std::size_t flagsAt = 15;
inline constexpr std::size_t moreFlagsAt = 16;
inline constexpr std::size_t fixedOffsetAt = 21;
inline constexpr std::size_t lengthAt = 23;
inline constexpr std::size_t length = 25;
inline constexpr std::uint8_t fixedFlag = 0x01;
inline constexpr std::uint8_t usualFlag = 0x02; ///< On every column.
inline constexpr std::uint8_t autonumberFlag = 0x04;
inline constexpr std::uint8_t systemFlag = 0x10;
inline constexpr std::uint8_t accountFlag = 0x20;
inline constexpr std::uint8_t autoGuidFlag = 0x40;
inline constexpr std::uint8_t compressibleFlag = 0x01; ///< Of the second flags.
inline constexpr std::uint16_t generalLanguage = 0x0409;
} // namespace columnentry

// Layout of a physical index:
//
//   offset size
//        0    4  1923
//        4  10*3 key columns: id (FF FF: none), 1 ascending or 0 descending
//       34    4  pointer to the map of the index's pages
//       38    4  root page
//       46    1  flags
namespace physicalentry {
inline constexpr std::uint32_t mark = 1923;
inline constexpr std::size_t keysAt = 4;
inline constexpr std::size_t keySlots = 10;
inline constexpr std::size_t keyLength = 3;
inline constexpr std::size_t ascendingAt = 2; ///< In a key column.
inline constexpr std::uint16_t noColumn = 0xFFFF;
inline constexpr std::size_t ownedMapAt = 34;
inline constexpr std::size_t rootAt = 38;
inline constexpr std::size_t flagsAt = 46;
inline constexpr std::size_t length = 52;
inline constexpr std::uint8_t uniqueFlag = 0x01;
inline constexpr std::uint8_t skipNullsFlag = 0x02; ///< Keys of nulls alone have no entry.
inline constexpr std::uint8_t requiredFlag = 0x08;
inline constexpr std::uint8_t usualFlag = 0x80; ///< On every index.
} // namespace physicalentry

// Layout of a logical index, of which several may share a physical one:
//
//   offset size
//        0    4  1625
//        4    4  its number
//        8    4  number of the physical index
//       12    1  part in a relationship: 0 none
//       13    4  number of the other table's index, -1 for none
//       21    1  cascade updates
//       22    1  cascade deletions
//       23    1  0 plain, 1 primary key, 2 foreign key
namespace logicalentry {
inline constexpr std::size_t numberAt = 4;
inline constexpr std::size_t physicalAt = 8;
inline constexpr std::size_t relationAt = 12;
inline constexpr std::size_t relatedIndexAt = 13;
inline constexpr std::size_t cascadeUpdatesAt = 21;
inline constexpr std::size_t cascadeDeletionsAt = 22;
inline constexpr std::size_t kindAt = 23;
inline constexpr std::size_t length = 28;
inline constexpr std::uint32_t noIndex = 0xFFFFFFFF;
inline constexpr std::uint8_t noCascade = 4;
} // namespace logicalentry

// Maps of a long-value column: its id (2 bytes), pointers to the map of its pages and of those with room.
namespace longmaps {
inline constexpr std::size_t ownedMapAt = 2;
inline constexpr std::size_t freeMapAt = 6;
inline constexpr std::size_t length = 10;
} // namespace longmaps

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

    [[nodiscard]] std::size_t maxColumns() const { return load16(fixed.data() + definition::maxColumnsAt); }
    [[nodiscard]] std::size_t variableSlots() const { return load16(fixed.data() + definition::variableSlotsAt); }
    [[nodiscard]] RowId ownedMap() const { return loadRowId(fixed.data() + definition::ownedMapAt); }
    [[nodiscard]] RowId freeMap() const { return loadRowId(fixed.data() + definition::freeMapAt); }
    [[nodiscard]] bool isSystem() const { return fixed[definition::kindAt] != definition::userTable; }
    void setMaps(RowId owned, RowId free);
    [[nodiscard]] int columnById(std::uint16_t id) const;
    /// Bytes of the fixed area of a row.
    [[nodiscard]] std::size_t fixedArea() const;

    /// Appends a column, which gets the next id and place. Long values get their maps from the caller first.
    void addColumn(const Column& column, RowId longOwned, RowId longFree, std::size_t leastFixedOffset);
    /// Puts the slots of long values behind those of other columns; only for a table without rows.
    void orderSlots();
    void addIndex(const Index& index, const std::vector<KeyColumn>& columns, RowId map, PageNumber root);

    std::array<std::uint8_t, definition::headLength> fixed{};
    Bytes counters; ///< Of each physical index.
    std::vector<ColumnDefinition> columns;
    std::vector<PhysicalIndex> physical;
    std::vector<LogicalIndex> logical;
    std::vector<PageNumber> pages;
};

/// Name that a table, column or index may have; raises Syntax otherwise.
void checkName(std::string_view name);

} // namespace accessfile
