#include "shared/StationWindow.h"

#include "platform/ui/Boundary.h"
#include "platform/ui/Keys.h"
#include "platform/ui/WaitCursor.h"
#include "platform/ui/WindowPlacement.h"
#include "shared/Module1.h"
#include "shared/Services.h"

#include <QCloseEvent>
#include <QKeyEvent>
#include <QPushButton>
#include <QScreen>

StationWindow::StationWindow(const Services& services, QWidget* parent)
    : QDialog(parent, Qt::Window | Qt::WindowTitleHint | Qt::WindowSystemMenuHint | Qt::WindowMinMaxButtonsHint |
                          Qt::WindowCloseButtonHint)
    , m_services(services)
{}

void StationWindow::laidOut()
{
    // A dialog would give Enter to its first button; here Enter belongs to the field that has the focus.
    for (QPushButton* button : findChildren<QPushButton*>()) {
        button->setAutoDefault(false);
        button->installEventFilter(this);
    }
    // A screen that is smaller than the form, or scaled, still shows all of it. The frame takes its part.
    constexpr QSize frame(8, 32);
    resize(size().boundedTo(screen()->availableGeometry().size() - frame));
    new platform::WindowPlacement(this);
}

void StationWindow::handle(const std::function<void()>& operation)
{
    ++m_running;
    {
        const platform::WaitCursor wait;
        platform::tellAndStay(m_services.messages, operation);
    }
    --m_running;
    deleteIfDone();
}

void StationWindow::reject()
{
    if (m_sliding || closeInnermost())
        return;
    if (m_slidesAway)
        slideAway();
    else
        close();
}

void StationWindow::slideAway()
{
    m_sliding = true;
    ++m_running;
    platform::WindowPlacement::keep(*this);
    Module1::fecha_deslizando(*this, m_services.events);
    --m_running;
    m_sliding = false;
    deleteIfDone();
}

/// Enter on a button that has the focus presses it; not every desktop's style does that.
bool StationWindow::eventFilter(QObject* watched, QEvent* event)
{
    auto* const button = qobject_cast<QPushButton*>(watched);
    if (!button || event->type() != QEvent::KeyPress || !platform::isEnter(*static_cast<QKeyEvent*>(event)))
        return QDialog::eventFilter(watched, event);
    button->click();
    return true;
}

void StationWindow::keyPressEvent(QKeyEvent* event)
{
    if (!platform::isEnter(*event))
        QDialog::keyPressEvent(event);
}

void StationWindow::closeEvent(QCloseEvent* event)
{
    event->accept();
    if (m_closed)
        return;
    m_closed = true;
    Q_EMIT closed();
    // Ends exec(), which a plain close leaves running for a window that was never visible.
    done(QDialog::Rejected);
    deleteIfDone();
}

void StationWindow::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    if (event->spontaneous())
        return;
    m_closed = false;
    const auto loadWhenUp = [this] {
        if (!m_closed)
            handle([this] { load(); });
    };
    QMetaObject::invokeMethod(this, loadWhenUp, Qt::QueuedConnection);
}

void StationWindow::deleteIfDone()
{
    if (m_closed && m_deleteWhenClosed && m_running == 0)
        deleteLater();
}
