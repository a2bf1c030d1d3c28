#pragma once

#include <filesystem>
#include <string>

// What the file system's refusals are called towards the operator. Each raises an Error of its kind.
namespace accessfile {

[[nodiscard]] std::string shownName(const std::filesystem::path& file);
[[noreturn]] void throwInputOutput(const char* doing, const std::string& reason);
[[noreturn]] void throwBytesLocked();
[[noreturn]] void throwLocked(const std::filesystem::path& file);
[[noreturn]] void throwCannotOpen(const std::filesystem::path& file, const std::string& reason);
[[noreturn]] void throwExists(const std::filesystem::path& file);

} // namespace accessfile
