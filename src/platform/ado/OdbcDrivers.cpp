#include "platform/ado/OdbcDrivers.h"

#include "platform/ado/OdbcHandles.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>
#include <QStandardPaths>

#include <array>
#include <optional>

namespace ado::odbc {

#ifndef Q_OS_WIN
namespace {

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

std::optional<QByteArray> sectionTitle(const QByteArray& line)
{
    const QByteArray trimmed = line.trimmed();
    if (trimmed.startsWith('[') && trimmed.endsWith(']')) {
        return trimmed.mid(1, trimmed.size() - 2).trimmed();
    }
    return std::nullopt;
}

bool hasSection(const QByteArray& content, const QByteArray& name)
{
    for (const QByteArray& line : content.split('\n')) {
        if (const auto title = sectionTitle(line); title && title->compare(name, Qt::CaseInsensitive) == 0) {
            return true;
        }
    }
    return false;
}

/// Library of the MySQL-protocol driver that the system registers under another name, else the usual one.
QByteArray driverLibrary(const QByteArray& content)
{
    QByteArray section;
    for (const QByteArray& line : content.split('\n')) {
        if (const auto title = sectionTitle(line)) {
            section = title->toLower();
        } else if (section.contains("mariadb") || section.contains("mysql")) {
            const qsizetype equals = line.indexOf('=');
            if (line.left(equals).trimmed().compare("driver", Qt::CaseInsensitive) == 0 && equals > 0) {
                return line.mid(equals + 1).trimmed();
            }
        }
    }
    return QByteArrayLiteral("libmaodbc.so");
}

constexpr QFileDevice::Permissions OwnFile = QFileDevice::ReadOwner | QFileDevice::WriteOwner;

/// A copy of a registration may hold passwords: only its owner reads it.
bool writeIfDifferent(const QString& path, const QByteArray& content)
{
    if (contentOf(path) == content && QFile::exists(path)) {
        return QFile::setPermissions(path, OwnFile);
    }
    QSaveFile file(path);
    return file.open(QIODevice::WriteOnly) && file.setPermissions(OwnFile) && file.write(content) == content.size() &&
           file.commit();
}

bool makeOwnFolder(const QString& path)
{
    return QDir().mkpath(path) && QFile::setPermissions(path, OwnFile | QFileDevice::ExeOwner);
}

void writeRegistration()
{
    const QByteArray driver = QByteArrayLiteral("MySQL ODBC 3.51 Driver");
    const QString systemFolder = qEnvironmentVariable("ODBCSYSINI", QStringLiteral("/etc"));
    const QString systemName = qEnvironmentVariable("ODBCINSTINI", QStringLiteral("odbcinst.ini"));
    const QByteArray drivers = contentOf(systemFolder + QLatin1Char('/') + systemName);
    if (hasSection(drivers, driver) ||
        hasSection(contentOf(QDir::homePath() + QStringLiteral("/.odbcinst.ini")), driver)) {
        return;
    }
    const QString cache =
        QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) + QStringLiteral("/planilha");
    const QString folder = cache + QStringLiteral("/odbc");
    // Threading=0: a connect that waits for a mute host must not hold the lock of every other call.
    const QByteArray ours =
        '[' + driver + "]\nDescription=Planilha de Bombas\nDriver=" + driverLibrary(drivers) + "\nThreading=0\n";
    const bool written =
        makeOwnFolder(cache) && makeOwnFolder(folder) &&
        writeIfDifferent(folder + QLatin1Char('/') + systemName, drivers + '\n' + ours) &&
        writeIfDifferent(folder + QStringLiteral("/odbc.ini"), contentOf(systemFolder + QStringLiteral("/odbc.ini")));
    if (written) { // Else connecting fails with the driver manager's own words about the missing driver.
        qputenv("ODBCSYSINI", QFile::encodeName(folder));
    }
}

} // namespace
#endif

void registerDrivers()
{
#ifndef Q_OS_WIN
    static const bool once = (writeRegistration(), true);
    Q_UNUSED(once)
#endif
}

bool isDriverInstalled(const QString& name)
{
    registerDrivers();
    const auto environment = makeEnvironment();
    std::array<SQLWCHAR, 512> description{};
    std::array<SQLWCHAR, 8> attributes{};
    SQLUSMALLINT direction = SQL_FETCH_FIRST;
    // Attributes are cut short on purpose: only the name is of use.
    while (SQL_SUCCEEDED(SQLDriversW(environment.get(), direction, description.data(),
                                     static_cast<SQLSMALLINT>(description.size()), nullptr, attributes.data(),
                                     static_cast<SQLSMALLINT>(attributes.size()), nullptr))) {
        const QString installed = QString::fromUtf16(reinterpret_cast<const char16_t*>(description.data()));
        if (installed.compare(name, Qt::CaseInsensitive) == 0) {
            return true;
        }
        direction = SQL_FETCH_NEXT;
    }
    return false;
}

} // namespace ado::odbc
