#include "platform/ui/InputQueue.h"

#include <QAbstractButton>
#include <QAbstractSpinBox>
#include <QApplication>
#include <QComboBox>
#include <QHeaderView>
#include <QScrollBar>
#include <QShortcutEvent>
#include <QSizeGrip>
#include <QSplitterHandle>
#include <QWidget>

#include <algorithm>
#include <utility>

QT_BEGIN_NAMESPACE
// As declared by the test library: what the desktop's own keys go through before a window gets them.
Q_GUI_EXPORT bool qt_sendShortcutOverrideEvent(QObject* receiver, ulong timestamp, int key,
                                               Qt::KeyboardModifiers modifiers, const QString& text, bool autoRepeat,
                                               ushort count);
QT_END_NAMESPACE

namespace platform {

namespace {

constexpr qint64 releaseMilliseconds = 15;    ///< A release may turn out to be half of a repeat.
constexpr qint64 comingUpMilliseconds = 2000; ///< Longer a window is not waited for.

InputQueue* theQueue = nullptr;

/// The modal window and what hangs on it: its pop-ups and dialogs.
bool belongsTo(const QWindow* window, const QWidget& modal)
{
    const QWindow* const handle = modal.windowHandle();
    return handle && (window == handle || window->type() == Qt::Popup ||
                      handle->isAncestorOf(window, QWindow::IncludeTransients));
}

/// The modal window that is up and has not got the focus yet, or nullptr.
QWindow* modalWithoutFocus()
{
    const QWidget* const modal = QApplication::activeModalWidget();
    const QWindow* const focus = QGuiApplication::focusWindow();
    return modal && !(focus && belongsTo(focus, *modal)) ? modal->windowHandle() : nullptr;
}

QWidget* widgetAt(const QWindow& window, QPointF position)
{
    for (QWidget* const top : QApplication::topLevelWidgets()) {
        if (top->windowHandle() == &window) {
            QWidget* const child = top->childAt(position.toPoint());
            return child ? child : top;
        }
    }
    return nullptr;
}

/// Scrolling and sizing, which no handler has a part in.
bool onlyMovesTheView(const QWidget* widget)
{
    return qobject_cast<const QScrollBar*>(widget) || qobject_cast<const QSizeGrip*>(widget) ||
           qobject_cast<const QSplitterHandle*>(widget) ||
           (widget && qobject_cast<const QHeaderView*>(widget->parentWidget()));
}

/// Turned over one of these that has the focus, the wheel chooses something.
bool wheelChooses(const QWidget* widget)
{
    for (; widget; widget = widget->parentWidget()) {
        if (qobject_cast<const QComboBox*>(widget) || qobject_cast<const QAbstractSpinBox*>(widget))
            return widget->hasFocus();
    }
    return false;
}

bool canGetFocus(const QWidget& window)
{
    const Qt::WindowType type = window.windowType();
    return (type == Qt::Window || type == Qt::Dialog) && !window.testAttribute(Qt::WA_ShowWithoutActivating);
}

} // namespace

void InputQueue::install(QApplication& application)
{
    if (!theQueue)
        theQueue = new InputQueue(application);
}

InputQueue::InputQueue(QApplication& application)
    : QObject(&application)
    , m_handover(makeKeyHandover(modalWithoutFocus))
{
    m_later.setSingleShot(true);
    connect(&m_later, &QTimer::timeout, this, &InputQueue::schedule);
    connect(&application, &QGuiApplication::focusWindowChanged, this, [this](QWindow* window) {
        if (window) {
            m_focusOrder.removeAll(window);
            m_focusOrder.removeAll(nullptr);
            m_focusOrder.append(window);
        }
        m_handover->focusCame(window);
        schedule();
    });
    connect(this, &QObject::destroyed, [] { theQueue = nullptr; });
    application.installEventFilter(this);
}

InputQueue::Busy::Busy()
{
    if (theQueue)
        theQueue->m_busy.push_back({QApplication::activeModalWidget(), QApplication::activePopupWidget()});
}

InputQueue::Busy::~Busy()
{
    if (!theQueue)
        return;
    theQueue->m_busy.pop_back();
    theQueue->schedule();
}

InputQueue::Filling::Filling()
{
    if (theQueue)
        ++theQueue->m_fills;
}

InputQueue::Filling::~Filling()
{
    if (theQueue)
        --theQueue->m_fills;
}

InputQueue::GoingOn::GoingOn()
{
    if (theQueue)
        ++theQueue->m_goingOn;
}

InputQueue::GoingOn::~GoingOn()
{
    if (theQueue)
        --theQueue->m_goingOn;
}

InputQueue::Dropping::Dropping(std::function<bool(const QEvent&)> drops)
{
    if (theQueue)
        m_before = std::exchange(theQueue->m_drops, std::move(drops));
}

InputQueue::Dropping::~Dropping()
{
    if (theQueue)
        theQueue->m_drops = std::move(m_before);
}

bool InputQueue::isWaiting()
{
    return theQueue && theQueue->hasPressWaiting();
}

bool InputQueue::isIdle()
{
    return !theQueue ||
           (theQueue->m_waiting.empty() && !theQueue->isClosed() && !theQueue->m_comingUp && !modalWithoutFocus());
}

/// True keeps the event from where it was going.
bool InputQueue::eventFilter(QObject* watched, QEvent* event)
{
    const bool fromDesktop = event->spontaneous() && watched->isWindowType();
    switch (event->type()) {
    case QEvent::ShortcutOverride:
        if (fromDesktop)
            event->accept(); // The key itself comes next; shortcuts are looked for when it is handed on.
        return fromDesktop;
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
        return fromDesktop && takeKey(*static_cast<QKeyEvent*>(event));
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
        return fromDesktop && takeMouse(*static_cast<QWindow*>(watched), *static_cast<QMouseEvent*>(event));
    case QEvent::ContextMenu:
        if (!fromDesktop)
            return false;
        append(std::unique_ptr<QEvent>(event->clone()), static_cast<QWindow*>(watched), 0);
        return true;
    case QEvent::Wheel:
        if (!fromDesktop || !isClosed() ||
            !wheelChooses(widgetAt(*static_cast<QWindow*>(watched), static_cast<QWheelEvent*>(event)->position())))
            return false;
        append(std::unique_ptr<QEvent>(event->clone()), static_cast<QWindow*>(watched), 0);
        return true;
    case QEvent::InputMethod:
        return !m_sending && takeComposed(*static_cast<QInputMethodEvent*>(event));
    case QEvent::Shortcut:
        // A button would press itself a tenth of a second later, and be overtaken by the next key.
        if (auto* const button = qobject_cast<QAbstractButton*>(watched)) {
            if (!static_cast<QShortcutEvent*>(event)->isAmbiguous()) {
                button->click();
                return true;
            }
        }
        return false;
    case QEvent::Show:
        if (auto* const widget = qobject_cast<QWidget*>(watched); widget && widget->isWindow() && !event->spontaneous())
            windowShown(*widget);
        return false;
    case QEvent::WindowActivate:
    case QEvent::Hide:
        if (!event->spontaneous() || event->type() == QEvent::WindowActivate)
            windowGone(watched);
        return false;
    default:
        return false;
    }
}

bool InputQueue::takeKey(const QKeyEvent& event)
{
    std::unique_ptr<QKeyEvent> key = m_held.marked(event);
    if (key->isAutoRepeat()) {
        // The release before a repeat that came unmarked is none.
        if (!m_waiting.empty() && m_waiting.back().event->type() == QEvent::KeyRelease &&
            m_waiting.back().time == key->timestamp() && key->timestamp() != 0)
            m_waiting.pop_back();
        if (key->type() == QEvent::KeyRelease || !HeldKeys::mayRepeat(*key))
            return true;
    }
    const bool press = key->type() == QEvent::KeyPress;
    if (!hasPressWaiting() && isClosed()) {
        if (press && m_fills > 0 && m_goingOn == 0 && key->key() == Qt::Key_Escape && isKeyReady()) {
            sendKey(*key);
            return true;
        }
        if (m_drops && m_drops(*key))
            return true;
    }
    const quint64 time = key->timestamp();
    append(std::move(key), nullptr, time);
    return true;
}

bool InputQueue::takeMouse(QWindow& window, const QMouseEvent& event)
{
    if (event.type() == QEvent::MouseButtonPress || event.type() == QEvent::MouseButtonDblClick)
        m_passing = onlyMovesTheView(widgetAt(window, event.position()));
    if (m_passing)
        return false;
    if (event.type() == QEvent::MouseMove) {
        // Moving with the button down goes behind the press; without, it means nothing to a handler.
        if (m_waiting.empty() || event.buttons() == Qt::NoButton)
            return false;
        if (m_waiting.back().event->type() == QEvent::MouseMove)
            m_waiting.pop_back();
    } else if (!hasPressWaiting() && isClosed() && m_drops && m_drops(event)) {
        return true;
    }
    append(std::unique_ptr<QEvent>(event.clone()), &window, 0);
    return true;
}

/// Accents and other composed characters are sent to the focus by the input method, past the keys before them.
bool InputQueue::takeComposed(const QInputMethodEvent& event)
{
    if (m_waiting.empty() && event.commitString().isEmpty() && event.preeditString().isEmpty())
        return false;
    append(std::unique_ptr<QEvent>(event.clone()), nullptr, m_handover->lastKeyTime());
    return true;
}

void InputQueue::append(std::unique_ptr<QEvent> event, QWindow* window, quint64 time)
{
    Entry entry{std::move(event), window, time, {}};
    entry.waited.start();
    auto place = m_waiting.end();
    // A composed character is told when its key is read; keys that were read before it come after it.
    while (time != 0 && place != m_waiting.begin() && (place - 1)->event->type() == QEvent::InputMethod &&
           (place - 1)->time > time)
        --place;
    m_waiting.insert(place, std::move(entry));
    schedule();
}

void InputQueue::windowShown(QWidget& window)
{
    if (!canGetFocus(window))
        return;
    m_comingUp = &window;
    m_sinceShown.start();
    QWindow* const handle = window.windowHandle();
    if (!handle || handle->property("inputQueue").toBool())
        return;
    handle->setProperty("inputQueue", true);
    connect(handle, &QWindow::visibleChanged, this, [this, handle](bool visible) {
        if (!visible)
            leavesScreen(*handle);
    });
}

void InputQueue::windowGone(QObject* window)
{
    if (window == m_comingUp)
        m_comingUp = nullptr;
    m_handover->focusCame(QGuiApplication::focusWindow());
    schedule();
}

/// The window that had the focus before gets it back, as from every desktop.
void InputQueue::leavesScreen(QWindow& window)
{
    if (QGuiApplication::focusWindow() != &window)
        return;
    for (auto before = m_focusOrder.crbegin(); before != m_focusOrder.crend(); ++before) {
        if (*before && *before != &window && (*before)->isVisible()) {
            m_handover->handOver(**before);
            return;
        }
    }
}

/// Releases and moves that wait hold nothing up.
bool InputQueue::hasPressWaiting() const
{
    return std::any_of(m_waiting.begin(), m_waiting.end(), [](const Entry& entry) {
        const QEvent::Type type = entry.event->type();
        return type != QEvent::KeyRelease && type != QEvent::MouseButtonRelease && type != QEvent::MouseMove;
    });
}

/// While a handler runs, unless it has opened a modal window or a menu.
bool InputQueue::isClosed() const
{
    if (m_busy.empty())
        return false;
    const Handler& handler = m_busy.back();
    const QWidget* const modal = QApplication::activeModalWidget();
    const QWidget* const popup = QApplication::activePopupWidget();
    return (!modal || modal == handler.modal) && (!popup || popup == handler.popup);
}

bool InputQueue::isKeyReady() const
{
    return QGuiApplication::focusWindow() && !modalWithoutFocus();
}

bool InputQueue::isReady(const Entry& entry) const
{
    if (m_comingUp && m_comingUp->isVisible() && m_sinceShown.elapsed() < comingUpMilliseconds)
        return false;
    if (entry.window)
        return true;
    if (entry.event->type() == QEvent::KeyRelease && m_waiting.size() == 1 &&
        entry.waited.elapsed() < releaseMilliseconds)
        return false;
    return isKeyReady();
}

/// Behind what the handlers have posted for themselves.
void InputQueue::schedule()
{
    if (m_scheduled || m_waiting.empty() || isClosed())
        return;
    m_scheduled = true;
    QMetaObject::invokeMethod(this, &InputQueue::deliver, Qt::QueuedConnection);
}

void InputQueue::deliver()
{
    m_scheduled = false;
    if (m_waiting.empty() || isClosed())
        return;
    if (!isReady(m_waiting.front())) {
        m_later.start(m_waiting.front().event->type() == QEvent::KeyRelease ? int(releaseMilliseconds) : 50);
        return;
    }
    Entry entry = std::move(m_waiting.front());
    m_waiting.pop_front();
    const Busy busy;
    send(entry);
}

void InputQueue::send(Entry& entry)
{
    switch (entry.event->type()) {
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
        sendKey(static_cast<QKeyEvent&>(*entry.event));
        break;
    case QEvent::InputMethod: {
        const bool before = std::exchange(m_sending, true);
        if (QObject* const focus = QGuiApplication::focusObject())
            QCoreApplication::sendEvent(focus, entry.event.get());
        m_sending = before;
        break;
    }
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
        sendMouse(static_cast<QMouseEvent&>(*entry.event), entry.window);
        break;
    default:
        if (entry.window && entry.window->isVisible())
            QCoreApplication::sendEvent(entry.window, entry.event.get());
    }
}

void InputQueue::sendKey(QKeyEvent& event)
{
    QWindow* const window = QGuiApplication::focusWindow();
    QObject* const focus = window->focusObject() ? window->focusObject() : window;
    if (!m_held.mayAct(event, focus))
        return;
    if (event.type() == QEvent::KeyPress &&
        qt_sendShortcutOverrideEvent(focus, static_cast<ulong>(event.timestamp()), event.key(), event.modifiers(),
                                     event.text(), event.isAutoRepeat(), static_cast<ushort>(event.count())))
        return;
    QCoreApplication::sendEvent(window, &event);
}

/// A press goes to what lies under the mouse by now, its release where the press went.
void InputQueue::sendMouse(QMouseEvent& event, QWindow* window)
{
    if (event.type() == QEvent::MouseButtonPress || event.type() == QEvent::MouseButtonDblClick) {
        QWindow* const under = QGuiApplication::topLevelAt(event.globalPosition().toPoint());
        m_mouseWindow = under ? under : window;
        const QWidget* const modal = QApplication::activeModalWidget();
        if (modal && !belongsTo(m_mouseWindow, *modal))
            m_mouseWindow = nullptr;
    }
    if (!m_mouseWindow || !m_mouseWindow->isVisible())
        return;
    if (m_mouseWindow == window) {
        QCoreApplication::sendEvent(window, &event);
        return;
    }
    const QPointF position = m_mouseWindow->mapFromGlobal(event.globalPosition());
    QMouseEvent moved(event.type(), position, position, event.globalPosition(), event.button(), event.buttons(),
                      event.modifiers(), event.pointingDevice());
    moved.setTimestamp(event.timestamp());
    QCoreApplication::sendEvent(m_mouseWindow, &moved);
}

} // namespace platform
