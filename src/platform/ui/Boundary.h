#pragma once

#include "platform/ui/Seams.h"

#include <exception>
#include <functional>

// The boundary of every handler: nothing throws through the event loop, and keys and clicks that come meanwhile wait
// until it has returned (InputQueue). One function for each way of going on.
namespace platform {

/// Text of an error as the operator sees it: run-time error number and the error's own text.
[[nodiscard]] QString errorText(const std::exception& error);

/// Tell and stay, the rule for windows: the error's text is shown, the operation stops there; program, window and typed
/// lines stay. False when an error was shown.
bool tellAndStay(Messages& messages, const std::function<void()>& operation) noexcept;

// The next two run inside one of the others: what is no failure of data, printer or conversion, such as a lack of
// memory, goes through them. What they pass over is noted for support (IgnoredErrors.h). False when there was an error.

/// Carry on: one step whose error is ignored. A procedure that ignores every error wraps each step by itself.
bool carryOn(const std::function<void()>& step);

/// Leave quietly: a whole procedure that ends at its first error without a word.
bool leaveQuietly(const std::function<void()>& procedure);

/// Start-up: an error's text is shown and false returned; the caller ends the program.
bool orEndProgram(Messages& messages, const std::function<void()>& operation) noexcept;

} // namespace platform
