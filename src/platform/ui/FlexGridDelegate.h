#pragma once

#include <QStyledItemDelegate>

namespace platform {

/// Paints the cells of a FlexGrid. The current row keeps the cells' own colours: it is told by a frame around the row
/// and, on uncoloured cells, by a light tint.
class FlexGridDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    static constexpr int padding = 4; ///< Blank pixels left and right of a cell's text.

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override;
};

} // namespace platform
