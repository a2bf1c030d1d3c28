#pragma once

namespace platform {

/// The unit of grid columns, window steps and papers.
constexpr int TwipsPerInch = 1440;

} // namespace platform
