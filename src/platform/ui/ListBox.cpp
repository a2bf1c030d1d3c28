#include "platform/ui/ListBox.h"

#include "platform/ui/PlainText.h"

#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPointer>
#include <QStyledItemDelegate>
#include <QToolTip>

namespace platform {

namespace {

/// Gives the entries as much room as the rows of a grid have.
class EntryDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        return {QStyledItemDelegate::sizeHint(option, index).width(), option.fontMetrics.height() + 4};
    }
    QString displayText(const QVariant& value, const QLocale&) const override
    {
        return oneLine(limited(value.toString(), LongestShown));
    }
};

} // namespace

ListBox::ListBox(QWidget* parent)
    : QListWidget(parent)
{
    setItemDelegate(new EntryDelegate(this));
    setUniformItemSizes(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setTabKeyNavigation(false);
}

void ListBox::keyPressEvent(QKeyEvent* event)
{
    const QPointer<ListBox> alive(this);
    event->ignore();
    Q_EMIT KeyDown(event);
    if (event->isAccepted() || !alive)
        return;
    const QListWidgetItem* const before = selectedItems().value(0);
    const bool moves = event->key() == Qt::Key_Up || event->key() == Qt::Key_Down || event->key() == Qt::Key_Home;
    const bool chooses = event->key() == Qt::Key_Space && event->modifiers() == Qt::NoModifier;
    if ((chooses || (moves && !before)) && count() > 0) {
        // Coming to a list that has no entry chosen, the first one is the nearest.
        setCurrentRow(std::max(0, currentRow()), QItemSelectionModel::ClearAndSelect);
        event->accept();
        Q_EMIT Click();
        return;
    }
    QListWidget::keyPressEvent(event);
    if (selectedItems().value(0) != before)
        Q_EMIT Click();
}

void ListBox::mousePressEvent(QMouseEvent* event)
{
    QListWidget::mousePressEvent(event);
    m_pressedOnEntry = event->button() == Qt::LeftButton && itemAt(event->position().toPoint()) != nullptr;
}

void ListBox::mouseReleaseEvent(QMouseEvent* event)
{
    const bool clicked = event->button() == Qt::LeftButton && m_pressedOnEntry;
    m_pressedOnEntry = false;
    QListWidget::mouseReleaseEvent(event);
    if (clicked)
        Q_EMIT Click();
}

bool ListBox::viewportEvent(QEvent* event)
{
    if (event->type() != QEvent::ToolTip)
        return QListWidget::viewportEvent(event);
    const auto& help = *static_cast<QHelpEvent*>(event);
    const QListWidgetItem* const item = itemAt(help.pos());
    const bool shortened =
        item && fontMetrics().horizontalAdvance(limited(item->text(), LongestShown)) > viewport()->width() - 8;
    QToolTip::showText(help.globalPos(), shortened ? toolTipOf(item->text()) : QString(), this);
    return true;
}

} // namespace platform
