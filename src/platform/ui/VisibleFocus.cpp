#include "platform/ui/VisibleFocus.h"

#include <QAbstractScrollArea>
#include <QPainter>
#include <QStyleOption>

namespace platform {

namespace {

void frame(const QStyleOption& option, QPainter& painter)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(option.palette.color(QPalette::Highlight), 2));
    painter.drawRoundedRect(QRectF(option.rect).adjusted(1, 1, -1, -1), 2, 2);
    painter.restore();
}

} // namespace

VisibleFocus::VisibleFocus()
    : QProxyStyle(QStringLiteral("Fusion"))
{}

void VisibleFocus::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                                 const QWidget* widget) const
{
    if (element == PE_FrameFocusRect) {
        // Item views have their own frame around the whole.
        if (!qobject_cast<const QAbstractScrollArea*>(widget))
            frame(*option, *painter);
        return;
    }
    QProxyStyle::drawPrimitive(element, option, painter, widget);
    const bool framed = element == PE_FrameLineEdit || element == PE_PanelButtonCommand ||
                        (element == PE_Frame && qobject_cast<const QAbstractScrollArea*>(widget));
    if (framed && option->state.testFlag(State_HasFocus))
        frame(*option, *painter);
}

void VisibleFocus::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                                      const QWidget* widget) const
{
    QProxyStyle::drawComplexControl(control, option, painter, widget);
    if ((control == CC_ComboBox || control == CC_SpinBox) && option->state.testFlag(State_HasFocus))
        frame(*option, *painter);
}

int VisibleFocus::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                            QStyleHintReturn* returned) const
{
    return hint == SH_Widget_Animation_Duration ? 0 : QProxyStyle::styleHint(hint, option, widget, returned);
}

} // namespace platform
