#pragma once

#include <QStringList>

namespace shared {

/// TANQUE_1 to TANQUE_<count>: the names of tanks and of their gauge tables.
[[nodiscard]] inline QStringList tankNames(int count)
{
    QStringList names;
    for (int number = 1; number <= count; ++number)
        names << QStringLiteral("TANQUE_") + QString::number(number);
    return names;
}

} // namespace shared
