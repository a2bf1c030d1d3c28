#pragma once

#include <QString>

namespace data {

/// Text of a key, at most 254 characters of it; "" when file, section or key is missing.
[[nodiscard]] QString ReadSetting(const QString& section, const QString& key, const QString& file);
/// Writes a key; no result is checked, as a station may keep its settings read-only.
void WriteSetting(const QString& section, const QString& key, const QString& value, const QString& file);

} // namespace data
