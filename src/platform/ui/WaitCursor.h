#pragma once

#include <QTimer>

namespace platform {

/// Hourglass over the program while this object lives, from half a second on. It comes when the work lets events run.
class WaitCursor
{
public:
    WaitCursor();
    ~WaitCursor();
    WaitCursor(const WaitCursor&) = delete;
    WaitCursor& operator=(const WaitCursor&) = delete;

private:
    QTimer m_patience;
    bool m_shown = false;
};

} // namespace platform
