#include "platform/ui/FocusWatch.h"

#include <QCoreApplication>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QTimer>
#include <QWidget>

namespace platform {

FocusWatch::FocusWatch(QWidget* widget)
    : QObject(widget)
{
    widget->installEventFilter(this);
}

bool FocusWatch::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::FocusIn && event->type() != QEvent::FocusOut)
        return QObject::eventFilter(watched, event);
    const Qt::FocusReason reason = static_cast<QFocusEvent*>(event)->reason();
    if (reason == Qt::ActiveWindowFocusReason || reason == Qt::PopupFocusReason || reason == Qt::MenuBarFocusReason)
        return false;
    if (event->type() == QEvent::FocusIn)
        Q_EMIT GotFocus(reason);
    else
        Q_EMIT LostFocus();
    return false;
}

void sendF4OnFocus(QWidget* widget)
{
    auto* const watch = new FocusWatch(widget);
    QObject::connect(watch, &FocusWatch::GotFocus, widget, [widget](Qt::FocusReason reason) {
        if (reason == Qt::MouseFocusReason)
            return;
        QTimer::singleShot(0, widget, [widget] {
            if (!widget->hasFocus())
                return;
            QKeyEvent f4(QEvent::KeyPress, Qt::Key_F4, Qt::NoModifier);
            QCoreApplication::sendEvent(widget, &f4);
        });
    });
}

} // namespace platform
