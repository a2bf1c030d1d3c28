#include "tour/Operator.h"

#include "platform/ui/DatePicker.h"
#include "platform/ui/FlexGrid.h"
#include "support/OutsideProgram.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QThread>

#include <algorithm>
#include <iostream>
#include <optional>

#ifdef Q_OS_WIN
#include <qt_windows.h>
#endif

namespace tour {

namespace {

constexpr int PatienceMs = 60'000;
constexpr int PollMs = 20;
constexpr int SettleMs = 250;

/// Runs something in the program's thread and waits for it.
template <typename Function>
auto look(Function&& function)
{
    std::optional<decltype(function())> result;
    QMetaObject::invokeMethod(
        qApp, [&] { result = function(); }, Qt::BlockingQueuedConnection);
    return *result;
}

QWidget* find(const QString& windowName, const QString& control = {})
{
    for (QWidget* const window : QApplication::topLevelWidgets()) {
        if (window->isVisible() && window->objectName() == windowName)
            return control.isEmpty() ? window : window->findChild<QWidget*>(control);
    }
    return nullptr;
}

template <typename Widget>
Widget* findOf(const QString& window, const QString& control)
{
    return qobject_cast<Widget*>(find(window, control));
}

QMessageBox* messageBox()
{
    return qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
}

/// Where a place of a widget is on the screen, unless another window lies over it.
std::optional<QPoint> onScreen(const QWidget& widget, QPoint place)
{
    const QPoint global = widget.mapToGlobal(place);
    const QWidget* const top = QApplication::widgetAt(global);
    return top && top->window() == widget.window() ? std::optional(global) : std::nullopt;
}

QString plain(QString text)
{
    return text.remove(u'&');
}

} // namespace

Operator::Operator(const QString& folder)
    : m_folder(folder)
    , m_log(folder + QStringLiteral("/log.txt"))
{
    if (!m_log.open(QIODevice::WriteOnly | QIODevice::Text))
        throw Failed(QStringLiteral("cannot write ") + m_log.fileName());
    m_since.start();
}

void Operator::write(const QString& line)
{
    const QByteArray bytes =
        QStringLiteral("[%1 s] %2\n").arg(double(m_since.elapsed()) / 1000, 6, 'f', 2).arg(line).toUtf8();
    m_log.write(bytes);
    m_log.flush();
    std::cout << bytes.constData() << std::flush;
}

void Operator::say(const QString& text)
{
    write(text);
}

void Operator::picture(const QString& name, const QString& window)
{
    // The window manager's frame comes a moment after the window.
    QElapsedTimer waited;
    waited.start();
    while (waited.elapsed() < 1000 && look([&] {
               const QWidget* const shown = window.isEmpty() ? QApplication::activeWindow() : find(window);
               return !shown || shown->frameGeometry() == shown->geometry();
           }))
        QThread::msleep(PollMs);
    QThread::msleep(SettleMs);
    const QString file = QStringLiteral("%1-%2.png").arg(++m_pictures, 2, 10, QLatin1Char('0')).arg(name);
    const bool saved = look([&] {
        const QWidget* const shown = window.isEmpty() ? QApplication::activeWindow() : find(window);
        const QRect frame = shown ? shown->frameGeometry() : QRect();
        QScreen* const screen = QGuiApplication::primaryScreen();
        const QPixmap whole = screen->grabWindow(0);
        const QRect part = frame & screen->geometry();
        const double ratio = whole.devicePixelRatio();
        return (frame.isValid() ? whole.copy(QRect(part.topLeft() * ratio, part.size() * ratio)) : whole)
            .save(m_folder + u'/' + file);
    });
    if (!saved)
        throw Failed(QStringLiteral("cannot write the picture ") + file);
    write(QStringLiteral("  picture ") + file);
}

void Operator::xdotool(const QStringList& arguments)
{
    const support::Outcome outcome = support::runOutside(QStringLiteral("xdotool"), arguments);
    if (!outcome.succeeded())
        throw Failed(QStringLiteral("xdotool %1: %2").arg(arguments.join(u' '), QString::fromUtf8(outcome.errors)));
}

void Operator::key(const QString& key, int times)
{
    for (int i = 0; i < times; ++i)
        xdotool({QStringLiteral("key"), key});
}

void Operator::type(const QString& text)
{
    xdotool({QStringLiteral("type"), QStringLiteral("--delay"), QStringLiteral("15"), QStringLiteral("--"), text});
}

void Operator::clickAt(QPoint position, int button, int times)
{
    const double ratio = look([] { return QGuiApplication::primaryScreen()->devicePixelRatio(); });
    xdotool({QStringLiteral("mousemove"), QString::number(qRound(position.x() * ratio)),
             QString::number(qRound(position.y() * ratio)), QStringLiteral("click"), QStringLiteral("--repeat"),
             QString::number(times), QStringLiteral("--delay"), QStringLiteral("60"), QString::number(button)});
}

QPoint Operator::steady(const QString& what, const std::function<std::optional<QPoint>()>& place)
{
    std::optional<QPoint> at;
    expect(what, [&] {
        const std::optional<QPoint> before = look(place);
        QThread::msleep(2 * PollMs);
        at = look(place);
        return at && at == before;
    });
    return *at;
}

QPoint Operator::middle(const QString& window, const QString& control)
{
    return steady(QStringLiteral("%1 in %2 can be used").arg(control, window), [&]() -> std::optional<QPoint> {
        const QWidget* const widget = find(window, control);
        if (!widget || !widget->isVisible() || !widget->isEnabled())
            return {};
        return onScreen(*widget, widget->rect().center());
    });
}

void Operator::click(const QString& window, const QString& control)
{
    clickAt(middle(window, control));
}

void Operator::rightClick(const QString& window, const QString& control)
{
    clickAt(middle(window, control), 3);
}

void Operator::clickRow(const QString& window, const QString& control, int row, bool twice)
{
    const auto place = [&]() -> std::optional<QPoint> {
        auto* const view = findOf<QAbstractItemView>(window, control);
        if (!view || !view->isVisible())
            return {};
        const bool isGrid = qobject_cast<platform::FlexGrid*>(view) != nullptr;
        const QModelIndex index = view->model()->index(isGrid ? row - 1 : row, isGrid ? 1 : 0);
        if (!index.isValid())
            return {};
        view->scrollTo(index);
        return onScreen(*view->viewport(), view->visualRect(index).center());
    };
    const QPoint at = steady(QStringLiteral("row %1 of %2 in %3").arg(row).arg(control, window), place);
    clickAt(at, 1, twice ? 2 : 1);
}

void Operator::menu(const QString& windowName, const QString& menuName, const QString& action)
{
    // Where to click for the entry: in the bar itself or in the open menu; for a closed one, its title in the bar.
    bool isEntry = false;
    const auto place = [&]() -> std::optional<QPoint> {
        const QWidget* const window = find(windowName);
        const auto* const bar = window ? window->findChild<QMenuBar*>() : nullptr;
        const auto* const menu = window ? window->findChild<QMenu*>(menuName) : nullptr;
        isEntry = !menu || menu->isVisible();
        if (!menu && !bar)
            return {};
        if (!isEntry)
            return bar->mapToGlobal(bar->actionGeometry(menu->menuAction()).center());
        QAction* const entry = window->findChild<QAction*>(action);
        if (!entry)
            return {};
        return menu ? menu->mapToGlobal(menu->actionGeometry(entry).center())
                    : bar->mapToGlobal(bar->actionGeometry(entry).center());
    };
    clickAt(steady(QStringLiteral("the menu ") + menuName, place));
    if (isEntry)
        return;
    expect(QStringLiteral("the open menu ") + menuName,
           [&] { return look([&] { return find(windowName)->findChild<QMenu*>(menuName)->isVisible(); }); });
    clickAt(steady(QStringLiteral("the entry ") + action, place));
}

void Operator::choose(const QString& window, const QString& comboBox, const QString& text)
{
    click(window, comboBox);
    const int steps = look([&] {
        const auto* const box = findOf<QComboBox>(window, comboBox);
        return box->findText(text) - box->currentIndex();
    });
    QThread::msleep(SettleMs);
    key(steps < 0 ? QStringLiteral("Up") : QStringLiteral("Down"), qAbs(steps));
    key(QStringLiteral("Return"));
    expect(QStringLiteral("%1 says %2").arg(comboBox, text), [&] { return this->text(window, comboBox) == text; });
}

void Operator::date(const QString& window, const QString& picker, QDate date)
{
    const auto theDay = [&]() -> std::optional<QPoint> {
        const QWidget* const widget = find(window, picker);
        if (!widget || !widget->isVisible())
            return {};
        return onScreen(*widget, QPoint(12, widget->height() / 2));
    };
    clickAt(steady(picker, theDay));
    type(date.toString(QStringLiteral("ddMMyyyy")));
    key(QStringLiteral("Tab"));
    expect(QStringLiteral("%1 says %2").arg(picker, date.toString(Qt::ISODate)),
           [&] { return look([&] { return findOf<platform::DatePicker>(window, picker)->Value() == date; }); });
}

void Operator::fill(const QString& window, const QString& box, const QString& text)
{
    click(window, box);
    key(QStringLiteral("ctrl+a"));
    type(text);
}

void Operator::window(const QString& name)
{
    expect(QStringLiteral("the window ") + name, [&] {
        return look([&] {
            const QWidget* const active = QApplication::activeWindow();
            return active && active->objectName() == name && active->isVisible();
        });
    });
    QThread::msleep(PollMs);
}

void Operator::windowGone(const QString& name)
{
    expect(QStringLiteral("the window %1 has closed").arg(name), [&] { return look([&] { return !find(name); }); });
}

void Operator::message(const QString& text, const QString& button, const QString& pictureName)
{
    expect(QStringLiteral("the message ") + text, [&] {
        return look([&] {
            const QMessageBox* const box = messageBox();
            return box && box == QApplication::activeWindow() && box->text().contains(text);
        });
    });
    if (!pictureName.isEmpty())
        picture(pictureName);
    const auto theButton = [&]() -> std::optional<QPoint> {
        for (const QAbstractButton* const candidate : messageBox()->buttons()) {
            if (plain(candidate->text()) == button)
                return onScreen(*candidate, candidate->rect().center());
        }
        return {};
    };
    const QPoint at = steady(QStringLiteral("the button ") + button, theButton);
    clickAt(at);
    expect(QStringLiteral("the message has gone"),
           [&] { return look([&] { return !messageBox() || !messageBox()->text().contains(text); }); });
}

void Operator::password(const QString& pictureName)
{
    window(QStringLiteral("frmsenha"));
    type(QStringLiteral("1234"));
    expectText(QStringLiteral("frmsenha"), QStringLiteral("Text1"), QStringLiteral("1234"));
    if (!pictureName.isEmpty())
        picture(pictureName);
    key(QStringLiteral("Return"));
    windowGone(QStringLiteral("frmsenha"));
}

#ifdef Q_OS_WIN
void Operator::print(const QString& file, const QString& pictureName)
{
    // The system's own dialog, which is no window of this program. Enter prints on the default printer, whose papers
    // land in the folder that PLANILHA_PAPEIS names.
    const auto isDialogThere = [] {
        wchar_t name[16] = {};
        GetClassNameW(GetForegroundWindow(), name, 16);
        return QString::fromWCharArray(name) == QStringLiteral("#32770");
    };
    const QDir papers(qEnvironmentVariable("PLANILHA_PAPEIS"));
    const auto printed = [&] {
        return papers.entryInfoList({QStringLiteral("papel-*.ps")}, QDir::Files, QDir::Time | QDir::Reversed);
    };
    const qsizetype before = printed().size();
    expect(QStringLiteral("the print dialog"), isDialogThere);
    QThread::msleep(SettleMs);
    if (!pictureName.isEmpty())
        picture(pictureName);
    key(QStringLiteral("Return"));
    expect(QStringLiteral("the print dialog has closed"), [&] { return !isDialogThere(); });
    expect(file + QStringLiteral(" has been printed"), [&] { return printed().size() > before; });
    QString paper = file;
    paper.replace(QStringLiteral(".pdf"), QStringLiteral(".ps"));
    QFile::remove(paper);
    if (!QFile::copy(printed().constLast().filePath(), paper))
        throw Failed(QStringLiteral("cannot keep the paper ") + paper);
}
#else
void Operator::print(const QString& file, const QString& pictureName)
{
    const QString dialog = QStringLiteral("dlgPrinter");
    const QString path = m_folder + u'/' + file;
    QFile::remove(path);
    window(dialog);
    // PDF is the last of the printers.
    click(dialog, QStringLiteral("printers"));
    QThread::msleep(SettleMs);
    key(QStringLiteral("End"));
    key(QStringLiteral("Return"));
    fill(dialog, QStringLiteral("filename"), file); // The folder's own name may have letters that no key here makes.
    if (!pictureName.isEmpty())
        picture(pictureName);
    key(QStringLiteral("Return"));
    windowGone(dialog);
    expect(file + QStringLiteral(" has been printed"), [&] {
        QFile paper(path);
        return paper.open(QIODevice::ReadOnly) && paper.read(5) == "%PDF-" && paper.size() > 2000;
    });
}
#endif

QString Operator::text(const QString& window, const QString& control)
{
    return look([&] {
        const QWidget* const widget = find(window, control);
        if (const auto* const label = qobject_cast<const QLabel*>(widget))
            return label->text();
        if (const auto* const box = qobject_cast<const QLineEdit*>(widget))
            return box->text();
        if (const auto* const choice = qobject_cast<const QComboBox*>(widget))
            return choice->currentText();
        return QString();
    });
}

QString Operator::cell(const QString& window, const QString& grid, int row, int column)
{
    return look([&] {
        const auto* const widget = findOf<platform::FlexGrid>(window, grid);
        return widget ? widget->TextMatrix(row, column) : QString();
    });
}

bool Operator::listHas(const QString& window, const QString& list, const QStringList& texts)
{
    return look([&] {
        const auto* const widget = findOf<QListWidget>(window, list);
        for (int row = 0; widget && row < widget->count(); ++row) {
            const QString line = widget->item(row)->text();
            if (std::all_of(texts.begin(), texts.end(), [&](const QString& text) { return line.contains(text); }))
                return true;
        }
        return false;
    });
}

int Operator::rows(const QString& window, const QString& grid)
{
    return look([&] {
        const auto* const view = findOf<QAbstractItemView>(window, grid);
        return view ? view->model()->rowCount() : -1;
    });
}

bool Operator::shown(const QString& window, const QString& control)
{
    return look([&] {
        const QWidget* const widget = find(window, control);
        return widget && widget->isVisible();
    });
}

void Operator::expect(const QString& what, const std::function<bool()>& isSo)
{
    QElapsedTimer waited;
    waited.start();
    while (!isSo()) {
        if (waited.elapsed() > PatienceMs)
            throw Failed(QStringLiteral("this did not come: ") + what);
        QThread::msleep(PollMs);
    }
}

void Operator::expectText(const QString& window, const QString& control, const QString& expected)
{
    expect(QStringLiteral("%1 says %2").arg(control, expected), [&] { return text(window, control) == expected; });
}

void Operator::expectRows(const QString& window, const QString& grid, int count)
{
    expect(QStringLiteral("%1 has %2 rows").arg(grid).arg(count), [&] { return rows(window, grid) == count; });
}

} // namespace tour
