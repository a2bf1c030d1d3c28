// The system's own functions. The wide ones: a path may have characters that the code page lacks, and the text of the
// file is still the code page's, as every other program on the machine reads and writes it.
#include "platform/os/PrivateProfile.h"

#include <QDir>

#include <qt_windows.h>
#undef GetPrivateProfileString // else the names of this file would be those of the wide functions
#undef WritePrivateProfileString

#include <vector>

namespace platform {

namespace {

const wchar_t* wide(const QString& text)
{
    return reinterpret_cast<const wchar_t*>(text.utf16());
}

} // namespace

QString GetPrivateProfileString(const QString& section, const QString& key, const QString& fallback, int bufferSize,
                                const QString& file)
{
    if (bufferSize <= 0)
        return {};
    std::vector<wchar_t> buffer(static_cast<std::size_t>(bufferSize));
    const DWORD length = GetPrivateProfileStringW(wide(section), wide(key), wide(fallback), buffer.data(),
                                                  static_cast<DWORD>(bufferSize), wide(QDir::toNativeSeparators(file)));
    return QString::fromWCharArray(buffer.data(), static_cast<qsizetype>(length));
}

bool WritePrivateProfileString(const QString& section, const QString& key, const QString& value, const QString& file)
{
    QString line = value; // A value is one line.
    line.replace(u'\r', u' ').replace(u'\n', u' ');
    return WritePrivateProfileStringW(wide(section), wide(key), wide(line), wide(QDir::toNativeSeparators(file)));
}

} // namespace platform
