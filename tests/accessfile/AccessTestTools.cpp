#include "accessfile/AccessTestTools.h"

#include "accessfile/format/Utf8.h"
#include "support/OutsideProgram.h"

#include <QDir>
#include <QFile>
#include <QTimeZone>
#include <QUuid>

#include <algorithm>
#include <cmath>

namespace accesstest {

using namespace accessfile;

namespace {

const QByteArray cellEnd = "<~|~>";
const QByteArray rowEnd = "<~||~>\n";

std::string hexOf(const Bytes& bytes)
{
    return QByteArrayView(bytes.data(), bytes.size()).toByteArray().toHex().toUpper().toStdString();
}

/// Days as the other reader prints them: to the second, rounded.
std::string dateText(double serial)
{
    const double days = std::trunc(serial);
    const double fraction = std::fabs(serial - days);
    return QDateTime(QDate(1899, 12, 30).addDays(static_cast<qint64>(days)), QTime(0, 0), QTimeZone::utc())
        .addSecs(static_cast<qint64>(std::floor(fraction * 86400 + 0.5)))
        .toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"))
        .toStdString();
}

/// As the other reader groups its digits.
std::string guidText(const Guid& guid)
{
    return QUuid::fromRfc4122(QByteArrayView(guid.bytes)).toString().remove(24, 1).toUpper().toStdString();
}

struct CellText
{
    std::string operator()(Null) const { return {}; }
    std::string operator()(bool value) const { return value ? "1" : "0"; }
    std::string operator()(std::int32_t value) const { return std::to_string(value); }
    std::string operator()(float value) const { return QByteArray::number(double{value}, 'g', 7).toStdString(); }
    std::string operator()(double value) const { return QByteArray::number(value, 'g', 15).toStdString(); }
    std::string operator()(Money value) const { return decimalText(toDecimal(value)); }
    std::string operator()(DateTime value) const { return dateText(value.serial); }
    std::string operator()(const Numeric& value) const { return decimalText(value); }
    std::string operator()(const Guid& value) const { return guidText(value); }
    std::string operator()(const std::string& value) const { return value; }
    std::string operator()(const Bytes& value) const { return hexOf(value); }
};

/// The other reader's text of a number or GUID, printed as this side prints it.
std::string sameForm(const Column& column, const std::string& text)
{
    if (column.type == ColumnType::Guid)
        return QByteArray::fromHex(QByteArray::fromStdString(text)).toStdString();
    const bool isNumber = column.type == ColumnType::Float || column.type == ColumnType::Double;
    if (!isNumber || text.empty())
        return text;
    const double number = QByteArray::fromStdString(text).toDouble();
    return column.type == ColumnType::Float ? CellText()(static_cast<float>(number)) : CellText()(number);
}

} // namespace

std::string cellText(const Value& value)
{
    return std::visit(CellText(), value);
}

Rows rowsOf(const Table& table)
{
    Rows rows;
    for (const auto cursor = table.scan(); cursor->next();) {
        std::vector<std::string>& row = rows.emplace_back();
        for (std::size_t i = 0; i < table.columns().size(); ++i)
            row.push_back(cellText(cursor->value(static_cast<int>(i))));
    }
    return rows;
}

bool exporterInstalled()
{
    return !support::outsideProgram(QStringLiteral("mdb-export")).isEmpty();
}

namespace {

QByteArray outputOf(const QString& program, const QStringList& arguments)
{
    const support::Outcome outcome = support::runOutside(program, arguments);
    if (!outcome.succeeded())
        throw std::runtime_error(outcome.errors.toStdString());
    return outcome.output;
}

/// Rows of a table as another reader of the format shows them.
Rows exportedRows(const QString& file, const Table& table)
{
    const QStringList options =
        QStringLiteral("-H -Q -b hex -d %1 -R %2").arg(QLatin1String(cellEnd), QLatin1String(rowEnd)).split(u' ');
    const QString moment = QStringLiteral("%Y-%m-%d %H:%M:%S");
    const QByteArray output = outputOf(QStringLiteral("mdb-export"),
                                       options + QStringList{QStringLiteral("-D"), moment, QStringLiteral("-T"), moment,
                                                             file, QString::fromStdString(table.name())});
    Rows rows;
    for (qsizetype at = 0; at < output.size();) {
        const qsizetype end = output.indexOf(rowEnd, at);
        std::vector<std::string>& row = rows.emplace_back();
        const QByteArray line = output.mid(at, end - at);
        qsizetype start = 0;
        for (std::size_t i = 0; i < table.columns().size(); ++i) {
            const qsizetype stop = line.indexOf(cellEnd, start);
            row.push_back(sameForm(table.columns()[i], line.mid(start, stop < 0 ? -1 : stop - start).toStdString()));
            start = stop + cellEnd.size();
        }
        at = end + rowEnd.size();
    }
    return rows;
}

} // namespace

QString exportDifference(Storage& storage, const QString& file, std::size_t* cells)
{
    QStringList listed = QString::fromUtf8(outputOf(QStringLiteral("mdb-tables"), {QStringLiteral("-1"), file}))
                             .split(u'\n', Qt::SkipEmptyParts);
    QStringList names = joined(storage.tableNames()).split(u'\n', Qt::SkipEmptyParts);
    listed.sort();
    names.sort();
    if (listed != names)
        return QStringLiteral("tables: %1, listed %2").arg(names.join(u'|'), listed.join(u'|'));
    for (const std::string& name : storage.tableNames()) {
        const Table& read = *storage.table(name);
        Rows own = rowsOf(read);
        Rows other = exportedRows(file, read);
        // The other reader lists moved rows where their bytes are.
        std::sort(own.begin(), own.end());
        std::sort(other.begin(), other.end());
        const QString table = QString::fromStdString(name);
        if (own.size() != other.size())
            return QStringLiteral("%1: %2 rows, exported %3").arg(table).arg(own.size()).arg(other.size());
        const auto [row, exported] = std::mismatch(own.begin(), own.end(), other.begin());
        if (row != own.end())
            return table + QStringLiteral(": ") + joined(*row) + QStringLiteral("exported: ") + joined(*exported);
        if (cells != nullptr)
            *cells += own.size() * read.columns().size();
    }
    return {};
}

std::string contentOf(Storage& storage)
{
    std::string content;
    for (const std::string& name : storage.tableNames()) {
        const Table& table = *storage.table(name);
        content += "[" + name;
        for (const Column& each : table.columns())
            content += "|" + each.name;
        for (const Index& each : table.indexes())
            content += "#" + each.name;
        content += "]\n";
        for (const auto& row : rowsOf(table)) {
            for (const std::string& cell : row)
                content += cell + "\x1f";
            content += "\n";
        }
    }
    return content;
}

QString joined(const std::vector<std::string>& lines)
{
    QString text;
    for (const std::string& line : lines)
        text += QString::fromStdString(line) + QLatin1Char('\n');
    return text;
}

QString joined(const SelfCheck& check)
{
    return joined(check.faults) + joined(check.notes);
}

QString sharedFolder()
{
    const QString beside = qEnvironmentVariable("PLANILHA_SOURCE_DIR") + QStringLiteral("/../shared/access");
    const QString folder = qEnvironmentVariable("PLANILHA_REAL_FILES", beside);
    return QDir(folder).exists() ? folder : QString();
}

QByteArray fileBytes(const QString& file)
{
    QFile reader(file);
    return reader.open(QIODevice::ReadOnly) ? reader.readAll() : QByteArray();
}

Column column(const char* name, ColumnType type, int length)
{
    Column result;
    result.name = name;
    result.type = type;
    result.length = length;
    return result;
}

Index index(const char* name, std::vector<IndexColumn> columns, bool unique)
{
    Index result;
    result.name = name;
    result.columns = std::move(columns);
    result.unique = unique;
    return result;
}

std::optional<ErrorKind> errorOf(const std::function<void()>& action)
{
    try {
        action();
    } catch (const Error& error) {
        return error.kind();
    }
    return std::nullopt;
}

MemoryStation::MemoryStation(const OpenOptions& options, const Bytes& content)
{
    if (content.empty())
        createStorage(m_files, stationFile, options.password);
    else
        m_files.setContent(stationFile, content);
    reopen(options);
}

void MemoryStation::reopen(const OpenOptions& options)
{
    m_storage.reset();
    m_storage = openStorage(m_files, stationFile, options);
}

std::vector<RowId> rowIdsOf(const Table& table)
{
    std::vector<RowId> rows;
    for (const auto cursor = table.scan(); cursor->next();)
        rows.push_back(cursor->rowId());
    return rows;
}

Cells ValueMaker::row(const std::vector<Column>& columns)
{
    Cells row;
    for (const Column& each : columns)
        row.push_back(each.autonumber ? std::nullopt : std::optional(value(each)));
    return row;
}

std::size_t ValueMaker::below(std::size_t limit)
{
    return limit == 0 ? 0 : std::uniform_int_distribution<std::size_t>(0, limit - 1)(m_engine);
}

std::string ValueMaker::text(std::size_t length)
{
    static const std::u32string letters = U"abcdefghijklmnopqrstuvwxyzABCXYZ0123456789 -'.,/ãçéíõúÁÂÊÔÜñßæ°ªº€";
    std::string result;
    while (length-- > 0)
        appendCodePoint(letters[below(letters.size())], result);
    return result;
}

Value ValueMaker::value(const Column& declared)
{
    if (declared.type != ColumnType::Bool && !declared.required && below(8) == 0)
        return Null{};
    const auto whole = static_cast<std::int32_t>(below(40000)) - 20000;
    switch (declared.type) {
    case ColumnType::Bool:
        return below(2) == 0;
    case ColumnType::Byte:
        return static_cast<std::int32_t>(below(256));
    case ColumnType::Int:
    case ColumnType::Long:
        return whole;
    case ColumnType::Money:
        return Money{std::int64_t{whole} * 12345};
    case ColumnType::Float:
        return static_cast<float>(whole) / 64.0F;
    case ColumnType::Double:
        return whole / 100.0;
    case ColumnType::Date:
        return DateTime{45000 + static_cast<double>(below(400)) + static_cast<double>(below(24)) / 24};
    case ColumnType::Guid: {
        Guid guid;
        for (std::uint8_t& byte : guid.bytes)
            byte = static_cast<std::uint8_t>(below(256));
        return guid;
    }
    case ColumnType::Numeric:
        return Numeric{whole < 0, {0, 0, 0, static_cast<std::uint32_t>(std::abs(whole))}, declared.scale};
    case ColumnType::Binary: {
        Bytes bytes(below(static_cast<std::size_t>(declared.length)));
        for (std::uint8_t& byte : bytes)
            byte = static_cast<std::uint8_t>(1 + below(255)); // The other reader ends at a zero.
        return bytes;
    }
    case ColumnType::Ole:
        return Bytes(below(9000), static_cast<std::uint8_t>(below(256)));
    case ColumnType::Memo:
        // Inside the row, a row of its own, or a chain.
        return text(std::array<std::size_t, 3>{20, 900, 5000}[below(3)] + below(100));
    default:
        return text(below(std::min<std::size_t>(static_cast<std::size_t>(declared.length), 60) + 1));
    }
}

} // namespace accesstest
