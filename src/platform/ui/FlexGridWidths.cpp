#include "platform/ui/FlexGridWidths.h"

#include "platform/ui/FlexGridDelegate.h"
#include "platform/ui/GridCells.h"
#include "platform/ui/Twips.h"

#include <QFontMetricsF>
#include <QHeaderView>
#include <QScopedValueRollback>
#include <QStyle>
#include <QTableView>

#include <algorithm>
#include <cmath>

namespace platform {

namespace {

constexpr int AdvanceUnit = 64;
/// A cell makes its column grow up to this many average characters; a longer one is shortened with an ellipsis.
constexpr int WidestInCharacters = 40;
/// Pixels that keep a title off the column's edges.
constexpr int TitleRoom = 8;

} // namespace

FlexGridWidths::FlexGridWidths(QTableView& view)
    : m_view(view)
{
    measureFont();
}

void FlexGridWidths::measureFont()
{
    const QFontMetricsF metrics(m_view.font());
    for (size_t code = 0; code < m_advances.size(); ++code)
        m_advances[code] =
            static_cast<int>(std::ceil(metrics.horizontalAdvance(QChar(static_cast<char16_t>(code))) * AdvanceUnit));
    m_widestContent = static_cast<int>(std::ceil(metrics.averageCharWidth() * WidestInCharacters));
    for (int column = 0; column < m_columns.size(); ++column) {
        m_columns[column].titleText.clear();
        noteTitle(column, m_view.model()->headerData(column, Qt::Horizontal).toString());
    }
    m_stale = true;
}

void FlexGridWidths::setColumns(int columns)
{
    m_columns.resize(columns);
    m_stale = true;
}

void FlexGridWidths::setTwips(int column, int twips)
{
    Column& one = m_columns[column];
    if (one.twips == twips)
        return; // laying the grid out again for a new list keeps the widths that the operator chose
    one.twips = twips;
    one.dragged = 0;
    m_stale = true;
}

void FlexGridWidths::setStretch(int column)
{
    m_stretch = column;
    m_stale = true;
}

int FlexGridWidths::textWidth(QByteArrayView text) const
{
    int width = 0;
    const char* from = text.begin();
    while (from != text.end()) {
        const auto lead = static_cast<unsigned char>(*from++);
        unsigned code = lead;
        if (lead >= 0xC2 && lead <= 0xC3 && from != text.end())
            code = (lead & 3U) << 6 | (static_cast<unsigned char>(*from++) & 0x3FU);
        else if (lead >= 0x80)
            code = (lead & 0xC0U) == 0xC0U ? 'M' : 0; // beyond Latin-1: a wide guess for each character
        width += m_advances[code];
    }
    return width / AdvanceUnit + 1 + 2 * FlexGridDelegate::padding + 1;
}

void FlexGridWidths::noteCell(int column, QByteArrayView cell)
{
    if (cell.isEmpty())
        return;
    Column& one = m_columns[column];
    const int width = std::min(textWidth(cell), m_widestContent);
    if (width > one.content) {
        one.content = width;
        m_stale = true;
    }
}

void FlexGridWidths::note(QByteArrayView row)
{
    const char* from = row.begin();
    for (int column = 0; column < m_columns.size() && from != row.end(); ++column) {
        const char* const to = std::find(from, row.end(), CellSeparator);
        noteCell(column, {from, to});
        from = to == row.end() ? to : to + 1;
    }
}

void FlexGridWidths::forgetCells()
{
    for (Column& column : m_columns)
        column.content = 0;
    m_stale = true;
}

void FlexGridWidths::noteTitle(int column, const QString& title)
{
    if (m_columns[column].titleText == title)
        return;
    m_columns[column].titleText = title;
    const QFontMetrics metrics(m_view.horizontalHeader()->font());
    const int margin = m_view.style()->pixelMetric(QStyle::PM_HeaderMargin, nullptr, &m_view);
    const int width = title.isEmpty() ? 0 : metrics.horizontalAdvance(title) + 2 * margin + TitleRoom;
    if (m_columns[column].title != width) {
        m_columns[column].title = width;
        m_stale = true;
    }
}

void FlexGridWidths::draggedTo(int column, int pixels)
{
    if (m_applying || column >= m_columns.size() || pixels == 0)
        return;
    m_columns[column].dragged = pixels;
    m_stale = true;
    if (column != m_stretch)
        apply();
}

void FlexGridWidths::viewChanged()
{
    m_stale = m_stale || m_stretch >= 0;
    apply();
}

int FlexGridWidths::naturalWidth(const Column& column) const
{
    return column.dragged > 0 ? column.dragged : std::max(leastWidth(column), column.content);
}

int FlexGridWidths::leastWidth(const Column& column) const
{
    if (column.dragged > 0)
        return column.dragged;
    const int given = column.twips < 0
                          ? m_view.horizontalHeader()->defaultSectionSize()
                          : static_cast<int>(std::lround(column.twips * m_view.logicalDpiX() / double(TwipsPerInch)));
    return std::max({given, column.title, m_view.horizontalHeader()->minimumSectionSize()});
}

void FlexGridWidths::apply()
{
    if (!m_stale || m_applying)
        return;
    const QScopedValueRollback<bool> applying(m_applying, true);
    m_stale = false;
    QHeaderView& header = *m_view.horizontalHeader();
    int taken = 0;
    for (int column = 0; column < m_columns.size(); ++column) {
        const bool hidden = m_columns.at(column).twips == 0;
        if (header.isSectionHidden(column) != hidden)
            header.setSectionHidden(column, hidden);
        if (hidden)
            continue;
        const int width = naturalWidth(m_columns.at(column));
        if (column != m_stretch && header.sectionSize(column) != width)
            header.resizeSection(column, width);
        taken += width;
    }
    if (m_stretch < 0 || m_stretch >= m_columns.size() || m_columns.at(m_stretch).twips == 0)
        return;
    const Column& stretch = m_columns.at(m_stretch);
    const int natural = naturalWidth(stretch);
    const int free = stretch.dragged > 0 ? 0 : m_view.viewport()->width() - taken;
    header.resizeSection(m_stretch, std::max(leastWidth(stretch), natural + free));
}

} // namespace platform
