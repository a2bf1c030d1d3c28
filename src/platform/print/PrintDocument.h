#pragma once

#include <QFont>
#include <QList>
#include <QPageSize>
#include <QPointF>
#include <QRectF>
#include <QString>

class QPagedPaintDevice;

namespace platform {

/// Recorded pages of a print job: texts and lines in twips (1/1440 inch) from the paper's upper left corner. A document
/// goes out only when it is whole, so a job that is dropped half way leaves nothing anywhere.
class PrintDocument
{
public:
    explicit PrintDocument(QString title);

    [[nodiscard]] const QString& title() const { return m_title; }
    [[nodiscard]] const QPageSize& pageSize() const { return m_pageSize; }
    void setPageSize(const QPageSize& size) { m_pageSize = size; }
    /// Width and height of the paper.
    [[nodiscard]] QSizeF paper() const;

    [[nodiscard]] qsizetype pageCount() const { return m_pages.size(); }
    void addPage() { m_pages.emplace_back(); }
    /// Both draw on the last page, and start the first one where there is none. `position` is the baseline's start;
    /// a stretch below 1 makes the letters narrower.
    void addText(QPointF position, const QString& text, const QFont& font, double stretch);
    void addLine(QPointF from, QPointF to, double width);

    /// Draws every page. The device must be set to the document's page size, without margins. Raises PrintError.
    void paint(QPagedPaintDevice& device) const;
    /// The document as PDF with embedded fonts and selectable text. Raises PrintError.
    [[nodiscard]] QByteArray pdf() const;
    /// Writes the PDF to a file; an older file stays as it was when this fails. Raises PrintError.
    void savePdf(const QString& fileName) const;

    /// The font that prints `points` high when 1 unit is 1 twip.
    [[nodiscard]] static QFont font(const QString& family, double points, bool bold);

private:
    struct Text
    {
        QPointF position;
        QString text;
        QFont font;
        double stretch;
    };
    struct Line
    {
        QPointF from;
        QPointF to;
        double width;
    };
    struct Page
    {
        QList<Text> texts;
        QList<Line> lines;
    };
    Page& currentPage();

    QString m_title;
    QPageSize m_pageSize{QPageSize::A4};
    QList<Page> m_pages;
};

} // namespace platform
