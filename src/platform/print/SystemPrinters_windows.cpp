#include "platform/print/PrintDocument.h"
#include "platform/print/SystemPrinters.h"

#include <QPrinter>

#include <qt_windows.h>
#include <winspool.h>

#include <string>

namespace platform {

QString SystemDefaultPrinter::name()
{
    DWORD length = 0;
    GetDefaultPrinterW(nullptr, &length);
    std::wstring name(length, L'\0');
    if (length == 0 || !GetDefaultPrinterW(name.data(), &length))
        throw PrintError(QStringLiteral("Não há impressora padrão."));
    name.resize(length - 1); // without the closing zero
    return QString::fromStdWString(name);
}

void SystemDefaultPrinter::setName(const QString& name)
{
    if (name.isEmpty() || !SetDefaultPrinterW(name.toStdWString().c_str()))
        throw PrintError(QStringLiteral("A impressora \"%1\" não existe.").arg(name));
}

void SystemSpooler::print(const PrintDocument& document, const PrinterChoice& choice)
{
    QPrinter printer(QPrinter::HighResolution);
    printer.setPrinterName(choice.deviceName);
    if (!printer.isValid())
        throw PrintError(QStringLiteral("A impressora \"%1\" não existe.").arg(choice.deviceName));
    printer.setDocName(document.title());
    printer.setPageSize(document.pageSize());
    printer.setFullPage(true);
    printer.setCopyCount(choice.copies);
    switch (choice.duplex) {
    case Duplex::QueueDefault:
        break;
    case Duplex::OneSided:
        printer.setDuplex(QPrinter::DuplexNone);
        break;
    case Duplex::LongEdge:
        printer.setDuplex(QPrinter::DuplexLongSide);
        break;
    case Duplex::ShortEdge:
        printer.setDuplex(QPrinter::DuplexShortSide);
        break;
    }
    try {
        document.paint(printer);
    } catch (...) {
        printer.abort();
        throw;
    }
    if (printer.printerState() == QPrinter::Error)
        throw PrintError(QStringLiteral("A impressora \"%1\" não aceitou a impressão.").arg(choice.deviceName));
}

} // namespace platform
