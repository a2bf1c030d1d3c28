#pragma once

#include "accessfile/format/TableDefinition.h"
#include "accessfile/table/UsageMap.h"

#include <unordered_map>

namespace accessfile {

// Layout of a long value's descriptor, the cell of its row:
//
//   offset size
//        0    4  length of the value in the low 30 bits, over them its kind
//        4    4  pointer to the value's row, or to the first row of its chain
//        8    4  stamp of a chain, which the first page of the chain repeats
//       12       the value itself, where it is inline
//
// Each row of a chain begins with a pointer to the next, 0 in the last.
namespace longvalue {
constexpr std::size_t rowAt = 4;
constexpr std::size_t stampAt = 8;
constexpr std::size_t descriptorLength = 12;
constexpr std::uint32_t lengthMask = 0x3FFFFFFF;
constexpr std::uint32_t inlineKind = 0x80000000;
constexpr std::uint32_t rowKind = 0x40000000;
} // namespace longvalue

/// What one walk over a table has read outside of its rows, and for which of them: no piece belongs to two. A small
/// file whose values all name one long chain would otherwise read as more than any memory holds.
class PiecesRead
{
public:
    /// What is read next is the value of that column, or with -1 a displaced row.
    void begin(RowId row, int column);
    /// Raises Damaged for a piece of another value, and for one met twice in a reading.
    void claim(RowId piece);

private:
    struct Claim
    {
        std::uint64_t owner = 0;
        std::uint64_t reading = 0;
    };
    std::unordered_map<std::uint64_t, Claim> m_claims;
    Claim m_current;
};

/// Memo and OLE contents, which live outside the row; the row holds a 12-byte descriptor.
class LongValues
{
public:
    LongValues(Pager& pager, PageAllocator& allocator)
        : m_pager(pager)
        , m_allocator(allocator)
    {}
    /// Content that a descriptor names, still in the text encoding. Raises Damaged.
    [[nodiscard]] Bytes read(ByteView descriptor, PiecesRead& pieces) const;
    /// Value of a memo or OLE cell.
    [[nodiscard]] Value value(const ColumnDefinition& column, ByteView descriptor, PiecesRead& pieces) const;

    /// A value ready to be stored: checked and encoded, nothing changed yet.
    struct Prepared
    {
        Bytes content;
        std::size_t plainLength = 0; ///< What the storage form is chosen by.
        /// Bytes of the size that the descriptor will have.
        [[nodiscard]] Bytes placeholder() const;
    };
    [[nodiscard]] static Prepared prepare(const ColumnDefinition& column, const Value& value);
    /// Stores a value and returns its descriptor.
    [[nodiscard]] Bytes write(const ColumnDefinition& column, const Prepared& prepared);
    /// Gives back the pages of a value.
    void free(const ColumnDefinition& column, ByteView descriptor);

private:
    [[nodiscard]] RowId place(const ColumnDefinition& column, ByteView row);
    [[nodiscard]] RowId placeAlone(const ColumnDefinition& column, ByteView row, std::uint32_t stamp);
    void eraseRow(const ColumnDefinition& column, RowId row);
    Pager& m_pager;
    PageAllocator& m_allocator;
};

} // namespace accessfile
