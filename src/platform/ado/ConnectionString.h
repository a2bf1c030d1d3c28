#pragma once

#include <QString>

namespace ado {

/// Value of a key of a connection string, upper and lower case alike, braces removed; empty when the key is missing.
[[nodiscard]] QString connectionAttribute(const QString& connectionString, QStringView key);

} // namespace ado
