#include "platform/ui/FlexGrid.h"

#include "platform/ui/FlexGridDelegate.h"
#include "platform/ui/FlexGridModel.h"
#include "platform/ui/FlexGridWidths.h"
#include "platform/ui/GridCells.h"
#include "platform/ui/PlainText.h"

#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QKeyEvent>
#include <QPointer>
#include <QProgressBar>
#include <QScrollBar>
#include <QStringList>

#include <algorithm>

namespace platform {

namespace {

constexpr quint32 markColour = 65535;

int heightOfRow(const QFontMetrics& metrics)
{
    return metrics.height() + 6;
}

} // namespace

FlexGrid::FlexGrid(QWidget* parent)
    : QTableView(parent)
    , m_model(std::make_unique<FlexGridModel>())
    , m_widths(std::make_unique<FlexGridWidths>(*this))
{
    setModel(m_model.get());
    setItemDelegate(new FlexGridDelegate(this));
    setEditTriggers(NoEditTriggers);
    setSelectionBehavior(SelectRows);
    setSelectionMode(SingleSelection);
    setTabKeyNavigation(false);
    setDragEnabled(false);
    setWordWrap(false);
    setCornerButtonEnabled(false);
    setHorizontalScrollMode(ScrollPerPixel);
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setDefaultSectionSize(heightOfRow(fontMetrics()));
    horizontalHeader()->setSectionsClickable(false);
    horizontalHeader()->setHighlightSections(false);
    horizontalHeader()->setMinimumSectionSize(8);
    connect(horizontalHeader(), &QHeaderView::sectionResized, this, [this](int column, int, int pixels) {
        if (m_pressedOnHeader)
            m_widths->draggedTo(column, pixels);
    });
    horizontalHeader()->viewport()->installEventFilter(this);
}

FlexGrid::~FlexGrid()
{
    setModel(nullptr);
}

bool FlexGrid::isDataCell(int row, int column) const
{
    return row >= 1 && row < Rows() && column >= 0 && column < Cols();
}

int FlexGrid::Rows() const
{
    return m_model->rows() + 1;
}

void FlexGrid::setRows(int rows)
{
    m_model->resizeRows(std::max(0, rows - 1));
    if (rows <= 1)
        m_widths->forgetCells();
    afterChange();
}

int FlexGrid::Cols() const
{
    return m_model->columnCount();
}

void FlexGrid::setCols(int cols)
{
    m_model->setColumns(std::max(0, cols));
    m_widths->setColumns(Cols());
    afterChange();
}

void FlexGrid::FormatString(const QString& titles)
{
    const QStringList list = titles.split(u'|');
    if (list.size() > Cols())
        setCols(static_cast<int>(list.size()));
    for (int column = 0; column < Cols(); ++column) {
        QString title = list.value(column);
        Qt::Alignment alignment;
        if (title.startsWith(u'<'))
            alignment = Qt::AlignLeft;
        else if (title.startsWith(u'>'))
            alignment = Qt::AlignRight;
        else if (title.startsWith(u'^'))
            alignment = Qt::AlignHCenter;
        if (alignment) {
            title.remove(0, 1);
            m_model->setAlignment(column, alignment);
        }
        m_model->setTitle(column, title);
        m_widths->noteTitle(column, title);
    }
    m_widths->apply();
}

void FlexGrid::setColWidth(int column, int twips)
{
    if (column < 0 || column >= Cols())
        return;
    m_widths->setTwips(column, std::max(0, twips));
    m_widths->apply();
}

int FlexGrid::ColWidth(int column) const
{
    return column < 0 || column >= Cols() ? 0 : std::max(0, m_widths->twips(column));
}

void FlexGrid::setColAlignment(int column, Qt::Alignment alignment)
{
    if (column >= 0 && column < Cols())
        m_model->setAlignment(column, alignment);
}

void FlexGrid::setStretchColumn(int column)
{
    m_widths->setStretch(column);
    m_widths->apply();
}

QString FlexGrid::TextMatrix(int row, int column) const
{
    if (column < 0 || column >= Cols())
        return {};
    if (row == 0)
        return m_model->title(column);
    return isDataCell(row, column) ? m_model->text(row - 1, column) : QString();
}

void FlexGrid::setTextMatrix(int row, int column, const QString& text)
{
    if (column < 0 || column >= Cols())
        return;
    if (row == 0) {
        m_model->setTitle(column, text);
        m_widths->noteTitle(column, text);
    } else if (isDataCell(row, column)) {
        m_model->setText(row - 1, column, text);
        m_widths->noteCell(column, FlexGridModel::cellOf(m_model->rowText(row - 1), column));
    }
    afterChange();
}

void FlexGrid::AddItem(const QStringList& cells)
{
    QByteArray row;
    for (const QString& cell : cells) {
        if (&cell != &cells.first())
            row += CellSeparator;
        row += cell.toUtf8().replace(CellSeparator, ' ');
    }
    AddItem(QByteArrayView(row));
}

void FlexGrid::AddItem(const QString& tabSeparatedCells)
{
    QByteArray row = tabSeparatedCells.toUtf8();
    row.replace('\t', CellSeparator);
    AddItem(QByteArrayView(row));
}

void FlexGrid::AddItem(QByteArrayView cells)
{
    m_model->addRow(cells);
    m_widths->note(m_model->rowText(m_model->rows() - 1));
    afterChange();
}

void FlexGrid::RemoveItem(int row)
{
    if (row < 1 || row >= Rows())
        return;
    const int column = Col();
    const int current = Row();
    const bool hasCurrent = currentIndex().isValid();
    m_model->removeRow(row - 1);
    if (hasCurrent && Rows() > 1)
        moveTo(std::min(current > row ? current - 1 : current, Rows() - 1), column);
}

void FlexGrid::clearRows()
{
    m_model->clear();
    m_widths->forgetCells();
    afterChange();
}

int FlexGrid::Row() const
{
    const QModelIndex current = currentIndex();
    if (current.isValid())
        return current.row() + 1;
    return Rows() > 1 && m_model->rowCount() == 0 ? 1 : 0; // held back: becomes current when announced
}

int FlexGrid::Col() const
{
    return std::max(0, currentIndex().column());
}

void FlexGrid::setRow(int row)
{
    moveTo(row, Col());
}

void FlexGrid::moveTo(int row, int column)
{
    if (!isDataCell(row, column))
        return;
    m_model->announce();
    selectionModel()->setCurrentIndex(m_model->index(row - 1, column),
                                      QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

/// The first row becomes current, and widths follow the contents.
void FlexGrid::afterChange()
{
    if (m_model->isHeldBack())
        return;
    m_widths->apply();
    if (!currentIndex().isValid() && m_model->rowCount() > 0)
        moveTo(1, 0);
}

quint32 FlexGrid::CellBackColor(int row, int column) const
{
    return isDataCell(row, column) ? m_model->colour(row - 1, column) : 0;
}

void FlexGrid::setCellBackColor(int row, int column, quint32 bgr)
{
    if (isDataCell(row, column))
        m_model->setColour(row - 1, column, bgr);
}

void FlexGrid::setRowBackColor(int row, quint32 bgr)
{
    if (isDataCell(row, 0))
        m_model->setRowColour(row - 1, bgr);
}

void FlexGrid::setRowToolTip(int row, const QString& text)
{
    if (isDataCell(row, 0))
        m_model->setToolTip(row - 1, text);
}

bool FlexGrid::Redraw() const
{
    return !m_model->isHeldBack();
}

void FlexGrid::setRedraw(bool on)
{
    m_model->holdBack(!on);
    viewport()->setUpdatesEnabled(on);
    m_heldBack.start();
    if (on && m_progress)
        m_progress->hide();
    afterChange();
}

void FlexGrid::setProgress(qsizetype done, qsizetype total)
{
    constexpr int patience = 500; // Milliseconds; a shorter fill shows nothing.
    constexpr int steps = 100;
    constexpr int longList = 10'000;
    if (total > longList && done % 64 != 0)
        return; // Asked for every row.
    if (Redraw() || total <= 0 || m_heldBack.elapsed() < patience)
        return;
    if (!m_progress) {
        m_progress = new QProgressBar(this);
        m_progress->setRange(0, steps);
        m_progress->setAccessibleName(QStringLiteral("Andamento"));
    }
    const int step = static_cast<int>(steps * done / total);
    if (m_progress->isVisible() && m_progress->value() == step)
        return;
    const QRect area = viewport()->geometry();
    const QSize size(area.width() / 2, m_progress->sizeHint().height());
    m_progress->setGeometry(QRect(area.center() - QPoint(size.width() / 2, size.height() / 2), size));
    m_progress->setValue(step);
    m_progress->show();
}

QString FlexGrid::copyText() const
{
    QList<int> rows;
    for (int row = 1; row < Rows(); ++row) {
        if (CellBackColor(row, 0) == markColour)
            rows.append(row);
    }
    if (rows.isEmpty() && Row() > 0)
        rows.append(Row());
    QStringList lines;
    for (const int row : std::as_const(rows)) {
        QStringList cells;
        for (int column = 0; column < Cols(); ++column) {
            if (!isColumnHidden(column))
                cells.append(oneLine(TextMatrix(row, column)));
        }
        lines.append(cells.join(u'\t'));
    }
    return lines.join(u'\n');
}

void FlexGrid::keyboardSearch(const QString&) {}

/// Sections also change their size by themselves (a new style); only under the mouse it is the operator's wish.
bool FlexGrid::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == horizontalHeader()->viewport()) {
        if (event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonDblClick)
            m_pressedOnHeader = true;
        else if (event->type() == QEvent::MouseButtonRelease)
            m_pressedOnHeader = false;
    }
    return QTableView::eventFilter(watched, event);
}

/// From a cell that does not show, the base class knows no way on.
void FlexGrid::leaveHiddenColumn()
{
    int column = Col();
    while (column < Cols() && isColumnHidden(column))
        ++column;
    if (currentIndex().isValid() && column != Col())
        moveTo(Row(), column);
}

void FlexGrid::keyPressEvent(QKeyEvent* event)
{
    const QPointer<FlexGrid> alive(this);
    event->ignore();
    Q_EMIT KeyDown(event);
    if (event->isAccepted() || !alive)
        return;
    if (event->matches(QKeySequence::Copy)) {
        const QString text = copyText();
        if (!text.isEmpty())
            QApplication::clipboard()->setText(text);
        event->accept();
        return;
    }
    switch (event->key()) {
    case Qt::Key_Home:
        moveTo(1, Col());
        event->accept();
        return;
    case Qt::Key_End:
        moveTo(Rows() - 1, Col());
        event->accept();
        return;
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
        event->accept();
        leaveHiddenColumn();
        QTableView::keyPressEvent(event);
        return;
    default:
        return; // everything else is the window's
    }
}

void FlexGrid::mousePressEvent(QMouseEvent* event)
{
    QTableView::mousePressEvent(event);
    m_pressedOnRow = event->button() == Qt::LeftButton && indexAt(event->position().toPoint()).isValid();
}

void FlexGrid::mouseReleaseEvent(QMouseEvent* event)
{
    // The handlers may clear the grid or close the window, so nothing is used of the grid after them unchecked.
    const QPointer<FlexGrid> alive(this);
    const Qt::MouseButton button = event->button();
    const QPoint globalPosition = event->globalPosition().toPoint();
    const QModelIndex under = indexAt(event->position().toPoint());
    const bool clicked = button == Qt::LeftButton && m_pressedOnRow && under.isValid();
    QTableView::mouseReleaseEvent(event);
    if (!alive)
        return;
    m_pressedOnRow = false;
    if (clicked && under != currentIndex())
        moveTo(under.row() + 1, under.column());
    Q_EMIT MouseUp(button, globalPosition);
    if (alive && clicked)
        Q_EMIT Click();
}

void FlexGrid::mouseDoubleClickEvent(QMouseEvent* event)
{
    const bool onRow = event->button() == Qt::LeftButton && indexAt(event->position().toPoint()).isValid();
    const QPointer<FlexGrid> alive(this);
    QTableView::mouseDoubleClickEvent(event);
    if (!alive)
        return;
    m_pressedOnRow = false; // its release is no second click
    if (onRow)
        Q_EMIT DblClick();
}

void FlexGrid::resizeEvent(QResizeEvent* event)
{
    QTableView::resizeEvent(event);
    m_widths->viewChanged();
}

void FlexGrid::changeEvent(QEvent* event)
{
    QTableView::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) {
        verticalHeader()->setDefaultSectionSize(heightOfRow(fontMetrics()));
        m_widths->measureFont();
        m_widths->apply();
    }
}

} // namespace platform
