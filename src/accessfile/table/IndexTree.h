#pragma once

#include "accessfile/format/IndexPage.h"
#include "accessfile/table/TableSpace.h"

#include <functional>
#include <optional>

namespace accessfile {

/// Place of an entry on a leaf; walks to the right along the chain of leaves.
class IndexPosition
{
public:
    /// Entry at this place, moving over empty leaves; nullopt at the end. Valid until the next call.
    [[nodiscard]] std::optional<ByteView> entry();
    void advance() { ++m_index; }

private:
    friend class IndexTree;
    IndexPosition(const Pager& pager, PagePointer page, IndexPageView leaf)
        : m_pager(pager)
        , m_page(std::move(page))
        , m_leaf(std::move(leaf))
    {}
    const Pager& m_pager;
    PagePointer m_page;
    IndexPageView m_leaf;
    Bytes m_entry;
    std::size_t m_index = 0;
    std::size_t m_leavesSeen = 0;
};

/// A tree of entries over pages. Its root page never moves.
class IndexTree
{
public:
    IndexTree(TableSpace& space, PageNumber owner, const PhysicalIndex& index)
        : m_space(space)
        , m_owner(owner)
        , m_root(index.root)
        , m_map(index.ownedMap)
    {}
    /// First entry whose key is not below `key`.
    [[nodiscard]] IndexPosition find(ByteView key) const;
    /// A row other than `except` that has the key.
    [[nodiscard]] std::optional<RowId> rowWithKey(ByteView key, std::optional<RowId> except) const;
    /// True when no neighbour of the new entry has its key.
    bool insert(ByteView key, RowId row);
    /// Raises Damaged when the entry is missing.
    void erase(ByteView key, RowId row);
    /// The same for a row whose key cannot be computed; looks through the whole index.
    void eraseRow(RowId row);
    /// Replaces all entries; they need not be sorted.
    void rebuild(std::vector<Bytes> entries);

private:
    struct Step
    {
        PageNumber number = 0;
        IndexPage page;
        std::size_t index = 0; ///< Child taken; on the leaf, the place of the entry.
    };
    [[nodiscard]] std::vector<Step> descend(ByteView entry) const;
    struct Leaf
    {
        PageNumber number = 0;
        PagePointer page;
        IndexPageView view;
    };
    /// The leaf where the entry belongs.
    [[nodiscard]] Leaf leafFor(ByteView entry) const;
    [[nodiscard]] IndexPage load(PageNumber number) const;
    void save(PageNumber number, const IndexPage& page);
    [[nodiscard]] PageNumber newPage();
    void dropPage(PageNumber number);
    void splitUp(std::vector<Step>& path);
    void linkChildren(const IndexPage& parent);
    void removeLeaf(std::vector<Step>& path);
    void lowerBound(std::vector<Step>& path, std::size_t depth, ByteView bound);
    [[nodiscard]] std::vector<Bytes> collect() const;

    TableSpace& m_space;
    PageNumber m_owner;
    PageNumber m_root;
    RowId m_map;
};

} // namespace accessfile
