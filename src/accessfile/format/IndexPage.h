#pragma once

#include "accessfile/Value.h"
#include "accessfile/file/Page.h"

#include <vector>

namespace accessfile {

// Layout of nodes and leaves:
//
//   offset size
//        0    4  as every page; free is what the entries leave of their area
//        4    4  owner: definition page of the table
//       12    4  page before this one on the same level, 0 for none (nodes: under the same parent)
//       16    4  page behind it
//       20    4  of a node its last child, which has no entry
//       24    2  bytes that all entries share; only the first entry holds them
//       26    1  level: 0 for a leaf
//       27  453  bit i is set where an entry ends at offset i of the area
//      480 3616  the entries, one behind the other
//
// An entry of a leaf is a key, a page (3 bytes) and a slot; that of a node has its child's page (4 bytes) behind it.
// These pages are big-endian, so that entries compare as plain bytes.
namespace indexpage {
inline constexpr std::size_t ownerAt = 4;
inline constexpr std::size_t previousAt = 12;
inline constexpr std::size_t nextAt = 16;
inline constexpr std::size_t tailAt = 20;
inline constexpr std::size_t prefixAt = 24;
inline constexpr std::size_t levelAt = 26;
inline constexpr std::size_t bitmapAt = 27;
inline constexpr std::size_t bitmapLength = 453;
inline constexpr std::size_t entriesAt = 480;
} // namespace indexpage

inline constexpr std::size_t indexEntryArea = 3616;
inline constexpr std::size_t rowBytes = 4;
inline constexpr std::size_t childBytes = 4;

/// Entries of an index page, complete, one behind the other in one buffer.
class EntryList
{
public:
    [[nodiscard]] std::size_t size() const { return m_ends.size(); }
    [[nodiscard]] bool empty() const { return m_ends.empty(); }
    [[nodiscard]] ByteView operator[](std::size_t index) const
    {
        const std::size_t start = index == 0 ? 0 : m_ends[index - 1];
        return ByteView(m_bytes).subspan(start, m_ends[index] - start);
    }
    void insert(std::size_t index, ByteView entry);
    void erase(std::size_t index);
    void push(ByteView entry);
    /// Bytes on a page, with the common prefix stored once.
    [[nodiscard]] std::size_t storedSize() const;
    [[nodiscard]] std::size_t prefixLength() const;

private:
    Bytes m_bytes;
    std::vector<std::size_t> m_ends;
};

/// An index page taken apart.
struct IndexPage
{
    bool leaf = true;
    std::uint32_t owner = 0;
    std::uint8_t level = 0;
    PageNumber previous = 0;
    PageNumber next = 0;
    PageNumber tail = 0; ///< Of a node: its last child, which has no entry.
    EntryList entries;

    /// Raises Damaged for anything that is not a well-formed page. A node without a tail gives its last child as one.
    [[nodiscard]] static IndexPage read(const PageBytes& page);
    void write(PageBytes& page) const;
    [[nodiscard]] bool fits() const { return entries.storedSize() <= indexEntryArea; }

    /// Child of a node by position; the tail is behind the last entry.
    [[nodiscard]] PageNumber child(std::size_t index) const;
    /// First entry not before `entry` (a leaf entry), by key and then by row.
    [[nodiscard]] std::size_t lowerBound(ByteView entry) const;
    /// Entry without its child's page.
    [[nodiscard]] ByteView leafPart(std::size_t index) const;
};

/// An index page where it lies: searched, and changed where the change is a simple one, without taking it apart.
class IndexPageView
{
public:
    /// Raises Damaged as IndexPage::read does. The page must outlive the view.
    explicit IndexPageView(const PageBytes& page);

    [[nodiscard]] bool isLeaf() const { return m_leaf; }
    [[nodiscard]] std::uint32_t owner() const { return load32(m_page->data() + indexpage::ownerAt); }
    [[nodiscard]] PageNumber next() const { return load32(m_page->data() + indexpage::nextAt); }
    [[nodiscard]] std::size_t size() const { return m_ends.size(); }
    /// Puts the whole entry into `to`.
    void entry(std::size_t index, Bytes& to) const;
    /// First entry not before `leafEntry`; in a node, the child to take.
    [[nodiscard]] std::size_t lowerBound(ByteView leafEntry) const;
    [[nodiscard]] PageNumber child(std::size_t index) const;

    /// Puts an entry before that at `index` of a leaf, `page` being the one of the view or a copy of it; false, and
    /// nothing changed, when the page must be composed anew.
    [[nodiscard]] bool insert(PageBytes& page, std::size_t index, ByteView entry) const;
    /// Takes an entry out of a leaf; false as above.
    [[nodiscard]] bool erase(PageBytes& page, std::size_t index) const;

private:
    [[nodiscard]] std::size_t start(std::size_t index) const { return index == 0 ? 0 : m_ends[index - 1]; }
    [[nodiscard]] PageNumber storedChild(std::size_t index) const;

    const PageBytes* m_page;
    bool m_leaf = true;
    std::size_t m_prefix = 0;
    std::size_t m_bounds = 0; ///< Entries that are searched; a node's last child needs none.
    PageNumber m_tail = 0;
    std::vector<std::uint16_t> m_ends; ///< Of entries, in the entry area.
};

[[nodiscard]] Bytes makeEntry(ByteView key, RowId row);
[[nodiscard]] inline ByteView keyOf(ByteView leafEntry)
{
    return leafEntry.first(leafEntry.size() - rowBytes);
}
[[nodiscard]] RowId rowOf(ByteView leafEntry);
/// Below, equal or above zero, as plain bytes; a shorter key is below a longer one that starts with it.
[[nodiscard]] int compareKeys(ByteView left, ByteView right);
[[nodiscard]] int compareEntries(ByteView left, ByteView right);

} // namespace accessfile
