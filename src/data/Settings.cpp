#include "data/Settings.h"

#include "platform/ado/IgnoredErrors.h"
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
    if (!platform::WritePrivateProfileString(section, key, value, file))
        qCWarning(platform::ignoredErrors) << "not written:" << key << file;
}

} // namespace data
