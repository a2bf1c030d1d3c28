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
public:
    [[nodiscard]] QDateTime now() const override { return QDateTime::currentDateTime(); }
};

class ApplicationEvents : public EventPump
{
public:
    ApplicationEvents();
    void DoEvents() override;

private:
    QElapsedTimer m_sinceLast;
};

} // namespace platform
