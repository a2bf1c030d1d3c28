#include "platform/print/Printers.h"

namespace platform {

PrintError::PrintError(const QString& text)
    : m_what(text.toUtf8())
{}

const char* UserCancelled::what() const noexcept
{
    return "Impressão cancelada pelo usuário.";
}

} // namespace platform
