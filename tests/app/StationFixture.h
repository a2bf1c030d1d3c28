#pragma once

#include "app/frmprincipal.h"
#include "data/StationDatabase.h"
#include "shared/Emitente.h"
#include "shared/Services.h"
#include "shared/SupervisorGate.h"
#include "support/BothBackEnds.h"
#include "support/Doubles.h"
#include "support/PrintDoubles.h"
#include "support/StatementTrace.h"
#include "support/StationSchema.h"

#include <QLabel>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QTest>

#include <optional>

namespace platform {
class DatePicker;
class FlexGrid;
} // namespace platform

/// Writes the settings (and, for MySQL, Host.mdb) that lead the program to a database.
void writeSettings(const QString& folder, const support::BothBackEnds& database);

/// A small station in a database of its own, and the main window on it: 15 March 2024, three fuels, pumps 1, 2 and 7
/// sold from stock codes 101, 101 and 102, two miscellaneous items.
class StationFixture
{
public:
    explicit StationFixture(support::BothBackEnds& database);

    /// Makes the window, loads and shows it.
    frmprincipal& open();

    [[nodiscard]] platform::FlexGrid& grid(const char* name) const;
    [[nodiscard]] platform::DatePicker& date(const char* name) const;
    [[nodiscard]] QString label(const char* name) const;
    template <typename T>
    [[nodiscard]] T& child(const char* name) const
    {
        T* const found = m_window->findChild<T*>(QString::fromLatin1(name));
        if (!found)
            qFatal("no control %s", name);
        return *found;
    }

    /// Enter on row `row` of the pump grid, the reading, Enter.
    void enterReading(int row, const QString& reading);
    /// The data rows of a grid, cells joined by "|".
    [[nodiscard]] QStringList rows(const char* name) const;
    void key(Qt::Key key, QWidget* target = nullptr) const;

    support::BothBackEnds& database;
    QTemporaryDir folder;
    support::TestMessages messages;
    support::TestClock clock{QDateTime(QDate(2024, 3, 15), QTime(8, 30, 5))};
    support::TestPump pump;
    support::TestChooser chooser;
    support::TestDefaultPrinter defaultPrinter;
    support::TestSpooler spooler;
    int prompts = 0; ///< How often the supervisor password was asked for.
    bool knowsPassword = true;
    Emitente emitente;
    SupervisorGate gate;
    std::optional<data::StationDatabase> station;
    std::optional<Services> services;

private:
    std::optional<frmprincipal> m_window;
};
