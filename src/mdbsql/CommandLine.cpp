#include "mdbsql/CommandLine.h"

#ifdef _WIN32
#define NOMINMAX
#include <windows.h>

#include <shellapi.h>
#endif

std::vector<std::string> commandLine(int count, char** values)
{
#ifdef _WIN32
    SetConsoleOutputCP(CP_UTF8);
    std::vector<std::string> arguments;
    wchar_t** const wide = CommandLineToArgvW(GetCommandLineW(), &count);
    for (int i = 1; wide && i < count; ++i) {
        const int length = WideCharToMultiByte(CP_UTF8, 0, wide[i], -1, nullptr, 0, nullptr, nullptr);
        std::string argument(static_cast<std::size_t>(length), '\0');
        WideCharToMultiByte(CP_UTF8, 0, wide[i], -1, argument.data(), length, nullptr, nullptr);
        argument.pop_back(); // the closing zero
        arguments.push_back(argument);
    }
    LocalFree(wide);
    static_cast<void>(values);
    return arguments;
#else
    return {values + 1, values + count};
#endif
}
