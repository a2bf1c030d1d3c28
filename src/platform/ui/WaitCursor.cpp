#include "platform/ui/WaitCursor.h"

#include <QCursor>
#include <QGuiApplication>

#include <chrono>

namespace platform {

WaitCursor::WaitCursor()
{
    m_patience.setSingleShot(true);
    QObject::connect(&m_patience, &QTimer::timeout, &m_patience, [this] {
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
