#pragma once

#include "platform/ui/HeldKeys.h"
#include "platform/ui/KeyHandover.h"

#include <QElapsedTimer>
#include <QEvent>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QTimer>
#include <QWindow>

#include <deque>
#include <functional>
#include <memory>
#include <vector>

class QApplication;
class QMouseEvent;

namespace platform {

/// Keys and clicks on their way from the desktop to the windows: one queue for the whole program.
///
/// They are handed on one by one, each after the handlers of the one before have returned, to what has the focus by
/// then: a program that is slow does with them what a fast one would do. A box, menu, dialog or modal window that a
/// handler opens gets them from when it is up. Wheel, scroll bars, moving and resizing, painting and timers pass by.
/// What the program sends by itself is never queued. A key that is held down acts once (HeldKeys).
class InputQueue : public QObject
{
    Q_OBJECT

public:
    /// The program's queue; made once, right after the application object, and belongs to it.
    static void install(QApplication& application);

    /// While it lives a handler runs: keys and clicks for the windows that were there before wait.
    class Busy
    {
    public:
        Busy();
        ~Busy();
        Busy(const Busy&) = delete;
        Busy& operator=(const Busy&) = delete;
    };

    /// While it lives a list is being filled: Escape acts at once when nothing waits before it.
    class Filling
    {
    public:
        Filling();
        ~Filling();
        Filling(const Filling&) = delete;
        Filling& operator=(const Filling&) = delete;
    };

    /// While it lives a handler has more to do after its lists are full: Escape waits as well.
    class GoingOn
    {
    public:
        GoingOn();
        ~GoingOn();
        GoingOn(const GoingOn&) = delete;
        GoingOn& operator=(const GoingOn&) = delete;
    };

    /// While it lives, keys and clicks that `drops` says yes to are thrown away when nothing waits before them.
    class Dropping
    {
    public:
        explicit Dropping(std::function<bool(const QEvent&)> drops);
        ~Dropping();
        Dropping(const Dropping&) = delete;
        Dropping& operator=(const Dropping&) = delete;

    private:
        std::function<bool(const QEvent&)> m_before;
    };

    /// Whether a key or click waits.
    [[nodiscard]] static bool isWaiting();
    /// Whether no handler runs, nothing waits and every window that was opened is up.
    [[nodiscard]] static bool isIdle();

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct Entry
    {
        std::unique_ptr<QEvent> event;
        QPointer<QWindow> window; ///< Of a click: what it was made on.
        quint64 time = 0;         ///< Of a key: milliseconds of the desktop's clock.
        QElapsedTimer waited;
    };

    explicit InputQueue(QApplication& application);

    [[nodiscard]] bool takeKey(const QKeyEvent& event);
    [[nodiscard]] bool takeMouse(QWindow& window, const QMouseEvent& event);
    [[nodiscard]] bool takeComposed(const QInputMethodEvent& event);
    void append(std::unique_ptr<QEvent> event, QWindow* window, quint64 time);
    void windowShown(QWidget& window);
    void windowGone(QObject* window);
    void leavesScreen(QWindow& window);

    [[nodiscard]] bool hasPressWaiting() const;
    [[nodiscard]] bool isClosed() const;
    [[nodiscard]] bool isReady(const Entry& entry) const;
    [[nodiscard]] bool isKeyReady() const;
    void schedule();
    void deliver();
    void send(Entry& entry);
    void sendKey(QKeyEvent& event);
    void sendMouse(QMouseEvent& event, QWindow* window);

    std::deque<Entry> m_waiting;
    /// A handler that runs, with what was on top at its start.
    struct Handler
    {
        QPointer<QWidget> modal;
        QPointer<QWidget> popup;
    };
    std::vector<Handler> m_busy;
    std::function<bool(const QEvent&)> m_drops;
    int m_fills = 0;
    int m_goingOn = 0;
    bool m_scheduled = false;
    bool m_sending = false;
    bool m_passing = false; ///< The mouse button went down on a scroll bar or the like.
    HeldKeys m_held;
    QPointer<QWidget> m_comingUp; ///< Shown by the program and not active yet.
    QElapsedTimer m_sinceShown;
    QPointer<QWindow> m_mouseWindow;       ///< That got the last press.
    QList<QPointer<QWindow>> m_focusOrder; ///< Windows that have had the focus, the latest one last.
    QTimer m_later;
    std::unique_ptr<KeyHandover> m_handover;
};

} // namespace platform
