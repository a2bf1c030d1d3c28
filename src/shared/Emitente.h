#pragma once

#include <QString>

namespace ado {
class Connection;
}

/// The station's own identity for report headers and the password prompt. Texts stay empty where nothing was read.
struct Emitente
{
    QString RazaoSocial;
    QString IE;
    QString CNPJ;
    QString endereco; ///< Address, town and telephone joined by ", ".
};

namespace Module1 {

/// Reads the first row of DatEmit. Errors are ignored: a station without identity still opens.
[[nodiscard]] Emitente carrega_emitente(ado::Connection& connection);

} // namespace Module1
