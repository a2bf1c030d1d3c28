#include "platform/vb/DateText.h"

#include "platform/vb/Conversion.h"
#include "platform/vb/Format.h"
#include "platform/vb/NumberText.h"

#include <array>

namespace vb {

namespace {

constexpr double FirstSerial = -657'434; // 0100-01-01
constexpr double LastSerial = 2'958'465; // 9999-12-31
constexpr int FirstYear = 100;
constexpr int LastYear = 9999;
constexpr int SecondsPerDay = 86'400;

constexpr std::array<QStringView, 12> Months = {u"janeiro",  u"fevereiro", u"março",    u"abril",
                                                u"maio",     u"junho",     u"julho",    u"agosto",
                                                u"setembro", u"outubro",   u"novembro", u"dezembro"};
constexpr std::array<QStringView, 7> Days = {u"segunda-feira", u"terça-feira", u"quarta-feira", u"quinta-feira",
                                             u"sexta-feira",   u"sábado",      u"domingo"};

struct Number
{
    int value = 0;
    int width = 0;
};

// Only a text without a year asks for the present one.
Number thisYear()
{
    return {QDate::currentDate().year(), 4};
}

std::optional<QDate> makeDate(Number year, Number month, Number day)
{
    if (month.width > 2 || day.width > 2 || year.width > 4)
        return std::nullopt;
    int fullYear = year.value;
    if (year.width <= 2)
        fullYear += fullYear < 30 ? 2000 : 1900;
    const QDate date(fullYear, month.value, day.value);
    if (fullYear < FirstYear || fullYear > LastYear || !date.isValid())
        return std::nullopt;
    return date;
}

// Reads the parts of a date text in their order; the meaning of the numbers is settled at the end.
class DateReader
{
public:
    explicit DateReader(QStringView text)
        : m_text(text)
    {}

    std::optional<Date> read()
    {
        while (skipBlanks(), m_at < m_text.size()) {
            if (!readPart())
                return std::nullopt;
        }
        if (m_openSeparator)
            return std::nullopt;
        if (m_count == 0 && m_month == 0)
            return m_hasTime ? std::optional<Date>(Date{m_second / static_cast<double>(SecondsPerDay)}) : std::nullopt;
        const std::optional<QDate> day = m_month == 0 ? numbersOnly() : withMonthName();
        if (!day)
            return std::nullopt;
        const double serial = Date::fromQDate(*day).serial;
        const double fraction = m_second / static_cast<double>(SecondsPerDay);
        return Date{serial < 0 ? serial - fraction : serial + fraction};
    }

private:
    void skipBlanks()
    {
        while (m_at < m_text.size() && isBlank(m_text[m_at]))
            ++m_at;
    }

    bool next(char16_t character) const { return m_at < m_text.size() && m_text[m_at] == character; }

    bool readPart()
    {
        const QChar character = m_text[m_at];
        if (isDigit(character))
            return readDigits();
        if (character.isLetter())
            return readWord();
        if (character != u'/' && character != u'-' && character != u'.' && character != u',')
            return false;
        if (m_openSeparator || (m_count == 0 && m_month == 0) || (character == u',' && m_month == 0))
            return false;
        m_dots = m_dots || character == u'.';
        m_openSeparator = character != u',';
        m_separated = true;
        ++m_at;
        return true;
    }

