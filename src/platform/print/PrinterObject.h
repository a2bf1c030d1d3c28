#pragma once

#include "platform/print/PrintDocument.h"
#include "platform/print/Printers.h"

#include <initializer_list>
#include <variant>

namespace platform {

/// Column stop of PrinterObject::Print, counted from 1 in widths of a digit. A column already passed is taken on the
/// next line; columns below 1 are column 1.
struct Tab
{
    int column;
};

/// The printer as the reports see it. Positions and sizes are twips (1/1440 inch) from the upper left corner inside the
/// margins. Nothing leaves before EndDoc; a printer object that is dropped before it prints nothing.
class PrinterObject
{
public:
    enum class LineEnd { Open, Closed };
    using Item = std::variant<QString, Tab>;

    static constexpr int PaperA4 = 9;

    /// `title` names the job. The spooler must outlive the object. Starts with A4 paper, no margins, 8 point Courier.
    PrinterObject(PrinterChoice choice, Spooler& spooler, const QString& title);

    [[nodiscard]] const QString& DeviceName() const { return m_choice.deviceName; }

    /// Codes of the system's print service: 9 is A4. Raises PrintError for a code without a paper.
    void setPaperSize(int code);
    void setMargins(double horizontal, double vertical);
    [[nodiscard]] double ScaleWidth() const;
    [[nodiscard]] double ScaleHeight() const;

    [[nodiscard]] const QString& FontName() const { return m_fontName; }
    void setFontName(const QString& name);
    [[nodiscard]] double FontSize() const { return m_fontSize; }
    void setFontSize(double points);
    [[nodiscard]] bool FontBold() const { return m_fontBold; }
    void setFontBold(bool bold);
    [[nodiscard]] double FontStretch() const { return m_fontStretch; }
    void setFontStretch(double stretch) { m_fontStretch = stretch; } ///< Width of the letters; 1 is the font's own.
    [[nodiscard]] double TextWidth(const QString& text) const;
    [[nodiscard]] double TextHeight() const; ///< Of one line.
    [[nodiscard]] double TextAscent() const; ///< From the upper edge of a line to its baseline.

    [[nodiscard]] double CurrentX() const { return m_currentX; }
    void setCurrentX(double x) { m_currentX = x; }
    [[nodiscard]] double CurrentY() const { return m_currentY; }
    void setCurrentY(double y) { m_currentY = y; }

    /// Prints texts one after another at the current position, its upper left corner. A closed line moves on to the
    /// start of the next one; a line that does not fit the page goes to the next page.
    void Print(std::initializer_list<Item> items, LineEnd end = LineEnd::Closed);
    void Print(const QString& text, LineEnd end = LineEnd::Closed) { Print({text}, end); }

    void setDrawWidth(double width) { m_drawWidth = width; }
    void Line(double x1, double y1, double x2, double y2);
    /// The four sides of a rectangle.
    void Box(const QRectF& box);

    [[nodiscard]] qsizetype Page() const { return qMax<qsizetype>(1, m_document.pageCount()); }
    void NewPage();
    /// Hands the document to the chosen queue or file; a document without a page is not handed over. Raises PrintError,
    /// and then nothing of it stays in the queue.
    void EndDoc();
    /// Drops what was printed so far.
    void KillDoc();

private:
    void fontChanged();
    void nextLine();

    PrinterChoice m_choice;
    Spooler& m_spooler;
    PrintDocument m_document;
    QString m_fontName = QStringLiteral("Courier New");
    double m_fontSize = 8;
    bool m_fontBold = false;
    double m_fontStretch = 1;
    QFont m_font;
    double m_horizontalMargin = 0;
    double m_verticalMargin = 0;
    double m_currentX = 0;
    double m_currentY = 0;
    double m_drawWidth = 10;
};

} // namespace platform
