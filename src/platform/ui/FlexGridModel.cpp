#include "platform/ui/FlexGridModel.h"

#include "platform/ui/GridCells.h"
#include "platform/ui/PlainText.h"

#include <QColor>

#include <algorithm>
#include <cstring>
#include <utility>

namespace platform {

namespace {

constexpr Qt::Alignment justified = Qt::AlignLeft | Qt::AlignRight | Qt::AlignHCenter;

QColor readableOn(const QColor& background)
{
    return qGray(background.rgb()) > 130 ? QColor(Qt::black) : QColor(Qt::white);
}

} // namespace

QByteArrayView FlexGridModel::cellOf(QByteArrayView row, int column)
{
    const char* from = row.begin();
    const auto nextSeparator = [&row](const char* begin) {
        const auto* const found =
            static_cast<const char*>(std::memchr(begin, CellSeparator, static_cast<std::size_t>(row.end() - begin)));
        return found ? found : row.end();
    };
    for (; column > 0; --column) {
        from = nextSeparator(from);
        if (from == row.end())
            return {};
        ++from;
    }
    return {from, nextSeparator(from)};
}

bool FlexGridModel::readsAsNumber(QByteArrayView text)
{
    bool digit = false;
    for (const char c : text) {
        if (c >= '0' && c <= '9')
            digit = true;
        else if (c != ',' && c != '.' && c != '-' && c != ' ')
            return false;
    }
    return digit;
}

QColor FlexGridModel::colourOf(quint32 bgr)
{
    return QColor(static_cast<int>(bgr & 0xFF), static_cast<int>((bgr >> 8) & 0xFF),
                  static_cast<int>((bgr >> 16) & 0xFF));
}

int FlexGridModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_announced;
}

int FlexGridModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_columns.size());
}

QVariant FlexGridModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const int row = index.row();
    const int column = index.column();
    switch (role) {
    case Qt::DisplayRole: {
        constexpr qsizetype LongestUtf8 = 4 * LongestShown;
        const QByteArrayView cell = cellOf(m_rows.at(row).text, column);
        return QString::fromUtf8(cell.first(std::min(cell.size(), LongestUtf8)));
    }
    case Qt::BackgroundRole:
        if (const quint32 bgr = colour(row, column))
            return colourOf(bgr);
        return {};
    case Qt::ForegroundRole:
        if (const quint32 bgr = colour(row, column))
            return readableOn(colourOf(bgr));
        return {};
    case Qt::TextAlignmentRole: {
        Qt::Alignment alignment = m_columns.at(column).alignment;
        if (!(alignment & justified))
            alignment = readsAsNumber(cellOf(m_rows.at(row).text, column)) ? Qt::AlignRight : Qt::AlignLeft;
        return QVariant::fromValue(alignment | Qt::AlignVCenter);
    }
    case Qt::ToolTipRole:
        if (const quint32 toolTip = m_rows.at(row).toolTip)
            return m_toolTips.at(toolTip);
        return {};
    default:
        return {};
    }
}

QVariant FlexGridModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section >= m_columns.size())
        return {};
    if (role == Qt::DisplayRole)
        return m_columns.at(section).title;
    if (role == Qt::TextAlignmentRole) {
        Qt::Alignment alignment = m_columns.at(section).alignment;
        if (!(alignment & justified))
            alignment = !m_rows.isEmpty() && readsAsNumber(cellOf(m_rows.first().text, section)) ? Qt::AlignRight
                                                                                                 : Qt::AlignLeft;
        return QVariant::fromValue(alignment | Qt::AlignVCenter);
    }
    return {};
}

void FlexGridModel::setColumns(int columns)
{
    const int old = columnCount();
    if (columns > old) {
        beginInsertColumns({}, old, columns - 1);
        m_columns.resize(columns);
        endInsertColumns();
    } else if (columns < old && columns >= 0) {
        beginRemoveColumns({}, columns, old - 1);
        m_columns.resize(columns);
        for (Row& row : m_rows) {
            const QByteArrayView beyond = cellOf(row.text, columns);
            if (beyond.data())
                row.text.truncate(columns == 0 ? 0 : beyond.data() - row.text.constData() - 1);
        }
        endRemoveColumns();
    }
}

void FlexGridModel::setTitle(int column, const QString& title)
{
    if (m_columns.at(column).title == title)
        return;
    m_columns[column].title = title;
    Q_EMIT headerDataChanged(Qt::Horizontal, column, column);
}

QString FlexGridModel::title(int column) const
{
    return m_columns.at(column).title;
}

void FlexGridModel::setAlignment(int column, Qt::Alignment alignment)
{
    if (m_columns.at(column).alignment == alignment)
        return;
    m_columns[column].alignment = alignment;
    Q_EMIT headerDataChanged(Qt::Horizontal, column, column);
    if (m_announced > 0)
        Q_EMIT dataChanged(index(0, column), index(m_announced - 1, column), {Qt::TextAlignmentRole});
}

void FlexGridModel::holdBack(bool on)
{
    m_heldBack = on;
    if (!on)
        announce();
}

