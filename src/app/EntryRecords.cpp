#include "app/EntryRecords.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace EntryRecords {

namespace {

// Keys of the objects; the key says what a record does.
constexpr QLatin1StringView Folder("folder");
constexpr QLatin1StringView Database("database");
constexpr QLatin1StringView Add("add");
constexpr QLatin1StringView When("when");
constexpr QLatin1StringView Day("day");
constexpr QLatin1StringView Remove("remove");
constexpr QLatin1StringView Begin("begin");
constexpr QLatin1StringView Store("store");
constexpr QLatin1StringView Empty("empty");

constexpr qsizetype ChecksumDigits = 4;

QByteArray checksum(QByteArrayView text)
{
    return QByteArray::number(qChecksum(text), 16).rightJustified(ChecksumDigits, '0');
}

QByteArray record(const QJsonObject& object)
{
    const QByteArray text = QJsonDocument(object).toJson(QJsonDocument::Compact);
    return checksum(text) + ' ' + text + '\n';
}

/// The line's cells in the grid's order.
constexpr QString EntryGrid::Line::*Cells[EntryGrid::Columns] = {
    &EntryGrid::Line::date,    &EntryGrid::Line::pump,   &EntryGrid::Line::previous,
    &EntryGrid::Line::current, &EntryGrid::Line::litres, &EntryGrid::Line::price,
    &EntryGrid::Line::value,   &EntryGrid::Line::tank,   &EntryGrid::Line::calibration};

/// The object of a record without its line break; empty where it is not whole.
QJsonObject objectOf(QByteArrayView record)
{
    const QByteArrayView text = record.sliced(std::min(record.size(), ChecksumDigits + 1));
    if (text.isEmpty() || record.first(ChecksumDigits + 1) != checksum(text) + ' ')
        return {};
    return QJsonDocument::fromJson(text.toByteArray()).object();
}

bool apply(Sheet& sheet, const QJsonObject& object)
{
    const auto entry = [&](QLatin1StringView key) { return static_cast<std::size_t>(object[key].toInt(0)) - 1; };
    const auto isEntry = [&](QLatin1StringView key) {
        return object.contains(key) && entry(key) < sheet.entries.size();
    };
    if (object.contains(Day))
        sheet.day = QDate::fromString(object[Day].toString(), Qt::ISODate);
    if (object.contains(Folder)) {
        sheet.source = {object[Folder].toString(), object[Database].toString()};
    } else if (object.contains(Add)) {
        const QJsonArray cells = object[Add].toArray();
        Entry added;
        for (int column = 0; column < EntryGrid::Columns; ++column)
            added.line.*Cells[column] = cells[column].toString();
        sheet.entries.push_back(added);
        sheet.last = QDateTime::fromString(object[When].toString(), Qt::ISODate);
    } else if (isEntry(Remove)) {
        sheet.entries.erase(sheet.entries.begin() + static_cast<std::ptrdiff_t>(entry(Remove)));
    } else if (isEntry(Begin)) {
        sheet.entries[entry(Begin)].mark = Entry::Begun;
    } else if (isEntry(Store)) {
        sheet.entries[entry(Store)].mark = Entry::Stored;
    } else if (object.contains(Empty)) {
        sheet.entries.clear();
    } else {
        return object.contains(Day);
    }
    return true;
}

} // namespace

std::vector<EntryGrid::Line> Sheet::lines(Entry::Mark mark) const
{
    std::vector<EntryGrid::Line> found;
    for (const Entry& entry : entries) {
        if (entry.mark == mark)
            found.push_back(entry.line);
    }
    return found;
}

QByteArray begins(const Source& source)
{
    return record({{Folder, source.settingsFolder}, {Database, source.database}});
}

QByteArray adds(const EntryGrid::Line& line, QDate day, const QDateTime& when)
{
    QJsonArray cells;
    for (const auto cell : Cells)
        cells << line.*cell;
    return record({{Add, cells}, {Day, day.toString(Qt::ISODate)}, {When, when.toString(Qt::ISODate)}});
}

QByteArray removes(int row)
{
    return record({{Remove, row}});
}

QByteArray moves(QDate day)
{
    return record({{Day, day.toString(Qt::ISODate)}});
}

QByteArray marks(int row, Entry::Mark mark)
{
    return record({{mark == Entry::Begun ? Begin : Store, row}});
}

QByteArray empties()
{
    return record({{Empty, true}});
}

QByteArray whole(const Sheet& sheet)
{
    QByteArray all = begins(sheet.source);
    int row = 0;
    for (const Entry& entry : sheet.entries) {
        ++row;
        all += adds(entry.line, sheet.day, sheet.last);
        if (entry.mark != Entry::Open)
            all += marks(row, entry.mark);
    }
    return all;
}

Sheet read(std::string_view records)
{
    Sheet sheet;
    for (std::size_t end = records.find('\n'); end != std::string_view::npos; end = records.find('\n')) {
        const QJsonObject object = objectOf(QByteArrayView(records.data(), static_cast<qsizetype>(end)));
        if (object.isEmpty() || !apply(sheet, object))
            break;
        sheet.bytes += end + 1;
        records.remove_prefix(end + 1);
    }
    return sheet;
}

} // namespace EntryRecords
