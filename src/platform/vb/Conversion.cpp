#include "platform/vb/Conversion.h"

#include "platform/vb/DateText.h"
#include "platform/vb/Error.h"
#include "platform/vb/NumberText.h"

#include <cmath>
#include <limits>

namespace vb {

namespace {

constexpr int CurrencyDecimals = 4;

template <class... Functions>
struct Overloaded : Functions...
{
    using Functions::operator()...;
};
template <class... Functions>
Overloaded(Functions...) -> Overloaded<Functions...>;

NumberText requireNumber(QStringView text)
{
    NumberText number = readNumber(text);
    if (number.status == NumberStatus::NotANumber)
        throw Error(Error::TypeMismatch);
    if (number.status == NumberStatus::Overflow)
        throw Error(Error::Overflow);
    return number;
}

// Half to even, whatever the rounding mode of the processor.
qint64 toWhole(double value)
{
    constexpr double Limit = 9'223'372'036'854'775'808.0;
    const double below = std::floor(value);
    const double rest = value - below;
    const bool up = rest == 0.5 ? std::fmod(below, 2.0) != 0.0 : rest > 0.5;
    const double whole = up ? below + 1 : below;
    if (!(whole >= -Limit && whole < Limit))
        throw Error(Error::Overflow);
    return static_cast<qint64>(whole);
}

qint32 narrow(qint64 value)
{
    if (value < std::numeric_limits<qint32>::min() || value > std::numeric_limits<qint32>::max())
        throw Error(Error::Overflow);
    return static_cast<qint32>(value);
}

QString doubleText(double value, QString (*write)(const Decimal&, char16_t), char16_t point)
{
    if (std::isfinite(value))
        return write(Decimal::fromDouble(value), point);
    const QString text = (value < 0 ? QStringLiteral("-1") : QStringLiteral("1")) + QChar(point);
    return text + (std::isnan(value) ? QStringLiteral("#IND") : QStringLiteral("#INF"));
}

Date requireDate(double serial)
{
    if (!isDateSerial(serial))
        throw Error(Error::Overflow);
    return {serial};
}

} // namespace

bool IsNumeric(const Variant& value)
{
    if (const auto* text = std::get_if<QString>(&value.value()))
        return readNumber(*text).status == NumberStatus::Ok;
    return !value.isNull() && !value.isDate();
}

double Val(const QString& text)
{
    return leadingPart(text, u'.', 0);
}

double leadingNumber(const QString& text)
{
    return leadingPart(text, u',', u'.');
}

double CDbl(const Variant& value)
{
    return std::visit(Overloaded{
                          [](Variant::NullType) -> double { throw Error(Error::InvalidUseOfNull); },
                          [](qint64 number) { return static_cast<double>(number); },
                          [](double number) { return number; },
                          [](Currency number) { return number.toDouble(); },
                          [](Date date) { return date.serial; },
                          [](const QString& text) { return requireNumber(text).decimal.toDouble(); },
                      },
                      value.value());
}

qint32 CLng(const Variant& value)
{
    return std::visit(Overloaded{
                          [](Variant::NullType) -> qint32 { throw Error(Error::InvalidUseOfNull); },
                          [](qint64 number) { return narrow(number); },
                          [](double number) { return narrow(toWhole(number)); },
                          [](Currency number) {
                              const Decimal decimal = Decimal::fromInteger(number.scaled(), CurrencyDecimals);
                              return narrow(decimal.toScaledHalfEven(0).value());
                          },
                          [](Date date) { return narrow(toWhole(date.serial)); },
                          [](const QString& text) {
                              const NumberText number = requireNumber(text);
                              if (number.bits && *number.bits <= std::numeric_limits<quint32>::max()) {
                                  const auto whole = static_cast<qint32>(static_cast<quint32>(*number.bits));
                                  return number.decimal.negative ? narrow(-static_cast<qint64>(whole)) : whole;
                              }
                              const std::optional<qint64> whole = number.decimal.toScaledHalfEven(0);
                              if (!whole)
                                  throw Error(Error::Overflow);
                              return narrow(*whole);
                          },
                      },
                      value.value());
}

Currency CCur(const Variant& value)
{
    const auto fromDecimal = [](const Decimal& decimal) {
        const std::optional<qint64> scaled = decimal.toScaledHalfEven(CurrencyDecimals);
        if (!scaled)
            throw Error(Error::Overflow);
        return Currency::fromScaled(*scaled);
    };
    // The product is taken in double precision, as stored amounts were: 1.00705 is a half there although the binary
    // number is not, and goes to the even neighbour.
    const auto fromDouble = [](double number) { return Currency::fromScaled(toWhole(number * Currency::Scale)); };
    return std::visit(Overloaded{
                          [](Variant::NullType) -> Currency { throw Error(Error::InvalidUseOfNull); },
                          [&](qint64 number) { return fromDecimal(Decimal::fromInteger(number, 0)); },
                          [&](double number) { return fromDouble(number); },
                          [](Currency number) { return number; },
                          [&](Date date) { return fromDouble(date.serial); },
                          [&](const QString& text) { return fromDecimal(requireNumber(text).decimal); },
                      },
                      value.value());
}

Decimal CDec(const Variant& value)
{
    constexpr int MostDigits = 28;
    constexpr int SmallestPoint = -320; // Beyond any double.
    Decimal decimal =
        std::visit(Overloaded{
                       [](Variant::NullType) -> Decimal { throw Error(Error::InvalidUseOfNull); },
                       [](qint64 number) { return Decimal::fromInteger(number, 0); },
                       [](double number) {
                           if (!std::isfinite(number))
                               throw Error(Error::Overflow);
                           return Decimal::fromDouble(number);
                       },
                       [](Currency number) { return Decimal::fromInteger(number.scaled(), CurrencyDecimals); },
                       [](Date date) { return Decimal::fromDouble(date.serial); },
                       [](const QString& text) { return requireNumber(text).decimal; },
                   },
                   value.value());
    if (decimal.point < SmallestPoint)
        return {};
    decimal.roundHalfAway(MostDigits - decimal.point);
    return decimal;
}

Date CDate(const Variant& value)
{
    if (const auto* date = std::get_if<Date>(&value.value()))
        return *date;
    if (const auto* text = std::get_if<QString>(&value.value())) {
        if (const std::optional<Date> date = parseDate(*text))
            return *date;
    }
    return requireDate(CDbl(value));
}

QString CStr(const Variant& value)
{
    return std::visit(
        Overloaded{
            [](Variant::NullType) -> QString { throw Error(Error::InvalidUseOfNull); },
            [](qint64 number) { return QString::number(number); },
            [](double number) { return doubleText(number, plainText, u','); },
            [](Currency number) { return fixedText(Decimal::fromInteger(number.scaled(), CurrencyDecimals), u','); },
            [](Date date) { return dateText(date); },
            [](const QString& text) { return text; },
        },
        value.value());
}

std::optional<double> parseNumber(QStringView text)
{
    const NumberText number = readNumber(text);
    if (number.status != NumberStatus::Ok)
        return std::nullopt;
    return number.decimal.toDouble();
}

std::optional<Currency> parseCurrency(QStringView text)
{
    const NumberText number = readNumber(text);
    if (number.status != NumberStatus::Ok)
        return std::nullopt;
    const std::optional<qint64> scaled = number.decimal.toScaledHalfEven(CurrencyDecimals);
    return scaled ? std::optional(Currency::fromScaled(*scaled)) : std::nullopt;
}

QString plainDecimal(double value)
{
    const bool small = std::abs(value) < 1e15;
    return doubleText(value, small ? fixedText : plainText, u'.');
}

} // namespace vb
