#include "reports/LedgerReport.h"

#include "platform/print/PrinterObject.h"
#include "platform/ui/FlexGrid.h"
#include "platform/ui/Seams.h"
#include "platform/vb/Format.h"
#include "reports/Listing.h"
#include "shared/Emitente.h"
#include "shared/Module1.h"

namespace reports {

namespace {

struct Column
{
    int start;
    const char16_t* caption;
};

// The grid's own titles; the row key has none, and the supplier gets one so that a paper explains itself.
constexpr Column Columns[] = {{1, u""},       {9, u"|CodgProd"}, {18, u"|DatOP"},  {27, u"|Descritivo"},
                              {48, u"|Cred"}, {61, u"|Deb"},     {74, u"|NºNota"}, {87, u"|Fornecedor"}};
constexpr int CreditColumn = 4;
constexpr int DebitColumn = 5;

ListingCell cell(int column, const QString& text)
{
    const int start = Columns[column].start;
    const int next = column < 7 ? Columns[column + 1].start : Listing::Columns + 1;
    const bool number = column == CreditColumn || column == DebitColumn;
    const QString shown = number ? vb::Format(text, u"@@@@@@@@@@@@") : text;
    return {start, (column == 0 ? shown : u'|' + shown).left(next - start)};
}

} // namespace

bool imprime_controle(const platform::FlexGrid& movements, const QString& product, QDate first, QDate last,
                      const QString& totalCredit, const QString& totalDebit, const ReportServices& services)
{
    const ListingLine dashes{{1, Module1::linha_traco()}};
    Listing listing;
    listing.addBlank();
    listing.addTogether(bothEnds({}, QStringLiteral("Controle Estoque Vinculado Bombas")));
    addStationHeader(listing, services.emitente, services.clock.now());
    listing.addTogether(
        bothEnds(QStringLiteral("Produto: ") + product,
                 QStringLiteral("Período: ") + vb::shortDate(first) + QStringLiteral("<>") + vb::shortDate(last)));
    ListingLine captions;
    for (const Column& column : Columns)
        captions.append({column.start, QString::fromUtf16(column.caption)});
    listing.addTogether({dashes});
    listing.beginRows({captions, dashes});
    for (int row = 1; row < movements.Rows(); ++row) {
        ListingLine line;
        for (int column = 0; column < 8; ++column)
            line.append(cell(column, movements.TextMatrix(row, column)));
        listing.addTogether({line, dashes});
    }
    listing.endRows();
    listing.addTogether({{{Columns[3].start, QStringLiteral("|Totais")},
                          cell(CreditColumn, totalCredit),
                          cell(DebitColumn, totalDebit)}});

    return printReport(services, QStringLiteral("Controle de estoque"),
                       [&](platform::PrinterObject& printer) { listing.print(printer, services.events); });
}

} // namespace reports
