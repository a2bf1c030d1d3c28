#include "platform/vb/TypedNumber.h"

#include <QRegularExpression>

namespace vb {

QString typedNumber(QString text)
{
    if (!text.contains(u',') && text.count(u'.') == 1)
        text.replace(u'.', u',');
    return text;
}

QString pastedNumber(const QString& text)
{
    static const QRegularExpression figure(QStringLiteral(R"((?<![\d.,])\d{1,3}(\.\d{3})+(?=(,\d*)?(?![\d.,])))"));
    QString plain;
    qsizetype done = 0;
    for (auto matches = figure.globalMatch(text); matches.hasNext();) {
        const QRegularExpressionMatch match = matches.next();
        plain += text.mid(done, match.capturedStart() - done) + match.captured().remove(u'.');
        done = match.capturedEnd();
    }
    return plain + text.mid(done);
}

} // namespace vb
