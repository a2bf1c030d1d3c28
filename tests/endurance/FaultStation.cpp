#include "FaultStation.h"

#include "accessfile/Storage.h"
#include "support/BothBackEnds.h"
#include "support/Inserts.h"
#include "support/MariaDbServer.h"
#include "support/StationSchema.h"

#include <QDir>
#include <QFile>

#include <stdexcept>

using namespace Qt::StringLiterals;

namespace endurance {

namespace {

struct Contents
{
    QString table;
    QString columns;
    QStringList rows;
};

const QList<Contents>& tables()
{
    static const QList<Contents> all{
        {u"PlanilhaPosto"_s,
         u"numeroDispositivo,Descritivo,Leitura,DataInsert,ProdVinculado,tanq"_s,
         {u"1, 'GASOLINA A', '1000,5', @2024-03-14@, 101, 'TANQUE_1'"_s,
          u"2, 'GASOLINA B', '12345,67', @2024-03-14@, 101, 'TANQUE_1'"_s}},
        {u"Leitura"_s,
         u"DataLT,cdgBomba,LeitAnt,LeitAtu,Saldo,Obs,tanq,afericao"_s,
         {u"@2024-03-15@, 1, '900,00', '1.000,50', '100,50', '5,50', 'TANQUE_1', '0'"_s,
          u"@2024-03-15@, 2, '12.000,00', '12.345,67', '345,67', '5,50', 'TANQUE_1', '0'"_s,
          u"@2024-03-13@, 2, '11.000,00', '12.000,00', '1.000,00', '5,50', 'TANQUE_1', '0'"_s}},
        {u"ExcluidosLeituraBomba"_s, u"produto,DataE,leitura,total"_s, {}},
        {u"CadProdComb"_s,
         u"Descritivo,codprod,valor,codigoEstoque"_s,
         {u"'Gasolina', 101, 5.499, 101"_s, u"'Etanol', 102, 3.5, 102"_s}},
        {u"ControleProdComb"_s, u"CodProd,DataOP,descritivo,fornecedor,NumeroNota,cred,deb"_s, {}},
        {u"Estoque"_s,
         u"codigo,Discriminacao,quantidade,valorvenda"_s,
         {u"101, 'Gasolina comum', 10000.5, 5.5"_s, u"102, 'Etanol', 3000, 3.5"_s}},
        {u"EstoqueDiversos"_s,
         u"codigo,discriminacao,quantidade"_s,
         {u"21, 'Oleo 1 L', '10,00'"_s, u"20, 'Aditivo', '5,00'"_s}},
        {u"tabafer"_s, u"tanque,dataf,cmt,saldo"_s, {u"'TANQUE_1', @2024-03-15@, 10, 370"_s}},
        {u"TANQUE_1"_s, u"cdI,cmA,ltsA"_s, {u"1, 1, '37'"_s, u"2, 2, '74'"_s}},
    };
    return all;
}

} // namespace

FaultStation::FaultStation(bool isMySql)
    : m_isMySql(isMySql)
    , m_template(m_folder.filePath(u"modelo"_s))
{
    support::BothBackEnds database(m_isMySql ? u"mysql"_s : u"access"_s);
    support::makeStation(database);
    for (const auto& [table, columns, rows] : tables()) {
        const QStringList inserts = support::inserts(m_isMySql, table, columns, rows);
        database.script(inserts);
        // With the keys counted from 1 again: the ledger keeps those of the products.
        m_restoring << u"TRUNCATE "_s + table << inserts;
    }
    m_database = m_isMySql ? database.database() : m_folder.filePath(u"estacao.mdb"_s);
    if (!m_isMySql && !QFile::copy(database.database(), m_template))
        throw std::runtime_error("cannot copy the station");
    support::writeSettings(folder(), m_isMySql, m_database);
}

void FaultStation::forgetLines() const
{
    const QDir folder(m_folder.path());
    for (const QString& name : folder.entryList({u"lancamento-*"_s}))
        QFile::remove(folder.filePath(name));
}

void FaultStation::restore() const
{
    forgetLines();
    if (m_isMySql) {
        support::MariaDbServer::shared().run(m_restoring.join(u";\n"_s) + u';', m_database);
        return;
    }
    QFile::remove(m_database);
    if (!QFile::copy(m_template, m_database))
        throw std::runtime_error("cannot copy the station");
}

QStringList FaultStation::contents() const
{
    QStringList lines;
    for (const auto& [table, columns, unused] : tables()) {
        const QList<QStringList> rows =
            m_isMySql ? support::MariaDbServer::shared().run(u"SELECT %1 FROM %2"_s.arg(columns, table), m_database)
                      : support::readAccessTable(m_database, table, columns.split(u','));
        for (const QStringList& row : rows)
            lines << table + u' ' + row.join(u'|');
    }
    lines.sort(); // Rows of a table have no order of their own.
    return lines;
}

QString FaultStation::faults() const
{
    QString text;
    const auto storage = accessfile::Storage::open(m_database.toStdString(), {.password = "8282"});
    for (const std::string& fault : storage->verify().faults)
        text += QString::fromStdString(fault) + u'\n';
    return text;
}

} // namespace endurance
