#pragma once

#include <QListWidget>

namespace platform {

/// List of one-line entries. Too long an entry is shortened and shown whole in its tool tip.
class ListBox : public QListWidget
{
    Q_OBJECT

public:
    explicit ListBox(QWidget* parent = nullptr);

Q_SIGNALS:
    /// An entry was chosen: with the left button, or by moving to it with the keys. Space chooses the current entry
    /// again.
    void Click();
    void KeyDown(QKeyEvent* event); ///< Before the list's own handling; accept() to keep it.

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    bool viewportEvent(QEvent* event) override;

private:
    bool m_pressedOnEntry = false;
};

} // namespace platform
