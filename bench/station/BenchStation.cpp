#include "station/BenchStation.h"

#include "platform/vb/Date.h"
#include "platform/vb/Format.h"
#include "station/BulkRows.h"
#include "support/BothBackEnds.h"
#include "support/MariaDbServer.h"
#include "support/StationSchema.h"

#include <QFile>

#include <stdexcept>

namespace bench {

namespace {

using accessfile::DateTime;
using accessfile::Money;
using accessfile::Null;
using accessfile::Value;

constexpr int FirstStockCode = 101;
constexpr int FirstItemCode = 5001;

Value text(const QString& words)
{
    return words.toStdString();
}

Value numberText(double number)
{
    return text(vb::Format(number, u"##,#0.00"));
}

Value date(QDate day)
{
    return DateTime{vb::Date::fromQDate(day).serial};
}

QString tank(int number)
{
    return QStringLiteral("TANQUE_%1").arg(number % BenchStation::Tanks + 1);
}

/// Litres that a pump sells on a day, in hundredths.
int soldCentilitres(int pump, int day)
{
    return 20'000 + (pump * 7919 + day * 104'729) % 90'000;
}

/// A pump's meter at the end of every day, in hundredths of a litre.
class Meters
{
public:
    explicit Meters(int days)
        : m_days(days)
    {
        for (int pump = 0; pump < BenchStation::Pumps; ++pump) {
            qint64 meter = 1'000'000 + pump * 1'357;
            m_ends.push_back(meter);
            for (int day = 0; day < days; ++day)
                m_ends.push_back(meter += soldCentilitres(pump, day));
        }
    }
    /// Litres before the first of the days that are counted from 0.
    [[nodiscard]] double before(int pump, int day) const
    {
        return static_cast<double>(m_ends[static_cast<std::size_t>(pump * (m_days + 1) + day)]) / 100;
    }

private:
    int m_days;
    std::vector<qint64> m_ends;
};

} // namespace

BenchStation::BenchStation(bool isMySql, int days)
    : m_isMySql(isMySql)
    , m_days(days)
{
    makeTables();
    fill();
    support::writeSettings(folder(), m_isMySql, m_database);
}

void BenchStation::makeTables()
{
    support::BothBackEnds database(m_isMySql ? QStringLiteral("mysql") : QStringLiteral("access"));
    support::makeStation(database);
    m_database = database.database();
    m_connectionString = database.connectionString();
    if (m_isMySql)
        return;
    m_database = m_folder.filePath(QStringLiteral("estacao.mdb"));
    m_connectionString.replace(database.database(), m_database);
    if (!QFile::copy(database.database(), m_database))
        throw std::runtime_error("cannot copy the empty station");
}

void BenchStation::fill()
{
    BulkRows bulk(m_isMySql, m_database);
    const auto names = [](const char* list) { return QString::fromLatin1(list).split(u' '); };
    const Meters meters(m_days);

    bulk.add(QStringLiteral("PlanilhaPosto"),
             names("numeroDispositivo Descritivo Leitura DataInsert ProdVinculado tanq"), Pumps, [&](int i) {
                 return BulkRow{i + 1,
                                text(QStringLiteral("Bomba %1 - Gasolina comum").arg(i + 1, 2, 10, QLatin1Char('0'))),
                                text(vb::Format(meters.before(i, m_days), u"0.00")),
                                date(today().addDays(-1)),
                                double(FirstStockCode + i % Products),
                                text(tank(i))};
             });
    bulk.add(QStringLiteral("Leitura"), names("DataLT cdgBomba LeitAnt LeitAtu Saldo Obs tanq afericao"), readings(),
             [&](int i) {
                 const int day = i / Pumps;
                 const int pump = i % Pumps;
                 return BulkRow{date(firstDay().addDays(day)),
                                pump + 1,
                                numberText(meters.before(pump, day)),
                                numberText(meters.before(pump, day + 1)),
                                numberText(soldCentilitres(pump, day) / 100.0),
                                text(QStringLiteral("5,%1").arg(50 + pump % Products)),
                                text(tank(pump)),
                                text(QStringLiteral("0"))};
             });
    bulk.add(QStringLiteral("CadProdComb"), names("Descritivo codprod valor codigoEstoque"), Products, [](int i) {
        return BulkRow{text(QStringLiteral("Combustível %1").arg(i + 1, 2, 10, QLatin1Char('0'))), FirstStockCode + i,
                       5.5 + i * 0.01, double(FirstStockCode + i)};
    });
    bulk.add(QStringLiteral("ControleProdComb"), names("CodProd DataOP descritivo fornecedor NumeroNota cred deb"),
             ledgerRows(), [&](int i) {
                 // One row in three is fuel, by the product's key; the others are miscellaneous items, by their code.
                 const bool fuel = i % 3 == 0;
                 const int product = fuel ? i / 3 % Products + 1 : FirstItemCode + i % Items;
                 const bool credit = i % 7 == 0;
                 const QDate day = firstDay().addDays(static_cast<qint64>(i) * m_days / ledgerRows());
                 return BulkRow{
                     product,
                     date(day),
                     text(fuel ? QStringLiteral("Combustível %1").arg(product, 2, 10, QLatin1Char('0'))
                               : QStringLiteral("Item diverso %1").arg(product)),
                     text(fuel ? QStringLiteral("DISTRIBUIDORA SERRA AZUL LTDA") : QStringLiteral("OperEmpresa")),
                     text(QStringLiteral("NF%1").arg(100'000 + i)),
                     credit ? 5000.0 : 0.0,
                     credit ? 0.0 : 1.0 + i % 90};
             });
    bulk.add(QStringLiteral("Estoque"), names("codigo Discriminacao quantidade valorvenda"), StockItems, [](int i) {
        return BulkRow{
            FirstStockCode + i,
            text(QStringLiteral("Produto %1 do estoque geral").arg((i * 7919) % StockItems, 5, 10, QLatin1Char('0'))),
            Money{qint64(1'000'000'000) + i}, Money{55'000 + i}};
    });
    bulk.add(QStringLiteral("EstoqueDiversos"), names("codigo discriminacao quantidade"), Items, [](int i) {
        return BulkRow{FirstItemCode + i, text(QStringLiteral("Item diverso %1").arg(FirstItemCode + i)),
                       numberText(1000 + i)};
    });
    bulk.add(QStringLiteral("Fornece"), names("razao"), 60, [](int i) {
        return BulkRow{text(QStringLiteral("Fornecedora %1 Ltda").arg(i + 1, 2, 10, QLatin1Char('0')))};
    });
    bulk.add(QStringLiteral("tabafer"), names("tanque dataf cmt saldo"), m_days * Tanks, [&](int i) {
        return BulkRow{text(tank(i)), date(firstDay().addDays(i / Tanks)), double(i % GaugeLines), 25.0 * (i % 400)};
    });
    for (int number = 1; number <= Tanks; ++number) {
        bulk.add(tank(number - 1), names("cdI cmA ltsA"), GaugeLines, [](int i) {
            return BulkRow{i + 1, double(i), text(QString::number(i * 37))};
        });
    }
    bulk.add(QStringLiteral("ExcluidosLeituraBomba"), names("produto DataE leitura total"), m_days / 7 + 1, [&](int i) {
        const QDate day = firstDay().addDays(i * 7);
        return BulkRow{text(QStringLiteral("Bomba %1 - Gasolina comum").arg(i % Pumps + 1)),
                       m_isMySql ? text(vb::shortDate(day)) : date(day), numberText(100 + i),
                       text(QStringLiteral("5,50"))};
    });
}

} // namespace bench
