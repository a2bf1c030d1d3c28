#include "platform/ui/EnterMovesOn.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QWidget>

namespace platform {

void EnterMovesOn::watch(QWidget* widget)
{
    widget->installEventFilter(this);
}

bool EnterMovesOn::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::KeyPress)
        return false;
    const auto& key = *static_cast<QKeyEvent*>(event);
    if (key.key() != Qt::Key_Return && key.key() != Qt::Key_Enter)
        return false;
    QKeyEvent tab(QEvent::KeyPress, Qt::Key_Tab, Qt::NoModifier, QStringLiteral("\t"));
    QCoreApplication::sendEvent(watched, &tab);
    return true;
}

} // namespace platform
