#pragma once

#include "platform/vb/Currency.h"

#include <QByteArrayView>

#include <optional>
#include <string>

// The way of most amounts in a long list: texts that stand in the database as they are shown. What these do not know
// goes the way of Format and CCur, with the same result.
namespace vb {

/// Hundredths of a text that reads exactly as "##,#0.00" writes it ("1.234,50"), of at most 13 digits; nullopt for any
/// other text, also for one that is a number otherwise written.
[[nodiscard]] std::optional<qint64> plainAmount(QByteArrayView utf8);

/// Appends what Format gives for the amount and "##,#0.00".
void appendAmount(std::string& utf8, Currency amount);

} // namespace vb
