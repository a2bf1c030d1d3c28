#pragma once

#include "accessfile/Database.h"
#include "accessfile/Storage.h"

namespace accessfile::sql {

/// `value` as a column stores it, by the rules of INSERT and UPDATE: texts become numbers and dates by the regional
/// settings, numbers round half to even to whole ones, dates to seconds. Raises TypeMismatch, Overflow or TooLong.
[[nodiscard]] Value assign(const Value& value, const Column& column, const RegionalConversions& regional);

} // namespace accessfile::sql
