#pragma once

#include <QProxyStyle>

namespace platform {

/// Fusion with a focus that is seen from a step away: a coloured frame around the box, button, list or grid that has
/// it. Nothing moves by itself: an animation only keeps an operator in a hurry waiting.
class VisibleFocus : public QProxyStyle
{
    Q_OBJECT

public:
    VisibleFocus();

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget = nullptr) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                            const QWidget* widget = nullptr) const override;
    int styleHint(StyleHint hint, const QStyleOption* option = nullptr, const QWidget* widget = nullptr,
                  QStyleHintReturn* returned = nullptr) const override;
};

} // namespace platform
