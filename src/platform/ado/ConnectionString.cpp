#include "platform/ado/ConnectionString.h"

namespace ado {

QString connectionAttribute(const QString& connectionString, QStringView key)
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

} // namespace ado
