#include "FaultStation.h"

#include "accessfile/Storage.h"
#include "support/BothBackEnds.h"
#include "support/MariaDbServer.h"
#include "support/StationSchema.h"

#include <QFile>

#include <stdexcept>

namespace endurance {

namespace {

struct Contents
{
    const char* table;
    const char* columns;
    QStringList rows; ///< Values of the columns, as literals; @day@ is a date.
};

const QList<Contents>& tables()
{
    static const QList<Contents> all{
        {"PlanilhaPosto",
         "numeroDispositivo Descritivo Leitura DataInsert ProdVinculado tanq",
         {QStringLiteral("1, 'GASOLINA A', '1000,5', @2024-03-14@, 101, 'TANQUE_1'"),
          QStringLiteral("2, 'GASOLINA B', '12345,67', @2024-03-14@, 101, 'TANQUE_1'")}},
        {"Leitura",
         "DataLT cdgBomba LeitAnt LeitAtu Saldo Obs tanq afericao",
         {QStringLiteral("@2024-03-15@, 1, '900,00', '1.000,50', '100,50', '5,50', 'TANQUE_1', '0'"),
          QStringLiteral("@2024-03-15@, 2, '12.000,00', '12.345,67', '345,67', '5,50', 'TANQUE_1', '0'"),
          QStringLiteral("@2024-03-13@, 2, '11.000,00', '12.000,00', '1.000,00', '5,50', 'TANQUE_1', '0'")}},
        {"ExcluidosLeituraBomba", "produto DataE leitura total", {}},
        {"CadProdComb",
         "Descritivo codprod valor codigoEstoque",
         {QStringLiteral("'Gasolina', 101, 5.499, 101"), QStringLiteral("'Etanol', 102, 3.5, 102")}},
        {"ControleProdComb", "CodProd DataOP descritivo fornecedor NumeroNota cred deb", {}},
        {"Estoque",
         "codigo Discriminacao quantidade valorvenda",
         {QStringLiteral("101, 'Gasolina comum', 10000.5, 5.5"), QStringLiteral("102, 'Etanol', 3000, 3.5")}},
        {"EstoqueDiversos",
         "codigo discriminacao quantidade",
         {QStringLiteral("21, 'Oleo 1 L', '10,00'"), QStringLiteral("20, 'Aditivo', '5,00'")}},
        {"tabafer", "tanque dataf cmt saldo", {QStringLiteral("'TANQUE_1', @2024-03-15@, 10, 370")}},
        {"TANQUE_1", "cdI cmA ltsA", {QStringLiteral("1, 1, '37'"), QStringLiteral("2, 2, '74'")}},
    };
    return all;
}

QStringList insertsInto(const Contents& contents, bool isMySql)
{
    QStringList result;
    for (const QString& row : contents.rows) {
        QString values = row;
        while (values.contains(u'@')) {
            const qsizetype at = values.indexOf(u'@');
            const QString day = values.mid(at + 1, 10);
            const QString literal =
                isMySql ? u'\'' + day + u'\'' : u'#' + day.mid(5, 5).replace(u'-', u'/') + u'/' + day.left(4) + u'#';
            values.replace(at, 12, literal);
        }
        result << QStringLiteral("INSERT INTO %1 (%2) VALUES (%3)")
                      .arg(QString::fromLatin1(contents.table),
                           QString::fromLatin1(contents.columns).replace(u' ', QStringLiteral(", ")), values);
    }
    return result;
}

} // namespace

FaultStation::FaultStation(bool isMySql)
    : m_isMySql(isMySql)
    , m_template(m_folder.filePath(QStringLiteral("modelo")))
{
    support::BothBackEnds database(m_isMySql ? QStringLiteral("mysql") : QStringLiteral("access"));
    support::makeStation(database);
    for (const Contents& contents : tables()) {
        const QStringList inserts = insertsInto(contents, m_isMySql);
        database.script(inserts);
        // With the keys counted from 1 again: the ledger keeps those of the products.
        m_restoring += QStringLiteral("TRUNCATE %1;\n").arg(QString::fromLatin1(contents.table));
        for (const QString& insert : inserts)
            m_restoring += insert + QStringLiteral(";\n");
    }
    m_database = m_isMySql ? database.database() : m_folder.filePath(QStringLiteral("estacao.mdb"));
    if (!m_isMySql && !QFile::copy(database.database(), m_template))
        throw std::runtime_error("cannot copy the station");
    support::writeSettings(folder(), m_isMySql, m_database);
}

void FaultStation::restore() const
{
    if (m_isMySql) {
        support::MariaDbServer::shared().run(m_restoring, m_database);
        return;
    }
    QFile::remove(m_database);
    if (!QFile::copy(m_template, m_database))
        throw std::runtime_error("cannot copy the station");
}

QStringList FaultStation::contents() const
{
    QStringList lines;
    for (const Contents& contents : tables()) {
        const QString table = QString::fromLatin1(contents.table);
        const QStringList columns = QString::fromLatin1(contents.columns).split(u' ');
        const QList<QStringList> rows =
            m_isMySql ? support::MariaDbServer::shared().run(
                            QStringLiteral("SELECT %1 FROM %2").arg(columns.join(u','), table), m_database)
                      : support::readAccessTable(m_database, table, columns);
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
    for (const std::string& fault : storage->verify())
        text += QString::fromStdString(fault) + u'\n';
    return text;
}

} // namespace endurance
