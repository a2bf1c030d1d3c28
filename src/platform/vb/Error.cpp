#include "platform/vb/Error.h"

namespace vb {

Error::Error(Number number)
    : m_number(number)
    , m_what(description().toUtf8())
{}

QString Error::description() const
{
    switch (m_number) {
    case Overflow:
        return QStringLiteral("Estouro");
    case TypeMismatch:
        return QStringLiteral("Tipos incompatíveis");
    case InvalidUseOfNull:
        return QStringLiteral("Uso de Null inválido");
    case NoCurrentRecord:
        return QStringLiteral("BOF ou EOF é verdadeiro ou o registro atual foi excluído. "
                              "A operação solicitada exige um registro atual.");
    }
    return {};
}

const char* Error::what() const noexcept
{
    return m_what.constData();
}

} // namespace vb
