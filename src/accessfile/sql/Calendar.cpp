#include "accessfile/sql/Calendar.h"

#include "accessfile/Value.h"

#include <array>
#include <chrono>
#include <cmath>

namespace accessfile::sql {

namespace {

constexpr double firstDay = -657434; ///< 0100-01-01
constexpr double lastDay = 2958465;  ///< 9999-12-31
constexpr double secondsPerDay = 86400;
constexpr std::chrono::sys_days origin =
    std::chrono::year_month_day(std::chrono::year(1899), std::chrono::December, std::chrono::day(30));

int currentYear()
{
    const std::chrono::sys_days day = origin + std::chrono::days(static_cast<int>(std::floor(localTime())));
    return static_cast<int>(std::chrono::year_month_day(day).year());
}

class Reader
{
public:
    explicit Reader(std::string_view text)
        : m_text(text)
    {}

    void skipBlanks()
    {
        while (!m_text.empty() && (m_text.front() == ' ' || m_text.front() == '\t'))
            m_text.remove_prefix(1);
    }
    [[nodiscard]] bool atEnd() const { return m_text.empty(); }
    [[nodiscard]] char peek() const { return m_text.empty() ? '\0' : m_text.front(); }
    bool take(char c)
    {
        if (peek() != c)
            return false;
        m_text.remove_prefix(1);
        return true;
    }
    bool takeWord(char upper)
    {
        if (m_text.size() < 2 || (m_text[0] & ~32) != upper || (m_text[1] & ~32) != 'M')
            return false;
        m_text.remove_prefix(2);
        return true;
    }
    /// Up to four digits; `digits` receives how many.
    std::optional<int> number(int& digits)
    {
        int value = 0;
        digits = 0;
        while (peek() >= '0' && peek() <= '9') {
            if (++digits > 4)
                return std::nullopt;
            value = value * 10 + (peek() - '0');
            m_text.remove_prefix(1);
        }
        return digits == 0 ? std::nullopt : std::optional(value);
    }

private:
    std::string_view m_text;
};

/// Rest of a time whose first number has been read.
std::optional<double> readTime(Reader& reader, int hour)
{
    std::array<int, 2> parts{};
    int digits = 0;
    for (std::size_t i = 0; i < parts.size() && reader.take(':'); ++i) {
        const std::optional<int> part = reader.number(digits);
        if (!part || *part > 59)
            return std::nullopt;
        parts.at(i) = *part;
    }
    reader.skipBlanks();
    const bool afternoon = reader.takeWord('P');
    if (afternoon || reader.takeWord('A')) {
        if (hour < 1 || hour > 12)
            return std::nullopt;
        hour = hour % 12 + (afternoon ? 12 : 0);
    }
    if (hour > 23)
        return std::nullopt;
    return (hour * 3600 + parts[0] * 60 + parts[1]) / secondsPerDay;
}

int fullYear(int year, int digits)
{
    if (digits > 2)
        return year;
    return year + (year < 30 ? 2000 : 1900);
}

std::optional<double> readDate(Reader& reader, char separator, int first, int firstDigits)
{
    int secondDigits = 0;
    int thirdDigits = 0;
    const std::optional<int> second = reader.number(secondDigits);
    if (!second)
        return std::nullopt;
    if (!reader.take(separator)) {
        const int year = currentYear();
        const std::optional<double> monthFirst = dayNumber(year, first, *second);
        return monthFirst ? monthFirst : dayNumber(year, *second, first);
    }
    const std::optional<int> third = reader.number(thirdDigits);
    if (!third)
        return std::nullopt;
    if (firstDigits > 2 || first > 31)
        return dayNumber(fullYear(first, firstDigits), *second, *third);
    const int year = fullYear(*third, thirdDigits);
    const std::optional<double> monthFirst = dayNumber(year, first, *second);
    return monthFirst ? monthFirst : dayNumber(year, *second, first);
}

} // namespace

std::optional<double> dayNumber(int year, int month, int day)
{
    if (year < 100 || year > 9999 || month < 1 || month > 12 || day < 1)
        return std::nullopt;
    const std::chrono::year_month_day date{std::chrono::year(year), std::chrono::month(static_cast<unsigned>(month)),
                                           std::chrono::day(static_cast<unsigned>(day))};
    if (day > 31 || !date.ok())
        return std::nullopt;
    return static_cast<double>((std::chrono::sys_days(date) - origin).count());
}

std::optional<DateTime> parseDateLiteral(std::string_view text)
{
    Reader reader(text);
    reader.skipBlanks();
    int digits = 0;
    const std::optional<int> first = reader.number(digits);
    if (!first)
        return std::nullopt;

    double day = 0;
    double time = 0;
    const char separator = reader.peek();
    if (separator == '/' || separator == '-') {
        reader.take(separator);
        const std::optional<double> date = readDate(reader, separator, *first, digits);
        if (!date)
            return std::nullopt;
        day = *date;
        reader.skipBlanks();
        if (!reader.atEnd()) {
            const std::optional<int> hour = reader.number(digits);
            const std::optional<double> fraction = hour ? readTime(reader, *hour) : std::nullopt;
            if (!fraction)
                return std::nullopt;
            time = *fraction;
        }
    } else if (const std::optional<double> fraction = readTime(reader, *first); fraction && separator != '\0') {
        time = *fraction;
    } else {
        return std::nullopt;
    }
    reader.skipBlanks();
    if (!reader.atEnd())
        return std::nullopt;
    return DateTime{day < 0 ? day - time : day + time};
}

std::optional<DateTime> wholeSeconds(double serial)
{
    if (!std::isfinite(serial))
        return std::nullopt;
    double day = std::trunc(serial);
    double seconds = std::round(std::abs(serial - day) * secondsPerDay);
    if (seconds >= secondsPerDay) {
        seconds = 0;
        day += 1;
    }
    if (day < firstDay || day > lastDay)
        return std::nullopt;
    const double fraction = seconds / secondsPerDay;
    return DateTime{serial < 0 && day <= 0 ? day - fraction : day + fraction};
}

DateTime now()
{
    return DateTime{localSecond()};
}

DateTime today()
{
    return DateTime{std::floor(localSecond())};
}

DateTime timeOfDay()
{
    const double moment = localSecond();
    return DateTime{moment - std::floor(moment)};
}

} // namespace accessfile::sql
