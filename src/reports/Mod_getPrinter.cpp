#include "reports/Mod_getPrinter.h"

#include "platform/print/Printers.h"

namespace Mod_getPrinter {

QString pega_impressora_padrao(platform::DefaultPrinter& defaultPrinter)
{
    try {
        return defaultPrinter.name();
    } catch (const std::exception&) {
        return {};
    }
}

bool define_impressora_padrao(platform::DefaultPrinter& defaultPrinter, const QString& name)
{
    try {
        defaultPrinter.setName(name);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

} // namespace Mod_getPrinter
