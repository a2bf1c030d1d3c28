#include "accessfile/file/FileErrors.h"

#include "accessfile/Error.h"

namespace accessfile {

std::string shownName(const std::filesystem::path& file)
{
    const std::u8string text = file.u8string();
    return {text.begin(), text.end()};
}

void throwInputOutput(const char* doing, const std::string& reason)
{
    throw Error(ErrorKind::IoError, std::string("Falha ao ") + doing + " o arquivo de dados: " + reason + ".");
}

void throwBytesLocked()
{
    throw Error(ErrorKind::Locked, "O arquivo de dados está em uso por outro programa neste momento.");
}

void throwLocked(const std::filesystem::path& file)
{
    throw Error(ErrorKind::Locked,
                "O arquivo '" + shownName(file) + "' está em uso por outro programa. Feche-o e tente novamente.");
}

void throwCannotOpen(const std::filesystem::path& file, const std::string& reason)
{
    throw Error(ErrorKind::CannotOpen, "Não é possível abrir o arquivo '" + shownName(file) + "': " + reason + ".");
}

void throwExists(const std::filesystem::path& file)
{
    throw Error(ErrorKind::Duplicate, "O arquivo '" + shownName(file) + "' já existe.");
}

} // namespace accessfile
