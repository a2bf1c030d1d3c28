#pragma once

#include "support/BothBackEnds.h"

namespace support {

/// Makes the station's tables in an empty database, by the statements of the demonstration station, and one row each in
/// adm (password "1234"), DatEmit and config ("sim"). Tests fill the rest.
void makeStation(BothBackEnds& database);

/// Makes Host.mdb in a folder, with rows of hosts: ativo, host, basededados, usuarioD, Senha.
void makeHosts(const QString& folder, const QList<QStringList>& rows);

} // namespace support
