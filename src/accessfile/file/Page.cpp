#include "accessfile/file/Page.h"

#include "accessfile/Error.h"

namespace accessfile {

void throwDamaged(const std::string& what)
{
    throw Error(ErrorKind::Damaged, "O arquivo de dados está danificado: " + what + ".");
}

} // namespace accessfile
