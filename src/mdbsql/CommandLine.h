#pragma once

#include <string>
#include <vector>

/// The arguments behind the program's name, in UTF-8. On Windows, where `values` has the code page's letters alone,
/// they are asked of the system, and a console is told that the output is UTF-8.
[[nodiscard]] std::vector<std::string> commandLine(int count, char** values);
