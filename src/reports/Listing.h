#pragma once

#include "reports/FittedText.h"

#include <QList>
#include <QString>

struct Emitente;
class QDateTime;

namespace platform {
class EventPump;
class PrinterObject;
} // namespace platform

namespace reports {

/// Text of a printed line and the column, counted from 1, at which it starts.
struct ListingCell
{
    int column;
    QString text;
    int room = 0; ///< Columns that it may take; 0 for as many as it has letters.
    Fit fit = Fit::Digits;
};
using ListingLine = QList<ListingCell>;

/// A listing in a fixed-width font, 112 columns on A4. Lines that were added together stay on one page; captions come
/// again on top of every page that their rows continue on. When there are several pages, the foot of each says what it
/// belongs to and "Página n de m".
class Listing
{
public:
    static constexpr int Columns = 112;

    /// `name` stands in the foot: station, report and moment.
    explicit Listing(QString name)
        : m_name(std::move(name))
    {}

    void add(const ListingLine& line) { addTogether({line}); }
    void addTogether(const QList<ListingLine>& lines);
    void addBlank(int lines = 1);
    /// Captions of the rows that follow; they never stand alone at the foot of a page.
    void beginRows(const QList<ListingLine>& captions);
    void endRows();
    /// What was added last does not end a page: what comes next never stands alone.
    void keepWithNext();

    void print(platform::PrinterObject& printer, platform::EventPump& events) const;

private:
    struct Block
    {
        QList<ListingLine> lines;
        qsizetype captions; ///< Index in m_captions of what a new page starts with.
        bool keepWithNext;
    };
    [[nodiscard]] QList<QList<ListingLine>> pages(int linesPerPage) const;
    void printFoot(platform::PrinterObject& printer, qsizetype page, qsizetype pages) const;

    QString m_name;
    QList<Block> m_blocks;
    QList<QList<ListingLine>> m_captions{{}};
    qsizetype m_current = 0;
};

/// The text as lines of at most 112 columns with a second text that ends at column 112, on the same line where both
/// fit, otherwise on a line of its own.
[[nodiscard]] QList<ListingLine> bothEnds(const QString& leftText, const QString& rightText);

/// A text behind a column's rule, "|", up to where the next column starts.
void addFramed(ListingLine& line, int column, const QString& text, int next, Fit fit = Fit::Digits);

/// Station name with the date line, address line with the tax line, star line.
void addStationHeader(Listing& listing, const Emitente& emitente, const QDateTime& moment);

/// "AUTO POSTO IPÊS - Conferência - 22/11/2026 22:05:09".
[[nodiscard]] QString listingName(const Emitente& emitente, const QString& report, const QDateTime& moment);

} // namespace reports
