#pragma once

#include "shared/EntryGrid.h"

#include <QByteArray>
#include <QDate>
#include <QDateTime>
#include <QString>

#include <string_view>
#include <vector>

// What the file beside the settings holds of the entry grid: one record a line, each written behind the others. A
// record is a checksum and a JSON object; reading ends at the first one that is not whole, as a power cut leaves it.
namespace EntryRecords {

/// The database that the lines were typed for.
struct Source
{
    QString settingsFolder;
    QString database;

    bool operator==(const Source&) const = default;
};

struct Entry
{
    enum Mark {
        Open,  ///< No closing has come to it.
        Begun, ///< A closing may have written some of it.
        Stored ///< A closing has written all of it.
    };
    EntryGrid::Line line;
    Mark mark = Open;
};

/// The grid's lines, in its order, and what belongs to them all.
struct Sheet
{
    Source source;
    QDate day;      ///< The sheet's date.
    QDateTime last; ///< When the last line was typed.
    std::vector<Entry> entries;
    std::size_t bytes = 0; ///< Of the whole records that were read.

    [[nodiscard]] std::vector<EntryGrid::Line> lines(Entry::Mark mark) const;
};

// The records. A row is the line's number in the grid, from 1 on.
[[nodiscard]] QByteArray begins(const Source& source);
[[nodiscard]] QByteArray adds(const EntryGrid::Line& line, QDate day, const QDateTime& when);
[[nodiscard]] QByteArray removes(int row);
[[nodiscard]] QByteArray moves(QDate day);
[[nodiscard]] QByteArray marks(int row, Entry::Mark mark);
[[nodiscard]] QByteArray empties();
/// All records that make a sheet.
[[nodiscard]] QByteArray whole(const Sheet& sheet);

/// What the records add up to.
[[nodiscard]] Sheet read(std::string_view records);

} // namespace EntryRecords
