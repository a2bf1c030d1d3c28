#pragma once

#include "accessfile/format/TableDefinition.h"
#include "accessfile/table/UsageMap.h"

namespace accessfile {

/// A long value's descriptor in its row: length and kind in one word, the address of the first piece, the stamp of the
/// value. A page of its own repeats the stamp.
namespace longvalue {
constexpr std::size_t descriptorLength = 12;
constexpr std::uint32_t lengthMask = 0x3FFFFFFF;
constexpr std::uint32_t inlineKind = 0x80000000;
constexpr std::uint32_t rowKind = 0x40000000;
constexpr std::size_t stampAt = 8;
} // namespace longvalue

/// Memo and OLE contents, which live outside the row; the row holds a 12-byte descriptor.
class LongValues
{
public:
    LongValues(Pager& pager, PageAllocator& allocator)
        : m_pager(pager)
        , m_allocator(allocator)
    {}
    /// Content that a descriptor names, still in the text encoding. Raises Damaged.
    [[nodiscard]] Bytes read(ByteView descriptor) const;
    /// Value of a memo or OLE cell.
    [[nodiscard]] Value value(const ColumnDefinition& column, ByteView descriptor) const;

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
