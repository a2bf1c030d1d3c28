#pragma once

#include "platform/vb/Variant.h"

#include <QString>

class QListWidget;

// Entries of the register lists: the code as five digits, " - ", and the description.
namespace shared {

[[nodiscard]] QString listEntry(const vb::Variant& code, const vb::Variant& description);
/// First five characters; their value is the code.
[[nodiscard]] QString entryCode(const QString& entry);
/// From the ninth character on.
[[nodiscard]] QString entryDescription(const QString& entry);
/// The selected entry's text, empty when nothing is selected.
[[nodiscard]] QString selectedEntry(const QListWidget& list);

} // namespace shared
