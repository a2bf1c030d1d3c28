#include "platform/ado/OdbcStatements.h"

#include "platform/vb/Date.h"

#include <QLocale>
#include <QTimeZone>

#include <cmath>
#include <cstdlib>

namespace ado::odbc {

namespace {

bool isNamePart(QChar character)
{
    return character.isLetterOrNumber() || character == QLatin1Char('_') || character == QLatin1Char('$');
}

/// Reads over one token of a statement: a quoted piece, a name, or a single character.
QStringView takeToken(QStringView statement, qsizetype& position)
{
    const qsizetype begin = position;
    const QChar first = statement[position++];
    QChar closing;
    if (first == QLatin1Char('\'') || first == QLatin1Char('"') || first == QLatin1Char('`')) {
        closing = first;
    } else if (first == QLatin1Char('[')) {
        closing = QLatin1Char(']');
    }
    if (!closing.isNull()) {
        while (position < statement.size() && statement[position] != closing) {
            ++position;
        }
        position = std::min(position + 1, statement.size());
    } else if (isNamePart(first)) {
        while (position < statement.size() && isNamePart(statement[position])) {
            ++position;
        }
    }
    return statement.mid(begin, position - begin);
}

QString unquoted(QStringView token)
{
    const bool isQuoted = token.size() >= 2 && !isNamePart(token.front());
    return (isQuoted ? token.mid(1, token.size() - 2) : token).toString();
}

/// To the second.
QDateTime momentOf(vb::Date value)
{
    const double days = std::trunc(value.serial);
    const auto seconds = static_cast<qint64>(std::llround(std::abs(value.serial - days) * 86400.0));
    const QDateTime day(QDate(1899, 12, 30).addDays(static_cast<qint64>(days)), QTime(0, 0), QTimeZone::utc());
    return day.addSecs(seconds);
}

QString momentLiteral(const Dialect& dialect, const QDateTime& moment)
{
    const bool isDay = moment.time() == QTime(0, 0);
    const QString text = moment.toString(isDay ? QStringLiteral("yyyy-MM-dd") : QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    if (dialect.isMySql) {
        return QLatin1Char('\'') + text + QLatin1Char('\'');
    }
    return (isDay ? QStringLiteral("{d '") : QStringLiteral("{ts '")) + text + QStringLiteral("'}");
}

/// Whether a backslash escapes depends on the server's mode; a hexadecimal text means the same in each.
bool isHexadecimal(const Dialect& dialect, const QString& text)
{
    return dialect.isMySql && (text.contains(QLatin1Char('\\')) || text.contains(QChar::Null));
}

QString textLiteral(const Dialect& dialect, const QString& text)
{
    if (isHexadecimal(dialect, text)) {
        return QStringLiteral("CONVERT(0x%1 USING utf8mb4)").arg(QString::fromLatin1(text.toUtf8().toHex()));
    }
    QString doubled = text;
    doubled.replace(QLatin1Char('\''), QStringLiteral("''"));
    return QLatin1Char('\'') + doubled + QLatin1Char('\'');
}

QString numberText(double number)
{
    return QString::number(number, 'g', QLocale::FloatingPointShortest);
}

QString currencyText(vb::Currency value)
{
    const qint64 scaled = value.scaled();
    const quint64 magnitude = scaled < 0 ? 0 - static_cast<quint64>(scaled) : static_cast<quint64>(scaled);
    constexpr auto Scale = static_cast<quint64>(vb::Currency::Scale);
    return QStringLiteral("%1%2.%3")
        .arg(scaled < 0 ? QStringLiteral("-") : QString())
        .arg(magnitude / Scale)
        .arg(magnitude % Scale, 4, 10, QLatin1Char('0'));
}

/// How far a number may lie from the value that was read of it: a server writes single precision with six digits, or
/// with the decimals of the column, and old servers write the others with fifteen.
double marginOf(double number, bool isSingle)
{
    constexpr double Single = 1e-7;
    constexpr double Double = 1e-13;
    if (number == 0 || !isSingle)
        return std::abs(number) * Double;
    constexpr int Digits = 6;
    const bool isRounded = QString::number(number, 'g', Digits).toDouble() == number;
    const double unit = std::pow(10.0, std::floor(std::log10(std::abs(number))) - (Digits - 1));
    return std::abs(number) * Single + (isRounded ? unit / 2 : 0);
}

QString between(const QString& name, double number, bool isSingle)
{
    const double margin = marginOf(number, isSingle);
    return QStringLiteral("%1 BETWEEN %2 AND %3").arg(name, numberText(number - margin), numberText(number + margin));
}

/// A moment may have parts of a second that a literal does not show; a time of day is no day at all.
QString sameMoment(const Dialect& dialect, const ResultColumn& column, const QString& name, vb::Date value)
{
    if (column.sqlType == SQL_TYPE_DATE || column.sqlType == SQL_DATE)
        return name + QStringLiteral(" = ") + momentLiteral(dialect, momentOf(value));
    if (column.sqlType == SQL_TYPE_TIME || column.sqlType == SQL_TIME) {
        constexpr double SecondsPerDay = 86400;
        const double seconds = value.serial * SecondsPerDay;
        return dialect.isMySql ? QStringLiteral("TIME_TO_SEC(%1) BETWEEN %2 AND %3")
                                     .arg(name, numberText(std::floor(seconds)), numberText(std::ceil(seconds)))
                               : QString();
    }
    const QDateTime moment = momentOf(value);
    return QStringLiteral("%1 BETWEEN %2 AND %3")
        .arg(name, momentLiteral(dialect, moment.addSecs(-1)), momentLiteral(dialect, moment.addSecs(1)));
}

bool isBytes(SQLSMALLINT sqlType)
{
    return sqlType == SQL_BINARY || sqlType == SQL_VARBINARY || sqlType == SQL_LONGVARBINARY;
}

} // namespace

QStringList tableOf(const QString& select)
{
    QStringList path;
    bool isBehindFrom = false;
    bool isPointBefore = false;
    qsizetype position = 0;
    while (position < select.size()) {
        const QStringView token = takeToken(select, position);
        if (token.trimmed().isEmpty()) {
            continue;
        }
        if (!isBehindFrom) {
            isBehindFrom = token.compare(u"from", Qt::CaseInsensitive) == 0;
        } else if (token == u".") {
            isPointBefore = true;
        } else if (path.isEmpty() || isPointBefore) {
            path << unquoted(token);
            isPointBefore = false;
        } else {
            break;
        }
    }
    return path;
}

QString quoted(const Dialect& dialect, const QString& identifier)
{
    if (dialect.identifierQuote.trimmed().isEmpty()) {
        return identifier;
    }
    QString doubled = identifier;
    doubled.replace(dialect.identifierQuote, dialect.identifierQuote + dialect.identifierQuote);
    return dialect.identifierQuote + doubled + dialect.identifierQuote;
}

QString quoted(const Dialect& dialect, const QStringList& path)
{
    QStringList parts;
    for (const QString& part : path) {
        parts << quoted(dialect, part);
    }
    return parts.join(QLatin1Char('.'));
}

QString literal(const Dialect& dialect, const vb::Variant& value)
{
    if (const auto* whole = std::get_if<qint64>(&value.value())) {
        return QString::number(*whole);
    }
    if (const auto* number = std::get_if<double>(&value.value())) {
        return numberText(*number);
    }
    if (const auto* money = std::get_if<vb::Currency>(&value.value())) {
        return currencyText(*money);
    }
    if (const auto* date = std::get_if<vb::Date>(&value.value())) {
        return momentLiteral(dialect, momentOf(*date));
    }
    if (const auto* text = std::get_if<QString>(&value.value())) {
        return textLiteral(dialect, *text);
    }
    return QStringLiteral("NULL");
}

QString sameValue(const Dialect& dialect, const ResultColumn& column, const vb::Variant& value)
{
    const QString name = quoted(dialect, column.field.name);
    if (value.isNull()) {
        // A zero date is read as Null.
        return dialect.isMySql && column.field.type == FieldType::Date
                   ? QStringLiteral("(%1 IS NULL OR %1 = 0)").arg(name)
                   : name + QStringLiteral(" IS NULL");
    }
    if (column.field.type == FieldType::Double) {
        return between(name, std::get<double>(value.value()), column.sqlType == SQL_REAL);
    }
    if (column.field.type == FieldType::Date) {
        return sameMoment(dialect, column, name, std::get<vb::Date>(value.value()));
    }
    if (isBytes(column.sqlType)) {
        return {};
    }
    if (column.sqlType == SQL_BIT) {
        return name + (std::get<qint64>(value.value()) == 0 ? QStringLiteral(" = 0") : QStringLiteral(" <> 0"));
    }
    // A converted text has a collation of its own, which the column's may contradict.
    const auto* const text = std::get_if<QString>(&value.value());
    const bool isMixed = text && isHexadecimal(dialect, *text);
    return name + QStringLiteral(" = ") + literal(dialect, value) +
           (isMixed ? QStringLiteral(" COLLATE utf8mb4_bin") : QString());
}

QString insertStatement(const Dialect& dialect, const QStringList& table, const std::vector<FieldValue>& values)
{
    QStringList names;
    QStringList literals;
    for (const FieldValue& value : values) {
        names << quoted(dialect, value.name);
        literals << literal(dialect, value.value);
    }
    return QStringLiteral("INSERT INTO ") + quoted(dialect, table) + QStringLiteral(" (") +
           names.join(QStringLiteral(", ")) + QStringLiteral(") VALUES (") + literals.join(QStringLiteral(", ")) +
           QLatin1Char(')');
}

QString updateStatement(const Dialect& dialect, const QStringList& table, const std::vector<FieldValue>& changes,
                        const QStringList& conditions, bool isOneRow)
{
    QStringList assignments;
    for (const FieldValue& change : changes) {
        assignments << quoted(dialect, change.name) + QStringLiteral(" = ") + literal(dialect, change.value);
    }
    return QStringLiteral("UPDATE ") + quoted(dialect, table) + QStringLiteral(" SET ") +
           assignments.join(QStringLiteral(", ")) + QStringLiteral(" WHERE ") +
           conditions.join(QStringLiteral(" AND ")) +
           (isOneRow && dialect.isMySql ? QStringLiteral(" LIMIT 1") : QString());
}

} // namespace ado::odbc
