#include "accessfile/Database.h"
#include "accessfile/Error.h"
#include "platform/ado/AccessConversions.h"
#include "platform/ado/ConnectionString.h"
#include "platform/ado/Error.h"
#include "platform/ado/Session.h"

#include <QCursor>
#include <QGuiApplication>

#include <cmath>
#include <filesystem>
#include <map>

namespace ado {

namespace {

using accessfile::ColumnType;
using accessfile::Database;
using accessfile::RowId;
using accessfile::Value;

Error translated(const accessfile::Error& error, const QString& statement)
{
    return {error.number(), QString::fromUtf8(error.what()), statement};
}

/// Runs an engine call; its errors become those of this layer, with the statement.
template <typename Call>
auto guarded(const QString& statement, Call call)
{
    try {
        return call();
    } catch (const accessfile::Error& error) {
        throw translated(error, statement);
    }
}

FieldType fieldType(ColumnType type)
{
    switch (type) {
    case ColumnType::Bool:
    case ColumnType::Byte:
    case ColumnType::Int:
    case ColumnType::Long:
        return FieldType::Long;
    case ColumnType::Float:
    case ColumnType::Double:
    case ColumnType::Numeric:
        return FieldType::Double;
    case ColumnType::Money:
        return FieldType::Currency;
    case ColumnType::Date:
        return FieldType::Date;
    default:
        return FieldType::Text;
    }
}

/// Fills a row set cell by cell; each cell goes the way of its own type into the field's.
class RowSetSink : public accessfile::RowSink
{
public:
    [[nodiscard]] RowSet take() { return std::move(m_rows); }

    void columns(const std::vector<accessfile::ResultColumn>& columns) override
    {
        std::vector<Field> fields;
        fields.reserve(columns.size());
        m_types.clear();
        for (const accessfile::ResultColumn& column : columns) {
            fields.push_back({QString::fromStdString(column.name), fieldType(column.type)});
            m_types.push_back(fieldType(column.type));
        }
        m_rows = RowSet(std::move(fields));
        m_next = 0;
    }

    void cell(const Value& value) override
    {
        const FieldType type = m_types[m_next++];
        if (const std::int32_t* integer = std::get_if<std::int32_t>(&value); integer && type == FieldType::Long)
            m_rows.appendLong(*integer);
        else if (const double* number = std::get_if<double>(&value); number && type == FieldType::Double)
            m_rows.appendDouble(*number);
        else if (const auto* date = std::get_if<accessfile::DateTime>(&value); date && type == FieldType::Date)
            m_rows.appendDate(vb::Date{date->serial});
        else if (const auto* money = std::get_if<accessfile::Money>(&value); money && type == FieldType::Currency)
            m_rows.appendCurrency(vb::Currency::fromScaled(money->scaled));
        else if (accessfile::isNull(value))
            m_rows.appendNull();
        else
            rareCell(value, type);
    }

    void textCell(std::string_view utf8) override
    {
        ++m_next;
        m_rows.appendText(QByteArrayView(utf8.data(), static_cast<qsizetype>(utf8.size())));
    }

