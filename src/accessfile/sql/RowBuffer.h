#pragma once

#include "accessfile/Database.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace accessfile::sql {

/// Rows that wait for their order or for their count: keys and cells as bytes, texts unshared, nothing else kept per
/// cell.
class RowBuffer
{
public:
    void add(const Value& value);
    void addText(std::string_view text);
    /// Ends the row whose cells were added; `row` addresses it for update.
    void endRow(std::string_view key, std::optional<RowId> row);

    [[nodiscard]] std::size_t size() const { return m_rows.size(); }
    /// By the keys; rows of equal keys stay in the order in which they came.
    void sort();
    /// Drops the rows behind the first `count`; with `ties` none whose key is that of the last one kept.
    void keepFirst(std::size_t count, bool ties);
    void emit(RowSink& sink, std::size_t columns) const;

private:
    enum class Tag : char { Null, Text, Integer, Double, Date, Other };

    struct Row
    {
        std::uint64_t prefix = 0; ///< First bytes of the key.
        std::size_t key = 0;
        std::size_t cells = 0;
        std::uint32_t keySize = 0;
        std::optional<RowId> row;
    };

    [[nodiscard]] std::string_view keyOf(const Row& row) const;
    template <typename T>
    void addPlain(Tag tag, T value);
    template <typename T>
    [[nodiscard]] T plain(std::size_t& at) const;
    void emitCell(RowSink& sink, std::size_t& at) const;

    std::string m_keys;
    std::string m_cells;
    std::size_t m_rowBegin = 0;
    std::vector<Value> m_others;
    std::vector<Row> m_rows;
};

} // namespace accessfile::sql
