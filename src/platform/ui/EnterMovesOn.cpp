#include "platform/ui/EnterMovesOn.h"

#include "platform/ui/Keys.h"

#include <QCoreApplication>

namespace platform {

void EnterMovesOn::watch(QWidget* widget)
{
    widget->installEventFilter(this);
}

void EnterMovesOn::watch(QWidget* widget, QWidget* next)
{
    m_next.insert(widget, next);
    watch(widget);
}

bool EnterMovesOn::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::KeyPress)
        return false;
    if (!isEnter(*static_cast<QKeyEvent*>(event)))
        return false;
    if (const QPointer<QWidget> next = m_next.value(watched)) {
        next->setFocus(Qt::TabFocusReason);
        return true;
    }
    QKeyEvent tab(QEvent::KeyPress, Qt::Key_Tab, Qt::NoModifier, QStringLiteral("\t"));
    QCoreApplication::sendEvent(watched, &tab);
    return true;
}

} // namespace platform
