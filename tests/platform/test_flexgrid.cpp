#include "platform/ui/Application.h"
#include "platform/ui/FlexGrid.h"

#include <QAbstractItemModelTester>
#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QLineEdit>
#include <QProgressBar>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

using platform::FlexGrid;

namespace {

constexpr quint32 yellow = 65535;
constexpr quint32 paleYellow = 0xC0FFFF;

void laidOut(FlexGrid& grid)
{
    grid.setCols(4);
    grid.FormatString(QStringLiteral("Bomba|Descritivo|>Litros|"));
    grid.setColWidth(0, 700);
    grid.setColWidth(1, 1800);
    grid.setColWidth(2, 900);
    grid.setColWidth(3, 0);
}

void filled(FlexGrid& grid, int rows)
{
    laidOut(grid);
    for (int row = 1; row <= rows; ++row)
        grid.AddItem(QStringLiteral("%1\tGasolina nº %1\t1.234,50\tK%1").arg(row));
}

/// A grid of rows on the screen.
struct ShownGrid : FlexGrid
{
    explicit ShownGrid(int rows)
    {
        filled(*this, rows);
        resize(500, 300);
        show();
        if (!QTest::qWaitForWindowExposed(this))
            qFatal("the grid does not show");
    }
};

/// A window with a grid that has the focus, and a box behind it; notes which keys come up to it.
struct GridWindow : QWidget
{
    explicit GridWindow(int rows)
    {
        layout.addWidget(&grid);
        layout.addWidget(&next);
        filled(grid, rows);
        show();
        activateWindow();
        if (!QTest::qWaitForWindowActive(this))
            qFatal("the window does not become active");
        grid.setFocus();
    }
    void keyPressEvent(QKeyEvent* event) override { keys.append(event->key()); }

    QVBoxLayout layout{this};
    FlexGrid grid;
    QLineEdit next;
    QList<int> keys;
};

QPoint centre(const FlexGrid& grid, int row, int column)
{
    return grid.visualRect(grid.model()->index(row - 1, column)).center();
}

} // namespace

