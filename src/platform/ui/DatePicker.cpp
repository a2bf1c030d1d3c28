#include "platform/ui/DatePicker.h"

#include "platform/ui/PlainText.h"
#include "platform/vb/Format.h"

#include <QApplication>
#include <QCalendarWidget>
#include <QClipboard>
#include <QKeyEvent>
#include <QLineEdit>
#include <QLocale>
#include <QMouseEvent>
#include <QPointer>
#include <QStyleOptionComboBox>
#include <QToolTip>
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
    m_typing.reset();
    QDateEdit::setDate(date);
    if (signalsBlocked())
        m_announced = this->date();
}

/// The base class repeats its signal when Enter confirms an unchanged date.
void DatePicker::announce()
{
    m_typing.reset();
    if (m_announced == date())
        return;
    m_announced = date();
    Q_EMIT Change();
}

void DatePicker::beginTyping()
{
    if (m_typing)
        return;
    const int position = lineEdit()->hasSelectedText() ? lineEdit()->selectionStart() : lineEdit()->cursorPosition();
    m_typing.emplace(date(), DateTyping::sectionAt(position));
}

void DatePicker::showTyping()
{
    const QSignalBlocker quiet(lineEdit()); // the base class would judge the unfinished date
    lineEdit()->setText(m_typing->text());
    if (m_typing->selectionLength() > 0)
        lineEdit()->setSelection(m_typing->selectionStart(), m_typing->selectionLength());
    else
        lineEdit()->setCursorPosition(m_typing->selectionStart());
}

void DatePicker::endTyping()
{
    if (!m_typing)
        return;
    const QDate result = m_typing->result();
    if (m_typing->isImpossible()) {
        QToolTip::showText(
            mapToGlobal(rect().bottomLeft()),
            toolTipOf(QStringLiteral("%1 não existe: fica %2").arg(m_typing->text(), vb::shortDate(result))), this);
    }
    const int position = lineEdit()->hasSelectedText() ? lineEdit()->selectionStart() : lineEdit()->cursorPosition();
    m_typing.reset();
    setValue(result);
    static constexpr QDateTimeEdit::Section sections[]{DaySection, MonthSection, YearSection};
    setSelectedSection(sections[DateTyping::sectionAt(position)]);
}

/// Keys that write a date or walk through its parts.
bool DatePicker::typed(const QKeyEvent& event)
{
    if (event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier))
        return false;
    const QString text = event.text();
    const QChar character = text.isEmpty() ? QChar() : text.front();
    if (character >= u'0' && character <= u'9') {
        beginTyping();
        m_typing->digit(character.digitValue());
    } else if (QStringView(u"/-., ").contains(character) && !character.isNull()) {
        beginTyping();
        m_typing->separator();
    } else {
        switch (event.key()) {
        case Qt::Key_Backspace:
        case Qt::Key_Delete:
            beginTyping();
            m_typing->backspace();
            break;
        case Qt::Key_Left:
            beginTyping();
            m_typing->previous();
            break;
        case Qt::Key_Right:
            beginTyping();
            m_typing->next();
            break;
        default:
            return false;
        }
    }
    showTyping();
    return true;
}

void DatePicker::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_F4 || event->key() == Qt::Key_Escape) {
        event->ignore();
        return;
    }
    if (event->key() == Qt::Key_Down && event->modifiers().testFlag(Qt::AltModifier)) {
        openCalendar();
        event->accept();
        return;
    }
    if (isReadOnly()) {
        QDateEdit::keyPressEvent(event);
        return;
    }
    if (event->matches(QKeySequence::Paste)) {
        const QString pasted = QApplication::clipboard()->text().trimmed();
        const QDate date = QDate::fromString(pasted, QStringLiteral("d/M/yyyy"));
        if (date.isValid())
            setValue(date);
        event->accept();
        return;
    }
    if (typed(*event)) {
        event->accept();
        return;
    }
    const QPointer<DatePicker> alive(this);
    endTyping();
    if (alive)
        QDateEdit::keyPressEvent(event);
}

void DatePicker::mousePressEvent(QMouseEvent* event)
{
    const QPointer<DatePicker> alive(this);
    endTyping();
    if (alive)
        QDateEdit::mousePressEvent(event);
}

void DatePicker::wheelEvent(QWheelEvent* event)
{
    const QPointer<DatePicker> alive(this);
    endTyping();
    if (alive && hasFocus())
        QDateEdit::wheelEvent(event);
    else
        event->ignore(); // scrolling past the box must not change a date
}

void DatePicker::focusOutEvent(QFocusEvent* event)
{
    const QPointer<DatePicker> alive(this);
    endTyping();
    if (alive)
        QDateEdit::focusOutEvent(event);
}

/// Tab leaves the box at once; the base class would walk through the parts of the date.
bool DatePicker::focusNextPrevChild(bool next)
{
    return QWidget::focusNextPrevChild(next);
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
