// A stand-in for the system's odbc32.dll with one driver, "Microsoft Access Driver (*.mdb)", for a Wine that has none.
// It hands each statement to the program's own engine and appends it to the file that PLANILHA_ODBC_RECORD names: the
// connection string and every statement, to the letter. Where the real driver is narrow it is so too: no integers of 64
// bits, no primary keys of a table, back quotes around names, dates as {d '...'} and {ts '...'}.
// With PLANILHA_ODBC_REFUSE a connection fails with that text.
#include "platform/ado/Error.h"
#include "platform/ado/Session.h"

#include <QFile>
#include <QRegularExpression>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>

#include <qt_windows.h>
#include <sql.h>
#include <sqlext.h>
#include <sqlucode.h>

#define STANDIN extern "C" __declspec(dllexport) SQLRETURN SQL_API

namespace {

struct Diagnostic
{
    QString state;
    int number = 0;
    QString text;
};

struct Handle
{
    Diagnostic diagnostic;
    virtual ~Handle() = default;

    SQLRETURN fail(const QString& state, int number, const QString& text)
    {
        diagnostic = {state, number, QStringLiteral("[stand-in] ") + text};
        return SQL_ERROR;
    }
};

struct ConnectionHandle : Handle
{
    std::unique_ptr<ado::Session> session;
};

struct BoundColumn
{
    SQLSMALLINT cType = 0;
    char* cells = nullptr;
    SQLLEN width = 0;
    SQLLEN* lengths = nullptr;
};

struct StatementHandle : Handle
{
    ConnectionHandle* connection = nullptr;
    ado::RowSet rows;
    bool hasRows = false;
    qsizetype next = 0;
    SQLULEN block = 1;
    SQLULEN* fetched = nullptr;
    std::array<BoundColumn, 64> bound;
    std::array<qsizetype, 64> taken{}; ///< How much of a cell of the current row SQLGetData has handed out.
};

template <typename Kind>
Kind* as(SQLHANDLE handle)
{
    return dynamic_cast<Kind*>(static_cast<Handle*>(handle));
}

QString textOf(const SQLWCHAR* text, SQLINTEGER length)
{
    const auto* const letters = reinterpret_cast<const char16_t*>(text);
    return length == SQL_NTS ? QString::fromUtf16(letters) : QString::fromUtf16(letters, length);
}

/// At most `room` units with the closing zero; the length without it.
SQLSMALLINT give(const QString& text, SQLWCHAR* buffer, SQLSMALLINT room)
{
    if (buffer && room > 0) {
        const auto count = std::min<qsizetype>(text.size(), room - 1);
        std::memcpy(buffer, text.utf16(), static_cast<std::size_t>(count) * sizeof(SQLWCHAR));
        buffer[count] = 0;
    }
    return static_cast<SQLSMALLINT>(text.size());
}

void record(const char* kind, const QString& text)
{
    QString line = text;
    line.replace(QStringLiteral("\r\n"), QStringLiteral("\\n")).replace(u'\n', QStringLiteral("\\n"));
    QFile file(qEnvironmentVariable("PLANILHA_ODBC_RECORD"));
    if (!file.fileName().isEmpty() && file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered))
        file.write(kind + line.toUtf8() + '\n');
}

/// Whatever goes wrong becomes the handle's diagnostic.
template <typename Work>
SQLRETURN guarded(Handle* handle, Work work)
{
    handle->diagnostic = {};
    try {
        work();
        return SQL_SUCCESS;
    } catch (const ado::Error& error) {
        return handle->fail(QStringLiteral("HY000"), error.number(), error.text());
    }
}

/// What the program makes up for AddNew and Update in the driver's words, in the engine's.
QString inEngineWords(QString statement)
{
    static const QRegularExpression name(QStringLiteral("`([^`']*)`"));
    static const QRegularExpression moment(
        QStringLiteral("\\{(?:d|ts) '(\\d{4})-(\\d\\d)-(\\d\\d)( \\d\\d:\\d\\d:\\d\\d)?'\\}"));
    return statement.replace(name, QStringLiteral("[\\1]")).replace(moment, QStringLiteral("#\\2/\\3/\\1\\4#"));
}

void run(StatementHandle& statement, const QString& text)
{
    const QString words = inEngineWords(text);
    statement.hasRows = words.trimmed().startsWith(QLatin1StringView("select"), Qt::CaseInsensitive);
    statement.rows = ado::RowSet();
    statement.next = 0;
    if (statement.hasRows)
        statement.rows = statement.connection->session->query(words);
    else
        statement.connection->session->execute(words);
}

