#include "platform/ado/Session.h"

#include "platform/ado/ConnectionString.h"
#include "platform/ado/OdbcDrivers.h"

namespace ado {

std::unique_ptr<Session> openSession(const OpenRequest& request)
{
    const QString provider = connectionAttribute(request.connectionString, u"Provider");
    if (provider.startsWith(QLatin1StringView("Microsoft.Jet.OLEDB"), Qt::CaseInsensitive)) {
        return openAccessSession(request);
    }
    const QString driver = connectionAttribute(request.connectionString, u"Driver");
    const bool isAccess =
        driver.compare(QLatin1StringView("Microsoft Access Driver (*.mdb)"), Qt::CaseInsensitive) == 0;
    if (isAccess && !odbc::isDriverInstalled(driver)) {
        return openAccessSession(request);
    }
    return openOdbcSession(request);
}

} // namespace ado
