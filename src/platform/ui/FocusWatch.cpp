#include "platform/ui/FocusWatch.h"

#include <QCoreApplication>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QWidget>

#include <utility>

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
    const bool passing =
        reason == Qt::ActiveWindowFocusReason || reason == Qt::PopupFocusReason || reason == Qt::MenuBarFocusReason;
    if (event->type() == QEvent::FocusOut) {
        if (!passing) {
            m_here = false;
            Q_EMIT LostFocus();
        }
    } else {
        // Given the focus while another window was in front, a widget gets it when its own window is active again.
        const bool givenMeanwhile = !std::exchange(m_here, true) && reason == Qt::ActiveWindowFocusReason;
        if (!passing || givenMeanwhile)
            Q_EMIT GotFocus(reason);
    }
    return false;
}

void sendF4OnFocus(QWidget* widget)
{
    auto* const watch = new FocusWatch(widget);
    QObject::connect(watch, &FocusWatch::GotFocus, widget, [widget](Qt::FocusReason reason) {
        if (reason == Qt::MouseFocusReason)
            return;
        const auto send = [widget] {
            if (!widget->hasFocus())
                return;
            QKeyEvent f4(QEvent::KeyPress, Qt::Key_F4, Qt::NoModifier);
            QCoreApplication::sendEvent(widget, &f4);
        };
        QMetaObject::invokeMethod(widget, send, Qt::QueuedConnection); // before any key that waits
    });
}

} // namespace platform
