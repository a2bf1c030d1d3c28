#include "platform/ui/Boundary.h"

#include "platform/ado/Error.h"
#include "platform/ado/IgnoredErrors.h"
#include "platform/print/Printers.h"
#include "platform/ui/InputQueue.h"
#include "platform/vb/Error.h"

#include <new>

namespace platform {

namespace {

constexpr int OutOfMemory = 7;
constexpr int InternalError = 51;
constexpr int PrinterError = 482;

QString numbered(int number, const QString& text)
{
    return QStringLiteral("Erro em tempo de execução '%1':\n\n%2").arg(QString::number(number), text);
}

/// Shows the error that is being handled. Nothing comes out of it, whatever the message box does.
void tell(Messages& messages) noexcept
{
    try {
        try {
            throw;
        } catch (const std::exception& error) {
            messages.MsgBox(errorText(error), vbCritical);
        } catch (...) {
            messages.MsgBox(numbered(InternalError, QStringLiteral("Erro interno")), vbCritical);
        }
    } catch (...) {
        // Not even the box could be shown; the operation has stopped all the same.
    }
}

bool quietly(const std::function<void()>& work)
{
    const InputQueue::Busy handler;
    try {
        work();
        return true;
    } catch (const ado::Error& error) {
        noteIgnored(error);
    } catch (const vb::Error& error) {
        noteIgnored(error);
    } catch (const PrintError& error) {
        noteIgnored(error);
    }
    return false;
}

bool orTell(Messages& messages, const std::function<void()>& work) noexcept
{
    const InputQueue::Busy handler;
    try {
        work();
        return true;
    } catch (...) {
        tell(messages);
        return false;
    }
}

} // namespace

QString errorText(const std::exception& error)
{
    if (const auto* const conversion = dynamic_cast<const vb::Error*>(&error))
        return numbered(conversion->number(), conversion->description());
    if (const auto* const source = dynamic_cast<const ado::Error*>(&error))
        return numbered(source->number(), source->text());
    if (dynamic_cast<const PrintError*>(&error))
        return numbered(PrinterError, QString::fromUtf8(error.what()));
    if (dynamic_cast<const std::bad_alloc*>(&error))
        return numbered(OutOfMemory, QStringLiteral("Memória insuficiente"));
    return numbered(InternalError, QStringLiteral("Erro interno: ") + QString::fromUtf8(error.what()));
}

bool tellAndStay(Messages& messages, const std::function<void()>& operation) noexcept
{
    return orTell(messages, operation);
}

bool carryOn(const std::function<void()>& step)
{
    return quietly(step);
}

bool leaveQuietly(const std::function<void()>& procedure)
{
    return quietly(procedure);
}

bool orEndProgram(Messages& messages, const std::function<void()>& operation) noexcept
{
    return orTell(messages, operation);
}

} // namespace platform
