#pragma once

#include <QString>

namespace ado::odbc {

/// Makes the driver name of the program's MySQL string known to the driver manager where the system does not: writes a
/// registration file of our own (the system's content and one section more) into the user's cache folder and points
/// ODBCSYSINI there. Works once per process and before its first ODBC call; the manager reads the place only then.
/// Nothing happens where the system, or the user's own file, has a driver of that name.
void registerDrivers();

/// Whether the driver manager knows a driver of that name, upper and lower case alike.
[[nodiscard]] bool isDriverInstalled(const QString& name);

} // namespace ado::odbc
