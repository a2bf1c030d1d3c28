#pragma once

#include "support/BothBackEnds.h"

namespace support {

/// Makes the station's tables in an empty database, by the statements of the demonstration station, and one row each in
/// adm (password "1234"), DatEmit and config ("sim"). Tests fill the rest.
void makeStation(BothBackEnds& database);

/// Writes the settings (and, for MySQL, Host.mdb) that lead the program in `folder` to a database: the path of an
/// Access file, or a database of the shared server.
void writeSettings(const QString& folder, bool isMySql, const QString& database);

/// Makes Host.mdb in a folder, with rows of hosts: ativo, host, basededados, usuarioD, Senha.
void makeHosts(const QString& folder, const QList<QStringList>& rows);

} // namespace support
