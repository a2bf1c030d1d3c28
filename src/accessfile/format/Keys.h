#pragma once

#include "accessfile/format/TableDefinition.h"

#include <functional>

namespace accessfile {

inline constexpr std::size_t longestKey = 510;

struct IndexKey
{
    Bytes bytes;
    bool anyNull = false;
    bool allNull = true;
};

/// Appends the key bytes of one column. Raises TypeMismatch for a value of another type or a text outside the order.
void appendKeyPart(const ColumnDefinition& column, const Value& value, bool ascending, Bytes& key);

/// Key of a row in an index; raises TooLong for one over the limit. `valueOf` gives the cell of a column by its
/// position in the definition.
[[nodiscard]] IndexKey makeKey(const TableDefinition& definition, const PhysicalIndex& index,
                               const std::function<Value(std::size_t)>& valueOf);

} // namespace accessfile
