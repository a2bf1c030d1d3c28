#include "platform/ado/OdbcRows.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstring>
#include <optional>
#include <string>
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

/// Serial of a day and a fraction; none for a day that does not exist, 0000-00-00 included.
std::optional<vb::Date> serialOf(int year, int month, int day, double fraction)
{
    using namespace std::chrono;
    const year_month_day date(std::chrono::year{year}, std::chrono::month{static_cast<unsigned>(month)},
                              std::chrono::day{static_cast<unsigned>(day)});
    if (!date.ok()) {
        return std::nullopt;
    }
    constexpr sys_days Zero = std::chrono::year{1899} / 12 / 30;
    const auto days = static_cast<double>((sys_days(date) - Zero).count());
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

void appendDate(RowSet& rows, const std::optional<vb::Date>& date)
{
    date ? rows.appendDate(*date) : rows.appendNull();
}

template <typename Value>
Value valueIn(std::string_view cell)
{
    Value value{};
    std::memcpy(&value, cell.data(), sizeof value);
    return value;
}

/// A cell that the driver handed over as characters.
void appendCharacters(RowSet& rows, const ResultColumn& column, std::string_view text)
{
    switch (column.field.type) {
    case FieldType::Long: { // Bits alone.
        const bool isTrue = !text.empty() && text.front() != '0' && text.front() != '\0';
        rows.appendLong(isTrue ? -1 : 0);
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
    case FieldType::Date: { // Times of day alone.
        const bool isNegative = takeCharacter(text, '-');
        const auto time = timeOfDay(text);
        appendDate(rows, time ? std::optional(vb::Date{isNegative ? -*time : *time}) : std::nullopt);
        break;
    }
    case FieldType::Text:
        rows.appendText(QByteArrayView(text.data(), static_cast<qsizetype>(text.size())));
        break;
    }
}

void appendCell(RowSet& rows, const ResultColumn& column, SQLSMALLINT cType, std::string_view cell)
{
    switch (cType) {
    case SQL_C_SBIGINT:
        rows.appendLong(valueIn<SQLBIGINT>(cell));
        break;
    case SQL_C_SLONG:
        rows.appendLong(valueIn<SQLINTEGER>(cell));
        break;
    case SQL_C_WCHAR: {
        QString text(static_cast<qsizetype>(cell.size() / sizeof(char16_t)), Qt::Uninitialized);
        std::memcpy(text.data(), cell.data(), static_cast<std::size_t>(text.size()) * sizeof(char16_t));
        rows.appendText(text.toUtf8());
        break;
    }
    case SQL_C_DOUBLE:
        rows.appendDouble(valueIn<SQLDOUBLE>(cell));
        break;
    case SQL_C_TYPE_TIMESTAMP: {
        const auto moment = valueIn<SQL_TIMESTAMP_STRUCT>(cell);
        const double seconds =
            moment.hour * 3600.0 + moment.minute * 60.0 + moment.second + static_cast<double>(moment.fraction) / 1e9;
        appendDate(rows, serialOf(moment.year, moment.month, moment.day, seconds / 86400.0));
        break;
    }
    default:
        appendCharacters(rows, column, cell);
    }
}

/// Narrow texts are UTF-8 on Linux, where they cost a fraction of wide ones, and of the system's code page on Windows.
#ifdef Q_OS_WIN
constexpr SQLSMALLINT TextType = SQL_C_WCHAR;
#else
constexpr SQLSMALLINT TextType = SQL_C_CHAR;
#endif

SQLLEN closingZero(SQLSMALLINT cType)
{
    return cType == SQL_C_WCHAR ? sizeof(SQLWCHAR) : cType == SQL_C_CHAR ? 1 : 0;
}

/// How a column is asked of the driver: numbers and dates in their own form, which spares both sides a text; where
/// that would lose something (single precision, decimals, times beyond a day), and for texts, as characters.
SQLSMALLINT cTypeOf(const ResultColumn& column)
{
    switch (column.field.type) {
    case FieldType::Long:
        if (column.sqlType == SQL_BIT)
            return SQL_C_CHAR;
        // Access drivers know no integer of 64 bits.
        return column.sqlType == SQL_BIGINT || (column.sqlType == SQL_INTEGER && column.isUnsigned) ? SQL_C_SBIGINT
                                                                                                    : SQL_C_SLONG;
    case FieldType::Double:
        return column.sqlType == SQL_DOUBLE ? SQL_C_DOUBLE : SQL_C_CHAR;
    case FieldType::Currency:
        return SQL_C_CHAR;
    case FieldType::Date:
        return column.sqlType == SQL_TYPE_TIME || column.sqlType == SQL_TIME ? SQL_C_CHAR : SQL_C_TYPE_TIMESTAMP;
    case FieldType::Text:
        break;
    }
    const bool isBinary =
        column.sqlType == SQL_BINARY || column.sqlType == SQL_VARBINARY || column.sqlType == SQL_LONGVARBINARY;
    return isBinary ? SQL_C_BINARY : TextType;
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
    bound.cType = cTypeOf(column);
    constexpr SQLULEN BytesPerCharacter = 4;
    if (bound.cType == SQL_C_SBIGINT) {
        bound.width = sizeof(SQLBIGINT);
    } else if (bound.cType == SQL_C_SLONG) {
        bound.width = sizeof(SQLINTEGER);
    } else if (bound.cType == SQL_C_DOUBLE) {
        bound.width = sizeof(SQLDOUBLE);
    } else if (bound.cType == SQL_C_TYPE_TIMESTAMP) {
        bound.width = sizeof(SQL_TIMESTAMP_STRUCT);
    } else if (column.field.type != FieldType::Text) {
        bound.width = static_cast<SQLLEN>(std::min<SQLULEN>(column.size, 256)) + 32; // Sign, point, exponent.
    } else if (column.size == 0 || column.size > static_cast<SQLULEN>(LongestBound) / BytesPerCharacter) {
        bound.isBound = false;
    } else {
        bound.width = static_cast<SQLLEN>(column.size * BytesPerCharacter) + closingZero(bound.cType);
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
        const SQLLEN room = static_cast<SQLLEN>(piece.size()) - closingZero(cType);
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
        column.isUnsigned = isUnsigned == SQL_TRUE;
        column.field.name = QString::fromUtf16(reinterpret_cast<const char16_t*>(name.data()));
        column.field.type = fieldType(column.sqlType, column.size, scale, column.isUnsigned);
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
                    cell ? appendCell(rows, columns[i], buffer.cType, *cell) : rows.appendNull();
                } else if (buffer.lengths[row] == SQL_NULL_DATA) {
                    rows.appendNull();
                } else {
                    const char* cell = buffer.cells.data() + static_cast<std::size_t>(buffer.width) * row;
                    const auto length =
                        static_cast<std::size_t>(std::clamp<SQLLEN>(buffer.lengths[row], 0, buffer.width));
                    appendCell(rows, columns[i], buffer.cType, std::string_view(cell, length));
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
