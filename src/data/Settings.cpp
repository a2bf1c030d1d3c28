#include "data/Settings.h"

#include "platform/os/PrivateProfile.h"

namespace data {

namespace {
constexpr int BufferSize = 255;
}

QString ReadSetting(const QString& section, const QString& key, const QString& file)
{
    return platform::GetPrivateProfileString(section, key, QString(), BufferSize, file);
}

void WriteSetting(const QString& section, const QString& key, const QString& value, const QString& file)
{
    platform::WritePrivateProfileString(section, key, value, file);
}

} // namespace data
