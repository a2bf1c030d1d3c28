#pragma once

#include "platform/vb/Variant.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <vector>

namespace ado {

enum class FieldType { Long, Double, Currency, Date, Text };

struct Field
{
    QString name;
    FieldType type = FieldType::Text;
};

/// The rows of a result set, all in memory and owned by nobody else. Cells are kept as compact bytes and become
/// values only when they are read: numbers and dates in their binary form, texts as UTF-8.
class RowSet
{
public:
    explicit RowSet(std::vector<Field> fields = {});

    [[nodiscard]] const std::vector<Field>& fields() const { return m_fields; }
    /// Position of a field, upper and lower case alike; -1 when there is none.
    [[nodiscard]] int fieldIndex(QStringView name) const;
    [[nodiscard]] qsizetype rowCount() const;
    [[nodiscard]] vb::Variant value(qsizetype row, int field) const;
    /// UTF-8 of a text cell, valid while the rows live; a null view for Null and for other types.
    [[nodiscard]] QByteArrayView textBytes(qsizetype row, int field) const;

    // Providers append cells left to right, row by row.
    /// Room for that many rows in all; once some rows are there, room for their bytes too, by the average so far.
    void reserveRows(qsizetype rows);
    void appendNull();
    void appendLong(qint64 value);
    void appendDouble(double value);
    void appendCurrency(vb::Currency value);
    void appendDate(vb::Date value);
    void appendText(QByteArrayView utf8);
    /// Cell of that type (or Null); `value` already holds the type's own alternative.
    void append(FieldType type, const vb::Variant& value);
    /// Puts new values, one per field and each of the field's type or Null, in the place of a row's cells.
    void replaceRow(qsizetype row, const std::vector<vb::Variant>& values);
    /// Address of the row just completed, where the back end has one; Session::updateRow gets it back.
    void appendRowKey(quint64 key) { m_rowKeys.push_back(key); }
    /// False where a row is no single row of a table: a total, or a SELECT without table.
    [[nodiscard]] bool hasRowKey(qsizetype row) const { return static_cast<std::size_t>(row) < m_rowKeys.size(); }
    [[nodiscard]] quint64 rowKey(qsizetype row) const { return m_rowKeys.at(static_cast<std::size_t>(row)); }
    /// State of the source when the rows were read, where the back end has one.
    void setSourceState(quint64 state) { m_sourceState = state; }
    [[nodiscard]] quint64 sourceState() const { return m_sourceState; }
    /// Whether the row of that address has the same cells in `later`, a later run of the same SELECT. Numbers that were
    /// assigned here may have been rounded to a single by their column.
    [[nodiscard]] bool isUnchanged(qsizetype row, const RowSet& later) const;

private:
    void appendBytes(const char* bytes, std::size_t length);

    std::vector<Field> m_fields;
    std::vector<quint32> m_ends;
    std::vector<char> m_bytes;
    std::vector<quint64> m_rowKeys;
    std::vector<qsizetype> m_replaced; ///< Rows with assigned cells.
    quint64 m_sourceState = 0;
};

} // namespace ado
