#pragma once

#include <QtGlobal>

#include <functional>
#include <memory>

class QWindow;

namespace platform {

/// Keys on the desktop's side while the focus goes from one window of the program to another. Where the desktop keeps
/// them for whoever has the focus when they are read there is nothing to do.
class KeyHandover
{
public:
    virtual ~KeyHandover() = default;
    /// The desktop's time of the last key that was read, in milliseconds; 0 where that is not known.
    [[nodiscard]] virtual quint32 lastKeyTime() const { return 0; }
    /// The focus has come to a window, or to none of the program's.
    virtual void focusCame(QWindow* window) { Q_UNUSED(window) }
    /// The window with the focus is about to leave the screen, and `next` gets the keys from then on.
    virtual void handOver(QWindow& next) { Q_UNUSED(next) }
};

/// `waitsForFocus` is the modal window that has come up and has not got the focus yet, or nullptr.
[[nodiscard]] std::unique_ptr<KeyHandover> makeKeyHandover(std::function<QWindow*()> waitsForFocus);

} // namespace platform
