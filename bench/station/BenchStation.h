#pragma once

#include <QDate>
#include <QString>

#include <QTemporaryDir>

namespace bench {

/// A station of a given age in a database of its own, filled in bulk: 40 pumps that were closed every day, a ledger of
/// about 33 rows a day, 20,000 items of general stock, 40 miscellaneous items, five gauge tables of 400 lines. The same
/// days give the same rows on both back ends.
class BenchStation
{
public:
    static constexpr int Pumps = 40;
    static constexpr int Products = 12;
    static constexpr int Items = 40;
    static constexpr int StockItems = 20'000;
    static constexpr int Tanks = 5;
    static constexpr int GaugeLines = 400;
    /// Days of ten years: 146,000 readings.
    static constexpr int TenYears = 3650;

    BenchStation(bool isMySql, int days);

    [[nodiscard]] bool isMySql() const { return m_isMySql; }
    [[nodiscard]] int days() const { return m_days; }
    [[nodiscard]] int readings() const { return m_days * Pumps; }
    [[nodiscard]] int ledgerRows() const { return m_days * 120'000 / TenYears; }
    /// The day after the last closed one.
    [[nodiscard]] static QDate today() { return QDate(2026, 3, 16); }
    [[nodiscard]] QDate firstDay() const { return today().addDays(-m_days); }
    /// Stands for the program's own folder: the settings lie in it.
    [[nodiscard]] QString folder() const { return m_folder.path(); }
    [[nodiscard]] const QString& connectionString() const { return m_connectionString; }

private:
    void makeTables();
    void fill();

    bool m_isMySql;
    int m_days;
    QTemporaryDir m_folder;
    QString m_database;
    QString m_connectionString;
};

} // namespace bench
