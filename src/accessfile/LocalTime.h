#pragma once

namespace accessfile {

/// The station's clock as the file format counts it: days since 1899-12-30, to the millisecond.
[[nodiscard]] double localTime();
/// The same to the second, as dates in rows are kept: equal-looking dates are then equal.
[[nodiscard]] double localSecond();

} // namespace accessfile
