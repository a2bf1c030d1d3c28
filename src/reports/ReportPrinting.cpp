#include "reports/ReportPrinting.h"

#include "platform/print/PrinterObject.h"
#include "platform/vb/Format.h"
#include "reports/Mod_getPrinter.h"
#include "shared/Emitente.h"

#include <QScopeGuard>

namespace reports {

bool printReport(const ReportServices& services, const QString& title,
                 const std::function<void(platform::PrinterObject&)>& print)
{
    const platform::Printers& printers = services.printers;
    const QString before = Mod_getPrinter::pega_impressora_padrao(printers.defaultPrinter);
    const auto setBack = qScopeGuard([&] {
        if (!before.isEmpty())
            Mod_getPrinter::define_impressora_padrao(printers.defaultPrinter, before);
    });
    try {
        platform::PrinterObject printer(printers.chooser.choose(title), printers.spooler, title);
        print(printer);
        printer.EndDoc();
        return true;
    } catch (const platform::UserCancelled&) {
        return false;
    }
}

QString dateLine(const QDateTime& moment)
{
    const vb::Date date = vb::Date::fromQDateTime(moment);
    return vb::Format(date, u"Long Date").toUpper() + QStringLiteral(" - ") + vb::Format(date, u"hh:nn:ss");
}

QString taxLine(const Emitente& emitente)
{
    return QStringLiteral("CNPJ: ") + emitente.CNPJ + QStringLiteral(" - INSC: ") + emitente.IE;
}

QString alinha8(const QString& value)
{
    return vb::Format(value, u"@@@@@@@@");
}

} // namespace reports
