#include "app/HistoryRows.h"

#include "platform/ui/FlexGrid.h"
#include "platform/vb/Conversion.h"
#include "platform/vb/Format.h"
#include "shared/Module1.h"

namespace HistoryRows {

namespace {

constexpr quint32 LitresColour = 12648447;
constexpr quint32 ValueColour = 8454143;

double numberOr0(const vb::Variant& value)
{
    return vb::IsNumeric(value) ? vb::CDbl(value) : 0.0;
}

} // namespace

void formataflex2(platform::FlexGrid& flex2)
{
    constexpr int widths[Columns] = {400, 1800, 1100, 1100, 950, 900, 800, 900, 0};
    flex2.clearRows();
    flex2.setCols(Columns);
    flex2.FormatString(
        QStringLiteral("NºDispos|Descritivo|LeituraAnterior|LeituraAtual|DatLeitura|LTs Result|R$ UNT|R$ TOT"));
    for (int column = 0; column < Columns; ++column)
        flex2.setColWidth(column, widths[column]);
}

void add(platform::FlexGrid& flex2, const QString& line)
{
    flex2.AddItem(line);
    Module1::pinta_celula(flex2, Litres, LitresColour);
    Module1::pinta_celula(flex2, Value, ValueColour);
}

Reading::Reading(const ado::Recordset& readings)
    : m_readings(readings)
    , m_pump(readings.fieldIndex(u"cdgbomba"))
    , m_previous(readings.fieldIndex(u"LeitAnt"))
    , m_current(readings.fieldIndex(u"LeitAtu"))
    , m_date(readings.fieldIndex(u"DataLT"))
    , m_litres(readings.fieldIndex(u"saldo"))
    , m_price(readings.fieldIndex(u"obs"))
    , m_calibration(readings.fieldIndex(u"afericao"))
    , m_key(readings.fieldIndex(u"CodigoI"))
{}

vb::Currency Reading::previous() const
{
    return vb::CCur(numberOr0(m_readings.Fields(m_previous)));
}

vb::Currency Reading::current() const
{
    return vb::CCur(numberOr0(m_readings.Fields(m_current)));
}

vb::Currency Reading::calibration() const
{
    return vb::CCur(numberOr0(m_readings.Fields(m_calibration)));
}

vb::Currency Reading::litres() const
{
    return vb::CCur(numberOr0(m_readings.Fields(m_litres)));
}

double Reading::price() const
{
    return numberOr0(m_readings.Fields(m_price));
}

vb::Currency Reading::value() const
{
    return vb::CCur(numberOr0(m_readings.Fields(m_litres)) * price());
}

QString Reading::line(const QString& description) const
{
    constexpr QChar tab = u'\t';
    return pump() + tab + description + tab + vb::Format(m_readings.Fields(m_previous), u"##,#0.00") + tab +
           vb::Format(m_readings.Fields(m_current), u"##,#0.00") + tab + vb::Format(date(), u"dd/mm/yy") + tab +
           vb::Format(m_readings.Fields(m_litres), u"##,#0.00") + tab + vb::Format(price(), u"##,#0.000") + tab +
           vb::Format(value(), u"##,#0.00") + tab + key();
}

void PumpSum::add(const Reading& reading)
{
    if (readings == 0)
        firstDate = reading.date();
    ++readings;
    previous += reading.previous();
    current += reading.current();
    calibration += reading.calibration();
    totals.litres += reading.litres();
    totals.value += reading.value();
    lastKey = reading.key();
}

QString PumpSum::line(const QString& pump, const QString& description) const
{
    constexpr QChar tab = u'\t';
    const double litres = totals.litres == vb::Currency() ? 1.0 : totals.litres.toDouble();
    return pump + tab + description + tab + vb::Format(previous, u"##,#0.00") + tab + QStringLiteral("-> ") +
           vb::Format(current, u"##,#0.00") + tab + vb::Format(firstDate, u"DD/MM/YY") + tab +
           vb::Format(totals.litres, u"##,#0.00") + tab + vb::Format(totals.value.toDouble() / litres, u"##,#0.000") +
           tab + vb::Format(totals.value, u"##,#0.00") + tab + lastKey;
}

QString PumpSum::toolTip() const
{
    return QStringLiteral("Leituras: %1\nAferição: %2").arg(readings).arg(vb::Format(calibration, u"##,#0.00"));
}

} // namespace HistoryRows
