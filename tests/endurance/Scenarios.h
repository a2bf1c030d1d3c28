#pragma once

#include <QString>
#include <QStringList>

namespace endurance {

/// Names of what an operator may be doing when something fails: closing a sheet, and every register's save.
[[nodiscard]] QStringList scenarioNames();

/// Whether a child process is asked for: "--child SCENARIO FOLDER FIFO FAULT". It runs the scenario through the real
/// windows, tracing its statements, and no others, to the named pipe, which it stands still at before each. From there
/// on the fault of the system is armed. "start" starts the whole program and closes it again.
[[nodiscard]] bool isChild(const QStringList& arguments);
/// The exit code of a child that a fault of the system befell and that ended all the same.
constexpr int Struck = 3;
/// Runs the child and returns its exit code; prints each box that was shown.
[[nodiscard]] int runChild(const QStringList& arguments);

} // namespace endurance
