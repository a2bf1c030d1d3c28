#pragma once

#include "app/frmprincipal.h"
#include "data/StationDatabase.h"
#include "platform/ui/DatePicker.h"
#include "shared/Emitente.h"
#include "shared/SupervisorGate.h"
#include "support/PrintDoubles.h"
#include "support/WindowTest.h"

#include <QLabel>

#include <optional>

/// A small station in a database of its own, and the main window on it: 15 March 2024, three fuels, pumps 1, 2 and 7
/// sold from stock codes 101, 101 and 102, two miscellaneous items.
class StationFixture : public support::WindowTest
{
public:
    explicit StationFixture(support::BothBackEnds& database);

    /// Makes the window, loads and shows it, and forgets the statements of that.
    void open();
    [[nodiscard]] frmprincipal& window() { return *m_window; }
    /// The program is gone at once, as in a power cut.
    void cutPower() { m_window.reset(); }

    template <typename T>
    [[nodiscard]] T& child(const char* name) const
    {
        return support::control<T>(*m_window, name);
    }
    [[nodiscard]] platform::FlexGrid& grid(const char* name) const { return child<platform::FlexGrid>(name); }
    [[nodiscard]] platform::DatePicker& date(const char* name) const { return child<platform::DatePicker>(name); }
    [[nodiscard]] QString label(const char* name) const { return child<QLabel>(name).text(); }
    [[nodiscard]] QColor colour(const char* label) const;
    void click(const char* button) { support::click(*m_window, button); }

    /// Enter on row `row` of the pump grid, the reading, Enter.
    void enterReading(int row, const QString& reading) const { support::enterReading(*m_window, row, reading); }
    /// The data rows of a grid.
    [[nodiscard]] QStringList shown(const char* name) const { return support::rowsOf(grid(name)).mid(1); }
    /// Has something happen the n-th time from now that the program lets events run.
    void during(int count, const std::function<void()>& action) { pump.at(pump.count() + count, action); }

    QTemporaryDir folder;
    support::TestChooser chooser;
    support::TestDefaultPrinter defaultPrinter;
    support::TestSpooler spooler;
    int prompts = 0; ///< How often the supervisor password was asked for.
    bool knowsPassword = true;

private:
    Emitente m_emitente;
    SupervisorGate m_gate;
    data::StationDatabase m_station;
    std::optional<Services> m_services;
    std::optional<frmprincipal> m_window;
};