void FlexGridModel::announce()
{
    if (m_announced == rows())
        return;
    const bool first = m_announced == 0;
    beginInsertRows({}, m_announced, rows() - 1);
    m_announced = rows();
    endInsertRows();
    if (first && !m_columns.isEmpty())
        Q_EMIT headerDataChanged(Qt::Horizontal, 0, columnCount() - 1);
}

void FlexGridModel::addRow(QByteArrayView cells)
{
    const QByteArrayView surplus = cellOf(cells, columnCount());
    if (surplus.data())
        cells.truncate(columnCount() == 0 ? 0 : surplus.data() - cells.data() - 1);
    m_rows.append(Row{QByteArray(cells.data(), cells.size())}); // No byte more than needed.
    if (!m_heldBack)
        announce();
}

void FlexGridModel::resizeRows(int count)
{
    if (count > rows()) {
        m_rows.resize(count);
        if (!m_heldBack)
            announce();
        return;
    }
    if (count < m_announced) {
        beginRemoveRows({}, count, m_announced - 1);
        m_announced = count;
        m_rows.resize(count);
        endRemoveRows();
    } else {
        m_rows.resize(count);
    }
}

void FlexGridModel::removeRow(int row)
{
    if (row < m_announced) {
        beginRemoveRows({}, row, row);
        --m_announced;
        m_rows.removeAt(row);
        endRemoveRows();
    } else {
        m_rows.removeAt(row);
    }
}

void FlexGridModel::clear()
{
    resizeRows(0);
    m_rows = {};
    m_styles = {Style{}};
    m_styleNumbers = {};
    m_steps = {};
    m_toolTips = {QString()};
    m_toolTipNumbers = {{QString(), 0}};
}

QString FlexGridModel::text(int row, int column) const
{
    return QString::fromUtf8(cellOf(m_rows.at(row).text, column));
}

void FlexGridModel::setText(int row, int column, const QString& text)
{
    QByteArray cell = text.toUtf8();
    cell.replace(CellSeparator, ' ');
    QByteArray& bytes = m_rows[row].text;
    QByteArrayView old = cellOf(bytes, column);
    if (!old.data()) {
        bytes.append(column - bytes.count(CellSeparator), CellSeparator);
        bytes.append(cell);
    } else {
        bytes.replace(old.data() - bytes.constData(), old.size(), cell);
    }
    bytes.squeeze();
    changed(row, column, column, {Qt::DisplayRole});
}

quint32 FlexGridModel::colour(int row, int column) const
{
    return m_styles.at(m_rows.at(row).style).value(column, 0);
}

void FlexGridModel::setColour(int row, int column, quint32 bgr)
{
    constexpr qsizetype MostSteps = 8;
    const quint32 from = m_rows.at(row).style;
    const auto known = std::find_if(m_steps.cbegin(), m_steps.cend(), [=](const Step& step) {
        return step.from == from && step.column == column && step.bgr == bgr;
    });
    if (known != m_steps.cend()) {
        m_rows[row].style = known->to;
    } else {
        Style style = m_styles.at(from);
        if (style.size() <= column)
            style.resize(column + 1);
        style[column] = bgr;
        setStyle(row, std::move(style));
        if (m_steps.size() < MostSteps)
            m_steps.append({from, column, bgr, m_rows.at(row).style});
    }
    changed(row, column, column, {Qt::BackgroundRole, Qt::ForegroundRole});
}

void FlexGridModel::setRowColour(int row, quint32 bgr)
{
    setStyle(row, Style(m_columns.size(), bgr));
    changed(row, 0, columnCount() - 1, {Qt::BackgroundRole, Qt::ForegroundRole});
}

void FlexGridModel::setToolTip(int row, const QString& text)
{
    const auto known = m_toolTipNumbers.constFind(text);
    quint32 number = known == m_toolTipNumbers.constEnd() ? static_cast<quint32>(m_toolTips.size()) : *known;
    if (number == m_toolTips.size()) {
        m_toolTips.append(text);
        m_toolTipNumbers.insert(text, number);
    }
    m_rows[row].toolTip = number;
    changed(row, 0, columnCount() - 1, {Qt::ToolTipRole});
}

void FlexGridModel::setStyle(int row, Style style)
{
    while (!style.isEmpty() && style.last() == 0)
        style.removeLast();
    if (style.isEmpty()) {
        m_rows[row].style = 0;
        return;
    }
    const auto known = m_styleNumbers.constFind(style);
    const quint32 number = known == m_styleNumbers.constEnd() ? static_cast<quint32>(m_styles.size()) : *known;
    if (number == m_styles.size()) {
        m_styles.append(style);
        m_styleNumbers.insert(style, number);
    }
    m_rows[row].style = number;
}

void FlexGridModel::changed(int row, int firstColumn, int lastColumn, const QList<int>& roles)
{
    if (row < m_announced && lastColumn >= firstColumn)
        Q_EMIT dataChanged(index(row, firstColumn), index(row, lastColumn), roles);
}

} // namespace platform
