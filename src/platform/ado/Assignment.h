#pragma once

#include "platform/ado/Error.h"
#include "platform/ado/RowSet.h"

namespace ado {

/// The value that a field takes when `value` is assigned to it: converted to the field's type by the regional settings
/// (a text to a number or date, a number to its plain text). Null stays Null. Raises ado::Error 3421 when the value
/// cannot be of the field's type.
[[nodiscard]] vb::Variant assigned(const Field& field, const vb::Variant& value);

/// ado::Error 3265: no such field.
[[nodiscard]] Error unknownField(QStringView name);

} // namespace ado
