#include "platform/ui/DateTyping.h"

#include <algorithm>

namespace platform {

namespace {

constexpr std::array<int, 3> lengths{2, 2, 4};
/// A first digit above this leaves no room for a second one: 4 can only be the 4th.
constexpr std::array<int, 3> greatestFirstDigit{3, 1, 9};

} // namespace

DateTyping::DateTyping(QDate start, Section section)
    : m_start(start)
    , m_section(section)
    , m_digits{QString::number(start.day()), QString::number(start.month()), QString::number(start.year())}
{}

DateTyping::Section DateTyping::sectionAt(int position)
{
    return position <= 2 ? Day : position <= 5 ? Month : Year;
}

void DateTyping::digit(int value)
{
    QString& digits = m_digits[m_section];
    if (m_fresh)
        digits.clear();
    m_fresh = false;
    m_moved = false;
    m_dayTyped = m_dayTyped || m_section == Day;
    digits.append(QChar(u'0' + static_cast<char16_t>(value)));
    if (digits.size() == lengths[m_section] || (digits.size() == 1 && value > greatestFirstDigit[m_section])) {
        next();
        m_moved = true;
    }
}

void DateTyping::separator()
{
    if (m_moved)
        m_moved = false;
    else
        next();
}

void DateTyping::backspace()
{
    m_digits[m_section].chop(m_fresh ? 4 : 1);
    m_fresh = false;
}

void DateTyping::moveTo(Section section)
{
    m_section = section;
    m_fresh = true;
    m_moved = false;
}

void DateTyping::next()
{
    moveTo(static_cast<Section>(std::min<int>(m_section + 1, Year)));
}

void DateTyping::previous()
{
    moveTo(static_cast<Section>(std::max<int>(m_section - 1, Day)));
}

/// The section being typed shows just its digits, the others are filled up with zeros.
QString DateTyping::shown(Section section) const
{
    return section == m_section && !m_fresh ? m_digits[section]
                                            : m_digits[section].rightJustified(section == Year ? 0 : 2, u'0');
}

QString DateTyping::text() const
{
    return shown(Day) + u'/' + shown(Month) + u'/' + shown(Year);
}

int DateTyping::selectionStart() const
{
    qsizetype start = 0;
    for (int section = Day; section < m_section; ++section)
        start += shown(static_cast<Section>(section)).size() + 1;
    return static_cast<int>(m_fresh ? start : start + shown(m_section).size());
}

int DateTyping::selectionLength() const
{
    return m_fresh ? static_cast<int>(shown(m_section).size()) : 0;
}

int DateTyping::year() const
{
    const int year = m_digits[Year].toInt();
    if (m_digits[Year].isEmpty() || m_digits[Year].size() > 2)
        return year;
    return year + (year < 30 ? 2000 : 1900);
}

QDate DateTyping::result() const
{
    const QDate first(year(), m_digits[Month].toInt(), 1);
    const int day = m_digits[Day].toInt();
    if (!first.isValid() || first.year() < 100 || day < 1 || day > 31)
        return m_start;
    if (day > first.daysInMonth() && m_dayTyped)
        return m_start;
    return QDate(first.year(), first.month(), std::min(day, first.daysInMonth()));
}

bool DateTyping::isImpossible() const
{
    return result() != QDate(year(), m_digits[Month].toInt(), m_digits[Day].toInt());
}

} // namespace platform
