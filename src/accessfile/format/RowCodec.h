#pragma once

#include "accessfile/format/TableDefinition.h"

#include <optional>
#include <span>

namespace accessfile {

// Layout of a row; offsets are counted from its first byte:
//
//   size
//      2  columns that the row knows: those that the table had ever had when it was written
//         fixed area: each fixed column at its offset
//         variable data: slot 0, slot 1, ... back to back
//      2  end of the data         the next three only where the table has had a variable column
//     2n  offsets of the slots, the last one first
//      2  slots n
//         mask: bit i is set where the column of id i is not null; for Bool it is the value

/// A stored row, taken apart without copying.
class RowLayout
{
public:
    RowLayout() = default;
    /// `hasVariable`: the table has variable-length columns, so the row has a trailer. Raises Damaged.
    RowLayout(ByteView row, bool hasVariable);

    [[nodiscard]] bool present(std::uint16_t id) const
    {
        return id < m_columns && (m_row[m_mask + id / 8] >> (id % 8) & 1) != 0;
    }
    /// Stored bytes of a cell; nullopt for Null. Not for Bool, which is `present`.
    [[nodiscard]] std::optional<ByteView> cell(const ColumnDefinition& column) const;
    /// Where the variable part starts; the fixed area of this row ends there.
    [[nodiscard]] std::size_t fixedEnd() const;

private:
    [[nodiscard]] std::size_t offsetOf(std::size_t slot) const { return load16(m_row.data() + m_table - word * slot); }
    static constexpr std::size_t word = 2; ///< Of counts and offsets.
    ByteView m_row;
    std::size_t m_columns = 0;
    std::size_t m_mask = 0;
    std::size_t m_variable = 0; ///< Variable slots of this row.
    std::size_t m_table = 0;    ///< Place of the offset of slot 0; the others stand before it.
};

/// Value of a cell that is neither Null, Bool nor a long value.
[[nodiscard]] Value decodeCell(const ColumnDefinition& column, ByteView stored);

/// Stored bytes of a value of the column's type; raises TypeMismatch, TooLong or Overflow. Not for Bool and long
/// values.
[[nodiscard]] Bytes encodeCell(const ColumnDefinition& column, const Value& value);

/// A row of the full width of the table. `cells` has one entry for each column of the definition: nullopt for Null;
/// Bool is true when it has an (empty) entry.
[[nodiscard]] Bytes encodeRow(const TableDefinition& definition, std::span<const std::optional<Bytes>> cells);

} // namespace accessfile
