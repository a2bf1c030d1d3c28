#include "platform/ui/KeyHandover.h"

#include <QAbstractNativeEventFilter>
#include <QGuiApplication>
#include <QPointer>
#include <QWindow>

#include <xcb/xcb.h>

#include <algorithm>
#include <cstring>
#include <deque>
#include <utility>

namespace platform {

namespace {

/// An X server sends a key to the window that has the focus at that moment. A modal window gets the focus a while after
/// it was shown, and keys that were sent to the window below it until then would be thrown away: that one is blocked.
/// They are kept here and sent once more, to the modal window, when it has the focus.
class X11KeyHandover : public KeyHandover, public QAbstractNativeEventFilter
{
public:
    X11KeyHandover(xcb_connection_t* connection, std::function<QWindow*()> waitsForFocus)
        : m_connection(connection)
        , m_waitsForFocus(std::move(waitsForFocus))
    {
        qApp->installNativeEventFilter(this);
    }

    [[nodiscard]] quint32 lastKeyTime() const override { return m_lastKeyTime; }

    void focusCame(QWindow* window) override
    {
        m_focus = window;
        if (!m_waitsForFocus())
            sendKept();
    }

    void handOver(QWindow& next) override
    {
        // Left to the window manager, keys would go nowhere until it has chosen a window.
        xcb_set_input_focus(m_connection, XCB_INPUT_FOCUS_PARENT, static_cast<xcb_window_t>(next.winId()),
                            XCB_CURRENT_TIME);
        xcb_flush(m_connection);
    }

    bool nativeEventFilter(const QByteArray& type, void* message, qintptr*) override
    {
        if (type != "xcb_generic_event_t")
            return false;
        const auto& event = *static_cast<const xcb_generic_event_t*>(message);
        const int kind = event.response_type & ~sent;
        if (kind != XCB_KEY_PRESS && kind != XCB_KEY_RELEASE)
            return false;
        Key key{};
        std::memcpy(&key, message, sizeof key);
        if ((event.response_type & sent) != 0 && hasComeRound(key)) {
            // Its turn now.
        } else if (m_waitsForFocus() || !m_kept.empty() || !m_expected.empty()) {
            key.response_type = static_cast<uint8_t>(kind);
            m_kept.push_back(key);
            if (!m_waitsForFocus())
                sendKept();
            return true;
        }
        m_lastKeyTime = key.time;
        return false;
    }

private:
    using Key = xcb_key_press_event_t; // A release looks the same.
    static constexpr int sent = 0x80;  ///< Marks an event that a program has sent.

    /// True for a key that was sent round. Keys before it that a closing window has swallowed are given up.
    [[nodiscard]] bool hasComeRound(const Key& key)
    {
        const auto same = [&key](const Key& other) {
            return other.time == key.time && other.detail == key.detail &&
                   other.response_type == (key.response_type & ~sent);
        };
        const auto found = std::find_if(m_expected.begin(), m_expected.end(), same);
        if (found == m_expected.end())
            return false;
        m_expected.erase(m_expected.begin(), found + 1);
        return true;
    }

    /// Keys that come meanwhile are sent round as well: they must stay behind these.
    void sendKept()
    {
        if (m_kept.empty() || !m_focus || !m_focus->isVisible())
            return; // A window that is closing would swallow them.
        for (Key& key : m_kept) {
            key.event = static_cast<xcb_window_t>(m_focus->winId());
            xcb_send_event(m_connection, 0, key.event, XCB_EVENT_MASK_NO_EVENT, reinterpret_cast<const char*>(&key));
            m_expected.push_back(key);
        }
        m_kept.clear();
        xcb_flush(m_connection);
    }

    xcb_connection_t* m_connection;
    std::function<QWindow*()> m_waitsForFocus;
    QPointer<QWindow> m_focus;
    std::deque<Key> m_kept;
    std::deque<Key> m_expected; ///< Sent round and not read yet.
    quint32 m_lastKeyTime = 0;
};

} // namespace

std::unique_ptr<KeyHandover> makeKeyHandover(std::function<QWindow*()> waitsForFocus)
{
    // Without its own display the offscreen platform has the interface, and no connection.
    auto* const x11 = qApp->nativeInterface<QNativeInterface::QX11Application>();
    if (x11 && x11->connection() && QGuiApplication::platformName() == u"xcb")
        return std::make_unique<X11KeyHandover>(x11->connection(), std::move(waitsForFocus));
    return std::make_unique<KeyHandover>();
}

} // namespace platform
