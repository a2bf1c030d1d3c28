#include "platform/ui/TextLabel.h"

#include "platform/ui/PlainText.h"

#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QToolTip>

namespace platform {

namespace {

constexpr int WidestInCharacters = 40;

} // namespace

QRect TextLabel::room() const
{
    return contentsRect().adjusted(margin(), margin(), -margin(), -margin());
}

QString TextLabel::shown() const
{
    return oneLine(limited(text(), LongestShown));
}

QSize TextLabel::sizeHint() const
{
    const QFontMetrics metrics = fontMetrics();
    const int width = qMin(metrics.horizontalAdvance(shown()), metrics.averageCharWidth() * WidestInCharacters);
    const int around = 2 * (frameWidth() + margin());
    return {width + around, metrics.height() + around};
}

QSize TextLabel::minimumSizeHint() const
{
    return {0, sizeHint().height()};
}

int TextLabel::heightForWidth(int width) const
{
    constexpr int Highest = 10'000;
    const int around = 2 * (frameWidth() + margin());
    const QRect most(0, 0, qMax(1, width - around), Highest);
    return wordWrap() ? fontMetrics().boundingRect(most, Qt::TextWordWrap, shown()).height() + around : -1;
}

bool TextLabel::event(QEvent* event)
{
    if (event->type() != QEvent::ToolTip || !toolTip().isEmpty())
        return QLabel::event(event);
    const bool cut = !wordWrap() && fontMetrics().horizontalAdvance(shown()) > room().width();
    QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), toolTipOf(cut ? text() : QString()), this);
    return true;
}

void TextLabel::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    drawFrame(&painter);
    const int mode = wordWrap() ? Qt::TextWordWrap : Qt::TextSingleLine;
    const QString fitting =
        wordWrap() ? shown() : fontMetrics().elidedText(shown(), Qt::ElideRight, room().width(), Qt::TextSingleLine);
    style()->drawItemText(&painter, room(), static_cast<int>(alignment()) | mode, palette(), isEnabled(), fitting,
                          foregroundRole());
}

} // namespace platform
