// The file that the lines of the entry grid outlive a power cut in: its records, its life, whose it is.

#include "app/EntryMirror.h"

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using EntryRecords::Entry;

namespace {

const QDate Day(2024, 3, 14);
const QDateTime When(QDate(2024, 3, 15), QTime(8, 30, 5));

EntryGrid::Line line(const QString& current)
{
    return {u"14/03"_s, u"001"_s,   u"1.000,50"_s,        current, u"9,5"_s,
            u"5,499"_s, u"52,24"_s, u"TANQUE_1\t\"ç\n"_s, u"0"_s};
}

QString shown(const EntryRecords::Sheet& sheet)
{
    QStringList cells{sheet.day.toString(Qt::ISODate)};
    for (const Entry& entry : sheet.entries)
        cells << entry.line.current + u"obs"_s.at(entry.mark);
    return cells.join(u' ');
}

struct Folders
{
    QTemporaryDir settings;
    QTemporaryDir user;

    [[nodiscard]] EntryMirror mirror(const QString& database = u"posto.mdb"_s) const
    {
        return EntryMirror({settings.path(), database}, user.path());
    }
    [[nodiscard]] QStringList left(const QString& database = u"posto.mdb"_s) const
    {
        QStringList sheets;
        for (const EntryMirror::Left& one : mirror(database).left())
            sheets << shown(one.sheet);
        sheets.sort();
        return sheets;
    }
    [[nodiscard]] QStringList files() const { return QDir(settings.path()).entryList(QDir::Files); }
};

} // namespace

class TestEntryMirror : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// Cut off or damaged anywhere, the records before that place are read whole.
    void brokenRecords()
    {
        const QList<QByteArray> records{EntryRecords::begins({u"/posto"_s, u"a.mdb"_s}),
                                        EntryRecords::adds(line(u"1"_s), Day, When),
                                        EntryRecords::adds(line(u"2"_s), Day, When),
                                        EntryRecords::moves(Day.addDays(1)),
                                        EntryRecords::adds(line(u"3"_s), Day.addDays(1), When),
                                        EntryRecords::removes(1),
                                        EntryRecords::marks(1, Entry::Begun),
                                        EntryRecords::marks(2, Entry::Stored),
                                        EntryRecords::marks(1, Entry::Stored),
                                        EntryRecords::empties()};
        const QStringList states{u""_s,
                                 u"2024-03-14 1o"_s,
                                 u"2024-03-14 1o 2o"_s,
                                 u"2024-03-15 1o 2o"_s,
                                 u"2024-03-15 1o 2o 3o"_s,
                                 u"2024-03-15 2o 3o"_s,
                                 u"2024-03-15 2b 3o"_s,
                                 u"2024-03-15 2b 3s"_s,
                                 u"2024-03-15 2s 3s"_s,
                                 u"2024-03-15"_s};
        const QByteArray all = records.join();
        qsizetype next = 0;
        qsizetype end = 0;
        for (qsizetype size = 0; size <= all.size(); ++size) {
            if (next < records.size() && size == end + records[next].size())
                end += records[next++].size();
            const QString expected = next == 0 ? QString() : states[next - 1];
            const auto read = [](const QByteArray& bytes) { return EntryRecords::read(bytes.toStdString()); };
            QCOMPARE(shown(read(all.first(size))), expected);
            if (size < all.size() && size > end) {
                QByteArray damaged = all;
                damaged[size - 1] = '~';
                QCOMPARE(shown(read(damaged)), expected);
                QCOMPARE(read(damaged).bytes, static_cast<std::size_t>(end));
            }
        }
        const EntryRecords::Sheet sheet = EntryRecords::read(records.mid(0, 8).join().toStdString());
        QCOMPARE(shown(EntryRecords::read(EntryRecords::whole(sheet).toStdString())), shown(sheet));
        QCOMPARE(sheet.entries.front().line.tank, line({}).tank);
        QCOMPARE(sheet.last, When);
    }

    void lifeOfAFile()
    {
        const Folders folders;
        {
            EntryMirror mirror = folders.mirror();
            mirror.setDay(Day);
            mirror.clear();
            QCOMPARE(folders.files(), QStringList()); // Nothing typed, no file.
            for (const QString& current : {u"1"_s, u"2"_s, u"3"_s, u"4"_s, u"5"_s})
                mirror.add(line(current), Day, When);
            mirror.remove(2);
            mirror.setDay(Day.addDays(2));
            mirror.begin(1);
            mirror.stored(1);
            mirror.begin(2);
            QCOMPARE(folders.files().size(), 1);
            QCOMPARE(QFile::permissions(folders.settings.filePath(folders.files().first())),
                     QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser);
            QCOMPARE(folders.left(), QStringList()); // Its program runs.
        }
        QCOMPARE(folders.left(u"outro.mdb"_s), QStringList());
        QCOMPARE(folders.left(), QStringList(u"2024-03-16 1s 3b 4o 5o"_s));
        {
            // Half a record at the end, as a cut leaves it, must not swallow what comes behind.
            QFile file(folders.settings.filePath(folders.files().first()));
            QVERIFY(file.open(QIODevice::Append) && file.write("12ab {\"add\":[") > 0);
        }
        {
            EntryMirror mirror = folders.mirror();
            mirror.takeOver(std::move(mirror.left().front()));
            mirror.add(line(u"6"_s), Day, When);
        }
        QCOMPARE(folders.left(), QStringList(u"2024-03-14 4o 5o 6o"_s));
        {
            EntryMirror mirror = folders.mirror();
            mirror.takeOver(std::move(mirror.left().front()));
            mirror.clear();
            QCOMPARE(folders.files().size(), 1);
        }
        QCOMPARE(folders.left(), QStringList()); // Nothing is left in it, so it goes.
        QCOMPARE(folders.files(), QStringList());
        EntryMirror mirror = folders.mirror();
        mirror.add(line(u"7"_s), Day, When);
        mirror.discard();
        QCOMPARE(folders.files(), QStringList());
    }

    void twoPrograms()
    {
        const Folders folders;
        {
            EntryMirror one = folders.mirror();
            EntryMirror other = folders.mirror();
            EntryMirror elsewhere = folders.mirror(u"outro.mdb"_s);
            one.add(line(u"1"_s), Day, When);
            other.add(line(u"2"_s), Day, When);
            elsewhere.add(line(u"3"_s), Day, When);
        }
        QCOMPARE(folders.left(), (QStringList{u"2024-03-14 1o"_s, u"2024-03-14 2o"_s}));
        const EntryMirror first = folders.mirror();
        const auto held = first.left();
        QCOMPARE(folders.left(), QStringList()); // Offered by one program alone.
        EntryMirror::forget(held.front());
        QCOMPARE(folders.files().size(), 2);
    }

    void settingsThatCannotBeWritten()
    {
        Folders folders;
        const EntryRecords::Source source{folders.settings.filePath(u"nada"_s), u"posto.mdb"_s};
        const QString own = folders.user.filePath(u"novo/planilha"_s);
        EntryMirror(source, own).add(line(u"1"_s), Day, When);
        QVERIFY(!QFile::exists(source.settingsFolder));
        QCOMPARE(EntryMirror(source, own).left().size(), 1U);
        QFile::remove(own);
        // Nowhere at all: the grid goes on without a file.
        EntryMirror none(source, u"/proc/nada"_s);
        none.add(line(u"1"_s), Day, When);
        none.begin(1);
        none.stored(1);
        none.discard();
    }
};

QTEST_GUILESS_MAIN(TestEntryMirror)
#include "test_entry_mirror.moc"
