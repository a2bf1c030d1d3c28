#pragma once

#include "accessfile/Storage.h"

namespace accessfile {

/// Value of a default that is a literal: number, quoted text, True, False or Null. Raises ReadOnly for anything else.
[[nodiscard]] Value literalDefault(const Column& column, std::string_view expression);

/// An autonumber that is drawn, not counted.
[[nodiscard]] bool isRandomNumber(const Column& column);
[[nodiscard]] Value randomNumber();
[[nodiscard]] Value randomGuid();

} // namespace accessfile
