#pragma once

#include "platform/print/Printers.h"

#include <QDateTime>

#include <functional>

struct Emitente;

namespace platform {
class Clock;
class EventPump;
class PrinterObject;
} // namespace platform

namespace reports {

/// What every report is given. Everything outlives the call.
struct ReportServices
{
    const Emitente& emitente;
    platform::Clock& clock;
    platform::EventPump& events;
    platform::Printers printers;
};

/// Asks for the printer, runs `print` on it, ends the document and makes the remembered default printer the default
/// again, whatever happened. False when the user cancelled: nothing was printed. Raises platform::PrintError, and then
/// nothing of the document is in any queue.
bool printReport(const ReportServices& services, const QString& title,
                 const std::function<void(platform::PrinterObject&)>& print);

/// "DOMINGO, 22 DE NOVEMBRO DE 2026 - 22:05:09".
[[nodiscard]] QString dateLine(const QDateTime& moment);
/// "CNPJ: ... - INSC: ...".
[[nodiscard]] QString taxLine(const Emitente& emitente);
/// A total right-aligned in eight characters.
[[nodiscard]] QString alinha8(const QString& value);

} // namespace reports
