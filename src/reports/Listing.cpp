#include "reports/Listing.h"

#include "platform/print/PrinterObject.h"
#include "platform/ui/PlainText.h"
#include "platform/ui/Seams.h"
#include "platform/vb/Format.h"
#include "reports/ReportPrinting.h"
#include "shared/Emitente.h"
#include "shared/Module1.h"

namespace reports {

namespace {

constexpr double VerticalMargin = 567;           // 10 mm
constexpr double SmallestHorizontalMargin = 500; // 9 mm
constexpr double LargestFont = 8;
constexpr double SmallestFont = 5;

/// The largest font in which one column more than a full line fits the paper, and the line in the middle of it.
void prepare(platform::PrinterObject& printer)
{
    printer.setPaperSize(platform::PrinterObject::PaperA4);
    printer.setMargins(0, 0);
    printer.setFontName(QStringLiteral("Courier New"));
    printer.setFontBold(false);
    const double paper = printer.ScaleWidth();
    const QString longest(Listing::Columns + 1, u'0');
    double size = LargestFont;
    printer.setFontSize(size);
    while (size > SmallestFont && printer.TextWidth(longest) > paper - 2 * SmallestHorizontalMargin) {
        size -= 0.25;
        printer.setFontSize(size);
    }
    printer.setMargins((paper - printer.TextWidth(longest)) / 2, VerticalMargin);
}

void printCell(platform::PrinterObject& printer, const ListingCell& cell)
{
    printer.Print({platform::Tab{cell.column}}, platform::PrinterObject::LineEnd::Open);
    const double column = printer.TextWidth(QStringLiteral("0"));
    const double room = cell.room > 0 ? cell.room * column : printer.ScaleWidth();
    printFitted(printer, cell.text, printer.CurrentX(), room, cell.fit);
}

} // namespace

void Listing::addTogether(const QList<ListingLine>& lines)
{
    m_blocks.append({lines, m_current, false});
}

void Listing::addBlank(int lines)
{
    addTogether(QList<ListingLine>(lines));
}

void Listing::beginRows(const QList<ListingLine>& captions)
{
    m_blocks.append({captions, 0, true});
    m_captions.append(captions);
    m_current = m_captions.size() - 1;
}

void Listing::endRows()
{
    m_current = 0;
}

void Listing::keepWithNext()
{
    m_blocks.last().keepWithNext = true;
}

QList<QList<ListingLine>> Listing::pages(int linesPerPage) const
{
    QList<QList<ListingLine>> pages(1);
    for (qsizetype i = 0; i < m_blocks.size(); ++i) {
        const Block& block = m_blocks.at(i);
        qsizetype needed = block.lines.size();
        for (qsizetype kept = i; m_blocks.at(kept).keepWithNext && kept + 1 < m_blocks.size(); ++kept)
            needed += m_blocks.at(kept + 1).lines.size();
        if (!pages.last().isEmpty() && pages.last().size() + needed > linesPerPage)
            pages.append(m_captions.at(block.captions));
        pages.last().append(block.lines);
    }
    return pages;
}

void Listing::print(platform::PrinterObject& printer, platform::EventPump& events) const
{
    prepare(printer);
    const double lineHeight = printer.TextHeight();
    const int linesPerPage = static_cast<int>(printer.ScaleHeight() / lineHeight) - 2; // blank and page number
    const QList<QList<ListingLine>> all = pages(linesPerPage);
    for (qsizetype page = 0; page < all.size(); ++page) {
        if (page > 0)
            printer.NewPage();
        for (const ListingLine& line : all.at(page)) {
            for (const ListingCell& cell : line)
                printCell(printer, cell);
            printer.Print(QString());
            events.DoEvents();
        }
        if (all.size() > 1) {
            printer.setCurrentY((linesPerPage + 1) * lineHeight);
            printFoot(printer, page + 1, all.size());
        }
    }
}

void Listing::printFoot(platform::PrinterObject& printer, qsizetype page, qsizetype pages) const
{
    const QString number = QStringLiteral("Página %1 de %2").arg(page).arg(pages);
    const int column = Columns + 1 - static_cast<int>(number.size());
    printCell(printer, {1, m_name, column - 2});
    printCell(printer, {column, number});
}

QList<ListingLine> bothEnds(const QString& leftText, const QString& rightText)
{
    constexpr qsizetype MostLines = 6;
    const QString left = platform::limited(leftText, MostLines * Listing::Columns);
    const QString right = platform::limited(rightText, MostLines * Listing::Columns);
    QList<ListingLine> lines;
    for (qsizetype start = 0; start == 0 || start < left.size(); start += Listing::Columns)
        lines.append({{1, left.mid(start, Listing::Columns)}});
    for (qsizetype start = 0; start < right.size(); start += Listing::Columns) {
        const QString text = right.mid(start, Listing::Columns);
        const ListingCell cell{Listing::Columns + 1 - static_cast<int>(text.size()), text};
        if (start == 0 && lines.last().last().text.size() + text.size() <= Listing::Columns)
            lines.last().append(cell);
        else
            lines.append({cell});
    }
    return lines;
}

void addFramed(ListingLine& line, int column, const QString& text, int next, Fit fit)
{
    line.append({column, QStringLiteral("|")});
    line.append({column + 1, text, next - column - 1, fit});
}

void addStationHeader(Listing& listing, const Emitente& emitente, const QDateTime& moment)
{
    listing.addTogether(bothEnds(emitente.RazaoSocial.toUpper(), dateLine(moment)));
    listing.addTogether(bothEnds(emitente.endereco, taxLine(emitente)));
    listing.add({{1, Module1::linha_asterisco()}});
}

QString listingName(const Emitente& emitente, const QString& report, const QDateTime& moment)
{
    const QStringList parts{emitente.RazaoSocial.toUpper(), report,
                            vb::Format(vb::Date::fromQDateTime(moment), u"dd/mm/yyyy hh:nn:ss")};
    return parts.join(QStringLiteral(" - "));
}

} // namespace reports
