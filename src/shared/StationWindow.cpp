#include "shared/StationWindow.h"

#include "platform/ui/Boundary.h"
#include "platform/ui/WaitCursor.h"
#include "platform/ui/WindowPlacement.h"
#include "shared/Services.h"

#include <QCloseEvent>
#include <QPushButton>

StationWindow::StationWindow(const Services& services, QWidget* parent)
    : QDialog(parent, Qt::Window | Qt::WindowTitleHint | Qt::WindowSystemMenuHint | Qt::WindowMinMaxButtonsHint |
                          Qt::WindowCloseButtonHint)
    , m_services(services)
{}

void StationWindow::laidOut()
{
    // A dialog would give Enter to its first button; here Enter belongs to the field that has the focus.
    for (QPushButton* button : findChildren<QPushButton*>())
        button->setAutoDefault(false);
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
    if (!closeInnermost())
        close();
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
    m_closed = false;
    QDialog::showEvent(event);
}

void StationWindow::deleteIfDone()
{
    if (m_closed && m_deleteWhenClosed && m_running == 0)
        deleteLater();
}
