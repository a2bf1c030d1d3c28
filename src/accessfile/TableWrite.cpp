#include "accessfile/StorageFile.h"
#include "accessfile/TableFile.h"

namespace accessfile {

namespace {
[[noreturn]] void refuse()
{
    throw Error(ErrorKind::ReadOnly, "A gravação ainda não é atendida.");
}
} // namespace

RowId TableFile::insert(std::span<const std::optional<Value>>)
{
    refuse();
}
void TableFile::update(RowId, std::span<const std::pair<int, Value>>)
{
    refuse();
}
void TableFile::erase(RowId)
{
    refuse();
}
bool TableFile::usableForRange(int) const
{
    return false;
}
std::unique_ptr<Cursor> TableFile::range(int, const KeyRange&) const
{
    refuse();
}
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
std::optional<std::string> textSortKey(std::string_view)
{
    return std::nullopt;
}

} // namespace accessfile
