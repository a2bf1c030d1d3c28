#include "reports/frmp.h"

#include "platform/print/PrinterObject.h"
#include "platform/ui/FlexGrid.h"
#include "platform/ui/Seams.h"
#include "platform/vb/Format.h"
#include "reports/FittedText.h"
#include "ui_frmp.h"

#include <QLabel>

namespace {

constexpr int TwipsPerPixel = 15;
constexpr int GridColumns = 8;
constexpr int BoxCount = 19;
constexpr int FirstColumnBox = 9;
constexpr int GridTopMargin = 60;
constexpr int BoxPadding = 40;
constexpr int PageLabel = 19;

/// Boxes and labels of the totals and of the signature.
bool onLastPageOnly(int box)
{
    return (box >= 6 && box <= 8) || box == 17;
}
bool labelOnLastPageOnly(int label)
{
    return label == 5 || (label >= 14 && label <= 18);
}

QRectF inTwips(const QRect& pixels)
{
    return {pixels.x() * double(TwipsPerPixel), pixels.y() * double(TwipsPerPixel),
            pixels.width() * double(TwipsPerPixel), pixels.height() * double(TwipsPerPixel)};
}

/// Prints a cell at `x` with the line left open. Only one that would leave its box is moved, or made to fit it.
void printCell(platform::PrinterObject& printer, double x, const QString& text, double left, double right)
{
    const QString visible = text.trimmed();
    const double start = x + printer.TextWidth(text.first(text.indexOf(visible)));
    const double width = printer.TextWidth(visible);
    if (start >= left && start + width <= right) {
        printer.setCurrentX(x);
        printer.Print(text, platform::PrinterObject::LineEnd::Open);
    } else {
        reports::printFitted(printer, visible, qBound(left, start, qMax(left, right - width)), right - left);
    }
}

int labelIndex(const QLabel& label)
{
    return label.objectName().section(u'_', 1).toInt();
}

} // namespace

frmp::frmp(platform::EventPump& events)
    : m_ui(std::make_unique<Ui::frmp>())
    , m_events(events)
{
    m_ui->setupUi(this);
}

frmp::~frmp() = default;

QLabel& frmp::Label(int index) const
{
    QLabel* const label = findChild<QLabel*>(QStringLiteral("Label_%1").arg(index));
    Q_ASSERT(label);
    return *label;
}

platform::FlexGrid& frmp::flex() const
{
    return *m_ui->flex;
}

QRectF frmp::box(int index) const
{
    const QWidget* const shape = findChild<QWidget*>(QStringLiteral("Shape_%1").arg(index));
    Q_ASSERT(shape);
    return inTwips(shape->geometry());
}

void frmp::formata_grade()
{
    flex().clearRows();
    flex().setCols(GridColumns);
    for (int column = 0; column < GridColumns; ++column)
        flex().setColWidth(column, qRound(box(FirstColumnBox + column).width()));
}

int frmp::rowsPerPage(platform::PrinterObject& printer) const
{
    printer.setFontName(QStringLiteral("Courier New"));
    printer.setFontSize(8);
    printer.setFontBold(false);
    const double height = inTwips(m_ui->flex->geometry()).height() - GridTopMargin;
    return qMax(1, static_cast<int>(height / printer.TextHeight()));
}

void frmp::imprime(platform::PrinterObject& printer) const
{
    const int rows = flex().Rows() - 1;
    const int perPage = rowsPerPage(printer);
    const int count = qMax(1, (rows + perPage - 1) / perPage);
    for (int page = 0; page < count; ++page) {
        if (page > 0)
            printer.NewPage();
        imprime_pagina(printer, {page, count});
    }
}

void frmp::imprime_pagina(platform::PrinterObject& printer, Pages pages) const
{
    const bool last = pages.current == pages.count - 1;
    for (const QLabel* label : findChildren<QLabel*>(QString(), Qt::FindDirectChildrenOnly)) {
        const int index = labelIndex(*label);
        if (labelOnLastPageOnly(index) && !last)
            continue;
        QString caption = label->text();
        if (index == PageLabel && pages.count > 1)
            caption = QStringLiteral("Planilha de leitura - Página %1 de %2").arg(pages.current + 1).arg(pages.count);
        const QRectF place = inTwips(label->geometry());
        printer.setFontName(label->font().family());
        printer.setFontBold(label->font().bold());
        printer.setFontSize(label->font().pointSizeF());
        printer.setCurrentY(place.top());
        reports::printFitted(printer, caption, place.left(), place.width(), reports::Fit::Whole);
        printer.setFontBold(false);
        m_events.DoEvents();
    }
    for (int index = 0; index < BoxCount; ++index) {
        if (last || !onLastPageOnly(index))
            printer.Box(box(index));
    }
    imprime_grade(printer, pages.current);
}

void frmp::imprime_grade(platform::PrinterObject& printer, int page) const
{
    const QRectF grid = inTwips(m_ui->flex->geometry());
    const int perPage = rowsPerPage(printer);
    const int first = 1 + page * perPage;
    const int last = qMin(first + perPage, flex().Rows());
    printer.setCurrentY(grid.top() + GridTopMargin);
    for (int row = first; row < last; ++row) {
        double offset = 0;
        for (int column = 0; column < GridColumns; ++column) {
            // The readings start 200 twips early, which leaves room for longer ones, and the date 100 late.
            const int correction = column == 2 || column == 3 ? -200 : column == 4 ? 100 : 0;
            QString text = flex().TextMatrix(row, column);
            if (column >= 5)
                text = vb::Format(text, u"@@@@@@@@@");
            const QRectF edges = box(FirstColumnBox + column);
            printCell(printer, grid.left() + offset + correction, text, edges.left() + BoxPadding,
                      edges.right() - BoxPadding);
            offset += flex().ColWidth(column);
            m_events.DoEvents();
        }
        printer.Print(QString());
        m_events.DoEvents();
    }
}
