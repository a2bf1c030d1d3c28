#pragma once

#include <functional>

namespace ado {

/// Runs a read, change and Update of one row. Where the Update finds the row changed meanwhile it all runs again, three
/// times at most; then Error::Conflict is raised. Every other error is raised at once.
void againOnConflict(const std::function<void()>& change);

} // namespace ado
