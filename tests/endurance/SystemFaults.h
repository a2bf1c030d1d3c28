#pragma once

#include <QString>

namespace endurance {

/// Lets the system do something to this process at one of the calls by which the Access engine reads and changes its
/// file, counted from now on. "kill N": the process is killed at the N-th change, a write being half done by then.
/// "change N" and "read N": that call fails, once, with an input/output error. An empty text does nothing.
void armSystemFault(const QString& fault);
/// Whether the call came to which that fault belongs.
[[nodiscard]] bool systemFaultStruck();

} // namespace endurance