class TestFlexGrid : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { platform::prepareApplication(*qApp); }

    void modelKeepsTheRulesOfQt()
    {
        FlexGrid grid;
        const QAbstractItemModelTester tester(grid.model(), QAbstractItemModelTester::FailureReportingMode::Fatal);
        filled(grid, 5);
        grid.setRedraw(false);
        const QSignalSpy inserted(grid.model(), &QAbstractItemModel::rowsInserted);
        grid.AddItem(QStringLiteral("6"));
        grid.RemoveItem(6); // never shown
        for (int row = 6; row <= 1000; ++row) {
            grid.AddItem(QString::number(row));
            grid.setCellBackColor(row, 0, paleYellow);
        }
        QCOMPARE(inserted.size(), 0);
        QCOMPARE(grid.TextMatrix(1000, 0), QStringLiteral("1000")); // readable though not shown
        grid.RemoveItem(2);
        grid.setRedraw(true);
        QCOMPARE(inserted.size(), 1);
        QCOMPARE(grid.Rows(), 1000);
        QCOMPARE(grid.TextMatrix(5, 0), QStringLiteral("6"));
        QCOMPARE(grid.CellBackColor(999, 0), paleYellow);
        grid.setCols(2);
        grid.setCols(6);
        grid.setRows(9);
        grid.setRows(3);
        grid.setCellBackColor(1, 1, yellow);
        grid.setTextMatrix(2, 5, QStringLiteral("x"));
        grid.clearRows();
        grid.AddItem(QStringLiteral("a\tb"));
        QCOMPARE(grid.model()->rowCount(), 1);
    }

    void rowArithmetic()
    {
        FlexGrid grid;
        laidOut(grid);
        QCOMPARE(grid.Row(), 0);
        grid.AddItem(QStringLiteral("001\tÁlcool\t1,00\tkey\tsurplus"));
        grid.AddItem(QStringLiteral("002"));
        QCOMPARE(grid.Rows(), 3);
        QCOMPARE(grid.Row(), 1); // the first row that comes is current
        QCOMPARE(grid.TextMatrix(0, 1), QStringLiteral("Descritivo"));
        QCOMPARE(grid.TextMatrix(0, 2), QStringLiteral("Litros"));
        QCOMPARE(grid.TextMatrix(1, 3), QStringLiteral("key"));
        QCOMPARE(grid.TextMatrix(2, 2), QString());
        QCOMPARE(grid.TextMatrix(3, 0), QString());
        // Tabs and line breaks of a stored text stay in their cell.
        const QStringList stored{QStringLiteral("a\tb\nc"), QStringLiteral("\x1F"), QStringLiteral("d")};
        grid.setTextMatrix(2, 2, stored.first());
        grid.AddItem(stored);
        QCOMPARE(grid.TextMatrix(2, 2), stored.first());
        QCOMPARE(grid.TextMatrix(2, 1), QString());
        QCOMPARE(grid.TextMatrix(3, 0), stored.first());
        QCOMPARE(grid.TextMatrix(3, 1), QStringLiteral(" "));
        QCOMPARE(grid.TextMatrix(3, 2), stored.last());
        grid.setRow(3);
        QCOMPARE(grid.copyText().section(u'\t', 0, 0), QStringLiteral("a b c"));
        grid.setTextMatrix(1, 1, QStringLiteral("Óleo diesel"));
        QCOMPARE(grid.TextMatrix(1, 2), QStringLiteral("1,00"));
        grid.clearRows();
        QCOMPARE(grid.Rows(), 1);
        QCOMPARE(grid.Row(), 0);
        grid.setRedraw(false);
        grid.AddItem(QStringLiteral("003"));
        QCOMPARE(grid.Row(), 1); // before it is shown
        QCOMPARE(grid.TextMatrix(0, 0), QStringLiteral("Bomba"));
        // A closing separator makes one more, untitled column.
        grid.FormatString(QStringLiteral("DATA|CMT|SALDO|TANQUE|"));
        QCOMPARE(grid.Cols(), 5);
    }

    void currentRowAfterRemoval_data()
    {
        QTest::addColumn<int>("current");
        QTest::addColumn<int>("removed");
        QTest::addColumn<int>("expected");
        QTest::newRow("one above") << 3 << 1 << 2;
        QTest::newRow("itself") << 2 << 2 << 2;
        QTest::newRow("itself, last") << 4 << 4 << 3;
        QTest::newRow("the header stays") << 2 << 0 << 2;
        QTest::newRow("no such row") << 2 << 5 << 2;
    }
    void currentRowAfterRemoval()
    {
        QFETCH(int, current);
        QFETCH(int, removed);
        FlexGrid grid;
        filled(grid, 4);
        grid.setRow(current);
        grid.RemoveItem(removed);
        QTEST(grid.Row(), "expected");
        QCOMPARE(grid.selectionModel()->selectedRows().value(0).row(), grid.Row() - 1);
    }

    void coloursAndMarks()
    {
        ShownGrid grid(3);
        grid.setCellBackColor(1, 2, paleYellow);
        grid.setRowBackColor(2, yellow);
        QCOMPARE(grid.CellBackColor(1, 2), paleYellow);
        QCOMPARE(grid.CellBackColor(1, 0), 0U);
        QCOMPARE(grid.CellBackColor(2, 3), yellow);
        const QModelIndex marked = grid.model()->index(1, 0);
        QCOMPARE(marked.data(Qt::BackgroundRole).value<QColor>(), QColor(255, 255, 0));
        QCOMPARE(marked.data(Qt::ForegroundRole).value<QColor>(), QColor(Qt::black));
        grid.RemoveItem(1); // colours go with their rows
        QCOMPARE(grid.CellBackColor(1, 0), yellow);
        // The current row shows the cells' own colour and a frame.
        const QImage image = grid.viewport()->grab().toImage();
        const QRect cell = grid.visualRect(grid.model()->index(0, 0));
        QCOMPARE(grid.Row(), 1);
        QCOMPARE(image.pixelColor(cell.left() + 2, cell.center().y()), QColor(255, 255, 0));
        QVERIFY(image.pixelColor(cell.left() + 2, cell.top()) != QColor(255, 255, 0));
        QCOMPARE(image.pixelColor(cell.left() + 2, cell.center().y() + cell.height()), QColor(Qt::white));
        grid.setRowBackColor(1, 0);
        QVERIFY(!grid.model()->index(0, 0).data(Qt::BackgroundRole).isValid());
        grid.setRowToolTip(2, QStringLiteral("excluir?"));
        QCOMPARE(grid.model()->index(1, 1).data(Qt::ToolTipRole).toString(), QStringLiteral("excluir?"));
    }

    void widths()
    {
        FlexGrid grid;
        laidOut(grid);
        grid.resize(900, 200);
        grid.show();
        const int pixels = 1800 * grid.logicalDpiX() / 1440;
        QCOMPARE(grid.columnWidth(1), pixels);
        QVERIFY(grid.isColumnHidden(3));
        QCOMPARE(grid.ColWidth(3), 0);
        QCOMPARE(grid.ColWidth(1), 1800);
        // Contents show, up to a limit.
        const QString text = QStringLiteral("Gasolina aditivada do tanque três");
        grid.AddItem(u'\t' + text);
        QVERIFY(grid.columnWidth(1) >= grid.fontMetrics().horizontalAdvance(text) + 4);
        grid.AddItem(u'\t' + QString(500, u'W'));
        QVERIFY(grid.columnWidth(1) < 500);
        // The next list starts anew.
        grid.clearRows();
        QCOMPARE(grid.columnWidth(1), pixels);
        grid.AddItem(u'\t' + text);
        // A dragged width outlives the next fill, which lays the grid out again.
        QWidget* const header = grid.horizontalHeader()->viewport();
        const QPoint edge(grid.columnViewportPosition(2) - 1, header->height() / 2);
        const QPoint target(grid.columnViewportPosition(1) + 76, edge.y());
        QTest::mousePress(header, Qt::LeftButton, {}, edge);
        QMouseEvent drag(QEvent::MouseMove, target, header->mapToGlobal(target), Qt::NoButton, Qt::LeftButton, {});
        QApplication::sendEvent(header, &drag);
        QTest::mouseRelease(header, Qt::LeftButton, {}, target);
        laidOut(grid);
        grid.AddItem(u'\t' + text);
        QCOMPARE(grid.columnWidth(1), 77);
        // The free space goes to one column.
        grid.setStretchColumn(2);
        const auto total = [&grid] { return grid.columnWidth(0) + grid.columnWidth(1) + grid.columnWidth(2); };
        QCOMPARE(total(), grid.viewport()->width());
        grid.resize(700, 200);
        QVERIFY(QTest::qWaitFor([&] { return total() == grid.viewport()->width(); }));
    }

    void clicksComeAfterPressAndReleaseOnARow()
    {
        ShownGrid grid(4);
        QList<int> rows;
        connect(&grid, &FlexGrid::Click, &grid, [&] { rows.append(grid.Row()); });
        const QSignalSpy doubled(&grid, &FlexGrid::DblClick);
        const QSignalSpy released(&grid, &FlexGrid::MouseUp);
        QTest::mousePress(grid.viewport(), Qt::LeftButton, {}, centre(grid, 3, 1));
        QVERIFY(rows.isEmpty());
        QTest::mouseRelease(grid.viewport(), Qt::LeftButton, {}, centre(grid, 3, 1));
        QCOMPARE(rows, QList<int>{3});
        QCOMPARE(grid.Col(), 1);
        QTest::mouseClick(grid.viewport(), Qt::LeftButton, {}, QPoint(20, 280)); // below the rows
        QCOMPARE(rows.size(), 1);
        QTest::mouseClick(grid.viewport(), Qt::RightButton, {}, centre(grid, 2, 1));
        QCOMPARE(grid.Row(), 2);
        QCOMPARE(rows.size(), 1);
        QCOMPARE(released.last().at(0).value<Qt::MouseButton>(), Qt::RightButton);
        QTest::mouseClick(grid.viewport(), Qt::LeftButton, {}, centre(grid, 4, 0));
        QTest::mouseDClick(grid.viewport(), Qt::LeftButton, {}, centre(grid, 4, 0));
        QCOMPARE(rows, (QList<int>{3, 4}));
        QCOMPARE(doubled.size(), 1);
    }

    void aClickHandlerMayClearAndRefill()
    {
        ShownGrid grid(50);
        connect(&grid, &FlexGrid::Click, &grid, [&] {
            grid.setRedraw(false);
            grid.clearRows();
            QCoreApplication::processEvents();
            filled(grid, 2);
            QCoreApplication::processEvents();
            grid.setRedraw(true);
        });
        connect(&grid, &FlexGrid::MouseUp, &grid, [&] { grid.setRow(7); });
        QTest::mouseClick(grid.viewport(), Qt::LeftButton, {}, centre(grid, 5, 1));
        QCOMPARE(grid.Rows(), 3);
        QCOMPARE(grid.Row(), 1);
        QCOMPARE(grid.model()->rowCount(), 2);
    }

    void keys_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<int>("expectedRow");
        QTest::addColumn<bool>("reachesTheWindow");
        QTest::newRow("down") << int(Qt::Key_Down) << 11 << false;
        QTest::newRow("up") << int(Qt::Key_Up) << 9 << false;
        QTest::newRow("home") << int(Qt::Key_Home) << 1 << false;
        QTest::newRow("end") << int(Qt::Key_End) << 40 << false;
        QTest::newRow("enter") << int(Qt::Key_Return) << 10 << true;
        QTest::newRow("a letter does not search") << int(Qt::Key_G) << 10 << true;
    }
    void keys()
    {
        GridWindow window(40);
        FlexGrid& grid = window.grid;
        grid.setRow(10);
        QFETCH(int, key);
        QFETCH(bool, reachesTheWindow);
        QTest::keyClick(&grid, static_cast<Qt::Key>(key));
        QTEST(grid.Row(), "expectedRow");
        QCOMPARE(window.keys, reachesTheWindow ? QList<int>{key} : QList<int>{});
        // A handler that accepts the key keeps it from grid and window.
        grid.setRow(10);
        connect(&grid, &FlexGrid::KeyDown, &grid, [](QKeyEvent* event) { event->accept(); });
        QTest::keyClick(&grid, static_cast<Qt::Key>(key));
        QCOMPARE(grid.Row(), 10);
        QCOMPARE(window.keys.size(), reachesTheWindow ? 1 : 0);
    }

    void pagesTabAndCopy()
    {
        GridWindow window(100);
        FlexGrid& grid = window.grid;
        QTest::keyClick(&grid, Qt::Key_PageDown);
        QVERIFY(grid.Row() > 2);
        QTest::keyClick(&grid, Qt::Key_PageUp);
        QCOMPARE(grid.Row(), 1);
        QTest::keyClick(&grid, Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(QApplication::clipboard()->text(), QStringLiteral("1\tGasolina nº 1\t1.234,50"));
        grid.setRowBackColor(2, yellow);
        grid.setRowBackColor(9, yellow);
        QCOMPARE(grid.copyText(), QStringLiteral("2\tGasolina nº 2\t1.234,50\n9\tGasolina nº 9\t1.234,50"));
        QTest::keyClick(&grid, Qt::Key_Tab);
        QVERIFY(window.next.hasFocus());
    }

    void screenReadersFindCells()
    {
        FlexGrid grid;
        grid.setAccessibleName(QStringLiteral("Bombas"));
        filled(grid, 2);
        QAccessibleInterface* const face = QAccessible::queryAccessibleInterface(&grid);
        QVERIFY(face && face->tableInterface());
        QCOMPARE(face->text(QAccessible::Name), QStringLiteral("Bombas"));
        QAccessibleInterface* const cell = face->tableInterface()->cellAt(1, 1);
        QVERIFY(cell);
        QCOMPARE(cell->text(QAccessible::Name), QStringLiteral("Gasolina nº 2"));
        QCOMPARE(face->tableInterface()->columnDescription(0), QStringLiteral("Bomba"));
    }

    /// A short fill shows no bar; a long one shows how far it has come until the grid is shown again.
    void progress()
    {
        FlexGrid grid;
        grid.show();
        grid.setRedraw(false);
        grid.setProgress(1, 10);
        QVERIFY(!grid.findChild<QProgressBar*>());
        QTest::qWait(550);
        grid.setProgress(5, 10);
        const auto* const bar = grid.findChild<QProgressBar*>();
        QVERIFY(bar && bar->isVisible());
        QCOMPARE(bar->value(), 50);
        grid.setRedraw(true);
        QVERIFY(!bar->isVisible());
    }
};

QTEST_MAIN(TestFlexGrid)
#include "test_flexgrid.moc"