    Number takeNumber()
    {
        Number number;
        for (; m_at < m_text.size() && isDigit(m_text[m_at]); ++m_at, ++number.width)
            number.value = qMin(number.value * 10 + m_text[m_at].digitValue(), 99'999);
        return number;
    }

    bool readDigits()
    {
        const Number number = takeNumber();
        if (next(u':'))
            return readTime(number);
        const qsizetype behind = m_at;
        skipBlanks();
        if (!m_openSeparator && !m_hasTime && readMeridiem(number.value))
            return true;
        m_at = behind;
        if (m_count == static_cast<int>(m_numbers.size()))
            return false;
        // Numbers that only blanks keep apart are no date, except beside a month's name.
        m_loose = m_loose || (m_count > 0 && !m_separated);
        m_numbers[static_cast<std::size_t>(m_count++)] = number;
        m_openSeparator = false;
        m_separated = false;
        return true;
    }

    // "AM" or "PM" at the cursor belongs to `hour` and completes a time.
    bool readMeridiem(int hour)
    {
        const QStringView word = m_text.sliced(m_at);
        const bool afternoon = word.startsWith(u"PM", Qt::CaseInsensitive);
        if (!afternoon && !word.startsWith(u"AM", Qt::CaseInsensitive))
            return false;
        if ((word.size() > 2 && word[2].isLetterOrNumber()) || hour > 12)
            return false;
        m_at += 2;
        m_second += (hour % 12 + (afternoon ? 12 : 0)) * 3600;
        m_hasTime = true;
        return true;
    }

    bool readTime(Number hour)
    {
        if (m_hasTime || m_openSeparator || hour.width > 2 || hour.value > 23)
            return false;
        std::array<int, 2> parts = {0, 0};
        for (std::size_t i = 0; i < parts.size() && next(u':'); ++i) {
            ++m_at;
            const Number part = takeNumber();
            if (part.width < 1 || part.width > 2 || part.value > 59)
                return false;
            parts[i] = part.value;
        }
        m_second = parts[0] * 60 + parts[1];
        const qsizetype behind = m_at;
        skipBlanks();
        if (!readMeridiem(hour.value)) {
            m_at = behind;
            m_second += hour.value * 3600;
            m_hasTime = true;
        }
        return m_at == m_text.size() || isBlank(m_text[m_at]);
    }

    bool readWord()
    {
        const qsizetype first = m_at;
        while (m_at < m_text.size() && m_text[m_at].isLetter())
            ++m_at;
        const QStringView word = m_text.sliced(first, m_at - first);
        if (word.compare(u"de", Qt::CaseInsensitive) == 0)
            return m_count > 0 || m_month != 0;
        for (std::size_t i = 0; i < Months.size(); ++i) {
            const bool whole = word.compare(Months[i], Qt::CaseInsensitive) == 0;
            if (!whole && word.compare(Months[i].first(3), Qt::CaseInsensitive) != 0)
                continue;
            if (m_month != 0)
                return false;
            m_month = static_cast<int>(i) + 1;
            m_openSeparator = false;
            return true;
        }
        return false;
    }

    std::optional<QDate> numbersOnly() const
    {
        const auto [a, b, c] = m_numbers;
        if (m_loose || m_count < 2 || (m_count == 2 && m_dots))
            return std::nullopt;
        std::optional<QDate> date;
        if (m_count == 3) {
            date = makeDate(c, b, a);
            if (!date)
                date = makeDate(c, a, b);
            return date ? date : makeDate(a, b, c);
        }
        date = makeDate(thisYear(), b, a);
        if (!date)
            date = makeDate(thisYear(), a, b);
        if (!date)
            date = makeDate(b, a, Number{1, 1});
        return date ? date : makeDate(a, b, Number{1, 1});
    }

    std::optional<QDate> withMonthName() const
    {
        const auto [a, b, c] = m_numbers;
        const Number month{m_month, 2};
        if (m_count == 2) {
            const std::optional<QDate> date = makeDate(b, month, a);
            return date ? date : makeDate(a, month, b);
        }
        if (m_count != 1)
            return std::nullopt;
        const std::optional<QDate> date = makeDate(thisYear(), month, a);
        return date ? date : makeDate(a, month, Number{1, 1});
    }

    QStringView m_text;
    qsizetype m_at = 0;
    std::array<Number, 3> m_numbers;
    int m_count = 0;
    int m_month = 0;
    int m_second = 0;
    bool m_hasTime = false;
    bool m_dots = false;
    bool m_loose = false;
    bool m_separated = false;
    bool m_openSeparator = false;
};

} // namespace

bool isDateSerial(double serial)
{
    return serial > FirstSerial - 1 && serial < LastSerial + 1;
}

QString dayName(int day)
{
    return Days.at(static_cast<std::size_t>(day - 1)).toString();
}

QString monthName(int month)
{
    return Months.at(static_cast<std::size_t>(month - 1)).toString();
}

void appendPadded(QString& text, int value, int width)
{
    std::array<char16_t, 12> digits{};
    std::size_t first = digits.size();
    for (; value > 0 || width > 0; value /= 10, --width)
        digits.at(--first) = static_cast<char16_t>(u'0' + value % 10);
    text += QStringView(digits.data() + first, static_cast<qsizetype>(digits.size() - first));
}

QString dateText(Date date)
{
    const QDate day = date.date();
    const QTime time = date.time();
    const bool dayZero = day == Date{}.date();
    QString text;
    if (!dayZero)
        text = shortDate(day);
    if (dayZero || time.msecsSinceStartOfDay() != 0) {
        if (!dayZero)
            text += u' ';
        appendPadded(text, time.hour(), 2);
        text += u':';
        appendPadded(text, time.minute(), 2);
        text += u':';
        appendPadded(text, time.second(), 2);
    }
    return text;
}

std::optional<Date> parseDate(QStringView text)
{
    return DateReader(text).read();
}

} // namespace vb
