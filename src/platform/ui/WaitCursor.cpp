#include "platform/ui/WaitCursor.h"

#include <QApplication>
#include <QCursor>

#include <chrono>

namespace platform {

WaitCursor::WaitCursor()
{
    m_patience.setSingleShot(true);
    const QWidget* const modal = QApplication::activeModalWidget();
    QObject::connect(&m_patience, &QTimer::timeout, &m_patience, [this, modal] {
        // A box or window that the work has opened waits for the operator, not the operator for the program.
        if (QApplication::activeModalWidget() != modal) {
            m_patience.start();
            return;
        }
        m_shown = true;
        QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    });
    m_patience.start(std::chrono::milliseconds(500));
}

WaitCursor::~WaitCursor()
{
    if (m_shown)
        QGuiApplication::restoreOverrideCursor();
}

} // namespace platform
