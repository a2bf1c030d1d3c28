#pragma once

#include <QString>

namespace platform {
class DefaultPrinter;
}

// The default printer before and after a report. Neither ever shows a message or raises.
namespace Mod_getPrinter {

/// Name of the default printer; empty where there is none or on any error.
[[nodiscard]] QString pega_impressora_padrao(platform::DefaultPrinter& defaultPrinter);

/// Makes a printer the default; false on any error.
bool define_impressora_padrao(platform::DefaultPrinter& defaultPrinter, const QString& name);

} // namespace Mod_getPrinter
