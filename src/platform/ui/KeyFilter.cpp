#include "platform/ui/KeyFilter.h"

#include "platform/vb/TypedNumber.h"

#include <QAction>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QCoreApplication>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMenu>
#include <QPointer>

#include <utility>

namespace platform {

namespace {

constexpr int backspace = 8;
constexpr int enter = 13;

} // namespace

KeyFilter::KeyFilter(QLineEdit* box, Filter filter)
    : QObject(box)
    , m_box(*box)
    , m_filter(std::move(filter))
{
    box->setAcceptDrops(false);
    box->installEventFilter(this);
}

/// True keeps the event from the box.
bool KeyFilter::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::KeyPress:
    case QEvent::InputMethod:
    case QEvent::MouseButtonRelease:
    case QEvent::ContextMenu:
        return watched == &m_box && !m_box.isReadOnly() && input(*event);
    default:
        return false; // Some of them come while the box is already being destroyed.
    }
}

bool KeyFilter::input(QEvent& event)
{
    switch (event.type()) {
    case QEvent::KeyPress:
        return keyPress(static_cast<QKeyEvent&>(event));
    case QEvent::InputMethod: {
        // Dead keys and other composed input.
        auto& composing = static_cast<QInputMethodEvent&>(event);
        if (composing.commitString().isEmpty())
            return false;
        type(composing.commitString());
        QInputMethodEvent composed; // takes the half-made character off the box
        QCoreApplication::sendEvent(&m_box, &composed);
        return true;
    }
    case QEvent::MouseButtonRelease: {
        // The middle button pastes on some desktops.
        const auto& mouse = static_cast<const QMouseEvent&>(event);
        const QClipboard& clipboard = *QGuiApplication::clipboard();
        if (mouse.button() != Qt::MiddleButton || !clipboard.supportsSelection())
            return false;
        paste(clipboard.text(QClipboard::Selection));
        return true;
    }
    case QEvent::ContextMenu:
        replaceEditMenu(static_cast<QContextMenuEvent&>(event));
        return true;
    default:
        return false;
    }
}

bool KeyFilter::keyPress(const QKeyEvent& event)
{
    if (event.matches(QKeySequence::Paste) ||
        (event.key() == Qt::Key_Insert && event.modifiers().testFlag(Qt::ShiftModifier))) {
        paste(QGuiApplication::clipboard()->text());
        return true;
    }
    switch (event.key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return m_filter(enter) == 0;
    case Qt::Key_Backspace:
        return m_filter(backspace) == 0;
    case Qt::Key_Period:
    case Qt::Key_Comma:
        if (event.modifiers().testFlag(Qt::KeypadModifier)) {
            type(QStringLiteral(","));
            return true;
        }
        break;
    default:
        break;
    }
    // AltGr comes as Control and Alt together and makes characters.
    const Qt::KeyboardModifiers command =
        event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    if (event.text().isEmpty() || !event.text().front().isPrint() ||
        (command && command != (Qt::ControlModifier | Qt::AltModifier)))
        return false;
    type(event.text());
    return true;
}

/// A formatted number must not get decimal commas out of its thousands points.
void KeyFilter::paste(const QString& text)
{
    type(vb::pastedNumber(text));
}

void KeyFilter::type(const QString& text)
{
    const QPointer<QLineEdit> alive(&m_box);
    for (const QChar character : text) {
        if (!character.isPrint())
            continue;
        const int kept = m_filter(character.unicode());
        if (!alive)
            return;
        if (kept != 0)
            m_box.insert(QString(QChar(static_cast<char16_t>(kept))));
    }
}

/// The box's own menu would paste past the filter.
void KeyFilter::replaceEditMenu(QContextMenuEvent& event)
{
    QMenu* const menu = m_box.createStandardContextMenu();
    menu->setAttribute(Qt::WA_DeleteOnClose);
    for (QAction* const action : menu->actions()) {
        // The text is all that tells the actions apart; the shortcut follows it after a tab.
        if (action->text().section(u'\t', 0, 0) == QLineEdit::tr("&Paste")) {
            action->disconnect(&m_box);
            connect(action, &QAction::triggered, this, [this] { paste(QGuiApplication::clipboard()->text()); });
        }
    }
    menu->popup(event.globalPos());
}

} // namespace platform