    void endRow(std::optional<RowId> row) override
    {
        m_next = 0;
        if (row)
            m_rows.appendRowKey(quint64{row->page} << 8U | row->slot);
    }

private:
    void rareCell(const Value& value, FieldType type)
    {
        if (const bool* truth = std::get_if<bool>(&value); truth && type == FieldType::Long) {
            m_rows.appendLong(*truth ? -1 : 0);
        } else if (const auto* guid = std::get_if<accessfile::Guid>(&value)) {
            m_rows.appendText(hexadecimal(guid->bytes.data(), guid->bytes.size()));
        } else if (const auto* bytes = std::get_if<accessfile::Bytes>(&value)) {
            m_rows.appendText(hexadecimal(bytes->data(), bytes->size()));
        } else {
            const double number = toDouble(value);
            switch (type) {
            case FieldType::Long:
                m_rows.appendLong(static_cast<qint64>(std::nearbyint(number)));
                break;
            case FieldType::Date:
                m_rows.appendDate(vb::Date{number});
                break;
            case FieldType::Currency:
                m_rows.appendCurrency(vb::Currency::fromScaled(static_cast<qint64>(std::nearbyint(number * 10'000))));
                break;
            case FieldType::Text:
                m_rows.appendText(QByteArray::fromStdString(m_conversions.numberToText(number)));
                break;
            case FieldType::Double:
                m_rows.appendDouble(number);
                break;
            }
        }
    }

    static double toDouble(const Value& value)
    {
        if (const bool* truth = std::get_if<bool>(&value))
            return *truth ? -1 : 0;
        if (const std::int32_t* integer = std::get_if<std::int32_t>(&value))
            return *integer;
        if (const float* single = std::get_if<float>(&value))
            return *single;
        if (const double* number = std::get_if<double>(&value))
            return *number;
        if (const auto* money = std::get_if<accessfile::Money>(&value))
            return static_cast<double>(money->scaled) / 10'000;
        if (const auto* date = std::get_if<accessfile::DateTime>(&value))
            return date->serial;
        return accessfile::toDouble(std::get<accessfile::Numeric>(value));
    }

    static QByteArray hexadecimal(const std::uint8_t* bytes, std::size_t size)
    {
        return QByteArray(reinterpret_cast<const char*>(bytes), static_cast<qsizetype>(size)).toHex();
    }

    RowSet m_rows;
    std::vector<FieldType> m_types;
    std::size_t m_next = 0;
    AccessConversions m_conversions;
};

Value engineValue(const vb::Variant& value)
{
    struct Visitor
    {
        Value operator()(vb::Variant::NullType) const { return accessfile::Null{}; }
        Value operator()(qint64 number) const
        {
            if (number < std::numeric_limits<qint32>::min() || number > std::numeric_limits<qint32>::max())
                return static_cast<double>(number);
            return static_cast<std::int32_t>(number);
        }
        Value operator()(double number) const { return number; }
        Value operator()(vb::Currency money) const { return accessfile::Money{money.scaled()}; }
        Value operator()(vb::Date date) const { return accessfile::DateTime{date.serial}; }
        Value operator()(const QString& text) const { return text.toStdString(); }
    };
    return std::visit(Visitor(), value.value());
}

std::vector<std::pair<std::string, Value>> engineValues(const std::vector<FieldValue>& values)
{
    std::vector<std::pair<std::string, Value>> result;
    result.reserve(values.size());
    for (const FieldValue& value : values)
        result.emplace_back(value.name.toStdString(), engineValue(value.value));
    return result;
}

class AccessSession : public Session
{
public:
    explicit AccessSession(std::shared_ptr<Database> database)
        : m_database(std::move(database))
    {}

    RowSet query(const QString& select) override
    {
        return guarded(select, [&] { return rowsOf(select); });
    }

    void execute(const QString& statement) override
    {
        guarded(statement, [&] { return m_database->execute(statement.toStdString()); });
    }

    void prepareToAdd(const QString& select) override
    {
        guarded(select, [&] { return m_database->tableOf(select.toStdString()); });
    }

    void addRow(const QString& select, const std::vector<FieldValue>& values) override
    {
        guarded(select, [&] { m_database->addRow(m_database->tableOf(select.toStdString()), engineValues(values)); });
    }

    void updateRow(const QString& select, const RowSet& rows, qsizetype row,
                   const std::vector<FieldValue>& changes) override
    {
        if (!rows.hasRowKey(row))
            throw Error(3251, QStringLiteral("O comando não lê uma tabela que possa ser alterada."), select);
        const quint64 key = rows.rowKey(row);
        const RowId address{static_cast<std::uint32_t>(key >> 8U), static_cast<std::uint8_t>(key & 0xFFU)};
        guarded(select, [&] {
            m_database->updateRow(m_database->tableOf(select.toStdString()), address, engineValues(changes), [&] {
                // Read again only where somebody has written since.
                return rows.sourceState() == m_database->storage().state() || rows.isUnchanged(row, rowsOf(select));
            });
        });
    }

    void takeTurn() override
    {
        guarded({}, [&] { m_database->storage().takeTurn(); });
    }
    void giveTurnBack() noexcept override { m_database->storage().giveTurnBack(); }

    [[nodiscard]] QStringList warnings() const override
    {
        QStringList all;
        for (const std::string& each : m_database->storage().warnings())
            all << QString::fromStdString(each);
        return all;
    }

private:
    [[nodiscard]] RowSet rowsOf(const QString& select) const
    {
        RowSetSink sink;
        m_database->select(select.toStdString(), sink);
        RowSet rows = sink.take();
        rows.setSourceState(m_database->storage().state());
        return rows;
    }

    std::shared_ptr<Database> m_database;
};

/// A statement waits for another program: the pointer tells.
void showWaiting(bool waits)
{
    if (qobject_cast<QGuiApplication*>(QCoreApplication::instance()) == nullptr)
        return;
    if (waits)
        QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    else
        QGuiApplication::restoreOverrideCursor();
}

/// Files that this process has open. All connections to one share what is in memory of it. `wait` in seconds, 0 for the
/// engine's own.
std::shared_ptr<Database> sharedDatabase(const std::filesystem::path& file, const std::string& password, int wait)
{
    static const AccessConversions conversions;
    static std::map<std::filesystem::path, std::weak_ptr<Database>> open;

    std::error_code failure;
    const std::filesystem::path canonical = std::filesystem::canonical(file, failure);
    std::weak_ptr<Database>& known = open[failure ? file : canonical];
    if (std::shared_ptr<Database> database = known.lock()) {
        if (!database->storage().acceptsPassword(password))
            throw accessfile::Error(accessfile::ErrorKind::WrongPassword, "Not a valid password.");
        return database;
    }
    accessfile::OpenOptions options;
    options.password = password;
    options.waiting = showWaiting;
    if (wait > 0)
        options.wait = std::chrono::seconds(wait);
    auto database = std::make_shared<Database>(accessfile::Storage::open(file, options), conversions);
    known = database;
    return database;
}

} // namespace

std::unique_ptr<Session> openAccessSession(const OpenRequest& request)
{
    const QString& text = request.connectionString;
    const bool provider = !connectionAttribute(text, u"Provider").isEmpty();
    const QString path = connectionAttribute(text, provider ? u"Data Source" : u"Dbq");
    QString password = connectionAttribute(text, provider ? u"Jet OLEDB:Database Password" : u"Pwd");
    if (!provider && password.isEmpty())
        password = request.password;
    return guarded({}, [&] {
        return std::make_unique<AccessSession>(sharedDatabase(std::filesystem::path(path.toStdU16String()),
                                                              password.toStdString(), request.commandTimeout));
    });
}

} // namespace ado
