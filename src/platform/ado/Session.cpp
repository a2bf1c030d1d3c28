#include "platform/ado/Session.h"

#include "platform/ado/OdbcDrivers.h"

namespace ado {

namespace {

/// Value of a key of a connection string, braces removed; empty when the key is missing.
QString attribute(const QString& connectionString, QStringView key)
{
    qsizetype position = 0;
    while (position < connectionString.size()) {
        const qsizetype equals = connectionString.indexOf(QLatin1Char('='), position);
        if (equals < 0) {
            break;
        }
        const auto name = QStringView(connectionString).mid(position, equals - position).trimmed();
        const bool braced = equals + 1 < connectionString.size() && connectionString[equals + 1] == QLatin1Char('{');
        const qsizetype begin = braced ? equals + 2 : equals + 1;
        qsizetype end = connectionString.indexOf(braced ? QLatin1Char('}') : QLatin1Char(';'), begin);
        end = end < 0 ? connectionString.size() : end;
        if (name.compare(key, Qt::CaseInsensitive) == 0) {
            return connectionString.mid(begin, end - begin).trimmed();
        }
        const qsizetype semicolon = connectionString.indexOf(QLatin1Char(';'), end);
        position = semicolon < 0 ? connectionString.size() : semicolon + 1;
    }
    return {};
}

} // namespace

std::unique_ptr<Session> openSession(const OpenRequest& request)
{
    const QString provider = attribute(request.connectionString, u"Provider");
    if (provider.startsWith(QLatin1StringView("Microsoft.Jet.OLEDB"), Qt::CaseInsensitive)) {
        return openAccessSession(request);
    }
    const QString driver = attribute(request.connectionString, u"Driver");
    const bool isAccess =
        driver.compare(QLatin1StringView("Microsoft Access Driver (*.mdb)"), Qt::CaseInsensitive) == 0;
    if (isAccess && !odbc::isDriverInstalled(driver)) {
        return openAccessSession(request);
    }
    return openOdbcSession(request);
}

} // namespace ado
