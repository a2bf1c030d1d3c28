#include "reports/SheetReport.h"

#include "platform/print/PrinterObject.h"
#include "platform/ui/FlexGrid.h"
#include "platform/ui/Seams.h"
#include "platform/vb/Format.h"
#include "reports/frmp.h"
#include "shared/Emitente.h"
#include "shared/Module1.h"

#include <QLabel>

namespace reports {

namespace {

void fillGrid(frmp& layout, const platform::FlexGrid& readings)
{
    constexpr const char16_t* Patterns[] = {u"00", u"",         u"@@@@@@@@@@@@@@@", u"@@@@@@@@@@@@@@@",
                                            u"",   u"@@@@@@@@", u"@@@@@@",          u"@@@@@@@@@@"};
    layout.formata_grade();
    for (int row = 1; row < readings.Rows(); ++row) {
        QStringList cells;
        for (int column = 0; column < 8; ++column) {
            const QString text = readings.TextMatrix(row, column);
            const QStringView pattern(Patterns[column]);
            cells.append(pattern.isEmpty() ? text : vb::Format(text, pattern));
        }
        layout.flex().AddItem(cells);
    }
}

} // namespace

bool imprime_planilha(const platform::FlexGrid& readings, const QString& totalValue, const QString& totalLitres,
                      const ReportServices& services)
{
    const Emitente& emitente = services.emitente;
    const QDateTime now = services.clock.now();
    const vb::Date moment = vb::Date::fromQDateTime(now);
    frmp layout(services.events);
    layout.Label(0).setText(emitente.RazaoSocial.toUpper());
    layout.Label(3).setText(emitente.endereco.toUpper());
    layout.Label(4).setText(taxLine(emitente) + QStringLiteral(" // ") + Module1::numero_planilha(now));
    layout.Label(1).setText(vb::Format(moment, u"yymmdd") + vb::Format(moment, u"hhnnss"));
    layout.Label(2).setText(dateLine(now));
    layout.Label(14).setText(alinha8(totalValue));
    layout.Label(15).setText(alinha8(totalLitres));
    fillGrid(layout, readings);

    return printReport(services, QStringLiteral("Planilha de leitura"), [&layout](platform::PrinterObject& printer) {
        printer.setPaperSize(platform::PrinterObject::PaperA4);
        layout.imprime(printer);
    });
}

} // namespace reports
