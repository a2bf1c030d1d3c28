#pragma once

#include "platform/print/Printers.h"

#include <QString>

namespace platform {
class Clock;
class EventPump;
class Messages;
} // namespace platform

// Start-up: settings, the one connection, upgrades, identity, password, main window.
namespace ModConec {

/// What the program runs in. Everything outlives the call.
struct Environment
{
    QString folder; ///< Stands for the program's own folder: settings file and server profiles lie there.
    platform::Messages& messages;
    platform::Clock& clock;
    platform::EventPump& events;
    platform::Printers printers;
};

/// Runs the program until its main window has closed. Returns the exit code: 0 after a run or a cancelled password
/// prompt, 1 when an error has ended the start-up (its text has then been shown).
[[nodiscard]] int Main(const Environment& environment);

} // namespace ModConec
