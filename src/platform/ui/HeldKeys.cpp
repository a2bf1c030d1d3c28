#include "platform/ui/HeldKeys.h"

#include <QWidget>

namespace platform {

namespace {

bool walks(int key)
{
    switch (key) {
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
    case Qt::Key_Home:
    case Qt::Key_End:
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
        return true;
    default:
        return false;
    }
}

bool writes(const QKeyEvent& event)
{
    const Qt::KeyboardModifiers command =
        event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    if (command && command != (Qt::ControlModifier | Qt::AltModifier)) // AltGr comes as both and makes characters
        return false;
    return event.key() == Qt::Key_Backspace || event.key() == Qt::Key_Delete ||
           (!event.text().isEmpty() && event.text().front().isPrint());
}

bool takesText(const QObject* focus)
{
    const auto* const widget = qobject_cast<const QWidget*>(focus);
    return widget && widget->testAttribute(Qt::WA_InputMethodEnabled);
}

} // namespace

std::unique_ptr<QKeyEvent> HeldKeys::marked(const QKeyEvent& event)
{
    const quint64 time = event.timestamp();
    if (event.type() == QEvent::KeyRelease) {
        m_releasedKey = event.nativeScanCode();
        m_releasedAt = time;
    } else if (!event.isAutoRepeat() && time != 0 && time == m_releasedAt && event.nativeScanCode() == m_releasedKey) {
        auto repeat = std::make_unique<QKeyEvent>(event.type(), event.key(), event.modifiers(), event.nativeScanCode(),
                                                  event.nativeVirtualKey(), event.nativeModifiers(), event.text(), true,
                                                  event.count(), event.device());
        repeat->setTimestamp(time);
        return repeat;
    }
    return std::unique_ptr<QKeyEvent>(event.clone());
}

bool HeldKeys::mayRepeat(const QKeyEvent& event)
{
    return walks(event.key()) || writes(event);
}

bool HeldKeys::mayAct(const QKeyEvent& event, const QObject* focus)
{
    if (event.type() != QEvent::KeyPress)
        return true;
    if (!event.isAutoRepeat()) {
        m_pressedOn = focus;
        m_modifiers = event.modifiers();
        return true;
    }
    if (event.key() == Qt::Key_Tab || event.key() == Qt::Key_Backtab)
        return true; // the one key that is there to move the focus
    return focus == m_pressedOn && event.modifiers() == m_modifiers && (walks(event.key()) || takesText(focus));
}

} // namespace platform
