#include "accessfile/StorageFile.h"
namespace accessfile {
std::vector<std::string> StorageFile::verify()
{
    return {};
}
} // namespace accessfile
