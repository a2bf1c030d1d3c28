#pragma once

#include <QLineEdit>

#include <functional>

namespace platform {

/// Lets a function decide about every character that is typed or pasted into a text box: it gets the character's code
/// and returns the code to keep, or 0 to drop it. It may change the box itself. Characters arrive one by one at the
/// caret, a pasted text too, without the thousands points of its figures, so that a rule that looks at the box holds
/// for it as well. Enter arrives as 13 and Backspace as 8; dropping them keeps them from the box. Shortcuts and the
/// other editing keys pass. The keypad's decimal key is a comma, whatever is printed on it. Nothing can be dropped on
/// the box with the mouse.
class KeyFilter : public QObject
{
    Q_OBJECT

public:
    using Filter = std::function<int(int code)>;

    /// Belongs to the box.
    KeyFilter(QLineEdit* box, Filter filter);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    [[nodiscard]] bool input(QEvent& event);
    [[nodiscard]] bool keyPress(const QKeyEvent& event);
    void type(const QString& text);
    void paste(const QString& text);
    void replaceEditMenu(QContextMenuEvent& event);

    QLineEdit& m_box;
    Filter m_filter;
};

} // namespace platform
