#pragma once

#include "accessfile/Error.h"
#include "accessfile/Sql.h"
#include "platform/ado/AccessConversions.h"

#include <QByteArray>
#include <QTemporaryDir>

namespace accesstest {

/// A fresh file spoken to in SQL. What comes back is a text: cells separated by "|", rows by "; ", or the error's
/// number and message.
class SqlShell
{
public:
    SqlShell()
    {
        accessfile::Storage::create(path().toStdString());
        open(false);
    }

    /// Opens the file anew.
    void open(bool readOnly)
    {
        m_database.reset();
        accessfile::OpenOptions options;
        options.readOnly = readOnly;
        m_database = std::make_unique<accessfile::Database>(accessfile::Storage::open(path().toStdString(), options),
                                                            m_regional);
    }

    [[nodiscard]] QString path() const { return m_folder.filePath(QStringLiteral("x.mdb")); }
    [[nodiscard]] accessfile::Database& database() { return *m_database; }

    [[nodiscard]] QByteArray select(const QByteArray& statement)
    {
        return orError([&] {
            Rows rows;
            m_database->select(statement.toStdString(), rows);
            return rows.lines.join("; ");
        });
    }

    /// Number of rows concerned.
    QByteArray execute(const QByteArray& statement)
    {
        return orError([&] { return QByteArray::number(qulonglong{m_database->execute(statement.toStdString())}); });
    }

    /// Statements that must succeed; a failure ends the test run with its text.
    void script(const QList<QByteArray>& statements)
    {
        for (const QByteArray& statement : statements)
            m_database->execute(statement.toStdString());
    }

private:
    struct Rows : accessfile::RowSink
    {
        void columns(const std::vector<accessfile::ResultColumn>& /*columns*/) override {}
        void cell(const accessfile::Value& value) override { line << std::visit(CellText(), value); }
        void textCell(std::string_view utf8) override { line << CellText()(std::string(utf8)); }
        void endRow(std::optional<accessfile::RowId> /*row*/) override
        {
            lines << line.join('|');
            line.clear();
        }
        QByteArrayList line;
        QByteArrayList lines;
    };

    /// Each type has a look of its own: 'text', 1.5 double, $1.5000 money, 1.5f single, @2024-03-15 06:00:00 date.
    struct CellText
    {
        QByteArray operator()(accessfile::Null) const { return "NULL"; }
        QByteArray operator()(bool value) const { return value ? "True" : "False"; }
        QByteArray operator()(std::int32_t value) const { return QByteArray::number(value); }
        QByteArray operator()(float value) const { return QByteArray::number(double{value}, 'g', 7) + 'f'; }
        QByteArray operator()(double value) const
        {
            const QByteArray text = QByteArray::number(value, 'g', 15);
            return text.contains('.') || text.contains('e') ? text : text + ".0";
        }
        QByteArray operator()(accessfile::Money value) const
        {
            return '$' + QByteArray::number(static_cast<double>(value.scaled) / 10'000, 'f', 4);
        }
        QByteArray operator()(accessfile::DateTime value) const
        {
            const double day = std::trunc(value.serial);
            const qint64 seconds = std::llround(std::abs(value.serial - day) * 86400);
            const QDateTime moment(QDate(1899, 12, 30).addDays(static_cast<qint64>(day)), QTime(0, 0), Qt::UTC);
            const auto format = seconds == 0 ? QStringLiteral("yyyy-MM-dd") : QStringLiteral("yyyy-MM-dd hh:mm:ss");
            return '@' + moment.addSecs(seconds).toString(format).toUtf8();
        }
        QByteArray operator()(const accessfile::Numeric& value) const
        {
            return QByteArray::number((value.negative ? -1.0 : 1.0) * value.magnitude[3] / std::pow(10, value.scale)) +
                   'd';
        }
        QByteArray operator()(const accessfile::Guid& /*value*/) const { return "guid"; }
        QByteArray operator()(const std::string& value) const { return '\'' + QByteArray::fromStdString(value) + '\''; }
        QByteArray operator()(const accessfile::Bytes& /*value*/) const { return "bytes"; }
    };

    template <typename Action>
    static QByteArray orError(Action action)
    {
        try {
            return action();
        } catch (const accessfile::Error& error) {
            return QByteArray::number(error.number()) + ' ' + error.what();
        }
    }

    QTemporaryDir m_folder;
    ado::AccessConversions m_regional;
    std::unique_ptr<accessfile::Database> m_database;
};

} // namespace accesstest
