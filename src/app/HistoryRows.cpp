#include "app/HistoryRows.h"

#include "platform/ui/FlexGrid.h"
#include "platform/vb/Amount.h"
#include "platform/vb/Conversion.h"
#include "platform/vb/Format.h"
#include "shared/Module1.h"

namespace HistoryRows {

namespace {

constexpr quint32 LitresColour = 12648447;
constexpr quint32 ValueColour = 8454143;

vb::Decimal numberOr0(const vb::Variant& value)
{
    return vb::IsNumeric(value) ? vb::CDec(value) : vb::Decimal();
}

QString formatted(const vb::ExactSum& sum)
{
    return vb::Format(sum.toDecimal(), u"##,#0.00");
}

/// The product of two numbers of hundredths, where 64 bits hold it.
std::optional<vb::Currency> product(std::optional<qint64> one, std::optional<qint64> other)
{
    constexpr qint64 Limit = 3'000'000'000;
    const auto isSmall = [](qint64 hundredths) { return hundredths < Limit && hundredths > -Limit; };
    if (!one || !other || !isSmall(*one) || !isSmall(*other))
        return std::nullopt;
    return vb::Currency::fromScaled(*one * *other);
}

void paintLastRow(platform::FlexGrid& flex2)
{
    Module1::pinta_celula(flex2, Litres, LitresColour);
    Module1::pinta_celula(flex2, Value, ValueColour);
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

void add(platform::FlexGrid& flex2, QByteArrayView cells)
{
    flex2.AddItem(cells);
    paintLastRow(flex2);
}

void add(platform::FlexGrid& flex2, const QStringList& cells)
{
    flex2.AddItem(cells);
    paintLastRow(flex2);
}

Totals& Totals::operator+=(const Totals& other)
{
    litres += other.litres;
    value += other.value;
    return *this;
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
    , m_row(readings)
{}

vb::ExactSum Reading::amount(int field) const
{
    if (const auto hundredths = vb::plainAmount(m_readings.TextBytes(field)))
        return vb::ExactSum(vb::Currency::fromScaled(*hundredths * (vb::Currency::Scale / 100)));
    return vb::ExactSum(number(field));
}

vb::Decimal Reading::number(int field) const
{
    return numberOr0(m_readings.Fields(field));
}

Totals Reading::totals() const
{
    const auto plain =
        product(vb::plainAmount(m_readings.TextBytes(m_litres)), vb::plainAmount(m_readings.TextBytes(m_price)));
    return {amount(m_litres), plain ? vb::ExactSum(*plain) : vb::ExactSum(number(m_litres) * number(m_price))};
}

QByteArrayView Reading::line(QByteArrayView description, const Totals& totals)
{
    m_row.begin();
    m_row.field(m_pump);
    m_row.cell(description);
    m_row.amount(m_previous);
    m_row.amount(m_current);
    m_row.date(m_date);
    m_row.amount(m_litres);
    std::string& price = m_row.open();
    if (const QByteArrayView text = m_readings.TextBytes(m_price); vb::plainAmount(text))
        price.append(text.data(), static_cast<std::size_t>(text.size())) += '0';
    else
        price += vb::Format(number(m_price), u"##,#0.000").toStdString();
    totals.value.appendTo(m_row.open());
    m_row.field(m_key);
    return m_row.bytes();
}

void PumpSum::add(const Reading& reading)
{
    if (readings == 0)
        firstDate = reading.date();
    ++readings;
    previous += reading.previous();
    current += reading.current();
    calibration += reading.calibration();
    totals += reading.totals();
    lastKey = reading.key();
}

QStringList PumpSum::cells(const QString& pump, const QString& description) const
{
    const vb::Decimal litres = totals.litres.toDecimal();
    const double divisor = litres.isZero() ? 1.0 : litres.toDouble();
    return {pump,
            description,
            formatted(previous),
            QStringLiteral("-> ") + formatted(current),
            vb::Format(firstDate, u"DD/MM/YY"),
            formatted(totals.litres),
            vb::Format(totals.value.toDecimal().toDouble() / divisor, u"##,#0.000"),
            formatted(totals.value),
            lastKey.textOrEmpty()};
}

QString PumpSum::toolTip() const
{
    return QStringLiteral("Leituras: %1\nAferição: %2").arg(readings).arg(formatted(calibration));
}

} // namespace HistoryRows
