#pragma once

#include "accessfile/format/Keys.h"
#include "accessfile/format/Properties.h"
#include "accessfile/format/RowCodec.h"
#include "accessfile/table/TableSpace.h"

namespace accessfile {

/// Finds the bytes of rows and decodes their cells. Holds the page of the row it is on.
class RowReader
{
public:
    RowReader(TableSpace& space, const TableDefinition& definition)
        : m_space(space)
        , m_definition(definition)
    {}
    /// Goes to a row on its home page, through a stub when there is one.
    void open(PagePointer home, RowId row);
    [[nodiscard]] RowId rowId() const { return m_row; }
    /// Where the row's bytes are: its own place, or that of the stub's target.
    [[nodiscard]] RowId place() const { return m_place; }
    /// Bytes of the row as stored.
    [[nodiscard]] std::size_t length() const { return m_length; }
    [[nodiscard]] const RowLayout& layout() const { return m_layout; }
    [[nodiscard]] Value value(int column) const;
    [[nodiscard]] bool appendText(int column, std::string& out) const;

private:
    TableSpace& m_space;
    const TableDefinition& m_definition;
    PagePointer m_page;
    RowLayout m_layout;
    RowId m_row;
    RowId m_place;
    std::size_t m_length = 0;
    mutable PiecesRead m_pieces;
};

class TableFile : public Table
{
public:
    TableFile(TableSpace& space, PageNumber page, std::string name, Bytes properties);

    [[nodiscard]] const std::string& name() const override { return m_name; }
    [[nodiscard]] const std::vector<Column>& columns() const override { return m_columns; }
    [[nodiscard]] const std::vector<Index>& indexes() const override { return m_indexes; }
    [[nodiscard]] int columnIndex(std::string_view name) const override;
    [[nodiscard]] std::unique_ptr<Cursor> scan() const override;
    [[nodiscard]] bool usableForRange(int index) const override;
    [[nodiscard]] std::unique_ptr<Cursor> range(int index, const KeyRange& range) const override;
    RowId insert(std::span<const std::optional<Value>> values) override;
    void update(RowId row, std::span<const std::pair<int, Value>> changes) override;
    void erase(RowId row) override;

    // Changes of the definition, each inside a unit and reloaded afterwards by the caller, who checks names and rights.
    void addColumn(const Column& column);
    void addIndex(const Index& index);
    /// Gives back every page of the table, its definition included.
    void releasePages();

    /// Reads the definition again, after it was changed or a change of it was undone.
    void reload(Bytes properties);
    [[nodiscard]] const TableDefinition& definition() const { return m_definition; }
    [[nodiscard]] PageNumber page() const { return m_page; }
    [[nodiscard]] const Properties& properties() const { return m_properties; }
    /// Raises ReadOnly when the table is one that this engine does not change.
    void checkWritable() const;
    /// The engine's own tables are changed by the engine alone.
    void allowSystem() { m_systemAllowed = true; }

private:
    void describe();
    [[nodiscard]] std::string refusal() const;
    /// Key of a row in a physical index; none where the index leaves the row out.
    [[nodiscard]] std::optional<IndexKey> rowKey(std::size_t index,
                                                 const std::function<Value(std::size_t)>& valueOf) const;
    struct StoredKey
    {
        std::optional<IndexKey> key;
        bool computable = true; ///< False for a text outside the order, which Access has entered all the same.
    };
    [[nodiscard]] StoredKey storedKey(std::size_t index, const RowReader& reader) const;
    void checkUnique(const std::vector<std::optional<IndexKey>>& keys, std::optional<RowId> except) const;
    void checkValue(std::size_t column, const Value& value) const;
    void encodeInto(std::size_t index, const Value& value, std::optional<Bytes>& cell,
                    std::optional<LongValues::Prepared>& prepared) const;
    [[nodiscard]] RowReader openRow(RowId row) const;
    [[nodiscard]] RowId placeRow(ByteView row, bool asTarget);
    [[nodiscard]] std::vector<RowId> allRows() const;
    [[nodiscard]] std::size_t leastFixedOffset() const;
    /// Writes rows anew for a definition with one column more.
    void widenRows(const std::vector<RowId>& rows, const TableDefinition& changed);
    /// Removes a map, and frees its pages when `own` tells which can be the table's.
    void releaseMap(RowId map, const std::function<bool(const PageBytes&)>* own);
    [[noreturn]] void throwDuplicateKey() const;
    void storeRow(RowId row, RowId place, const Bytes& bytes);
    void removeTarget(RowId place);
    void markRoom(PageNumber page);
    void indexInsert(std::size_t index, const IndexKey& key, RowId row);
    void indexErase(std::size_t index, const StoredKey& stored, RowId row);

    TableSpace& m_space;
    PageNumber m_page;
    std::string m_name;
    TableDefinition m_definition;
    Properties m_properties;
    std::vector<Column> m_columns;
    std::vector<Index> m_indexes;
    std::vector<std::size_t> m_physicalOf; ///< Of each entry of m_indexes.
    std::string m_refusal;
    bool m_systemAllowed = false;
};

} // namespace accessfile
