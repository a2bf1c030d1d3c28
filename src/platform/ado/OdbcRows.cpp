#include "platform/ado/OdbcRows.h"

#include <QDate>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <optional>
#include <string_view>

namespace ado::odbc {

namespace {

constexpr SQLULEN RowsPerFetch = 256;
constexpr SQLLEN BlockBytes = 1024 * 1024; ///< Bound buffers of one statement stay near this size.
constexpr SQLLEN LongestBound = 32 * 1024; ///< Columns that may be longer are fetched in pieces.

FieldType fieldType(SQLSMALLINT sqlType, SQLULEN precision, SQLSMALLINT scale, bool isUnsigned)
{
    switch (sqlType) {
    case SQL_BIT:
    case SQL_TINYINT:
    case SQL_SMALLINT:
    case SQL_INTEGER:
        return FieldType::Long;
    case SQL_BIGINT:
        return isUnsigned ? FieldType::Double : FieldType::Long;
    case SQL_REAL:
    case SQL_FLOAT:
    case SQL_DOUBLE:
        return FieldType::Double;
    case SQL_DECIMAL:
    case SQL_NUMERIC: { // Currency where every value of the column fits.
        constexpr int WholeDigits = 14;
        return scale <= 4 && static_cast<int>(precision) - scale <= WholeDigits ? FieldType::Currency
                                                                                : FieldType::Double;
    }
    case SQL_TYPE_DATE:
    case SQL_TYPE_TIME:
    case SQL_TYPE_TIMESTAMP:
    case SQL_DATE:
    case SQL_TIME:
    case SQL_TIMESTAMP:
        return FieldType::Date;
    default:
        return FieldType::Text;
    }
}

bool isBinary(SQLSMALLINT sqlType)
{
    return sqlType == SQL_BINARY || sqlType == SQL_VARBINARY || sqlType == SQL_LONGVARBINARY;
}

/// Number at the front of the text, which is moved past it.
std::optional<int> takeNumber(std::string_view& text)
{
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc()) {
        return std::nullopt;
    }
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return number;
}

bool takeCharacter(std::string_view& text, char expected)
{
    if (text.empty() || text.front() != expected) {
        return false;
    }
    text.remove_prefix(1);
    return true;
}

/// Fraction of a day of "hh:mm:ss[.f]"; hours may pass 24.
std::optional<double> timeOfDay(std::string_view text)
{
    const auto hours = takeNumber(text);
    if (!hours || !takeCharacter(text, ':')) {
        return std::nullopt;
    }
    const auto minutes = takeNumber(text);
    if (!minutes || !takeCharacter(text, ':')) {
        return std::nullopt;
    }
    double seconds = 0;
    std::from_chars(text.data(), text.data() + text.size(), seconds);
    return (*hours * 3600.0 + *minutes * 60.0 + seconds) / 86400.0;
}

/// Serial of "yyyy-mm-dd", "yyyy-mm-dd hh:mm:ss" or "[-]hh:mm:ss"; none for a date that does not exist, 0000-00-00
/// included.
std::optional<vb::Date> parseDate(std::string_view text)
{
    if (text.size() < 5 || text[4] != '-') {
        const bool isNegative = takeCharacter(text, '-');
        const auto time = timeOfDay(text);
        return time ? std::optional(vb::Date{isNegative ? -*time : *time}) : std::nullopt;
    }
    const auto year = takeNumber(text);
    takeCharacter(text, '-');
    const auto month = takeNumber(text);
    takeCharacter(text, '-');
    const auto day = takeNumber(text);
    if (!year || !month || !day) {
        return std::nullopt;
    }
    const QDate date(*year, *month, *day);
    if (!date.isValid()) {
        return std::nullopt;
    }
    const auto days = static_cast<double>(QDate(1899, 12, 30).daysTo(date));
    double fraction = 0;
    if (takeCharacter(text, ' ')) {
        fraction = timeOfDay(text).value_or(0);
    }
    return vb::Date{days < 0 ? days - fraction : days + fraction};
}

/// Ten-thousandths of a plain decimal text of at most four decimals that fits.
qint64 parseScaled(std::string_view text)
{
    const bool isNegative = takeCharacter(text, '-');
    qint64 scaled = 0;
    int decimals = -1;
    for (const char character : text) {
        if (character == '.') {
            decimals = 0;
        } else if (character >= '0' && character <= '9' && decimals < 4) {
            scaled = scaled * 10 + (character - '0');
            decimals += decimals >= 0 ? 1 : 0;
        }
    }
    for (decimals = std::max(decimals, 0); decimals < 4; ++decimals) {
        scaled *= 10;
    }
    return isNegative ? -scaled : scaled;
}

void appendCell(RowSet& rows, const ResultColumn& column, std::string_view text)
{
    switch (column.field.type) {
    case FieldType::Long: {
        qint64 number = 0;
        if (column.sqlType == SQL_BIT) {
            number = !text.empty() && text.front() != '0' && text.front() != '\0' ? -1 : 0;
        } else {
            std::from_chars(text.data(), text.data() + text.size(), number);
        }
        rows.appendLong(number);
        break;
    }
    case FieldType::Double: {
        double number = 0;
        std::from_chars(text.data(), text.data() + text.size(), number);
        rows.appendDouble(number);
        break;
    }
    case FieldType::Currency:
        rows.appendCurrency(vb::Currency::fromScaled(parseScaled(text)));
        break;
    case FieldType::Date:
        if (const auto date = parseDate(text)) {
            rows.appendDate(*date);
        } else {
            rows.appendNull();
        }
        break;
    case FieldType::Text:
        rows.appendText(QByteArrayView(text.data(), static_cast<qsizetype>(text.size())));
        break;
    }
}

/// Buffers of one column for a whole block of rows.
struct BoundColumn
{
    SQLSMALLINT cType = SQL_C_CHAR;
    SQLLEN width = 0;
    bool isBound = true;
    std::vector<char> cells;
    std::vector<SQLLEN> lengths;
};

BoundColumn planColumn(const ResultColumn& column)
{
    BoundColumn bound;
    if (column.field.type != FieldType::Text) {
        bound.width = static_cast<SQLLEN>(std::min<SQLULEN>(column.size, 256)) + 32; // Sign, point, exponent.
        return bound;
    }
    if (isBinary(column.sqlType)) {
        bound.cType = SQL_C_BINARY;
    }
    constexpr SQLULEN BytesPerCharacter = 4;
    if (column.size == 0 || column.size > static_cast<SQLULEN>(LongestBound) / BytesPerCharacter) {
        bound.isBound = false;
    } else {
        bound.width = static_cast<SQLLEN>(column.size * BytesPerCharacter + 1);
    }
    return bound;
}

/// A cell of any length, in pieces.
std::optional<std::string> longCell(const Statement& statement, SQLUSMALLINT number, SQLSMALLINT cType,
                                    const QString& text)
{
    std::string value;
    std::array<char, 16 * 1024> piece{};
    for (;;) {
        SQLLEN length = 0;
        const SQLRETURN result =
            SQLGetData(statement.get(), number, cType, piece.data(), static_cast<SQLLEN>(piece.size()), &length);
        if (result == SQL_NO_DATA) {
            return value;
        }
        if (!SQL_SUCCEEDED(result)) {
            throw diagnosis(SQL_HANDLE_STMT, statement.get(), text);
        }
        if (length == SQL_NULL_DATA) {
            return std::nullopt;
        }
        const auto room = static_cast<SQLLEN>(piece.size()) - (cType == SQL_C_CHAR ? 1 : 0);
        const bool isLast = length != SQL_NO_TOTAL && length <= room;
        value.append(piece.data(), static_cast<std::size_t>(isLast ? length : room));
        if (isLast) {
            return value;
        }
    }
}

void check(SQLRETURN result, const Statement& statement, const QString& text)
{
    if (!SQL_SUCCEEDED(result)) {
        throw diagnosis(SQL_HANDLE_STMT, statement.get(), text);
    }
}

} // namespace

