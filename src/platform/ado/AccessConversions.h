#pragma once

#include "accessfile/Database.h"

namespace ado {

/// The station's regional settings for the Access engine: the conversions of platform/vb.
class AccessConversions : public accessfile::RegionalConversions
{
public:
    [[nodiscard]] std::optional<double> toNumber(std::string_view utf8) const override;
    [[nodiscard]] std::optional<double> toDate(std::string_view utf8) const override;
    [[nodiscard]] std::string numberToText(double number) const override;
    [[nodiscard]] std::string dateToText(double serial) const override;
};

} // namespace ado
