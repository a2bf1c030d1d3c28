#pragma once

#include <QKeyEvent>

namespace platform {

/// Enter of the main keys or of the keypad.
[[nodiscard]] inline bool isEnter(const QKeyEvent& event)
{
    return event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
}

} // namespace platform
