#pragma once

#include "accessfile/Error.h"

#include <filesystem>
#include <string>

// What the file system's refusals are called towards the operator.
namespace accessfile {

[[nodiscard]] inline std::string shownName(const std::filesystem::path& file)
{
    const std::u8string text = file.u8string();
    return {text.begin(), text.end()};
}

[[noreturn]] inline void throwInputOutput(const char* doing, const std::string& reason)
{
    throw Error(ErrorKind::IoError, std::string("Falha ao ") + doing + " o arquivo de dados: " + reason + ".");
}

[[noreturn]] inline void throwBytesLocked()
{
    throw Error(ErrorKind::Locked, "O arquivo de dados está em uso por outro programa neste momento.");
}

[[noreturn]] inline void throwLocked(const std::filesystem::path& file)
{
    throw Error(ErrorKind::Locked,
                "O arquivo '" + shownName(file) + "' está em uso por outro programa. Feche-o e tente novamente.");
}

[[noreturn]] inline void throwCannotOpen(const std::filesystem::path& file, const std::string& reason)
{
    throw Error(ErrorKind::CannotOpen, "Não é possível abrir o arquivo '" + shownName(file) + "': " + reason + ".");
}

[[noreturn]] inline void throwExists(const std::filesystem::path& file)
{
    throw Error(ErrorKind::Duplicate, "O arquivo '" + shownName(file) + "' já existe.");
}

} // namespace accessfile
