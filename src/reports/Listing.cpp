#include "reports/Listing.h"

#include "platform/print/PrinterObject.h"
#include "platform/ui/Seams.h"
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

QList<QList<ListingLine>> Listing::pages(int linesPerPage) const
{
    QList<QList<ListingLine>> pages(1);
    for (qsizetype i = 0; i < m_blocks.size(); ++i) {
        const Block& block = m_blocks.at(i);
        qsizetype needed = block.lines.size();
        if (block.keepWithNext && i + 1 < m_blocks.size())
            needed += m_blocks.at(i + 1).lines.size();
        if (!pages.last().isEmpty() && pages.last().size() + needed > linesPerPage)
            pages.append(m_captions.at(block.captions));
        pages.last().append(block.lines);
    }
    return pages;
}

void Listing::print(platform::PrinterObject& printer, platform::EventPump& events) const
{
    using platform::Tab;
    prepare(printer);
    const double lineHeight = printer.TextHeight();
    const int linesPerPage = static_cast<int>(printer.ScaleHeight() / lineHeight) - 2; // blank and page number
    const QList<QList<ListingLine>> all = pages(linesPerPage);
    for (qsizetype page = 0; page < all.size(); ++page) {
        if (page > 0)
            printer.NewPage();
        for (const ListingLine& line : all.at(page)) {
            for (const ListingCell& cell : line)
                printer.Print({Tab{cell.column}, cell.text}, platform::PrinterObject::LineEnd::Open);
            printer.Print(QString());
            events.DoEvents();
        }
        if (all.size() > 1) {
            const QString foot = QStringLiteral("Página %1 de %2").arg(page + 1).arg(all.size());
            printer.setCurrentY((linesPerPage + 1) * lineHeight);
            printer.Print({Tab{Columns + 1 - static_cast<int>(foot.size())}, foot});
        }
    }
}

QList<ListingLine> bothEnds(const QString& left, const QString& right)
{
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

void addStationHeader(Listing& listing, const Emitente& emitente, const QDateTime& moment)
{
    listing.addTogether(bothEnds(emitente.RazaoSocial.toUpper(), dateLine(moment)));
    listing.addTogether(bothEnds(emitente.endereco, taxLine(emitente)));
    listing.add({{1, Module1::linha_asterisco()}});
}

} // namespace reports
