#include "platform/vb/Date.h"

#include "platform/vb/DateText.h"

#include <cmath>

namespace vb {

namespace {

constexpr qint64 DayZero = 2415019; // Julian day of 1899-12-30
constexpr int SecondsPerDay = 86'400;
constexpr double MillisecondsPerDay = 86'400'000.0;

struct Moment
{
    qint64 day;
    int second;
};

// The day and the second are taken together: 23:59:59.7 is midnight of the next day, never of its own.
Moment split(double serial)
{
    const double day = std::trunc(serial);
    const auto second = static_cast<int>(std::lround(std::abs(serial - day) * SecondsPerDay));
    const auto whole = static_cast<qint64>(day);
    return second == SecondsPerDay ? Moment{whole + 1, 0} : Moment{whole, second};
}

} // namespace

Date Date::fromQDate(QDate date)
{
    return date.isValid() ? Date{static_cast<double>(date.toJulianDay() - DayZero)} : Date{};
}

Date Date::fromQDateTime(const QDateTime& dateTime)
{
    if (!dateTime.isValid())
        return {};
    const double day = fromQDate(dateTime.date()).serial;
    const double fraction = dateTime.time().msecsSinceStartOfDay() / MillisecondsPerDay;
    return {day < 0 ? day - fraction : day + fraction};
}

QDate Date::date() const
{
    return isDateSerial(serial) ? QDate::fromJulianDay(DayZero + split(serial).day) : QDate();
}

QTime Date::time() const
{
    return isDateSerial(serial) ? QTime::fromMSecsSinceStartOfDay(split(serial).second * 1000) : QTime(0, 0);
}

} // namespace vb
