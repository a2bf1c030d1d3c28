#include "platform/vb/Format.h"

#include "platform/vb/Amount.h"
#include "platform/vb/Conversion.h"
#include "platform/vb/DateText.h"
#include "platform/vb/NumberText.h"

#include <cmath>

namespace vb {

namespace {

constexpr int ExactTextDigits = 15;

std::optional<Decimal> decimalOf(const Variant& value)
{
    if (const auto* text = std::get_if<QString>(&value.value())) {
        NumberText number = readNumber(*text);
        if (number.status != NumberStatus::Ok)
            return std::nullopt;
        // 15 digits survive the way through a double unchanged; only longer texts have to take it.
        if (number.decimal.digits.size() <= ExactTextDigits)
            return std::move(number.decimal);
        return Decimal::fromDouble(number.decimal.toDouble());
    }
    if (const auto* whole = std::get_if<qint64>(&value.value()))
        return Decimal::fromInteger(*whole, 0);
    if (const auto* currency = std::get_if<Currency>(&value.value()))
        return Decimal::fromInteger(currency->scaled(), 4);
    const double number = CDbl(value);
    return std::isfinite(number) ? std::optional<Decimal>(Decimal::fromDouble(number)) : std::nullopt;
}

/// The way of most numbers that are shown: hundredths that the value holds exactly.
std::optional<Currency> plainHundredths(const Variant& value)
{
    if (const auto* currency = std::get_if<Currency>(&value.value()))
        return *currency;
    const auto* number = std::get_if<double>(&value.value());
    constexpr double Limit = 1e11;
    if (!number || !(std::abs(*number) < Limit) || (*number == 0 && std::signbit(*number)))
        return std::nullopt;
    const double hundredths = std::nearbyint(*number * 100);
    if (hundredths / 100 != *number)
        return std::nullopt;
    return Currency::fromScaled(static_cast<qint64>(hundredths) * (Currency::Scale / 100));
}

struct NumberPattern
{
    int wholeDigits = 0;   // digits that always show
    int decimals = 0;      // at most so many
    int fixedDecimals = 0; // of these, so many always
    bool thousands = false;
    bool point = false;

