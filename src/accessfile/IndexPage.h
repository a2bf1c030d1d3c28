#pragma once

#include "accessfile/Page.h"

#include <vector>

namespace accessfile {

inline constexpr std::size_t indexEntryArea = 3616;

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

/// An entry of a leaf is a key and a row (four bytes, big-endian); that of a node has its child's page behind it.
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

inline constexpr std::size_t rowBytes = 4;
inline constexpr std::size_t childBytes = 4;

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
