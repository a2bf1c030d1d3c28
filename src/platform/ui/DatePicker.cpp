#include "platform/ui/DatePicker.h"

#include <QApplication>
#include <QCalendarWidget>
#include <QKeyEvent>
#include <QLocale>
#include <QMouseEvent>
#include <QStyleOptionComboBox>
#include <QWheelEvent>

namespace platform {

DatePicker::DatePicker(QWidget* parent)
    : QDateEdit(QDate::currentDate(), parent)
    , m_announced(date())
{
    const QLocale brazil(QLocale::Portuguese, QLocale::Brazil);
    setLocale(brazil);
    setDisplayFormat(QStringLiteral("dd/MM/yyyy"));
    setKeyboardTracking(false);
    setCalendarPopup(true);
    setFocusPolicy(Qt::StrongFocus);
    calendarWidget()->setLocale(brazil);
    calendarWidget()->setFirstDayOfWeek(Qt::Sunday);
    calendarWidget()->setVerticalHeaderFormat(QCalendarWidget::NoVerticalHeader);
    calendarWidget()->setGridVisible(true);
    connect(this, &QDateEdit::dateChanged, this, &DatePicker::announce);
}

void DatePicker::setValue(QDate date)
{
    QDateEdit::setDate(date);
    if (signalsBlocked())
        m_announced = this->date();
}

/// The base class repeats its signal when Enter confirms an unchanged date.
void DatePicker::announce()
{
    if (m_announced == date())
        return;
    m_announced = date();
    Q_EMIT Change();
}

void DatePicker::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Down && event->modifiers().testFlag(Qt::AltModifier)) {
        openCalendar();
        event->accept();
    } else if (event->key() == Qt::Key_F4 || event->key() == Qt::Key_Escape) {
        event->ignore();
    } else {
        QDateEdit::keyPressEvent(event);
    }
}

void DatePicker::wheelEvent(QWheelEvent* event)
{
    if (hasFocus())
        QDateEdit::wheelEvent(event);
    else
        event->ignore(); // scrolling past the box must not change a date
}

/// The pop-up has no other door than a press on its arrow.
void DatePicker::openCalendar()
{
    QStyleOptionComboBox option;
    option.initFrom(this);
    option.editable = true;
    option.subControls = QStyle::SC_All;
    const QPointF arrow =
        style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxArrow, this).center();
    QMouseEvent press(QEvent::MouseButtonPress, arrow, mapToGlobal(arrow), Qt::LeftButton, Qt::LeftButton,
                      Qt::NoModifier);
    QApplication::sendEvent(this, &press);
}

} // namespace platform
