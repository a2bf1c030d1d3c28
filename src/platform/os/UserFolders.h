#pragma once

#include <QString>

namespace platform {

/// Folder for what a program keeps of its user from one run to the next, as the desktop names it. It may have to be
/// made.
[[nodiscard]] QString userStateFolder();

} // namespace platform
