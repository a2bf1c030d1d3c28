#include "data/StationDatabase.h"

#include "data/Settings.h"
#include "platform/ado/Error.h"
#include "platform/ado/IgnoredErrors.h"
#include "platform/ado/Recordset.h"
#include "platform/ui/Boundary.h"
#include "platform/ui/Seams.h"

#include <QDir>

namespace data {

namespace {

constexpr int ConnectSeconds = 60;
constexpr int CommandSeconds = 400;

} // namespace

StationDatabase::StationDatabase(const QString& folder)
    : m_folder(QDir::toNativeSeparators(folder))
    , m_settingsPath(m_folder + QDir::separator() + QStringLiteral("ConfigINI.ini"))
{}

void StationDatabase::open(platform::Messages& messages)
{
    m_connectionType = ReadSetting(QStringLiteral("Geral"), QStringLiteral("TipoConexao_BD"), m_settingsPath);
    m_dialect = Dialect(m_connectionType);
    if (m_dialect.isMySql())
        openMySql(messages);
    else
        openAccess();
}

void StationDatabase::openAccess()
{
    m_accessPath = ReadSetting(QStringLiteral("Geral"), QStringLiteral("Caminho"), m_settingsPath);
    m_name = m_accessPath;
    // Seconds that a statement waits for another program at the file; without the setting the provider's own.
    m_dataConnection.setCommandTimeout(
        ReadSetting(QStringLiteral("Geral"), QStringLiteral("EsperaArquivo"), m_settingsPath).toInt());
    m_dataConnection.Open(QStringLiteral("Driver={Microsoft Access Driver (*.mdb)};Dbq=") + m_accessPath +
                              QStringLiteral(";Uid=Admin;Pwd=8282;"),
                          QString(), QString(), ado::adOptionUnspecified);
}

void StationDatabase::openMySql(platform::Messages& messages)
{
    const QString hostsString = QStringLiteral("Provider=Microsoft.Jet.OLEDB.4.0;Data Source=") + m_folder +
                                QDir::separator() + QStringLiteral("Host.mdb") + u';';
    m_hostsConnection.Open(hostsString);

    ado::Recordset hosts;
    hosts.Open(QStringLiteral("Select * from hosts where ativo = 'X';"), hostsString);
    const QString host = hosts.Fields(u"host").text();
    const QString base = hosts.Fields(u"basededados").text();
    const QString user = hosts.Fields(u"usuarioD").text();
    const QString password = hosts.Fields(u"Senha").textOrEmpty(); // Null is an empty one.
    hosts.Close();

    m_name = host + u'/' + base;

    const QString section = QStringLiteral("Conexao");
    WriteSetting(section, QStringLiteral("host"), host, m_settingsPath);
    WriteSetting(section, QStringLiteral("base"), base, m_settingsPath);
    WriteSetting(section, QStringLiteral("usuarioD"), user, m_settingsPath);
    WriteSetting(section, QStringLiteral("Senha"), password, m_settingsPath);

    m_dataConnection.setConnectionTimeout(ConnectSeconds);
    m_dataConnection.setCommandTimeout(CommandSeconds);
    m_dataConnection.setCursorLocation(ado::adUseClient);
    try {
        m_dataConnection.Open(QStringLiteral("DRIVER={MySQL ODBC 3.51 Driver};") + QStringLiteral("user=") + user +
                              QStringLiteral(";password=") + password + QStringLiteral(";database=") + base +
                              QStringLiteral(";server=") + host + QStringLiteral(";option=") + QString::number(18475));
    } catch (const ado::Error& error) {
        platform::noteIgnored(error); // The operator is told that it failed, not why.
        messages.MsgBox(QStringLiteral("Houve erro de conexão, com a base de dados verifique erro(GRT8282)"));
    }
}

void StationDatabase::addStockCodeColumn()
{
    platform::carryOn([this] {
        m_dataConnection.Execute(m_dialect.isMySql()
                                     ? QStringLiteral("alter table cadprodcomb add column codigoEstoque double;")
                                     : QStringLiteral("alter table cadprodcomb add codigoEstoque double;"));
    });
}

void StationDatabase::convertNumberColumns()
{
    if (!m_dialect.isMySql())
        return;
    m_dataConnection.Execute(QStringLiteral("ALTER TABLE leitura CHANGE LeitAnt LeitAnt varchar(50)"));
    m_dataConnection.Execute(QStringLiteral("ALTER TABLE leitura CHANGE LeitAtu LeitAtu varchar(50)"));
    m_dataConnection.Execute(QStringLiteral("ALTER TABLE leitura CHANGE Saldo Saldo varchar(50)"));
    m_dataConnection.Execute(QStringLiteral("ALTER TABLE EstoqueDiversos CHANGE quantidade quantidade varchar(50)"));
}

void StationDatabase::readConfig()
{
    ado::Recordset config;
    config.Open(QStringLiteral("Select * from config "), m_dataConnection);
    m_baixarDoEstoque = config.Fields(u"baixardoestoqueplanilha").textOrEmpty();
    config.Close();
}

} // namespace data
