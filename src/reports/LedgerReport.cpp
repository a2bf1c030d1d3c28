#include "reports/LedgerReport.h"

#include "platform/print/PrinterObject.h"
#include "platform/ui/FlexGrid.h"
#include "platform/ui/PlainText.h"
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
constexpr int InvoiceColumn = 6;
constexpr int ColumnCount = 8;

int endOf(int column)
{
    return column + 1 < ColumnCount ? Columns[column + 1].start : Listing::Columns + 1;
}

void addCell(ListingLine& line, int column, const QString& text)
{
    if (column == 0) {
        line.append({Columns[column].start, text, endOf(column) - Columns[column].start});
        return;
    }
    const bool number = column == CreditColumn || column == DebitColumn;
    addFramed(line, Columns[column].start, number ? vb::Format(text, u"@@@@@@@@@@@@") : text, endOf(column),
              column == InvoiceColumn ? Fit::Whole : Fit::Digits);
}

/// A row of the grid; an invoice number that cannot be read in the width of its column goes on in further lines.
QList<ListingLine> linesOf(const platform::FlexGrid& movements, int row)
{
    constexpr int Width = Columns[InvoiceColumn + 1].start - Columns[InvoiceColumn].start - 1;
    constexpr qsizetype MostLines = 40;
    const QString invoice = platform::limited(movements.TextMatrix(row, InvoiceColumn), MostLines * Width);
    const qsizetype perLine = invoice.size() > 2 * Width ? Width : 2 * Width;
    QList<ListingLine> lines;
    for (qsizetype start = 0; start == 0 || start < invoice.size(); start += perLine) {
        ListingLine line;
        for (int column = 0; column < ColumnCount; ++column)
            addCell(line, column,
                    column == InvoiceColumn ? invoice.mid(start, perLine)
                    : start == 0            ? movements.TextMatrix(row, column)
                                            : QString());
        lines.append(line);
    }
    return lines;
}

} // namespace

bool imprime_controle(const platform::FlexGrid& movements, const QString& product, QDate first, QDate last,
                      const QString& totalCredit, const QString& totalDebit, const ReportServices& services)
{
    const ListingLine dashes{{1, Module1::linha_traco()}};
    const QString title = QStringLiteral("Controle Estoque Vinculado Bombas");
    const QDateTime now = services.clock.now();
    Listing listing(listingName(services.emitente, title, now));
    listing.addBlank();
    listing.addTogether(bothEnds({}, title));
    addStationHeader(listing, services.emitente, now);
    listing.addTogether(
        bothEnds(QStringLiteral("Produto: ") + product,
                 QStringLiteral("Período: ") + vb::shortDate(first) + QStringLiteral("<>") + vb::shortDate(last)));
    ListingLine captions;
    for (const Column& column : Columns)
        captions.append({column.start, QString::fromUtf16(column.caption)});
    listing.addTogether({dashes});
    listing.keepWithNext();
    listing.beginRows({captions, dashes});
    for (int row = 1; row < movements.Rows(); ++row)
        listing.addTogether(linesOf(movements, row) + QList<ListingLine>{dashes});
    listing.endRows();
    listing.keepWithNext();
    ListingLine totals;
    addFramed(totals, Columns[3].start, QStringLiteral("Totais"), endOf(3));
    addCell(totals, CreditColumn, totalCredit);
    addCell(totals, DebitColumn, totalDebit);
    listing.addTogether({totals});

    return printReport(services, QStringLiteral("Controle de estoque"),
                       [&](platform::PrinterObject& printer) { listing.print(printer, services.events); });
}

} // namespace reports
