#pragma once

#include <QDate>
#include <QDateTime>

namespace vb {

/// Date and time as days since 1899-12-30 with the time of day as fraction. The fraction always points away from
/// midnight of its day: -1.25 is 1899-12-29 06:00. Serial 0 is "no date": time-only values have it.
struct Date
{
    double serial = 0;

    [[nodiscard]] static Date fromQDate(QDate date);
    [[nodiscard]] static Date fromQDateTime(const QDateTime& dateTime);
    [[nodiscard]] QDate date() const; ///< Invalid outside the years 100 to 9999.
    [[nodiscard]] QTime time() const; ///< Rounded to whole seconds.

    bool operator==(const Date&) const = default;
};

} // namespace vb
