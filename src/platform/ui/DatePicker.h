#pragma once

#include "platform/ui/DateTyping.h"

#include <QDateEdit>

#include <optional>

namespace platform {

/// Date box shown as dd/mm/aaaa with a drop-down calendar in Portuguese (Alt+Down opens it; F4, Enter and Escape are
/// left to the window; Left and Right change the section, Up and Down its value). `Change` comes when the date really
/// becomes another one, by the operator or by the program; blocked while signals are blocked. A typed date counts when
/// it is complete: with Enter, Tab or on leaving.
class DatePicker : public QDateEdit
{
    Q_OBJECT

public:
    explicit DatePicker(QWidget* parent = nullptr);

    [[nodiscard]] QDate Value() const { return date(); }
    void setValue(QDate date);

Q_SIGNALS:
    void Change();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    bool focusNextPrevChild(bool next) override;

private:
    bool typed(const QKeyEvent& event);
    void beginTyping();
    void showTyping();
    void endTyping();
    void announce();
    void openCalendar();

    QDate m_announced;
    std::optional<DateTyping> m_typing;
};

} // namespace platform
