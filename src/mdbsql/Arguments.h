#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <variant>
#include <vector>

/// What the command line asks for.
struct Options
{
    std::filesystem::path file;
    std::string password;                        ///< UTF-8.
    std::optional<std::string> command;          ///< UTF-8; nullopt: a script is read from the standard input.
    std::optional<std::filesystem::path> backup; ///< Where a copy is asked for.
    std::optional<int> wait;                     ///< Seconds.
    bool create = false;
    bool verify = false;
};

/// The request for the help text.
struct Help
{};

/// Arguments that make no sense, with the reason for the operator.
struct Misuse
{
    std::string reason;
};

/// `typed`: the arguments behind the program's name, in UTF-8.
[[nodiscard]] std::variant<Options, Help, Misuse> readArguments(const std::vector<std::string>& typed);

/// How the program is called, what it speaks and its exit codes.
extern const char* const helpText;
