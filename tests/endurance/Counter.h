#pragma once

#include "app/frmprincipal.h"
#include "data/StationDatabase.h"
#include "platform/ui/RealSeams.h"
#include "shared/Emitente.h"
#include "shared/Services.h"
#include "shared/SupervisorGate.h"
#include "support/PrintDoubles.h"
#include "support/WindowTest.h"

#include <optional>

namespace endurance {

/// Answers Yes or OK to every box, and keeps what was said.
class Agreeing : public platform::Messages
{
public:
    QStringList said;
    platform::MsgBoxResult MsgBox(const QString& prompt, int style, const QString& title) override;
};

/// The station's counter: the real main window on the database that the settings of a folder name, with the program's
/// own event pump and a clock that is set by hand.
class Counter
{
public:
    Counter(const QString& folder, QDate today);

    template <typename T>
    [[nodiscard]] T& child(const char* name) const
    {
        return support::control<T>(*m_window, name);
    }
    [[nodiscard]] platform::FlexGrid& grid(const char* name) const { return child<platform::FlexGrid>(name); }
    [[nodiscard]] frmprincipal& window() { return *m_window; }
    void enterReading(int row, const QString& reading) const { support::enterReading(*m_window, row, reading); }

    support::TestClock clock;
    Agreeing messages;
    platform::ApplicationEvents events;
    support::TestChooser chooser;
    support::TestDefaultPrinter defaultPrinter;
    support::TestSpooler spooler;
    std::optional<data::StationDatabase> database;
    std::optional<Services> services;

private:
    SupervisorGate m_gate;
    Emitente m_emitente;
    std::optional<frmprincipal> m_window;
};

/// Lets everything pending happen.
void settle();

/// A window beside the main one, open and loaded; `more` is what its constructor takes beside the services.
template <typename Window, typename... More>
std::unique_ptr<Window> opened(Counter& counter, const More&... more)
{
    auto window = std::make_unique<Window>(*counter.services, more..., &counter.window());
    window->show();
    window->activateWindow();
    settle();
    settle();
    return window;
}

} // namespace endurance
