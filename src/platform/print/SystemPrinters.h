#pragma once

#include "platform/print/Printers.h"

// The system's own print service: CUPS, or the Windows spooler.
namespace platform {

/// On Linux the user's own default as lpoptions keeps it (or LPDEST, PRINTER, or else the server's default).
class SystemDefaultPrinter : public DefaultPrinter
{
public:
    [[nodiscard]] QString name() override;
    void setName(const QString& name) override;
};

/// On Linux sends the document as PDF and looks at every answer of the print service.
class SystemSpooler : public Spooler
{
public:
    void print(const PrintDocument& document, const PrinterChoice& choice) override;
};

} // namespace platform
