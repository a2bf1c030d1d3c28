#pragma once

#include "platform/ado/Recordset.h"
#include "platform/vb/ExactSum.h"
#include "shared/RowText.h"

#include <QByteArrayView>
#include <QString>

namespace platform {
class FlexGrid;
}

// Rows and totals of the history of closed readings.
namespace HistoryRows {

enum Column { Pump, Description, Previous, Current, Date, Litres, Price, Value, Key, Columns };

/// Resets the history grid to its header.
void formataflex2(platform::FlexGrid& flex2);

/// Adds a row of UTF-8 cells; its litres and value cells get their pale colours.
void add(platform::FlexGrid& flex2, QByteArrayView cells);
void add(platform::FlexGrid& flex2, const QStringList& cells);

struct Totals
{
    vb::ExactSum litres;
    vb::ExactSum value;

    Totals& operator+=(const Totals& other);
};

/// Reads the current row of a result set on Leitura. A number that cannot be read counts as 0.
class Reading
{
public:
    /// Raises ado::Error 3265 where the table lacks a column.
    explicit Reading(const ado::Recordset& readings);

    [[nodiscard]] vb::Variant pump() const { return m_readings.Fields(m_pump); }
    [[nodiscard]] vb::ExactSum previous() const { return amount(m_previous); }
    [[nodiscard]] vb::ExactSum current() const { return amount(m_current); }
    [[nodiscard]] vb::ExactSum calibration() const { return amount(m_calibration); }
    /// Litres, and litres times the unit price, unrounded; the price is 0 where it is no number.
    [[nodiscard]] Totals totals() const;
    [[nodiscard]] vb::Variant date() const { return m_readings.Fields(m_date); }
    [[nodiscard]] vb::Variant key() const { return m_readings.Fields(m_key); }

    /// The row of the expanded list as UTF-8; `totals` are the row's own. Valid until the next call.
    [[nodiscard]] QByteArrayView line(QByteArrayView description, const Totals& totals);

private:
    [[nodiscard]] vb::ExactSum amount(int field) const;
    [[nodiscard]] vb::Decimal number(int field) const;

    const ado::Recordset& m_readings;
    int m_pump;
    int m_previous;
    int m_current;
    int m_date;
    int m_litres;
    int m_price;
    int m_calibration;
    int m_key;
    shared::RowText m_row;
};

/// One pump's readings of a period, summed up.
struct PumpSum
{
    int readings = 0;
    vb::ExactSum previous;
    vb::ExactSum current;
    vb::ExactSum calibration;
    Totals totals;
    vb::Variant firstDate;
    vb::Variant lastKey;

    void add(const Reading& reading);
    /// The row of the consolidated list.
    [[nodiscard]] QStringList cells(const QString& pump, const QString& description) const;
    [[nodiscard]] QString toolTip() const;
};

} // namespace HistoryRows
