#include "platform/ado/AccessConversions.h"

#include "platform/vb/Conversion.h"

namespace ado {

namespace {

QString fromUtf8(std::string_view utf8)
{
    return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

} // namespace

std::optional<double> AccessConversions::toNumber(std::string_view utf8) const
{
    return vb::parseNumber(fromUtf8(utf8));
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

} // namespace ado
