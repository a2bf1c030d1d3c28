#include "platform/ui/FlexGridDelegate.h"

#include "platform/ui/PlainText.h"

#include <QAbstractItemView>
#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>

namespace platform {

namespace {

QColor mixed(const QColor& a, const QColor& b, int percentOfB)
{
    const auto part = [percentOfB](int from, int to) { return from + (to - from) * percentOfB / 100; };
    return QColor(part(a.red(), b.red()), part(a.green(), b.green()), part(a.blue(), b.blue()));
}

} // namespace

void FlexGridDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    const QPalette& palette = option.palette;
    const bool current = option.state.testFlag(QStyle::State_Selected);
    const bool active = option.state.testFlag(QStyle::State_Active);
    const QColor mark = palette.color(active ? QPalette::Active : QPalette::Inactive, QPalette::Highlight);

    const QVariant own = index.data(Qt::BackgroundRole);
    QColor background = palette.color(QPalette::Base);
    QColor foreground = palette.color(QPalette::Text);
    if (own.isValid()) {
        background = own.value<QColor>();
        foreground = index.data(Qt::ForegroundRole).value<QColor>();
    } else if (current) {
        background = mixed(background, mark, 22);
    }
    painter->save();
    painter->fillRect(option.rect, background);
    if (current) {
        const int thickness = active ? 2 : 1;
        painter->fillRect(QRect(option.rect.left(), option.rect.top(), option.rect.width(), thickness), mark);
        painter->fillRect(
            QRect(option.rect.left(), option.rect.bottom() - thickness + 1, option.rect.width(), thickness), mark);
    }
    const QRect room = option.rect.adjusted(padding, 0, -padding, 0);
    painter->setFont(option.font);
    painter->setPen(foreground);
    const QString shown = oneLine(limited(index.data().toString(), LongestShown));
    const QString text = option.fontMetrics.elidedText(shown, Qt::ElideRight, room.width(), Qt::TextSingleLine);
    painter->drawText(room, index.data(Qt::TextAlignmentRole).value<Qt::Alignment>().toInt() | Qt::TextSingleLine,
                      text);
    if (current && option.state.testFlag(QStyle::State_HasFocus)) {
        painter->setPen(QPen(foreground, 1, Qt::DotLine));
        painter->drawRect(option.rect.adjusted(1, 3, -2, -4));
    }
    painter->restore();
}

bool FlexGridDelegate::helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                                 const QModelIndex& index)
{
    if (event->type() != QEvent::ToolTip || !index.isValid())
        return QStyledItemDelegate::helpEvent(event, view, option, index);
    QString text = index.data(Qt::ToolTipRole).toString();
    if (text.isEmpty()) {
        const QString cell = limited(index.data().toString(), LongestShown);
        if (option.fontMetrics.horizontalAdvance(cell) + 2 * padding > view->visualRect(index).width())
            text = cell;
    }
    QToolTip::showText(event->globalPos(), toolTipOf(text), view);
    return true;
}

} // namespace platform
