#include "platform/os/UserFolders.h"

#include <QDir>
#include <QStandardPaths>

namespace platform {

QString userStateFolder()
{
#ifdef Q_OS_WIN
    return QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation);
#else
    // The desktop's own rule; the library knows it from a later version on than the one that is asked for.
    const QString named = qEnvironmentVariable("XDG_STATE_HOME");
    const QString states = QDir::isAbsolutePath(named) ? named : QDir::homePath() + QStringLiteral("/.local/state");
    return states + QStringLiteral("/planilha-de-bombas");
#endif
}

} // namespace platform
