#pragma once

#include "accessfile/format/IndexPage.h"
#include "accessfile/table/StorageFile.h"

#include <set>

namespace accessfile {

/// What a self-check gathers: faults and notes as sentences, and who owns which page and which map row.
class VerifyRecord
{
public:
    explicit VerifyRecord(const TableSpace& space)
        : m_space(space)
        , m_owners(space.pager.pageCount(), 0)
    {}
    void fault(const std::string& text);
    void note(const std::string& text);
    /// Enters a page under its owner; a second owner, a place beyond the end and the mark of a free page are faults.
    void claim(PageNumber page, const std::string& owner);
    /// Enters the row that holds a map; several maps share a page.
    void claimMap(RowId row, const std::string& owner);
    [[nodiscard]] bool isClaimed(PageNumber page) const { return m_owners[page] != 0; }
    /// Runs `check`; what it raises becomes a fault.
    void attempt(const std::string& what, const std::function<void()>& check);
    [[nodiscard]] SelfCheck found() const;

private:
    static void enter(std::vector<std::string>& list, std::size_t& more, const std::string& text);
    const TableSpace& m_space;
    SelfCheck m_found;
    std::size_t m_moreFaults = 0;
    std::size_t m_moreNotes = 0;
    std::vector<std::string> m_names;    ///< Of owners.
    std::vector<std::uint32_t> m_owners; ///< By page: place in m_names counted from 1, 0 for none.
    std::set<PageNumber> m_mapPages;
    std::map<RowId, std::string> m_mapRows;
};

/// Self-check of one table: definition, rows, long values, indexes.
class TableVerifier
{
public:
    TableVerifier(TableSpace& space, VerifyRecord& record, const TableFile& table);
    void run();

private:
    void checkDefinition();
    /// Pages of a map, entered under their owner when `owner` is not empty.
    [[nodiscard]] std::set<PageNumber> mapPages(RowId map, const std::string& owner);
    void checkFreeMap(RowId map, const std::set<PageNumber>& owned, const std::string& owner);
    void checkRows();
    void checkDataPage(PageNumber number);
    void checkRow(PagePointer page, RowId row);
    void checkLongValue(std::size_t column, ByteView descriptor, RowId row);
    void checkLongPages();
    void checkNumbers() const;
    void checkIndexes();
    [[nodiscard]] std::string at(RowId row) const;

    struct LongColumn
    {
        std::set<PageNumber> owned;
        std::set<RowId> used; ///< Rows of long-value pages that a descriptor or a chain leads to.
    };

    TableSpace& m_space;
    VerifyRecord& m_record;
    const TableFile& m_table;
    const TableDefinition& m_definition;
    std::string m_name;
    std::set<PageNumber> m_owned;
    std::set<RowId> m_stubTargets;
    std::set<RowId> m_targets;
    std::map<std::size_t, LongColumn> m_longColumns;
    std::vector<std::vector<Bytes>> m_entries;    ///< By physical index, as the rows ask for them.
    std::vector<std::vector<Bytes>> m_uniqueKeys; ///< By physical index, without those that hold a null.
    std::vector<bool> m_computable;
    std::uint32_t m_rows = 0;
    std::int64_t m_highestNumber = 0;
};

/// Self-check of an index: the shape of its tree, and its entries against the sorted ones that the rows ask for.
class IndexVerifier
{
public:
    IndexVerifier(TableSpace& space, VerifyRecord& record, PageNumber owner, const PhysicalIndex& index,
                  std::string name)
        : m_space(space)
        , m_record(record)
        , m_owner(owner)
        , m_index(index)
        , m_name(std::move(name))
    {}
    /// `entries` is null where the keys cannot be computed.
    void run(const std::set<PageNumber>& owned, const std::vector<Bytes>* entries);

private:
    struct Leaf
    {
        PageNumber number = 0;
        PageNumber previous = 0;
        PageNumber next = 0;
    };
    void walk(PageNumber number, std::size_t depth, const Bytes* bound);
    void checkSpace(PageNumber number, const IndexPage& page);
    void checkChain();
    void compare(const std::vector<Bytes>& expected);

    TableSpace& m_space;
    VerifyRecord& m_record;
    PageNumber m_owner;
    const PhysicalIndex& m_index;
    std::string m_name;
    std::set<PageNumber> m_seen;
    std::vector<Leaf> m_leaves;
    std::vector<Bytes> m_found;
    std::size_t m_leafDepth = 0;
};

} // namespace accessfile
