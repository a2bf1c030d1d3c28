#pragma once

#include "data/Dialect.h"
#include "platform/ui/FlexGrid.h"
#include "shared/Services.h"
#include "support/BothBackEnds.h"
#include "support/Doubles.h"
#include "support/Inserts.h"
#include "support/StatementTrace.h"
#include "support/StationSchema.h"

#include <QAbstractButton>
#include <QApplication>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTest>

#include <functional>
#include <stdexcept>

// What a test needs to drive a window as a person does.
namespace support {

/// A station with what every window is given. Today is Saturday, 14/03/2026.
struct WindowTest
{
    explicit WindowTest(BothBackEnds& used)
        : database(used)
        , dialect(used.isMySql() ? QStringLiteral("mysql") : QString())
    {
        makeStation(used);
    }

    BothBackEnds& database;
    data::Dialect dialect;
    TestMessages messages;
    TestClock clock{QDateTime(QDate(2026, 3, 14), QTime(10, 20, 30))};
    TestPump pump;
    Services services{database.connection(), dialect, messages, clock, pump};
    StatementTrace trace;

    /// A day as the program's own statements compare it.
    [[nodiscard]] QString literal(QDate day) const
    {
        return day.toString(database.isMySql() ? QStringLiteral(" '' yyyy/MM/dd '' ")
                                               : QStringLiteral(" # MM/dd/yyyy # "));
    }
    /// A day as the tables are read from outside.
    [[nodiscard]] QString shownDate(QDate day) const
    {
        return day.toString(database.isMySql() ? QStringLiteral("yyyy-MM-dd") : QStringLiteral("yyyy-MM-dd 00:00:00"));
    }
    /// Runs statements that are no part of what is tested.
    void script(const QStringList& lines)
    {
        database.script(lines);
        trace.clear();
    }
    /// The same for rows of a table, as support::inserts has them.
    void insert(const QString& table, const QString& columns, const QStringList& rows)
    {
        script(inserts(database.isMySql(), table, columns, rows));
    }
    /// The rows of a table from outside, cells joined by "|"; columns separated by a blank.
    [[nodiscard]] QStringList rows(const QString& table, const QString& columns) const
    {
        return database.rows(table, columns);
    }
    /// The statements since the last look, and forgets them.
    [[nodiscard]] QStringList statements()
    {
        const QStringList lines = trace.lines();
        trace.clear();
        return lines;
    }
    /// The boxes since the last look, as "style prompt" or "style title: prompt", and forgets them. Every expected one
    /// must have come.
    [[nodiscard]] QStringList boxes()
    {
        QStringList texts;
        for (const TestMessages::Shown& box : messages.shown())
            texts << QString::number(box.style) + u' ' +
                         (box.title.isEmpty() ? QString() : box.title + QStringLiteral(": ")) + box.prompt;
        if (messages.pending() > 0)
            texts << QStringLiteral("and an expected box has not come");
        messages.clear();
        return texts;
    }
    /// What one box tells while something is done; it is answered so. Of more boxes, each is a line.
    [[nodiscard]] QString told(const std::function<void()>& act,
                               platform::MsgBoxResult answer = platform::MsgBoxResult::Ok)
    {
        messages.expect(answer);
        act();
        return boxes().join(u'\n');
    }
};

/// First line of a test function of a window, in a test whose global data are the back ends: a fresh database, and the
/// fixture over it.
#define FRESH_STATION(Fixture, variable)                                                                               \
    QFETCH_GLOBAL(QString, backEnd);                                                                                   \
    if (const QString missing = support::BothBackEnds::missing(backEnd); !missing.isEmpty()) {                         \
        QSKIP(qPrintable(missing));                                                                                    \
    }                                                                                                                  \
    support::BothBackEnds database(backEnd);                                                                           \
    Fixture variable(database)

/// Data rows of texts; the first text of a row is its name.
inline void addTexts(std::initializer_list<const char*> columns, const QList<QStringList>& rows)
{
    for (const char* const column : columns)
        QTest::addColumn<QString>(column);
    for (const QStringList& texts : rows) {
        QTestData& row = QTest::newRow(qPrintable(texts.first()));
        for (const QString& text : texts.mid(1))
            row << text;
    }
}

/// Shows a window and lets it load.
inline void open(QWidget& window)
{
    window.show();
    window.activateWindow();
    if (!QTest::qWaitForWindowActive(&window))
        throw std::runtime_error("the window does not become active");
    QCoreApplication::processEvents();
}

/// A control by its name.
template <typename T>
T& control(const QWidget& window, const char* name)
{
    if (T* const found = window.findChild<T*>(QLatin1String(name)))
        return *found;
    QStringList names;
    for (const QWidget* child : window.findChildren<QWidget*>())
        names << child->objectName();
    throw std::runtime_error(QStringLiteral("no %1 among %2").arg(QLatin1String(name), names.join(u' ')).toStdString());
}

/// Names of the controls that can have the focus and no accessible name.
inline QStringList namelessControls(const QWidget& window)
{
    QStringList names;
    for (const QWidget* child : window.findChildren<QWidget*>()) {
        const bool inner = child->objectName().isEmpty() || child->objectName().startsWith(u"qt_");
        if (!inner && child->focusPolicy() != Qt::NoFocus && child->accessibleName().isEmpty())
            names << child->objectName();
    }
    return names;
}

/// Name of the widget that has the focus.
inline QString focused()
{
    const QWidget* const widget = QApplication::focusWidget();
    return widget ? widget->objectName() : QString();
}

/// A key to whatever has the keyboard: an open drop-down list, else the focused widget.
inline void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    QWidget* target = QApplication::activePopupWidget();
    if (!target || target->focusWidget())
        target = target ? target->focusWidget() : QApplication::focusWidget();
    if (!target)
        throw std::runtime_error("nothing has the focus");
    QTest::keyClick(target, key, modifiers);
    QCoreApplication::processEvents();
}