    explicit NumberPattern(QStringView pattern)
    {
        for (const QChar character : pattern) {
            if (character == u'.')
                point = true;
            else if (character == u',')
                thousands = true;
            else if (point && (character == u'0' || character == u'#')) {
                ++decimals;
                fixedDecimals = character == u'0' ? decimals : fixedDecimals;
            } else if (character == u'0' || (character == u'#' && wholeDigits > 0)) {
                ++wholeDigits;
            }
        }
    }
};

QString formatNumber(Decimal decimal, const NumberPattern& pattern)
{
    decimal.roundHalfAway(pattern.decimals);
    const auto count = static_cast<int>(decimal.digits.size());
    const int whole = qMax(decimal.point, 0);
    const int shownWhole = qMax(whole, pattern.wholeDigits);
    const int shownDecimals = qMax(count - decimal.point, pattern.fixedDecimals);
    const auto digitAt = [&](int place) { // places before the point are 0 and below
        const int index = decimal.point - 1 + place;
        return index >= 0 && index < count ? QLatin1Char(decimal.digits[index]) : QLatin1Char('0');
    };

    QVarLengthArray<QChar, 48> text;
    // What rounds to nothing keeps its sign, -0.001 reads "-0,00".
    if (decimal.negative)
        text.append(u'-');
    for (int left = shownWhole; left > 0; --left) {
        text.append(digitAt(1 - left));
        if (pattern.thousands && left > 1 && left % 3 == 1)
            text.append(u'.');
    }
    if (pattern.point)
        text.append(u',');
    for (int place = 1; place <= shownDecimals; ++place)
        text.append(digitAt(place));
    return QString(text.data(), text.size());
}

void appendLongDate(QString& text, QDate day)
{
    text += dayName(day.dayOfWeek()) + QStringLiteral(", ") + QString::number(day.day()) + QStringLiteral(" de ") +
            monthName(day.month()) + QStringLiteral(" de ") + QString::number(day.year());
}

void appendNamed(QString& text, const QString& name, int letters)
{
    text += letters == 3 ? name.first(3) : name;
}

char16_t lower(QChar letter)
{
    const char16_t code = letter.unicode();
    return code >= u'A' && code <= u'Z' ? code + 0x20 : code;
}

QString formatDate(Date date, QStringView pattern)
{
    const QDate day = date.date();
    const QTime time = date.time();
    int year = 0;
    int month = 0;
    int dayOfMonth = 0;
    day.getDate(&year, &month, &dayOfMonth);
    QString text;
    text.reserve(pattern.size() + 8);
    if (pattern.compare(u"Long Date", Qt::CaseInsensitive) == 0) {
        appendLongDate(text, day);
        return text;
    }
    bool behindHours = false;
    for (qsizetype at = 0; at < pattern.size();) {
        const char16_t letter = lower(pattern[at]);
        qsizetype end = at + 1;
        while (end < pattern.size() && lower(pattern[end]) == letter)
            ++end;
        const auto letters = static_cast<int>(end - at);
        const int width = qMin(letters, 2);
        bool hours = false;
        if (letter == u'd' && letters > 2) {
            appendNamed(text, dayName(day.dayOfWeek()), letters);
        } else if (letter == u'd') {
            appendPadded(text, dayOfMonth, width);
        } else if (letter == u'n' || (letter == u'm' && behindHours && letters <= 2)) {
            appendPadded(text, time.minute(), width);
        } else if (letter == u'm' && letters > 2) {
            appendNamed(text, monthName(month), letters);
        } else if (letter == u'm') {
            appendPadded(text, month, width);
        } else if (letter == u'y' && letters > 2) {
            appendPadded(text, year, 4);
        } else if (letter == u'y') {
            appendPadded(text, year % 100, 2);
        } else if (letter == u'h') {
            appendPadded(text, time.hour(), width);
            hours = true;
        } else if (letter == u's') {
            appendPadded(text, time.second(), width);
        } else {
            text += pattern.sliced(at, letters);
            hours = behindHours; // a separator between hours and minutes
        }
        behindHours = hours;
        at = end;
    }
    return text;
}

std::optional<Date> dateOf(const Variant& value)
{
    double serial = 0;
    if (const auto* text = std::get_if<QString>(&value.value())) {
        if (const std::optional<Date> date = parseDate(*text))
            return date;
        const std::optional<double> number = parseNumber(*text);
        if (!number)
            return std::nullopt;
        serial = *number;
    } else {
        serial = CDbl(value);
    }
    return isDateSerial(serial) ? std::optional<Date>(Date{serial}) : std::nullopt;
}

} // namespace

QString Format(const Variant& value, QStringView pattern)
{
    if (value.isNull())
        return {};
    if (pattern.startsWith(u'@'))
        return CStr(value).rightJustified(pattern.count(u'@'), u' ');
    if (const auto* text = std::get_if<QString>(&value.value()); text && text->isEmpty())
        return {};
    if (pattern == u"##,#0.00") {
        if (const std::optional<Currency> amount = plainHundredths(value)) {
            std::string shown;
            appendAmount(shown, *amount);
            return QString::fromLatin1(shown.data(), static_cast<qsizetype>(shown.size()));
        }
    }
    if (pattern.contains(u'0') || pattern.contains(u'#')) {
        if (std::optional<Decimal> decimal = decimalOf(value))
            return formatNumber(std::move(*decimal), NumberPattern(pattern));
    } else if (const std::optional<Date> date = dateOf(value)) {
        return formatDate(*date, pattern);
    }
    return CStr(value);
}

QString Format(Decimal number, QStringView numberPattern)
{
    return formatNumber(std::move(number), NumberPattern(numberPattern));
}

QString shortDate(QDate date)
{
    QString text;
    if (!date.isValid())
        return text;
    int year = 0;
    int month = 0;
    int dayOfMonth = 0;
    date.getDate(&year, &month, &dayOfMonth);
    text.reserve(20); // room for a time behind it
    appendPadded(text, dayOfMonth, 2);
    text += u'/';
    appendPadded(text, month, 2);
    text += u'/';
    appendPadded(text, year, 4);
    return text;
}

} // namespace vb
