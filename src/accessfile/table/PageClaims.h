#pragma once

#include "accessfile/table/StorageFile.h"

namespace accessfile {

/// For each page whether something of the file claims it: the file's own maps, or a table of the catalog by its
/// definition, its maps, the pages in them, or the root of an index. Raises Damaged for a table that cannot be
/// followed.
[[nodiscard]] std::vector<bool> claimedPages(Pager& pager, const std::vector<CatalogEntry>& entries);

} // namespace accessfile
