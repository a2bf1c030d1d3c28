#pragma once

#include "accessfile/Value.h"

#include <string>

namespace accessfile::sql {

/// Appends bytes whose order is the order of the values, and which are equal where the values are: Null first, then the
/// values; all turned round when descending. Values of one column follow each other rightly whatever comes behind.
void appendSortKey(const Value& value, bool ascending, std::string& key);

} // namespace accessfile::sql
