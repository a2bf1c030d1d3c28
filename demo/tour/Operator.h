#pragma once

#include <QDate>
#include <QElapsedTimer>
#include <QFile>
#include <QMetaObject>
#include <QPoint>
#include <QRect>
#include <QStringList>

#include <functional>
#include <optional>
#include <stdexcept>

class QWidget;

namespace platform {
class FlexGrid;
}

namespace tour {

/// A step did not do what it should.
class Failed : public std::runtime_error
{
public:
    explicit Failed(const QString& text)
        : std::runtime_error(text.toStdString())
    {}
};

/// Hands and eyes of the person at the station. Lives in a thread of its own beside the program, which runs as always:
/// keys and clicks go to the display through xdotool, and what is on the screen is read in the program's thread.
/// Windows and controls are named by their object names. Whatever does not come within some seconds raises Failed.
class Operator
{
public:
    /// Pictures, papers and the log go to `folder`, the folder that the process is in.
    explicit Operator(const QString& folder);

    void say(const QString& text);
    /// Numbered picture of the active window, or of another one: NN-name.png.
    void picture(const QString& name, const QString& window = {});

    void key(const QString& key, int times = 1); ///< As xdotool calls it: Return, Escape, alt+c.
    void type(const QString& text);
    void click(const QString& window, const QString& control);
    void rightClick(const QString& window, const QString& control);
    /// Cell of a grid or row of a list, scrolled into view. Rows of grids count from 1, those of lists from 0.
    void clickRow(const QString& window, const QString& control, int row, bool twice = false);
    /// An entry of the menu bar itself, of one of its menus, or of a menu that is open already.
    void menu(const QString& window, const QString& menuName, const QString& action);
    void choose(const QString& window, const QString& comboBox, const QString& text);
    void date(const QString& window, const QString& picker, QDate date);
    /// Replaces the text of a box.
    void fill(const QString& window, const QString& box, const QString& text);

    /// Waits for the active window.
    void window(const QString& name);
    void windowGone(const QString& name);
    /// Waits for a message box that has the text, and answers it by the button of that name.
    void message(const QString& text, const QString& button, const QString& pictureName = {});
    /// The supervisor password.
    void password(const QString& pictureName = {});
    /// Prints to a PDF file through the print dialog.
    void print(const QString& file, const QString& pictureName = {});

    [[nodiscard]] QString text(const QString& window, const QString& control);
    [[nodiscard]] QString cell(const QString& window, const QString& grid, int row, int column);
    /// Some line of the list has all the texts.
    [[nodiscard]] bool listHas(const QString& window, const QString& list, const QStringList& texts);
    [[nodiscard]] int rows(const QString& window, const QString& grid); ///< Data rows.
    [[nodiscard]] bool shown(const QString& window, const QString& control);

    /// Waits until something is so; `what` says it.
    void expect(const QString& what, const std::function<bool()>& isSo);
    void expectText(const QString& window, const QString& control, const QString& text);
    void expectRows(const QString& window, const QString& grid, int count);

    [[nodiscard]] int pictures() const { return m_pictures; }

private:
    void xdotool(const QStringList& arguments);
    void clickAt(QPoint position, int button = 1, int times = 1);
    /// A place on the screen that has stopped moving. `place` is asked in the program's thread.
    [[nodiscard]] QPoint steady(const QString& what, const std::function<std::optional<QPoint>()>& place);
    [[nodiscard]] QPoint middle(const QString& window, const QString& control);
    void write(const QString& line);

    QString m_folder;
    QFile m_log;
    QElapsedTimer m_since;
    int m_pictures = 0;
};

/// The whole day.
void day(Operator& person);

} // namespace tour
