#pragma once

#include "accessfile/AccessTestTools.h"
#include "accessfile/Database.h"
#include "accessfile/Error.h"
#include "platform/ado/AccessConversions.h"

#include <QByteArray>
#include <QTemporaryDir>
#include <QTest>

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

    /// Rows found for a SELECT, otherwise the number of rows concerned.
    QByteArray answer(const QByteArray& statement)
    {
        return statement.toLower().startsWith("select") ? select(statement) : execute(statement);
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
        void cell(const accessfile::Value& value) override { line << look(value); }
        void textCell(std::string_view utf8) override { line << look(std::string(utf8)); }
        void endRow(std::optional<accessfile::RowId> /*row*/) override
        {
            lines << line.join('|');
            line.clear();
        }
        QByteArrayList line;
        QByteArrayList lines;
    };

    /// Each type has a look of its own: 'text', 1.5 double, $1.5000 money, 1.5f single, @2024-03-15 06:00:00 date.
    static QByteArray look(const accessfile::Value& value)
    {
        const QByteArray text = QByteArray::fromStdString(cellText(value));
        if (accessfile::isNull(value))
            return "NULL";
        if (std::holds_alternative<bool>(value))
            return text == "1" ? "True" : "False";
        if (std::holds_alternative<float>(value))
            return text + 'f';
        if (std::holds_alternative<double>(value))
            return text.contains('.') || text.contains('e') ? text : text + ".0";
        if (std::holds_alternative<accessfile::Money>(value))
            return '$' + text;
        if (std::holds_alternative<accessfile::DateTime>(value))
            return '@' + (text.endsWith(" 00:00:00") ? text.first(10) : text);
        if (std::holds_alternative<accessfile::Numeric>(value))
            return text + 'd';
        return std::holds_alternative<std::string>(value) ? '\'' + text + '\'' : text;
    }

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

/// A statement and its answer; of an error the number alone may be expected.
struct Step
{
    QByteArray statement;
    QByteArray answer;
};

/// The answer as far as it is expected: of an error its number where no text is.
inline QByteArray expectedPart(const QByteArray& answer, const QByteArray& expected)
{
    const bool isNumber = expected.startsWith('-') && !expected.contains(' ');
    return isNumber && answer.startsWith(expected + ' ') ? expected : answer;
}

/// Adds the steps as rows of a test's data.
inline void addSteps(const std::vector<Step>& steps)
{
    QTest::addColumn<QByteArray>("statement");
    QTest::addColumn<QByteArray>("answer");
    for (const Step& step : steps)
        QTest::newRow(step.statement.constData()) << step.statement << step.answer;
}

/// Runs the steps one behind the other.
inline void play(SqlShell& shell, const std::vector<Step>& steps)
{
    for (const Step& step : steps) {
        const QByteArray answer = shell.answer(step.statement);
        if (expectedPart(answer, step.answer) != step.answer)
            QFAIL((step.statement + "\n  gives    " + answer + "\n  expected " + step.answer).constData());
    }
}

} // namespace accesstest