QByteArray characters(const vb::Variant& value)
{
    if (const auto* money = std::get_if<vb::Currency>(&value.value())) {
        const qint64 scaled = money->scaled();
        return QStringLiteral("%1%2.%3")
            .arg(scaled < 0 ? QStringLiteral("-") : QString())
            .arg(qAbs(scaled) / vb::Currency::Scale)
            .arg(qAbs(scaled) % vb::Currency::Scale, 4, 10, QLatin1Char('0'))
            .toLatin1();
    }
    return value.textOrEmpty().toLatin1();
}

template <typename Value>
QByteArray bytesOf(const Value& value)
{
    return QByteArray(reinterpret_cast<const char*>(&value), sizeof value);
}

/// A cell in the form that was asked for, without a closing zero; false where the driver has no such form.
bool converted(const vb::Variant& value, SQLSMALLINT cType, QByteArray& bytes)
{
    switch (cType) {
    case SQL_C_SLONG:
        bytes = bytesOf(static_cast<SQLINTEGER>(std::get<qint64>(value.value())));
        return true;
    case SQL_C_DOUBLE:
        bytes = bytesOf(std::get<double>(value.value()));
        return true;
    case SQL_C_TYPE_TIMESTAMP: {
        const auto& date = std::get<vb::Date>(value.value());
        SQL_TIMESTAMP_STRUCT moment{};
        moment.year = static_cast<SQLSMALLINT>(date.date().year());
        moment.month = static_cast<SQLUSMALLINT>(date.date().month());
        moment.day = static_cast<SQLUSMALLINT>(date.date().day());
        moment.hour = static_cast<SQLUSMALLINT>(date.time().hour());
        moment.minute = static_cast<SQLUSMALLINT>(date.time().minute());
        moment.second = static_cast<SQLUSMALLINT>(date.time().second());
        bytes = bytesOf(moment);
        return true;
    }
    case SQL_C_CHAR: // the code page's letters
        bytes = characters(value);
        return true;
    case SQL_C_WCHAR: {
        const QString text = value.textOrEmpty();
        bytes = QByteArray(reinterpret_cast<const char*>(text.utf16()), text.size() * qsizetype{sizeof(char16_t)});
        return true;
    }
    default:
        return false;
    }
}

SQLLEN closingZero(SQLSMALLINT cType)
{
    return cType == SQL_C_WCHAR ? 2 : cType == SQL_C_CHAR ? 1 : 0;
}

} // namespace

STANDIN SQLAllocHandle(SQLSMALLINT type, SQLHANDLE parent, SQLHANDLE* handle)
{
    Handle* made = nullptr;
    if (type == SQL_HANDLE_ENV) {
        made = new Handle;
    } else if (type == SQL_HANDLE_DBC) {
        made = new ConnectionHandle;
    } else {
        auto* const statement = new StatementHandle;
        statement->connection = as<ConnectionHandle>(parent);
        made = statement;
    }
    *handle = made;
    return SQL_SUCCESS;
}

STANDIN SQLFreeHandle(SQLSMALLINT, SQLHANDLE handle)
{
    delete static_cast<Handle*>(handle);
    return SQL_SUCCESS;
}

STANDIN SQLSetEnvAttr(SQLHENV, SQLINTEGER, SQLPOINTER, SQLINTEGER)
{
    return SQL_SUCCESS;
}

STANDIN SQLSetConnectAttrW(SQLHDBC, SQLINTEGER, SQLPOINTER, SQLINTEGER)
{
    return SQL_SUCCESS;
}

STANDIN SQLDriversW(SQLHENV, SQLUSMALLINT direction, SQLWCHAR* name, SQLSMALLINT room, SQLSMALLINT*,
                    SQLWCHAR* attributes, SQLSMALLINT attributesRoom, SQLSMALLINT*)
{
    if (direction != SQL_FETCH_FIRST)
        return SQL_NO_DATA;
    give(QStringLiteral("Microsoft Access Driver (*.mdb)"), name, room);
    give(QString(), attributes, attributesRoom);
    return SQL_SUCCESS;
}

STANDIN SQLDriverConnectW(SQLHDBC handle, SQLHWND, SQLWCHAR* string, SQLSMALLINT length, SQLWCHAR*, SQLSMALLINT,
                          SQLSMALLINT*, SQLUSMALLINT)
{
    auto* const connection = as<ConnectionHandle>(handle);
    const QString text = textOf(string, length);
    record("connect ", text);
    if (const QString refusal = qEnvironmentVariable("PLANILHA_ODBC_REFUSE"); !refusal.isEmpty())
        return connection->fail(QStringLiteral("HY000"), -1811, refusal);
    return guarded(connection, [&] { connection->session = ado::openAccessSession({text, {}, {}, 0, 0}); });
}

