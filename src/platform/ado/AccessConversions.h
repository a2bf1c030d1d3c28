#pragma once

#include "accessfile/Database.h"

namespace ado {

/// The station's regional settings for the Access engine: the conversions of platform/vb.
class AccessConversions : public accessfile::RegionalConversions
{
public:
    [[nodiscard]] std::optional<double> toNumber(std::string_view utf8) const override;
    [[nodiscard]] std::optional<accessfile::Numeric> toDecimal(std::string_view utf8) const override;
    [[nodiscard]] std::optional<double> toDate(std::string_view utf8) const override;
    [[nodiscard]] std::string numberToText(double number) const override;
    [[nodiscard]] std::string dateToText(double serial) const override;
    [[nodiscard]] std::string format(const accessfile::Value& value, std::string_view pattern) const override;
    [[nodiscard]] std::optional<accessfile::CalendarDay> day(const accessfile::Value& value) const override;
    [[nodiscard]] double leadingNumber(std::string_view utf8) const override;
    [[nodiscard]] std::string upperCase(std::string_view utf8) const override;
    [[nodiscard]] std::string lowerCase(std::string_view utf8) const override;
};

} // namespace ado
