// AddNew and Update of the ODBC provider: the row changes that become generated statements.
#include "platform/ado/Assignment.h"
#include "platform/ado/OdbcSession.h"

#include <QMap>

#include <algorithm>
#include <array>

namespace ado::odbc {

namespace {

const ResultColumn* columnNamed(const std::vector<ResultColumn>& columns, QStringView name)
{
    const auto found = std::find_if(columns.begin(), columns.end(), [name](const ResultColumn& column) {
        return name.compare(column.field.name, Qt::CaseInsensitive) == 0;
    });
    return found == columns.end() ? nullptr : &*found;
}

std::vector<FieldValue> converted(const std::vector<ResultColumn>& columns, const std::vector<FieldValue>& values)
{
    std::vector<FieldValue> result;
    for (const FieldValue& value : values) {
        const ResultColumn* column = columnNamed(columns, value.name);
        if (!column) {
            throw unknownField(value.name);
        }
        vb::Variant fitting = assigned(column->field, value.value);
        if (column->sqlType == SQL_BIT && !fitting.isNull()) { // True is -1 here and 1 at the source.
            fitting = vb::Variant(fitting == vb::Variant(0) ? 0 : 1);
        }
        result.push_back({column->field.name, std::move(fitting)});
    }
    return result;
}

QStringList requireTable(const QString& select)
{
    QStringList table = tableOf(select);
    if (table.isEmpty()) {
        throw Error(3251, QStringLiteral("O comando não lê uma tabela que possa ser alterada."), select);
    }
    return table;
}

bool holdAll(const std::vector<ResultColumn>& columns, const QStringList& names)
{
    return !names.isEmpty() && std::all_of(names.begin(), names.end(), [&columns](const QString& name) {
        return columnNamed(columns, name) != nullptr;
    });
}

/// Texts of one column of a catalogue's answer.
QString catalogText(const RowSet& rows, qsizetype row, int column)
{
    return rows.value(row, column).textOrEmpty();
}

} // namespace

OdbcSession::Description OdbcSession::describe(const QString& select) const
{
    const Statement statement = makeStatement();
    if (!SQL_SUCCEEDED(SQLPrepareW(statement.get(), wide(select), static_cast<SQLINTEGER>(select.size())))) {
        throw failureOf(statement, select);
    }
    Description description;
    description.columns = describeColumns(statement, select);
    std::array<SQLWCHAR, 256> name{};
    SQLSMALLINT length = 0;
    if (SQL_SUCCEEDED(SQLColAttributeW(statement.get(), 1, SQL_DESC_BASE_TABLE_NAME, name.data(),
                                       static_cast<SQLSMALLINT>(name.size() * sizeof(SQLWCHAR)), &length, nullptr))) {
        description.storedTable = QString::fromUtf16(reinterpret_cast<const char16_t*>(name.data()));
    }
    return description;
}

QStringList OdbcSession::keyColumns(const QStringList& table, const Description& description) const
{
    const auto& columns = description.columns;
    // The catalogue knows a table by its stored name alone, whatever case the statement writes.
    const QString name = description.storedTable.isEmpty() ? table.last() : description.storedTable;
    const QString database = table.size() > 1 ? table.first() : QString();
    SQLWCHAR* const catalog = database.isEmpty() ? nullptr : wide(database);
    const auto catalogLength = static_cast<SQLSMALLINT>(database.size());
    const auto nameLength = static_cast<SQLSMALLINT>(name.size());

    QStringList primary;
    const Statement keys = makeStatement();
    if (SQL_SUCCEEDED(SQLPrimaryKeysW(keys.get(), catalog, catalogLength, nullptr, 0, wide(name), nameLength))) {
        constexpr int ColumnName = 3;
        const RowSet rows = fetchRows(keys, name);
        for (qsizetype row = 0; row < rows.rowCount(); ++row) {
            primary << catalogText(rows, row, ColumnName);
        }
    }
    if (holdAll(columns, primary)) {
        return primary;
    }

    QMap<QString, QStringList> uniqueKeys;
    const Statement statistics = makeStatement();
    if (SQL_SUCCEEDED(SQLStatisticsW(statistics.get(), catalog, catalogLength, nullptr, 0, wide(name), nameLength,
                                     SQL_INDEX_UNIQUE, SQL_QUICK))) {
        constexpr int IndexName = 5;
        constexpr int ColumnName = 8;
        const RowSet rows = fetchRows(statistics, name);
        for (qsizetype row = 0; row < rows.rowCount(); ++row) {
            if (const QString index = catalogText(rows, row, IndexName); !index.isEmpty()) {
                uniqueKeys[index] << catalogText(rows, row, ColumnName);
            }
        }
    }
    for (const QStringList& key : std::as_const(uniqueKeys)) {
        if (holdAll(columns, key)) {
            return key;
        }
    }
    return {};
}

void OdbcSession::prepareToAdd(const QString& select)
{
    (void)requireTable(select);
    (void)describe(select);
}

void OdbcSession::addRow(const QString& select, const std::vector<FieldValue>& values)
{
    const QStringList table = requireTable(select);
    execute(insertStatement(m_dialect, table, converted(describe(select).columns, values)));
}

void OdbcSession::updateRow(const QString& select, const RowSet& rows, qsizetype row,
                            const std::vector<FieldValue>& changes)
{
    const QStringList table = requireTable(select);
    const Description description = describe(select);
    const auto& columns = description.columns;
    const auto condition = [&](const ResultColumn& column) {
        return sameValue(m_dialect, column, rows.value(row, rows.fieldIndex(column.field.name)));
    };

    const QStringList key = keyColumns(table, description);
    const bool isKeyed = !key.isEmpty() && std::none_of(key.begin(), key.end(), [&](const QString& name) {
        return rows.value(row, rows.fieldIndex(name)).isNull(); // A unique key may hold Null more than once.
    });
    // Somebody else may have changed what is about to be overwritten.
    const auto isCompared = [&](const ResultColumn& column) {
        const auto isNamed = [&](const QString& name) {
            return name.compare(column.field.name, Qt::CaseInsensitive) == 0;
        };
        return !isKeyed || std::any_of(key.begin(), key.end(), isNamed) ||
               std::any_of(changes.begin(), changes.end(),
                           [&](const FieldValue& change) { return isNamed(change.name); });
    };
    QStringList conditions;
    for (const ResultColumn& column : columns) {
        if (isCompared(column)) {
            conditions << condition(column);
        }
    }
    conditions.removeAll(QString());

    const QString text = updateStatement(m_dialect, table, converted(columns, changes), conditions, !isKeyed);
    const Statement statement = run(text);
    SQLLEN changed = 0;
    if (SQL_SUCCEEDED(SQLRowCount(statement.get(), &changed)) && changed == 0) {
        throw Error(Error::Conflict,
                    QStringLiteral("A linha não pode ser localizada para atualização. Alguns valores podem ter sido "
                                   "alterados desde a última leitura."),
                    text);
    }
}

} // namespace ado::odbc
