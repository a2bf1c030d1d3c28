#pragma once

#include <QByteArrayView>
#include <QList>
#include <QString>

#include <array>

class QTableView;

namespace platform {

/// Column widths of a FlexGrid: at least the given twips, at least what title and cells need, one column taking the
/// free space, and a width that the operator dragged left alone.
class FlexGridWidths
{
public:
    explicit FlexGridWidths(QTableView& view);

    void setColumns(int columns);
    void setTwips(int column, int twips);
    [[nodiscard]] int twips(int column) const { return m_columns.at(column).twips; }
    void setStretch(int column);
    /// A row's cells have come; grows the columns that need it. Takes effect with apply().
    void note(QByteArrayView row);
    void noteCell(int column, QByteArrayView cell);
    void forgetCells(); ///< The widths of a list that has gone.
    void noteTitle(int column, const QString& title);
    void draggedTo(int column, int pixels);
    /// The font or the screen's scale has changed: measures anew what is known of the titles.
    void measureFont();
    /// The view has another width.
    void viewChanged();
    /// Sets the sections where anything has changed.
    void apply();

private:
    struct Column
    {
        int twips = -1; ///< -1: none given, the title decides.
        QString titleText;
        int title = 0; ///< Pixels that its text needs.
        int content = 0;
        int dragged = 0;
    };
    [[nodiscard]] int textWidth(QByteArrayView text) const;
    [[nodiscard]] int naturalWidth(const Column& column) const;
    /// Without its cells: the stretch column gives way to the others down to this.
    [[nodiscard]] int leastWidth(const Column& column) const;

    QTableView& m_view;
    QList<Column> m_columns;
    std::array<int, 256> m_advances{}; ///< In 1/64 pixel, of the Latin-1 characters.
    int m_widestContent = 0;
    int m_stretch = -1;
    bool m_stale = false;
    bool m_applying = false;
};

} // namespace platform
