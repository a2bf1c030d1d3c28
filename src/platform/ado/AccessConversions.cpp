#include "platform/ado/AccessConversions.h"

#include "platform/vb/Conversion.h"
#include "platform/vb/Error.h"
#include "platform/vb/Format.h"
#include "platform/vb/NumberText.h"

namespace ado {

namespace {

QString fromUtf8(std::string_view utf8)
{
    return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

vb::Variant toVariant(const accessfile::Value& value)
{
    struct Visitor
    {
        vb::Variant operator()(accessfile::Null) const { return {}; }
        vb::Variant operator()(bool truth) const { return truth ? -1 : 0; }
        vb::Variant operator()(std::int32_t number) const { return number; }
        vb::Variant operator()(float number) const { return static_cast<double>(number); }
        vb::Variant operator()(double number) const { return number; }
        vb::Variant operator()(accessfile::Money money) const { return vb::Currency::fromScaled(money.scaled); }
        vb::Variant operator()(accessfile::DateTime date) const { return vb::Date{date.serial}; }
        vb::Variant operator()(const accessfile::Numeric& decimal) const { return accessfile::toDouble(decimal); }
        vb::Variant operator()(const std::string& text) const { return fromUtf8(text); }
        vb::Variant operator()(const accessfile::Guid& /*guid*/) const { return {}; }
        vb::Variant operator()(const accessfile::Bytes& /*bytes*/) const { return {}; }
    };
    return std::visit(Visitor(), value);
}

/// Letter by letter: none is spelled out as two.
template <typename Change>
std::string eachLetter(std::string_view utf8, Change change)
{
    QString text = fromUtf8(utf8);
    for (QChar& letter : text)
        letter = change(letter);
    return text.toStdString();
}

} // namespace

std::optional<double> AccessConversions::toNumber(std::string_view utf8) const
{
    return vb::parseNumber(fromUtf8(utf8));
}

std::optional<accessfile::Numeric> AccessConversions::toDecimal(std::string_view utf8) const
{
    const vb::NumberText number = vb::readNumber(fromUtf8(utf8));
    if (number.status != vb::NumberStatus::Ok)
        return std::nullopt;
    const vb::Decimal& decimal = number.decimal;
    std::string plain = decimal.negative ? "-0." : "0.";
    plain.append(decimal.digits.begin(), decimal.digits.end());
    return accessfile::parseDecimal(plain + 'E' + std::to_string(decimal.point));
}

std::optional<double> AccessConversions::toDate(std::string_view utf8) const
{
    const std::optional<vb::Date> date = vb::parseDate(fromUtf8(utf8));
    return date ? std::optional(date->serial) : std::nullopt;
}

std::string AccessConversions::numberToText(double number) const
{
    return vb::CStr(number).toStdString();
}

std::string AccessConversions::dateToText(double serial) const
{
    return vb::CStr(vb::Date{serial}).toStdString();
}

std::string AccessConversions::format(const accessfile::Value& value, std::string_view pattern) const
{
    return vb::Format(toVariant(value), fromUtf8(pattern)).toStdString();
}

std::optional<accessfile::CalendarDay> AccessConversions::day(const accessfile::Value& value) const
{
    try {
        const QDate day = vb::CDate(toVariant(value)).date();
        if (day.isValid())
            return accessfile::CalendarDay{day.year(), day.month(), day.day()};
    } catch (const vb::Error&) {
    }
    return std::nullopt;
}

double AccessConversions::leadingNumber(std::string_view utf8) const
{
    return vb::Val(fromUtf8(utf8));
}

std::string AccessConversions::upperCase(std::string_view utf8) const
{
    return eachLetter(utf8, [](QChar letter) { return letter.toUpper(); });
}

std::string AccessConversions::lowerCase(std::string_view utf8) const
{
    return eachLetter(utf8, [](QChar letter) { return letter.toLower(); });
}

} // namespace ado
