#include "station/BulkRows.h"

#include "accessfile/Storage.h"
#include "support/MariaDbServer.h"

#include <QDate>

#include <stdexcept>

namespace bench {

namespace {

constexpr int RowsPerStatement = 2000;

QString literal(const accessfile::Value& value)
{
    if (accessfile::isNull(value))
        return QStringLiteral("NULL");
    if (const auto* integer = std::get_if<std::int32_t>(&value))
        return QString::number(*integer);
    if (const auto* number = std::get_if<double>(&value))
        return QString::number(*number, 'g', 17);
    if (const auto* money = std::get_if<accessfile::Money>(&value))
        return QString::number(static_cast<double>(money->scaled) / 10'000, 'f', 4);
    if (const auto* date = std::get_if<accessfile::DateTime>(&value))
        return QDate(1899, 12, 30)
            .addDays(static_cast<qint64>(date->serial))
            .toString(QStringLiteral("''yyyy-MM-dd''"));
    return u'\'' + QString::fromStdString(std::get<std::string>(value)).replace(u'\'', QStringLiteral("''")) + u'\'';
}

} // namespace

BulkRows::BulkRows(bool isMySql, QString database)
    : m_isMySql(isMySql)
    , m_database(std::move(database))
{}

void BulkRows::add(const QString& table, const QStringList& columns, int count, const std::function<BulkRow(int)>& row)
{
    m_isMySql ? addToServer(table, columns, count, row) : addToFile(table, columns, count, row);
}

void BulkRows::addToFile(const QString& table, const QStringList& columns, int count,
                         const std::function<BulkRow(int)>& row) const
{
    accessfile::OpenOptions options;
    options.password = "8282";
    const auto storage = accessfile::Storage::open(m_database.toStdString(), options);
    accessfile::Table* const rows = storage->table(table.toStdString());
    std::vector<std::size_t> places;
    for (const QString& column : columns) {
        const int place = rows ? rows->columnIndex(column.toStdString()) : -1;
        if (place < 0)
            throw std::runtime_error("no column " + (table + u'.' + column).toStdString());
        places.push_back(static_cast<std::size_t>(place));
    }
    storage->beginStatement();
    for (int i = 0; i < count; ++i) {
        const BulkRow cells = row(i);
        std::vector<std::optional<accessfile::Value>> values(rows->columns().size());
        for (std::size_t cell = 0; cell < cells.size(); ++cell)
            values[places[cell]] = cells[cell];
        rows->insert(values);
    }
    storage->commitStatement();
}

void BulkRows::addToServer(const QString& table, const QStringList& columns, int count,
                           const std::function<BulkRow(int)>& row) const
{
    QString script = QStringLiteral("start transaction;\n");
    for (int i = 0; i < count; ++i) {
        script += i % RowsPerStatement == 0
                      ? QStringLiteral("insert into %1 (%2) values (").arg(table, columns.join(u','))
                      : QStringLiteral("(");
        QStringList cells;
        for (const accessfile::Value& cell : row(i))
            cells << literal(cell);
        script += cells.join(u',');
        script += (i + 1) % RowsPerStatement == 0 || i + 1 == count ? QStringLiteral(");\n") : QStringLiteral("),");
    }
    support::MariaDbServer::shared().run(
        script + QStringLiteral("commit; analyze no_write_to_binlog table %1;").arg(table), m_database);
}

} // namespace bench