inline void press(std::initializer_list<Qt::Key> keys)
{
    for (const Qt::Key key : keys)
        press(key);
}

/// Types a text into the focused widget.
inline void type(const QString& text)
{
    for (const QChar character : text) {
        QKeyEvent down(QEvent::KeyPress, 0, Qt::NoModifier, QString(character));
        QApplication::sendEvent(QApplication::focusWidget(), &down);
    }
    QCoreApplication::processEvents();
}

/// Types a text and Enter.
inline void enter(const QString& text)
{
    type(text);
    press(Qt::Key_Return);
}

/// Types a text in the place of what a box holds.
inline void typeInto(QLineEdit& box, const QString& text)
{
    box.setFocus();
    box.clear();
    type(text);
}

inline void click(QWidget& window, const char* button)
{
    QTest::mouseClick(&control<QAbstractButton>(window, button), Qt::LeftButton);
}

/// A click on a grid's row, counted from 1.
inline void clickRow(platform::FlexGrid& grid, int row, int column = 1)
{
    const QModelIndex cell = grid.model()->index(row - 1, column);
    grid.scrollTo(cell);
    QTest::mouseClick(grid.viewport(), Qt::LeftButton, {}, grid.visualRect(cell).center());
}

/// In the main window: Enter on a row of the pump grid, the reading, Enter.
inline void enterReading(const QWidget& window, int row, const QString& reading)
{
    auto& flex = control<platform::FlexGrid>(window, "flex");
    flex.setRow(row);
    flex.setFocus();
    QTest::keyClick(&flex, Qt::Key_Return);
    auto& text1 = control<QLineEdit>(window, "Text1");
    QTest::keyClicks(&text1, reading);
    QTest::keyClick(&text1, Qt::Key_Return);
}

/// The rows of a grid, cells joined by "|"; the first one holds the titles.
inline QStringList rowsOf(const platform::FlexGrid& grid)
{
    QStringList rows;
    for (int row = 0; row < grid.Rows(); ++row) {
        QStringList cells;
        for (int column = 0; column < grid.Cols(); ++column)
            cells << grid.TextMatrix(row, column);
        rows << cells.join(u'|');
    }
    return rows;
}

inline void clickEntry(QListWidget& list, int row)
{
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, list.visualItemRect(list.item(row)).center());
}

inline QStringList entries(const QListWidget& list)
{
    QStringList texts;
    for (int row = 0; row < list.count(); ++row)
        texts << list.item(row)->text();
    return texts;
}

} // namespace support
