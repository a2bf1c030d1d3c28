#include "platform/print/PrintDialog.h"

#include <QApplication>
#include <QPrintDialog>
#include <QPrinter>

namespace platform {

namespace {

Duplex duplexOf(QPrinter::DuplexMode mode)
{
    switch (mode) {
    case QPrinter::DuplexNone:
        return Duplex::OneSided;
    case QPrinter::DuplexLongSide:
        return Duplex::LongEdge;
    case QPrinter::DuplexShortSide:
        return Duplex::ShortEdge;
    case QPrinter::DuplexAuto:
        break;
    }
    return Duplex::QueueDefault;
}

} // namespace

PrinterChoice PrintDialog::choose(const QString& title)
{
    QPrinter printer;
    printer.setDocName(title);
    printer.setPageSize(QPageSize(QPageSize::A4));

    QPrintDialog dialog(&printer, QApplication::activeWindow());
    dialog.setObjectName(QStringLiteral("dlgPrinter"));
    dialog.setWindowTitle(QStringLiteral("Imprimir"));
    // The whole document is always printed; its paper is the report's own.
    dialog.setOptions(QAbstractPrintDialog::PrintToFile);
    if (dialog.exec() != QDialog::Accepted)
        throw UserCancelled();

    PrinterChoice choice;
    choice.deviceName = printer.printerName();
    if (printer.outputFormat() == QPrinter::PdfFormat)
        choice.fileName = printer.outputFileName();
    choice.copies = printer.copyCount();
    choice.duplex = duplexOf(printer.duplex());
    return choice;
}

} // namespace platform
