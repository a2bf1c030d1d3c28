#pragma once

#include <QElapsedTimer>
#include <QTableView>

#include <memory>

class QProgressBar;

namespace platform {

class FlexGridModel;
class FlexGridWidths;

/// Text grid whose row 0 is the header and whose data rows start at 1. Widths are in twips (15 to a pixel at 96 dpi,
/// scaled with the screen). Colours are numbers in blue-green-red byte order (65535 is yellow); 0 means none.
/// Stays light with 100,000 rows: a row is one compact text plus a shared colour style.
/// A row or column that does not exist reads as an empty text or 0; setting something there does nothing.
class FlexGrid : public QTableView
{
    Q_OBJECT

public:
    explicit FlexGrid(QWidget* parent = nullptr);
    ~FlexGrid() override;

    /// Rows counts the header. setRows keeps the first rows and adds empty ones.
    [[nodiscard]] int Rows() const;
    void setRows(int rows);
    [[nodiscard]] int Cols() const;
    void setCols(int cols);

    /// Titles separated by "|"; sets Cols to at least their number. "<", ">" or "^" in front of a title aligns the
    /// column left, right or centred; without one, numbers stand right and other texts left.
    void FormatString(const QString& titles);
    /// Least width of the column; it grows with its title and cells. 0 hides the column.
    void setColWidth(int column, int twips);
    [[nodiscard]] int ColWidth(int column) const;
    void setColAlignment(int column, Qt::Alignment alignment);
    /// The column that takes the free space of the grid; -1 (the default) for none.
    void setStretchColumn(int column);

    [[nodiscard]] QString TextMatrix(int row, int column) const;
    void setTextMatrix(int row, int column, const QString& text);
    /// Appends a row; missing cells are empty, surplus ones dropped. A cell may hold tabs and line breaks.
    void AddItem(const QStringList& cells);
    /// Cells of texts that hold no tab themselves, with tabs between them.
    void AddItem(const QString& tabSeparatedCells);
    /// UTF-8 cells with a CellSeparator between them.
    void AddItem(QByteArrayView cells);
    void RemoveItem(int row);
    /// Only the header stays; Cols, titles and widths are kept.
    void clearRows();

    /// Current cell. Row 0 when there is no data row; the first row that comes becomes current. Setting the row moves
    /// the selection, not the focus.
    [[nodiscard]] int Row() const;
    void setRow(int row);
    [[nodiscard]] int Col() const;

    [[nodiscard]] quint32 CellBackColor(int row, int column) const;
    void setCellBackColor(int row, int column, quint32 bgr);
    void setRowBackColor(int row, quint32 bgr); ///< Every cell of the row, column 0 to Cols-1.
    void setRowToolTip(int row, const QString& text);

    /// Off while many rows are added; on shows them all at once.
    [[nodiscard]] bool Redraw() const;
    void setRedraw(bool on);
    /// How far a fill has come. A bar over the grid shows it once the grid has been held back for half a second.
    void setProgress(qsizetype done, qsizetype total);

    /// The marked rows (background 65535 in column 0), or else the current one, as tab-separated lines of the columns
    /// that show.
    [[nodiscard]] QString copyText() const;

    /// No search by typed letters: they belong to the window.
    void keyboardSearch(const QString& search) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

Q_SIGNALS:
    void Click(); ///< Left button released on a data row, which is then current. Once for a double click.
    void DblClick();
    void KeyDown(QKeyEvent* event); ///< Before the grid's own handling; accept() to keep it.
    void MouseUp(Qt::MouseButton button, QPoint globalPosition);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    [[nodiscard]] bool isDataCell(int row, int column) const;
    void moveTo(int row, int column);
    void leaveHiddenColumn();
    void afterChange();

    std::unique_ptr<FlexGridModel> m_model;
    std::unique_ptr<FlexGridWidths> m_widths;
    QProgressBar* m_progress = nullptr; ///< Made when it is first needed.
    QElapsedTimer m_heldBack;
    bool m_pressedOnRow = false;
    bool m_pressedOnHeader = false;
};

} // namespace platform