STANDIN SQLDisconnect(SQLHDBC handle)
{
    as<ConnectionHandle>(handle)->session.reset();
    return SQL_SUCCESS;
}

STANDIN SQLGetInfoW(SQLHDBC, SQLUSMALLINT kind, SQLPOINTER buffer, SQLSMALLINT room, SQLSMALLINT*)
{
    const QString text = kind == SQL_DBMS_NAME               ? QStringLiteral("ACCESS")
                         : kind == SQL_IDENTIFIER_QUOTE_CHAR ? QStringLiteral("`")
                                                             : QString();
    give(text, static_cast<SQLWCHAR*>(buffer), static_cast<SQLSMALLINT>(room / sizeof(SQLWCHAR)));
    return text.isEmpty() ? SQL_ERROR : SQL_SUCCESS;
}

STANDIN SQLGetDiagRecW(SQLSMALLINT, SQLHANDLE handle, SQLSMALLINT number, SQLWCHAR* state, SQLINTEGER* native,
                       SQLWCHAR* text, SQLSMALLINT room, SQLSMALLINT* length)
{
    const Diagnostic& diagnostic = static_cast<Handle*>(handle)->diagnostic;
    if (number != 1 || diagnostic.text.isEmpty())
        return SQL_NO_DATA;
    give(diagnostic.state, state, 6);
    *native = diagnostic.number;
    *length = give(diagnostic.text, text, room);
    return SQL_SUCCESS;
}

STANDIN SQLSetStmtAttrW(SQLHSTMT handle, SQLINTEGER attribute, SQLPOINTER value, SQLINTEGER)
{
    auto* const statement = as<StatementHandle>(handle);
    if (attribute == SQL_ATTR_ROW_ARRAY_SIZE)
        statement->block = reinterpret_cast<SQLULEN>(value);
    else if (attribute == SQL_ATTR_ROWS_FETCHED_PTR)
        statement->fetched = static_cast<SQLULEN*>(value);
    return SQL_SUCCESS;
}

STANDIN SQLExecDirectW(SQLHSTMT handle, SQLWCHAR* text, SQLINTEGER length)
{
    auto* const statement = as<StatementHandle>(handle);
    const QString words = textOf(text, length);
    record("statement ", words);
    return guarded(statement, [&] { run(*statement, words); });
}

STANDIN SQLPrepareW(SQLHSTMT handle, SQLWCHAR* text, SQLINTEGER length)
{
    auto* const statement = as<StatementHandle>(handle);
    const QString words = textOf(text, length);
    record("prepare ", words);
    return guarded(statement, [&] { run(*statement, words); });
}

STANDIN SQLNumResultCols(SQLHSTMT handle, SQLSMALLINT* count)
{
    auto* const statement = as<StatementHandle>(handle);
    *count = statement->hasRows ? static_cast<SQLSMALLINT>(statement->rows.fields().size()) : SQLSMALLINT{0};
    return SQL_SUCCESS;
}

STANDIN SQLDescribeColW(SQLHSTMT handle, SQLUSMALLINT number, SQLWCHAR* name, SQLSMALLINT room, SQLSMALLINT*,
                        SQLSMALLINT* type, SQLULEN* size, SQLSMALLINT* scale, SQLSMALLINT* nullable)
{
    const ado::Field& field = as<StatementHandle>(handle)->rows.fields().at(number - 1U);
    give(field.name, name, room);
    *nullable = SQL_NULLABLE;
    *scale = 0;
    switch (field.type) {
    case ado::FieldType::Long:
        *type = SQL_INTEGER;
        *size = 10;
        break;
    case ado::FieldType::Double:
        *type = SQL_DOUBLE;
        *size = 15;
        break;
    case ado::FieldType::Currency:
        *type = SQL_NUMERIC;
        *size = 18;
        *scale = 4;
        break;
    case ado::FieldType::Date:
        *type = SQL_TYPE_TIMESTAMP;
        *size = 19;
        break;
    case ado::FieldType::Text: // a long one is fetched in pieces
        *type = number % 2 == 0 ? SQL_WLONGVARCHAR : SQL_WVARCHAR;
        *size = number % 2 == 0 ? 1073741823 : 255;
        break;
    }
    return SQL_SUCCESS;
}

