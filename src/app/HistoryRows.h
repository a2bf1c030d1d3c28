#pragma once

#include "platform/ado/Recordset.h"
#include "platform/vb/Currency.h"

#include <QString>

namespace platform {
class FlexGrid;
}

// Rows and totals of the history of closed readings.
namespace HistoryRows {

enum Column { Pump, Description, Previous, Current, Date, Litres, Price, Value, Key, Columns };

/// Resets the history grid to its header.
void formataflex2(platform::FlexGrid& flex2);

/// Adds a row; its litres and value cells get their pale colours.
void add(platform::FlexGrid& flex2, const QString& line);

struct Totals
{
    vb::Currency litres;
    vb::Currency value;
};

/// Reads the current row of a result set on Leitura. A number that cannot be read counts as 0.
class Reading
{
public:
    /// Raises ado::Error 3265 where the table lacks a column.
    explicit Reading(const ado::Recordset& readings);

    [[nodiscard]] QString pump() const { return m_readings.Fields(m_pump).textOrEmpty(); }
    [[nodiscard]] vb::Currency previous() const;
    [[nodiscard]] vb::Currency current() const;
    [[nodiscard]] vb::Currency calibration() const;
    [[nodiscard]] vb::Currency litres() const;
    [[nodiscard]] vb::Currency value() const; ///< Litres times the unit price; the price is 0 where it is no number.
    [[nodiscard]] vb::Variant date() const { return m_readings.Fields(m_date); }
    [[nodiscard]] QString key() const { return m_readings.Fields(m_key).textOrEmpty(); }

    /// The row of the expanded list.
    [[nodiscard]] QString line(const QString& description) const;

private:
    [[nodiscard]] double price() const;

    const ado::Recordset& m_readings;
    int m_pump;
    int m_previous;
    int m_current;
    int m_date;
    int m_litres;
    int m_price;
    int m_calibration;
    int m_key;
};

/// One pump's readings of a period, summed up.
struct PumpSum
{
    int readings = 0;
    vb::Currency previous;
    vb::Currency current;
    vb::Currency calibration;
    Totals totals;
    vb::Variant firstDate;
    QString lastKey;

    void add(const Reading& reading);
    /// The row of the consolidated list.
    [[nodiscard]] QString line(const QString& pump, const QString& description) const;
    [[nodiscard]] QString toolTip() const;
};

} // namespace HistoryRows
