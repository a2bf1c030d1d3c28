#pragma once

#include "app/EntryRecords.h"

#include <QByteArray>
#include <QString>
#include <QThreadPool>

#include <atomic>
#include <memory>
#include <vector>

namespace platform {
class LockedFile;
}

/// Keeps the lines of the entry grid in a file, so that they outlive a power cut. The file lies beside the settings,
/// else in the user's own folder, and is this program's alone while it runs. There is none as long as nothing has been
/// typed. Nothing here raises: where no file can be written the grid works as ever, and the next change tries again.
class EntryMirror
{
public:
    /// The lines that a program left behind which did not come to its end. No other program gets at them meanwhile.
    struct Left
    {
        EntryRecords::Sheet sheet;
        std::shared_ptr<platform::LockedFile> file;
    };

    /// `userFolder` is made when it is needed.
    EntryMirror(EntryRecords::Source source, QString userFolder);
    ~EntryMirror();
    EntryMirror(const EntryMirror&) = delete;
    EntryMirror& operator=(const EntryMirror&) = delete;

    // What the grid does. Written when these return; on the disk soon after.
    void add(const EntryGrid::Line& line, QDate day, const QDateTime& when);
    void remove(int row); ///< Row of the grid, from 1 on.
    void clear();
    void setDay(QDate day);

    /// A closing comes to a row. On the disk when this returns: what it writes next must not be there alone.
    void begin(int row);
    /// The closing has written all of the row.
    void stored(int row);

    /// The operator ends the program: the file goes.
    void discard();

    /// What other programs have left of this source, in the order of their files' names. Files without such lines go.
    [[nodiscard]] std::vector<Left> left() const;
    /// Goes on with the open lines of `left`, which are in the grid now, in its file. The others are dropped.
    void takeOver(Left left);
    static void forget(const Left& left);

private:
    void mark(int row, EntryRecords::Entry::Mark mark);
    void write(const QByteArray& record);
    [[nodiscard]] std::shared_ptr<platform::LockedFile> makeFile(const QString& folder) const;
    void syncSoon();

    EntryRecords::Sheet m_sheet;
    QString m_userFolder;
    std::shared_ptr<platform::LockedFile> m_file;
    QByteArray m_unwritten; ///< Records that the disk did not take.
    std::atomic<bool> m_syncWaits = false;
    QThreadPool m_disk; ///< One thread; a file is let go when it has done with it.
};
