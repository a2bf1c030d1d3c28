#include "platform/ui/PlainText.h"

#include <QApplication>
#include <QHelpEvent>
#include <QLabel>
#include <QToolTip>

namespace platform {

QString limited(const QString& text, qsizetype most)
{
    return text.size() <= most ? text : text.first(most - 1) + u'…';
}

QString oneLine(QString text)
{
    for (QChar& character : text) {
        if (character.category() == QChar::Other_Control || character == QChar::LineSeparator ||
            character == QChar::ParagraphSeparator)
            character = u' ';
    }
    return text;
}

QString toolTipOf(const QString& text)
{
    if (text.isEmpty())
        return text;
    return QStringLiteral("<p style='white-space:pre-wrap'>%1</p>").arg(limited(text, LongestShown).toHtmlEscaped());
}

PlainTexts::PlainTexts(QApplication& application)
    : QObject(&application)
{
    application.installEventFilter(this);
}

bool PlainTexts::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Polish) {
        auto* const label = qobject_cast<QLabel*>(watched);
        if (label && !label->inherits("QTipLabel")) // That one gets what toolTipOf makes.
            label->setTextFormat(Qt::PlainText);
    } else if (event->type() == QEvent::ToolTip) {
        auto* const widget = qobject_cast<QWidget*>(watched);
        if (widget && !widget->toolTip().isEmpty()) {
            QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), toolTipOf(widget->toolTip()), widget);
            return true;
        }
    }
    return QObject::eventFilter(watched, event);
}

} // namespace platform
