#include "platform/ado/IgnoredErrors.h"

#include "platform/ado/Error.h"
#include "platform/vb/Error.h"

#include <QRegularExpression>

namespace platform {

Q_LOGGING_CATEGORY(ignoredErrors, "planilha.erros", QtFatalMsg)

void noteIgnored(const std::exception& error)
{
    if (!ignoredErrors().isWarningEnabled())
        return;
    if (const auto* const conversion = dynamic_cast<const vb::Error*>(&error)) {
        qCWarning(ignoredErrors).noquote() << conversion->number() << conversion->description();
        return;
    }
    const auto* const source = dynamic_cast<const ado::Error*>(&error);
    if (!source) {
        qCWarning(ignoredErrors) << error.what();
        return;
    }
    // Up to the statement's end: what has been typed may hold an apostrophe. A server's text repeats parts of it.
    static const QRegularExpression password(QStringLiteral("(?<=\\bsenh = ').*"),
                                             QRegularExpression::DotMatchesEverythingOption);
    QString statement = source->statement();
    const bool isSecret = statement.contains(password);
    statement.replace(password, QStringLiteral("..."));
    qCWarning(ignoredErrors).noquote() << source->number() << u'[' + source->sqlState() + u']'
                                       << (isSecret ? QString() : source->text()) << statement;
}

} // namespace platform
