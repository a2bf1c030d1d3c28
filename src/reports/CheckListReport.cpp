#include "reports/CheckListReport.h"

#include "platform/print/PrinterObject.h"
#include "platform/ui/FlexGrid.h"
#include "platform/ui/Seams.h"
#include "platform/vb/Format.h"
#include "reports/Listing.h"
#include "shared/Emitente.h"
#include "shared/Module1.h"

namespace reports {

namespace {

constexpr int DescriptionColumn = 10;
constexpr int ThirdColumn = 45;
constexpr int FourthColumn = 62;
constexpr int CheckColumn = 82;

const ListingLine& dashes()
{
    static const ListingLine line{{1, Module1::linha_traco()}};
    return line;
}

ListingLine captions(const QString& code, const QString& third, const QString& fourth)
{
    return {{1, code},
            {DescriptionColumn, QStringLiteral("|Descritivo")},
            {ThirdColumn, third},
            {FourthColumn, fourth},
            {CheckColumn, QStringLiteral("|Conferência:")}};
}

void addRows(Listing& listing, const platform::FlexGrid& grid)
{
    for (int row = 1; row < grid.Rows(); ++row) {
        const auto number = [&](int column) { return vb::Format(grid.TextMatrix(row, column), u"@@@@@@@@@@@@@@@"); };
        ListingLine line{{1, vb::Format(grid.TextMatrix(row, 0), u"00"), DescriptionColumn - 1}};
        addFramed(line, DescriptionColumn, grid.TextMatrix(row, 1), ThirdColumn);
        addFramed(line, ThirdColumn, number(2), FourthColumn);
        addFramed(line, FourthColumn, number(3), CheckColumn);
        line.append({CheckColumn, QStringLiteral("|")});
        listing.addTogether({line, dashes()});
    }
    listing.endRows();
}

} // namespace

bool imprime_conferencia(const platform::FlexGrid& pumps, const platform::FlexGrid& items, QDate first, QDate last,
                         const ReportServices& services)
{
    const QDateTime now = services.clock.now();
    Listing listing(listingName(services.emitente, QStringLiteral("Conferência"), now));
    listing.addBlank();
    listing.addTogether(bothEnds({}, Module1::numero_planilha(now)));
    addStationHeader(listing, services.emitente, now);

    listing.beginRows(
        {captions(QStringLiteral("NºDispos"), QStringLiteral("|LeituraAnterior"), QStringLiteral("|DataUltimaLeitura")),
         dashes(),
         {}});
    addRows(listing, pumps);

    listing.addBlank(2);
    listing.addTogether({{{1, QStringLiteral("DIVERSOS: ") + vb::shortDate(now.date())}},
                         {{1, Module1::linha_asterisco()}},
                         {{1, QStringLiteral("* ") + QStringLiteral("Baixas = Saidas no intervalo da data: ") +
                                  vb::shortDate(first) + QStringLiteral("<>") + vb::shortDate(last)}}});
    listing.keepWithNext();
    listing.beginRows(
        {captions(QStringLiteral("CdgProd"), QStringLiteral("|SaldAnt"), QStringLiteral("|Baixas*")), dashes()});
    addRows(listing, items);

    listing.keepWithNext();
    QList<ListingLine> signature(4);
    signature.append({{50, QStringLiteral("Responsavel:----------------------------------------------")}});
    listing.addTogether(signature);

    return printReport(services, QStringLiteral("Conferência"),
                       [&](platform::PrinterObject& printer) { listing.print(printer, services.events); });
}

} // namespace reports
