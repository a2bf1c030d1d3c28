#include "platform/ui/RealSeams.h"

#include <QCoreApplication>
#include <QScopedValueRollback>

namespace platform {

namespace {

constexpr qint64 pauseMilliseconds = 10;

} // namespace

ApplicationEvents::ApplicationEvents()
{
    m_sinceLast.start();
}

void ApplicationEvents::DoEvents()
{
    if (m_sinceLast.elapsed() < pauseMilliseconds)
        return;
    const QScopedValueRollback<int> depth(m_depth, m_depth + 1);
    // Inside a handler that these events started, keys and clicks wait in the queue: a key held down must not pile one
    // unfinished loop on another.
    QCoreApplication::processEvents(m_depth > 1 ? QEventLoop::ExcludeUserInputEvents : QEventLoop::AllEvents);
    m_sinceLast.restart();
}

} // namespace platform
