#include "platform/ui/InputQueue.h"
#include "platform/ui/RealSeams.h"

#include <QCoreApplication>

namespace platform {

namespace {

constexpr qint64 pauseMilliseconds = 10;
/// With a key or click waiting the loop hurries on; the window still repaints and scrolls.
constexpr qint64 hurriedMilliseconds = 200;

} // namespace

ApplicationEvents::ApplicationEvents()
{
    m_sinceLast.start();
}

void ApplicationEvents::DoEvents()
{
    if (m_sinceLast.elapsed() < (InputQueue::isWaiting() ? hurriedMilliseconds : pauseMilliseconds))
        return;
    const InputQueue::Busy handler;
    QCoreApplication::processEvents();
    m_sinceLast.restart();
}

} // namespace platform
