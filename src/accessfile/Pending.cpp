#include "accessfile/StorageFile.h"
namespace accessfile {
namespace {
[[noreturn]] void refuse()
{
    throw Error(ErrorKind::ReadOnly, "A gravação ainda não é atendida.");
}
} // namespace
void StorageFile::createTable(const std::string&, std::span<const Column>, std::span<const Index>)
{
    refuse();
}
void StorageFile::addColumn(const std::string&, const Column&)
{
    refuse();
}
void StorageFile::createIndex(const std::string&, const Index&)
{
    refuse();
}
void StorageFile::dropTable(const std::string&)
{
    refuse();
}
void StorageFile::setPassword(std::string_view)
{
    refuse();
}
std::vector<std::string> StorageFile::verify()
{
    return {};
}
void Storage::create(const std::filesystem::path&, std::string_view)
{
    refuse();
}
} // namespace accessfile
