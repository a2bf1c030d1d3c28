#pragma once

#include <QList>
#include <QString>

struct Emitente;
class QDateTime;

namespace platform {
class EventPump;
class PrinterObject;
} // namespace platform

namespace reports {

/// Texts of one printed line with the columns, counted from 1, at which they start.
struct ListingCell
{
    int column;
    QString text;
};
using ListingLine = QList<ListingCell>;

/// A listing in a fixed-width font, 112 columns on A4. Lines that were added together stay on one page; captions come
/// again on top of every page that their rows continue on; "Página n de m" stands at the foot when there are several.
class Listing
{
public:
    static constexpr int Columns = 112;

    void add(const ListingLine& line) { addTogether({line}); }
    void addTogether(const QList<ListingLine>& lines);
    void addBlank(int lines = 1);
    /// Captions of the rows that follow; they never stand alone at the foot of a page.
    void beginRows(const QList<ListingLine>& captions);
    void endRows();

    void print(platform::PrinterObject& printer, platform::EventPump& events) const;

private:
    struct Block
    {
        QList<ListingLine> lines;
        qsizetype captions; ///< Index in m_captions of what a new page starts with.
        bool keepWithNext;
    };
    [[nodiscard]] QList<QList<ListingLine>> pages(int linesPerPage) const;

    QList<Block> m_blocks;
    QList<QList<ListingLine>> m_captions{{}};
    qsizetype m_current = 0;
};

/// The text as lines of at most 112 columns with a second text that ends at column 112, on the same line where both
/// fit, otherwise on a line of its own.
[[nodiscard]] QList<ListingLine> bothEnds(const QString& left, const QString& right);

/// Station name with the date line, address line with the tax line, star line.
void addStationHeader(Listing& listing, const Emitente& emitente, const QDateTime& moment);

} // namespace reports
