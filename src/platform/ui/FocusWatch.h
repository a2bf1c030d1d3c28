#pragma once

#include <QObject>

class QWidget;

namespace platform {

/// Tells when the operator comes to a widget and leaves it. Another window coming in front, a message box, a menu and a
/// drop-down list are no leaving and no coming back.
class FocusWatch : public QObject
{
    Q_OBJECT

public:
    /// Belongs to the widget.
    explicit FocusWatch(QWidget* widget);

    bool eventFilter(QObject* watched, QEvent* event) override;

Q_SIGNALS:
    void GotFocus(Qt::FocusReason reason);
    void LostFocus();

private:
    bool m_here = false; ///< The operator has come and not left, whatever is in front for the moment.
};

/// Has a widget get an F4 key right after the focus: a drop-down list opens. Not after a press with the mouse, which
/// opens the list by itself.
void sendF4OnFocus(QWidget* widget);

} // namespace platform
