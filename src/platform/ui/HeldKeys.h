#pragma once

#include <QKeyEvent>
#include <QPointer>

#include <memory>

namespace platform {

/// What a key that is held down may do: it acts once, and repeats only where it walks or writes.
class HeldKeys
{
public:
    /// A key as the desktop sends it; the same key marked as a repeat where it is one that came without the mark: a
    /// press that carries the time stamp of the release before it, which is how an X server repeats.
    [[nodiscard]] std::unique_ptr<QKeyEvent> marked(const QKeyEvent& event);

    /// Whether a repeat has anything to do at all. Arrows, Tab, Backspace and what writes text; never Enter, Escape,
    /// the function keys or what presses a button.
    [[nodiscard]] static bool mayRepeat(const QKeyEvent& event);

    /// Whether the key may act on the object that has the focus now. A repeat acts only where its key went down: it
    /// stays a repeat when the focus has moved.
    [[nodiscard]] bool mayAct(const QKeyEvent& event, const QObject* focus);

private:
    quint32 m_releasedKey = 0; ///< Scan code.
    quint64 m_releasedAt = 0;  ///< Milliseconds of the desktop's clock; 0 where it has none.
    QPointer<const QObject> m_pressedOn;
    Qt::KeyboardModifiers m_modifiers; ///< At that press.
};

} // namespace platform
