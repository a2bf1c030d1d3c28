#pragma once

#include <QAbstractTableModel>
#include <QByteArray>
#include <QHash>
#include <QList>

namespace platform {

/// Rows of a FlexGrid. A row is one UTF-8 text with separators between its cells plus the numbers of a colour style and
/// of a tool tip that rows share. Rows here count from 0 without the header.
class FlexGridModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    using QAbstractTableModel::QAbstractTableModel;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

    void setColumns(int columns);
    void setTitle(int column, const QString& title);
    [[nodiscard]] QString title(int column) const;
    /// Nothing set: a cell that reads as a number is right-aligned, any other left.
    void setAlignment(int column, Qt::Alignment alignment);

    /// While held back, added rows are not announced to views; they can be read and changed all the same.
    void holdBack(bool on);
    [[nodiscard]] bool isHeldBack() const { return m_heldBack; }
    /// Announces what was held back.
    void announce();

    [[nodiscard]] int rows() const { return static_cast<int>(m_rows.size()); }
    void addRow(QByteArrayView cells); ///< UTF-8.
    void resizeRows(int rows);
    void removeRow(int row);
    void clear();

    [[nodiscard]] QString text(int row, int column) const;
    void setText(int row, int column, const QString& text);
    [[nodiscard]] quint32 colour(int row, int column) const;
    void setColour(int row, int column, quint32 bgr);
    void setRowColour(int row, quint32 bgr);
    void setToolTip(int row, const QString& text);

    /// The UTF-8 bytes of one cell of a row's text.
    [[nodiscard]] static QByteArrayView cellOf(QByteArrayView row, int column);
    [[nodiscard]] QByteArrayView rowText(int row) const { return m_rows.at(row).text; }
    [[nodiscard]] static bool readsAsNumber(QByteArrayView text);
    [[nodiscard]] static QColor colourOf(quint32 bgr);

private:
    struct Row
    {
        QByteArray text;
        quint32 style = 0;
        quint32 toolTip = 0;
    };
    struct Column
    {
        QString title;
        Qt::Alignment alignment;
    };
    using Style = QList<quint32>;

    /// A style that a colour has led to before: the rows of a list take the same few steps again and again.
    struct Step
    {
        quint32 from = 0;
        int column = 0;
        quint32 bgr = 0;
        quint32 to = 0;
    };

    void setStyle(int row, Style style);
    void changed(int row, int firstColumn, int lastColumn, const QList<int>& roles);

    QList<Row> m_rows;
    QList<Column> m_columns;
    QList<Style> m_styles{Style{}};
    QHash<Style, quint32> m_styleNumbers; ///< Without number 0, no colour at all.
    QList<Step> m_steps;
    QList<QString> m_toolTips{QString()};
    QHash<QString, quint32> m_toolTipNumbers{{QString(), 0}};
    int m_announced = 0;
    bool m_heldBack = false;
};

} // namespace platform
