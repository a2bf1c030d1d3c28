#pragma once

#include "platform/print/Printers.h"

namespace platform {

/// The standard print dialog on the active window: the printers that the system knows, and PDF to a file.
class PrintDialog : public PrinterChooser
{
public:
    PrinterChoice choose(const QString& title) override;
};

} // namespace platform
