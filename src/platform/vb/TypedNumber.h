#pragma once

#include <QString>

namespace vb {

/// A figure as an operator types it, in which a point alone is the decimal comma: "12.5" is "12,5". Beside a comma, or
/// more than once, points are thousands points and stay.
[[nodiscard]] QString typedNumber(QString text);

/// A text that is pasted, the thousands points of its figures taken out: "R$ 1.234,50" is "R$ 1234,50".
[[nodiscard]] QString pastedNumber(const QString& text);

} // namespace vb