std::vector<ResultColumn> describeColumns(const Statement& statement, const QString& text)
{
    SQLSMALLINT count = 0;
    check(SQLNumResultCols(statement.get(), &count), statement, text);
    std::vector<ResultColumn> columns(static_cast<std::size_t>(count));
    for (SQLUSMALLINT number = 1; number <= static_cast<SQLUSMALLINT>(count); ++number) {
        ResultColumn& column = columns[number - 1U];
        std::array<SQLWCHAR, 256> name{};
        SQLSMALLINT scale = 0;
        SQLSMALLINT nullable = 0;
        check(SQLDescribeColW(statement.get(), number, name.data(), static_cast<SQLSMALLINT>(name.size()), nullptr,
                              &column.sqlType, &column.size, &scale, &nullable),
              statement, text);
        SQLLEN isUnsigned = SQL_FALSE;
        SQLColAttributeW(statement.get(), number, SQL_DESC_UNSIGNED, nullptr, 0, nullptr, &isUnsigned);
        column.field.name = QString::fromUtf16(reinterpret_cast<const char16_t*>(name.data()));
        column.field.type = fieldType(column.sqlType, column.size, scale, isUnsigned == SQL_TRUE);
    }
    return columns;
}

RowSet fetchRows(const Statement& statement, const QString& text)
{
    const auto columns = describeColumns(statement, text);
    std::vector<Field> fields;
    std::vector<BoundColumn> buffers;
    SQLLEN rowBytes = 1;
    bool isBound = true; // Drivers hand out unbound columns only behind the bound ones.
    for (const ResultColumn& column : columns) {
        fields.push_back(column.field);
        BoundColumn buffer = planColumn(column);
        isBound = isBound && buffer.isBound;
        buffer.isBound = isBound;
        rowBytes += isBound ? buffer.width : 0;
        buffers.push_back(std::move(buffer));
    }
    RowSet rows(std::move(fields));
    if (columns.empty()) {
        return rows;
    }

    // One row at a time where some column is fetched in pieces: that reads the current row of a block only.
    const SQLULEN block =
        isBound ? std::clamp<SQLULEN>(static_cast<SQLULEN>(BlockBytes / rowBytes), 1, RowsPerFetch) : 1;
    SQLULEN fetched = 0;
    SQLSetStmtAttrW(statement.get(), SQL_ATTR_ROW_ARRAY_SIZE, asPointer(block), 0);
    SQLSetStmtAttrW(statement.get(), SQL_ATTR_ROWS_FETCHED_PTR, &fetched, 0);
    for (std::size_t i = 0; i < buffers.size() && buffers[i].isBound; ++i) {
        BoundColumn& buffer = buffers[i];
        buffer.cells.resize(static_cast<std::size_t>(buffer.width) * block);
        buffer.lengths.resize(block);
        check(SQLBindCol(statement.get(), static_cast<SQLUSMALLINT>(i + 1), buffer.cType, buffer.cells.data(),
                         buffer.width, buffer.lengths.data()),
              statement, text);
    }
    SQLLEN total = 0;
    const bool isTotalKnown = SQL_SUCCEEDED(SQLRowCount(statement.get(), &total)) && total > 0;

    for (bool isFirst = true;; isFirst = false) {
        const SQLRETURN result = SQLFetch(statement.get());
        if (result == SQL_NO_DATA) {
            break;
        }
        check(result, statement, text);
        for (SQLULEN row = 0; row < fetched; ++row) {
            for (std::size_t i = 0; i < buffers.size(); ++i) {
                const BoundColumn& buffer = buffers[i];
                if (!buffer.isBound) {
                    const auto cell = longCell(statement, static_cast<SQLUSMALLINT>(i + 1), buffer.cType, text);
                    cell ? appendCell(rows, columns[i], *cell) : rows.appendNull();
                } else if (buffer.lengths[row] == SQL_NULL_DATA) {
                    rows.appendNull();
                } else {
                    const char* cell = buffer.cells.data() + static_cast<std::size_t>(buffer.width) * row;
                    const auto length =
                        static_cast<std::size_t>(std::clamp<SQLLEN>(buffer.lengths[row], 0, buffer.width));
                    appendCell(rows, columns[i], std::string_view(cell, length));
                }
            }
        }
        if (isFirst && isTotalKnown) {
            rows.reserveRows(static_cast<qsizetype>(total));
        }
    }
    return rows;
}

} // namespace ado::odbc
