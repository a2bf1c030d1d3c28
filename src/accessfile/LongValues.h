#pragma once

#include "accessfile/TableDefinition.h"

namespace accessfile {

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

    /// Stores a value and returns its descriptor.
    [[nodiscard]] Bytes write(const ColumnDefinition& column, const Value& value);
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
