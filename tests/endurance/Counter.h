#pragma once

#include "app/frmprincipal.h"
#include "data/StationDatabase.h"
#include "platform/ui/RealSeams.h"
#include "shared/Emitente.h"
#include "shared/Services.h"
#include "shared/SupervisorGate.h"
#include "support/PrintDoubles.h"
#include "support/WindowTest.h"

#include <QApplication>
#include <QTemporaryDir>

#include <functional>
#include <optional>

namespace platform {
class DatePicker;
class FlexGrid;
} // namespace platform

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
    [[nodiscard]] platform::FlexGrid& grid(const char* name) const;
    [[nodiscard]] frmprincipal& window() { return *m_window; }
    [[nodiscard]] ado::Connection& connection() { return services->DataConnection; }

    /// Enter on a row of the pump grid, the reading, Enter.
    void enterReading(int row, const QString& reading) const;
    /// The marks of the history, by click.
    void mark(int row) const;

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

} // namespace endurance
