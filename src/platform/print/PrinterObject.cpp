#include "platform/print/PrinterObject.h"

#include "platform/ui/PlainText.h"

#include <QFontMetricsF>

namespace platform {

PrinterObject::PrinterObject(PrinterChoice choice, Spooler& spooler, const QString& title)
    : m_choice(std::move(choice))
    , m_spooler(spooler)
    , m_document(title)
{
    fontChanged();
}

void PrinterObject::setPaperSize(int code)
{
    const QPageSize::PageSizeId id = QPageSize::id(code);
    if (id == QPageSize::Custom)
        throw PrintError(QStringLiteral("Tamanho de papel inválido: %1.").arg(code));
    m_document.setPageSize(QPageSize(id));
}

void PrinterObject::setMargins(double horizontal, double vertical)
{
    m_horizontalMargin = horizontal;
    m_verticalMargin = vertical;
}

double PrinterObject::ScaleWidth() const
{
    return m_document.paper().width() - 2 * m_horizontalMargin;
}

double PrinterObject::ScaleHeight() const
{
    return m_document.paper().height() - 2 * m_verticalMargin;
}

void PrinterObject::setFontName(const QString& name)
{
    m_fontName = name;
    fontChanged();
}

void PrinterObject::setFontSize(double points)
{
    m_fontSize = points;
    fontChanged();
}

void PrinterObject::setFontBold(bool bold)
{
    m_fontBold = bold;
    fontChanged();
}

void PrinterObject::fontChanged()
{
    m_font = PrintDocument::font(m_fontName, m_fontSize, m_fontBold);
}

double PrinterObject::TextWidth(const QString& text) const
{
    return QFontMetricsF(m_font).horizontalAdvance(oneLine(text)) * m_fontStretch;
}

double PrinterObject::TextHeight() const
{
    return QFontMetricsF(m_font).lineSpacing();
}

double PrinterObject::TextAscent() const
{
    return QFontMetricsF(m_font).ascent();
}

void PrinterObject::nextLine()
{
    m_currentX = 0;
    m_currentY += TextHeight();
}

void PrinterObject::Print(std::initializer_list<Item> items, LineEnd end)
{
    const double columnWidth = TextWidth(QStringLiteral("0"));
    for (const Item& item : items) {
        if (const Tab* tab = std::get_if<Tab>(&item)) {
            const double stop = (qMax(1, tab->column) - 1) * columnWidth;
            if (m_currentX > stop + columnWidth / 2)
                nextLine();
            m_currentX = stop;
            continue;
        }
        const QString text = oneLine(std::get<QString>(item));
        if (m_currentY > 0 && m_currentY + TextHeight() > ScaleHeight()) {
            const double x = m_currentX;
            NewPage();
            m_currentX = x;
        }
        if (!text.trimmed().isEmpty()) {
            const QPointF baseline(m_horizontalMargin + m_currentX, m_verticalMargin + m_currentY + TextAscent());
            m_document.addText(baseline, text, m_font, m_fontStretch);
        }
        m_currentX += TextWidth(text);
    }
    if (end == LineEnd::Closed)
        nextLine();
}

void PrinterObject::Line(double x1, double y1, double x2, double y2)
{
    const QPointF origin(m_horizontalMargin, m_verticalMargin);
    m_document.addLine(origin + QPointF(x1, y1), origin + QPointF(x2, y2), m_drawWidth);
}

void PrinterObject::Box(const QRectF& box)
{
    Line(box.left(), box.top(), box.right(), box.top());
    Line(box.left(), box.bottom(), box.right(), box.bottom());
    Line(box.left(), box.top(), box.left(), box.bottom());
    Line(box.right(), box.top(), box.right(), box.bottom());
}

void PrinterObject::NewPage()
{
    if (m_document.pageCount() == 0)
        m_document.addPage(); // the page that ends here, blank or not
    m_document.addPage();
    m_currentX = 0;
    m_currentY = 0;
}

void PrinterObject::EndDoc()
{
    if (m_document.pageCount() > 0) {
        if (m_choice.fileName.isEmpty())
            m_spooler.print(m_document, m_choice);
        else
            m_document.savePdf(m_choice.fileName);
    }
    KillDoc();
}

void PrinterObject::KillDoc()
{
    PrintDocument empty(m_document.title());
    empty.setPageSize(m_document.pageSize());
    m_document = empty;
    m_currentX = 0;
    m_currentY = 0;
}

} // namespace platform
