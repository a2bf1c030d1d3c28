#pragma once

#include "app/frmprincipal.h"
#include "data/StationDatabase.h"
#include "platform/ui/RealSeams.h"
#include "reports/ReportPrinting.h"
#include "shared/Emitente.h"
#include "shared/Services.h"
#include "shared/SupervisorGate.h"
#include "station/BenchStation.h"
#include "support/Doubles.h"
#include "support/PrintDoubles.h"

#include <QApplication>
#include <QKeyEvent>
#include <QTemporaryDir>

#include <optional>

namespace platform {
class DatePicker;
class FlexGrid;
} // namespace platform

namespace bench {

/// Answers every box with Yes, or OK, and counts them.
class Agreeing : public platform::Messages
{
public:
    int shown = 0;
    platform::MsgBoxResult MsgBox(const QString& prompt, int style, const QString& title) override;
};

struct Start
{
    double milliseconds = 0;
    qint64 peakBytes = 0; ///< Of the whole process.
};
/// Starts a process with the whole program on a station, as an operator does who types the password at once; from then
/// until the main window has been painted. Ends when the process has.
[[nodiscard]] Start startUp(const BenchStation& station);
/// What that process is called with, a folder behind it, and what it does then; its exit code.
constexpr const char* StartOption = "--start";
[[nodiscard]] int runStart(const QString& folder);

/// The real main window on a station, with the program's own event pump.
class Desk
{
public:
    explicit Desk(const BenchStation& station);

    template <typename T>
    [[nodiscard]] T& child(const char* name) const
    {
        T* const found = m_window->findChild<T*>(QString::fromLatin1(name));
        if (!found)
            qFatal("no control %s", name);
        return *found;
    }
    [[nodiscard]] platform::FlexGrid& grid(const char* name) const;
    /// The period of the history, set without listing it.
    void setPeriod(QDate first, QDate last) const;
    void setSheetDate(QDate day) const;
    [[nodiscard]] frmprincipal& window() { return *m_window; }
    [[nodiscard]] reports::ReportServices reportServices();
    /// A file that the next report goes to.
    [[nodiscard]] QString paper() const { return m_papers.filePath(QStringLiteral("papel.pdf")); }

    support::TestClock clock{QDateTime(BenchStation::today(), QTime(8, 30))};
    Agreeing messages;
    platform::ApplicationEvents events;
    support::TestChooser chooser;
    support::TestDefaultPrinter defaultPrinter;
    support::TestSpooler spooler;
    std::optional<data::StationDatabase> database;
    std::optional<Services> services;

private:
    QTemporaryDir m_papers;
    SupervisorGate m_gate;
    Emitente m_emitente;
    std::optional<frmprincipal> m_window;
};

/// A key to a widget, as the window system sends it.
void press(QWidget& widget, int key, const QString& text = {});
/// Lets everything pending happen, painting included.
void settle();
/// Lets events run until `done`; fails after a minute.
void settleUntil(const std::function<bool()>& done);

} // namespace bench
