#include "platform/ado/Session.h"

#include "platform/ado/ConnectionString.h"
#include "platform/ado/OdbcDrivers.h"

namespace ado {

namespace {

constexpr QLatin1StringView AccessDriver("Microsoft Access Driver (*.mdb)");

} // namespace

bool hasAccessDriver()
{
    return odbc::isDriverInstalled(AccessDriver);
}

std::unique_ptr<Session> openSession(const OpenRequest& request)
{
    const QString provider = connectionAttribute(request.connectionString, u"Provider");
    if (provider.startsWith(QLatin1StringView("Microsoft.Jet.OLEDB"), Qt::CaseInsensitive)) {
        return openAccessSession(request);
    }
    const QString driver = connectionAttribute(request.connectionString, u"Driver");
    // An installed driver that cannot connect has the last word: it may know of others that have the file open.
    if (driver.compare(AccessDriver, Qt::CaseInsensitive) == 0 && !hasAccessDriver()) {
        return openAccessSession(request);
    }
    return openOdbcSession(request);
}

} // namespace ado
