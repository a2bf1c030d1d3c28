#include "support/StationSchema.h"

#include "accessfile/Storage.h"
#include "support/MariaDbServer.h"

#include <QFile>

#include <stdexcept>

namespace support {

namespace {

/// The statements of a script of the demonstration station: one a line.
QStringList statements(const QString& name)
{
    QFile file(qEnvironmentVariable("PLANILHA_SOURCE_DIR") + QStringLiteral("/demo/") + name);
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error("cannot read " + file.fileName().toStdString());
    QStringList result;
    for (const QString& line : QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts)) {
        if (!line.startsWith(QStringLiteral("--")))
            result << line;
    }
    return result;
}

} // namespace

void makeStation(BothBackEnds& database)
{
    database.script(
        statements(database.isMySql() ? QStringLiteral("esquema_mysql.sql") : QStringLiteral("esquema_access.sql")));
    database.script({
        QStringLiteral("INSERT INTO adm (nome, senh) VALUES ('Supervisor', '1234')"),
        QStringLiteral("INSERT INTO config (baixardoestoqueplanilha) VALUES ('sim')"),
        QStringLiteral("INSERT INTO DatEmit (RazaoSocial, IE, CNPJ, endereco, Municipio, telefone) VALUES "
                       "('Auto Posto Três Ipês Ltda', '000.111.222.333', '00.111.222/0001-33', "
                       "'Avenida das Acácias, 1500', 'Ipê do Sul', '(00) 3000-1234')"),
    });
}

void writeSettings(const QString& folder, bool isMySql, const QString& database)
{
    QFile file(folder + QStringLiteral("/ConfigINI.ini"));
    if (!file.open(QIODevice::WriteOnly))
        throw std::runtime_error("cannot write the settings");
    if (isMySql) {
        file.write("[Geral]\r\nTipoConexao_BD=mysql\r\n");
        makeHosts(folder, {{QStringLiteral("X"), MariaDbServer::shared().host(), database, MariaDbServer::user(),
                            MariaDbServer::password()}});
    } else {
        file.write("[Geral]\r\nTipoConexao_BD=access\r\nCaminho=" + QFile::encodeName(database) + "\r\n");
    }
}

void makeHosts(const QString& folder, const QList<QStringList>& rows)
{
    const QString file = folder + QStringLiteral("/Host.mdb");
    accessfile::Storage::create(file.toStdString());
    ado::Connection connection;
    connection.Open(QStringLiteral("Provider=Microsoft.Jet.OLEDB.4.0;Data Source=") + file + QStringLiteral(";"));
    connection.Execute(statements(QStringLiteral("hosts.sql")).first());
    for (const QStringList& row : rows) {
        connection.Execute(QStringLiteral("INSERT INTO hosts (ativo, host, basededados, usuarioD, Senha) VALUES ('%1')")
                               .arg(row.join(QStringLiteral("', '")))
                               .replace(QStringLiteral("''"), QStringLiteral("NULL")));
    }
}

} // namespace support
