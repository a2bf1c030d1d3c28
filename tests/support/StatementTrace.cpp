#include "support/StatementTrace.h"

#include <QFile>

namespace support {

StatementTrace::StatementTrace()
{
    qputenv("PLANILHA_SQL_TRACE", QFile::encodeName(path()));
}

StatementTrace::~StatementTrace()
{
    qunsetenv("PLANILHA_SQL_TRACE");
}

QStringList StatementTrace::lines() const
{
    QFile file(path());
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    QStringList lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
    lines.removeLast(); // Behind the last line's end.
    return lines;
}

void StatementTrace::clear()
{
    QFile::remove(path());
}

} // namespace support
