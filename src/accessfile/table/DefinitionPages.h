#pragma once

#include "accessfile/format/TableDefinition.h"
#include "accessfile/table/UsageMap.h"

// A table's definition on its chain of pages.
namespace accessfile {

/// Raises Damaged for a definition that cannot be followed.
[[nodiscard]] TableDefinition readDefinition(const Pager& pager, PageNumber first);

/// Writes the definition over its pages; the chain grows or shrinks as needed. `definition.pages` must name the first
/// page.
void writeDefinition(TableDefinition& definition, Pager& pager, PageAllocator& allocator);

} // namespace accessfile
