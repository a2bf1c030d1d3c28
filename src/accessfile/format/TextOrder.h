#pragma once

#include "accessfile/file/Page.h"

#include <string_view>

namespace accessfile {

/// Appends the key of a text in the General order (ascending, without its start byte); false, with the key unfinished,
/// for a character outside the order.
[[nodiscard]] bool appendTextKey(std::string_view utf8, Bytes& key);

} // namespace accessfile
