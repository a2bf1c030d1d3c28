#include "platform/ado/Trace.h"

#include <QFile>

namespace ado {

namespace {

void append(QLatin1StringView kind, const QString& statement)
{
    const QString path = qEnvironmentVariable("PLANILHA_SQL_TRACE");
    if (path.isEmpty()) {
        return;
    }
    QString line = statement;
    line.replace(QStringLiteral("\r\n"), QStringLiteral("\\n"));
    line.replace(QLatin1Char('\n'), QStringLiteral("\\n"));
    line.replace(QLatin1Char('\r'), QStringLiteral("\\n"));
    QFile file(path);
    // A trace that cannot be written must not stop the station's work.
    // Statements hold typed passwords: nobody else reads a trace that is made here.
    if (file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered,
                  QFileDevice::ReadOwner | QFileDevice::WriteOwner)) {
        file.write((kind + line + QLatin1Char('\n')).toUtf8());
    }
}

} // namespace

void traceOpen(const QString& statement)
{
    append(QLatin1StringView("open "), statement);
}

void traceExecute(const QString& statement)
{
    append(QLatin1StringView("exec "), statement);
}

} // namespace ado
