#include "platform/print/PrintDocument.h"

#include "platform/print/Printers.h"
#include "platform/ui/Twips.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QDir>
#include <QPainter>
#include <QPdfWriter>
#include <QSaveFile>

namespace platform {

namespace {

constexpr double MillimetresPerInch = 25.4;
constexpr double TwipsPerPoint = 20;

} // namespace

PrintDocument::PrintDocument(QString title)
    : m_title(std::move(title))
{}

QSizeF PrintDocument::paper() const
{
    return m_pageSize.size(QPageSize::Millimeter) * TwipsPerInch / MillimetresPerInch;
}

PrintDocument::Page& PrintDocument::currentPage()
{
    if (m_pages.isEmpty())
        addPage();
    return m_pages.last();
}

void PrintDocument::addText(QPointF position, const QString& text, const QFont& font, double stretch)
{
    currentPage().texts.append({position, text, font, stretch});
}

void PrintDocument::addLine(QPointF from, QPointF to, double width)
{
    currentPage().lines.append({from, to, width});
}

QFont PrintDocument::font(const QString& family, double points, bool bold)
{
    QFont font(family);
    font.setPixelSize(qMax(1, qRound(points * TwipsPerPoint)));
    font.setBold(bold);
    // Advances must not snap to a screen's pixels, and a missing typewriter font must not become a proportional one.
    font.setHintingPreference(QFont::PreferNoHinting);
    if (family.startsWith(QStringLiteral("Courier")))
        font.setStyleHint(QFont::TypeWriter);
    return font;
}

void PrintDocument::paint(QPagedPaintDevice& device) const
{
    QPainter painter;
    if (!painter.begin(&device))
        throw PrintError(QStringLiteral("Não foi possível iniciar a impressão."));
    painter.scale(device.logicalDpiX() / double(TwipsPerInch), device.logicalDpiY() / double(TwipsPerInch));
    bool first = true;
    for (const Page& page : m_pages) {
        if (!first && !device.newPage())
            throw PrintError(QStringLiteral("Não foi possível iniciar uma nova página."));
        first = false;
        for (const Line& line : page.lines) {
            painter.setPen(QPen(Qt::black, line.width, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
            painter.drawLine(line.from, line.to);
        }
        painter.setPen(Qt::black);
        for (const Text& text : page.texts) {
            painter.setFont(text.font);
            const QTransform twips = painter.transform();
            painter.translate(text.position);
            painter.scale(text.stretch, 1);
            painter.drawText(QPointF(), text.text);
            painter.setTransform(twips);
        }
    }
    if (!painter.end())
        throw PrintError(QStringLiteral("Não foi possível concluir a impressão."));
}

QByteArray PrintDocument::pdf() const
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QPdfWriter writer(&buffer);
    writer.setResolution(TwipsPerInch);
    writer.setTitle(m_title);
    writer.setCreator(QCoreApplication::applicationName());
    writer.setPageLayout(QPageLayout(m_pageSize, QPageLayout::Portrait, {}));
    paint(writer);
    return bytes;
}

void PrintDocument::savePdf(const QString& fileName) const
{
    const QByteArray bytes = pdf();
    QSaveFile file(fileName);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit())
        throw PrintError(QStringLiteral("Não foi possível gravar o arquivo \"%1\": %2")
                             .arg(QDir::toNativeSeparators(fileName), file.errorString()));
}

} // namespace platform