STANDIN SQLColAttributeW(SQLHSTMT, SQLUSMALLINT, SQLUSMALLINT, SQLPOINTER, SQLSMALLINT, SQLSMALLINT*, SQLPOINTER)
{
    return SQL_ERROR;
}

STANDIN SQLBindCol(SQLHSTMT handle, SQLUSMALLINT number, SQLSMALLINT cType, SQLPOINTER cells, SQLLEN width,
                   SQLLEN* lengths)
{
    auto* const statement = as<StatementHandle>(handle);
    if (cType == SQL_C_SBIGINT)
        return statement->fail(QStringLiteral("HYC00"), 0, QStringLiteral("Optional feature not implemented"));
    statement->bound.at(number) = {cType, static_cast<char*>(cells), width, lengths};
    return SQL_SUCCESS;
}

STANDIN SQLRowCount(SQLHSTMT, SQLLEN* count)
{
    *count = -1; // as for every result set of the real driver
    return SQL_SUCCESS;
}

STANDIN SQLFetch(SQLHSTMT handle)
{
    auto* const statement = as<StatementHandle>(handle);
    statement->taken.fill(0);
    SQLULEN row = 0;
    for (; row < statement->block && statement->next < statement->rows.rowCount(); ++row, ++statement->next) {
        for (std::size_t i = 0; i < statement->rows.fields().size(); ++i) {
            const BoundColumn& column = statement->bound.at(i + 1);
            if (!column.cells)
                continue;
            const vb::Variant value = statement->rows.value(statement->next, static_cast<int>(i));
            QByteArray bytes;
            if (value.isNull()) {
                column.lengths[row] = SQL_NULL_DATA;
                continue;
            }
            if (!converted(value, column.cType, bytes))
                return statement->fail(QStringLiteral("07006"), 0, QStringLiteral("Restricted data type attribute"));
            column.lengths[row] = static_cast<SQLLEN>(bytes.size());
            bytes.append(closingZero(column.cType), '\0');
            const auto count = std::min<SQLLEN>(static_cast<SQLLEN>(bytes.size()), column.width);
            std::memcpy(column.cells + static_cast<std::size_t>(column.width) * row, bytes.constData(),
                        static_cast<std::size_t>(count));
        }
    }
    if (statement->fetched)
        *statement->fetched = row;
    return row == 0 ? SQL_NO_DATA : SQL_SUCCESS;
}

STANDIN SQLGetData(SQLHSTMT handle, SQLUSMALLINT number, SQLSMALLINT cType, SQLPOINTER buffer, SQLLEN room,
                   SQLLEN* length)
{
    auto* const statement = as<StatementHandle>(handle);
    const vb::Variant value = statement->rows.value(statement->next - 1, number - 1);
    QByteArray bytes;
    if (value.isNull()) {
        *length = SQL_NULL_DATA;
        return SQL_SUCCESS;
    }
    if (!converted(value, cType, bytes))
        return statement->fail(QStringLiteral("07006"), 0, QStringLiteral("Restricted data type attribute"));
    qsizetype& taken = statement->taken.at(number);
    const auto left = static_cast<SQLLEN>(bytes.size() - taken);
    if (taken > 0 && left == 0)
        return SQL_NO_DATA;
    const SQLLEN count = std::min(left, room - closingZero(cType));
    std::memcpy(buffer, bytes.constData() + taken, static_cast<std::size_t>(count));
    std::memset(static_cast<char*>(buffer) + count, 0, static_cast<std::size_t>(closingZero(cType)));
    *length = left;
    taken += count;
    return count < left ? SQL_SUCCESS_WITH_INFO : SQL_SUCCESS;
}

STANDIN SQLPrimaryKeysW(SQLHSTMT handle, SQLWCHAR*, SQLSMALLINT, SQLWCHAR*, SQLSMALLINT, SQLWCHAR*, SQLSMALLINT)
{
    return static_cast<Handle*>(handle)->fail(QStringLiteral("IM001"), 0,
                                              QStringLiteral("Driver does not support this function"));
}

STANDIN SQLStatisticsW(SQLHSTMT handle, SQLWCHAR*, SQLSMALLINT, SQLWCHAR*, SQLSMALLINT, SQLWCHAR*, SQLSMALLINT,
                       SQLUSMALLINT, SQLUSMALLINT)
{
    return static_cast<Handle*>(handle)->fail(QStringLiteral("IM001"), 0,
                                              QStringLiteral("Driver does not support this function"));
}
