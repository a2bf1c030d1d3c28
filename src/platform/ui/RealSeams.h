#pragma once

#include "platform/ui/Seams.h"

#include <QElapsedTimer>

namespace platform {

/// QMessageBox with Portuguese buttons, on the active window. Yes/No boxes can be answered by S and N; Escape is
/// Cancelar, or Não in a Yes/No box.
class MessageBoxes : public Messages
{
public:
    MsgBoxResult MsgBox(const QString& prompt, int style, const QString& title) override;
};

class SystemClock : public Clock
{
private:
    [[nodiscard]] QDateTime read() const override { return QDateTime::currentDateTime(); }
};

/// Runs pending events at most every few milliseconds, so that loops may call it for each of 100,000 rows; more rarely
/// while a key or click waits. Those are never handed on from here (InputQueue).
class ApplicationEvents : public EventPump
{
public:
    ApplicationEvents();
    void DoEvents() override;

private:
    QElapsedTimer m_sinceLast;
};

} // namespace platform
