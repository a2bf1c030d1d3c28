#pragma once

#include <QByteArray>
#include <QString>

// The settings file: on Windows the system's private profile functions, elsewhere in their manner: Windows-1252 text,
// sections and keys without regard to case, the first match wins, blanks around key and value trimmed, one pair of
// enclosing quotes removed.
namespace platform {

/// Value of `key` in [`section`], at most `bufferSize` - 1 bytes of it; `fallback` when file, section or key is
/// missing.
[[nodiscard]] QString GetPrivateProfileString(const QString& section, const QString& key, const QString& fallback,
                                              int bufferSize, const QString& file);
/// Writes one line in place, or adds the key at the end of its section, or the section at the end of the file. Every
/// other byte of the file stays. False when the file cannot be written; the old file is then intact.
bool WritePrivateProfileString(const QString& section, const QString& key, const QString& value, const QString& file);

} // namespace platform
