#include "accessfile/AccessTestTools.h"
#include "accessfile/Error.h"
#include "accessfile/OtherProgram.h"
#include "accessfile/Schedule.h"
#include "accessfile/file/Journal.h"

#include <QTest>

#include <sstream>

using namespace accessfile;
using namespace accesstest;

namespace {

const std::filesystem::path journalFile = "posto.mdb-diario";
const std::filesystem::path lockFile = "posto.ldb";

/// A station with one table of counters and of texts long enough for several pages.
const Bytes& station()
{
    static const Bytes bytes = [] {
        MemoryStation storage;
        storage->createTable("Conta",
                             std::array{column("n", ColumnType::Long), column("valor", ColumnType::Long),
                                        column("texto", ColumnType::Text, 255)},
                             std::array{index("PorN", {{0, true}}, true)});
        storage->beginStatement();
        for (int n = 0; n < 30; ++n)
            storage->table("Conta")->insert(Cells{n, 100, std::string(200, 'a')});
        storage->commitStatement();
        storage.reopen();
        return storage.bytes();
    }();
    return bytes;
}

FaultyFiles stationFiles()
{
    FaultyFiles files;
    files.setContent(stationFile, station());
    return files;
}

int number(const Value& value)
{
    return std::get<std::int32_t>(value);
}

std::vector<int> values(Storage& storage)
{
    std::vector<int> found;
    storage.read([&] {
        found.clear();
        for (const auto cursor = storage.table("Conta")->scan(); cursor->next();)
            found.push_back(number(cursor->value(1)));
    });
    return found;
}

/// Adds to one row and takes from another: one statement.
void transfer(Storage& storage, std::size_t from, std::size_t to)
{
    storage.change([&] {
        Table& table = *storage.table("Conta");
        const std::vector<RowId> rows = rowIdsOf(table);
        const auto add = [&](std::size_t row, int amount) {
            const auto cursor = table.scan();
            for (std::size_t i = 0; i <= row; ++i)
                cursor->next();
            const int value = number(cursor->value(1));
            table.update(rows[row],
                         Changes{{1, value + amount}, {2, std::string(static_cast<std::size_t>(value), 'b')}});
        };
        add(from, -1);
        add(to, 1);
    });
}

void insertMany(Storage& storage)
{
    storage.change([&] {
        for (int n = 100; n < 160; ++n)
            storage.table("Conta")->insert(Cells{n, 100, std::string(200, 'c')});
    });
}

std::uint16_t slotOf(const FaultyFiles& files, std::size_t slot)
{
    return load16(files.content(stationFile).data() + CommitTable::offset + 2 * slot);
}

OpenOptions patient(int milliseconds = 300)
{
    OpenOptions options;
    options.wait = std::chrono::milliseconds(milliseconds);
    return options;
}

std::string refusalOf(const std::function<void()>& action, ErrorKind kind)
{
    try {
        action();
    } catch (const Error& error) {
        return error.kind() == kind ? error.what() : std::string("other kind: ") + error.what();
    }
    return "no error";
}

/// A long statement killed at its change number `stop`; false when it had no such change.
bool crash(FaultyFiles& files, std::size_t stop)
{
    try {
        const auto storage = openStorage(files, stationFile, {});
        files.failAfter(stop, FaultyFiles::Fault::Stop);
        insertMany(*storage);
    } catch (const Stopped&) {
    }
    const bool stopped = files.failed();
    files.heal();
    return stopped;
}

} // namespace

/// Several programs at one data file, some of them not ours.
class TestStorageCompany : public QObject
{
    Q_OBJECT

private slots:
    void lockArithmetic();
    void counters();
    void slotOfACommit();
    void foreignWorkSurvivesOurCrash_data();
    void foreignWorkSurvivesOurCrash();
    void unfinishedBatchOfAnother();
    void othersAreFollowed();
    void holderThatStays();
    void emptyStatementsTakeNoTurn();
    void replacedFile();
    void backupAmongWriters();
    void interleavings_data();
    void interleavings();
};

/// The check values of the published description of these locks.
void TestStorageCompany::lockArithmetic()
{
    using namespace lockrange;
    const auto range = [](ByteRange bytes) {
        std::ostringstream text;
        text << std::hex << std::uppercase << bytes.start << '-' << bytes.start + bytes.length - 1;
        return text.str();
    };
    QCOMPARE(range(exclusive(Kind::Page, 83, 1)), "2000A601-2000A701");
    QCOMPARE(range(shared(Kind::Page, 796, 1)), "20063801-20063801");
    QCOMPARE(range(shared(Kind::TableRead, 81, 1)), "4000A201-4000A201");
    QCOMPARE(range(shared(Kind::TableWrite, 100, 1)), "5000C801-5000C801");
    QCOMPARE(range(shared(Kind::TableDenyWrite, 81, 1)), "6000A201-6000A201");
    QCOMPARE(range(exclusive(Kind::Page, 0x671, 1)), "200CE201-200CE301");
    QCOMPARE(range(user(255)), "100000FF-100000FF");
    QCOMPARE(range(everyUser), "10000000-100000FF");
    const auto meet = [](ByteRange a, ByteRange b) {
        return a.start < b.start + b.length && b.start < a.start + a.length;
    };
    for (std::uint32_t one = 1; one <= mostUsers; ++one) {
        QVERIFY(meet(everyUser, user(one)));
        for (const std::uint32_t other : {1U, 2U, 128U, 255U}) {
            QVERIFY(meet(exclusive(Kind::Page, 7, one), shared(Kind::Page, 7, other)));
            QVERIFY(meet(exclusive(Kind::Page, 7, one), exclusive(Kind::Page, 7, other)));
            QVERIFY(!meet(exclusive(Kind::Page, 7, one), exclusive(Kind::Page, 8, other)));
            QVERIFY(!meet(exclusive(Kind::Page, 7, one), shared(Kind::Page, 6, other)));
        }
    }
}

void TestStorageCompany::counters()
{
    for (const auto& [value, next] : {std::pair{0x0100, 0x0101}, {0x01FF, 0x0200}, {0xFFFF, 0x0100}, {0x00FF, 0x0100}})
        QCOMPARE(CommitTable::next(static_cast<std::uint16_t>(value)), static_cast<std::uint16_t>(next));
}

/// 0 is in the slot while pages are written, and no other byte of the table ever changes.
void TestStorageCompany::slotOfACommit()
{
    FaultyFiles files = stationFiles();
    const Bytes before = files.content(stationFile);
    const std::uint16_t counter = slotOf(files, 0);
    bool marked = false;
    for (std::size_t stop = 0; crash(files, stop); ++stop) {
        const Bytes now = files.content(stationFile);
        const std::uint16_t slot = slotOf(files, 0);
        const bool pagesChanged =
            now.size() != before.size() || !std::equal(now.begin() + pageSize, now.end(), before.begin() + pageSize);
        QVERIFY(slot == counter || slot == 0 || slot == CommitTable::next(counter));
        QVERIFY(!pagesChanged || slot != counter);
        QVERIFY(std::equal(now.begin(), now.begin() + CommitTable::offset, before.begin()));
        QVERIFY(std::equal(now.begin() + CommitTable::offset + 2, now.begin() + pageSize,
                           before.begin() + CommitTable::offset + 2));
        marked = marked || slot == 0;
        files = stationFiles();
    }
    QVERIFY(marked);
    QCOMPARE(slotOf(files, 0), CommitTable::next(counter));
}

void TestStorageCompany::foreignWorkSurvivesOurCrash_data()
{
    using Deed = std::function<void(FaultyFiles&)>;
    QTest::addColumn<Deed>("deed");
    QTest::addColumn<bool>("sound"); // The file can be used afterwards.
    const Bytes note(700, 0x5A);
    const auto writes = [note](PageNumber page, std::uint64_t at) {
        return Deed([=](FaultyFiles& files) {
            OtherProgram(files, stationFile, 2).write(std::uint64_t{page} * pageSize + at, note);
        });
    };
    const auto last = static_cast<PageNumber>(station().size() / pageSize - 1);
    QTest::newRow("a page that ours changed too") << writes(last, 1000) << false;
    QTest::newRow("the first sector of one") << writes(last, 0) << false;
    QTest::newRow("a page of its own") << writes(4, 2000) << false;
    QTest::newRow("the file grows") << Deed([](FaultyFiles& files) {
        OtherProgram(files, stationFile, 2).resize(station().size() + 40 * pageSize);
    }) << false;
    QTest::newRow("the file shrinks") << Deed([](FaultyFiles& files) {
        OtherProgram(files, stationFile, 2).resize(station().size() - pageSize);
    }) << false;
    QTest::newRow("a page, its slot put back to what it was") << Deed([note](FaultyFiles& files) {
        const std::uint16_t counter = slotOf(files, 2);
        OtherProgram other(files, stationFile, 2);
        other.write((station().size() - pageSize) + 1000, note);
        other.setSlot(counter);
    }) << false;
    QTest::newRow("repaired, slot 0 a counter again") << Deed([note](FaultyFiles& files) {
        OtherProgram(files, stationFile, 2).write(4 * pageSize + 2000, note);
        OtherProgram(files, stationFile, 0).setSlot(0x0777);
    }) << true;
    QTest::newRow("a backup put back") << Deed([](FaultyFiles& files) { files.setContent(stationFile, station()); })
                                       << true;
    QTest::newRow("another backup put back") << Deed([](FaultyFiles& files) {
        Bytes other = station();
        other[station().size() - 3] = static_cast<std::uint8_t>(other[station().size() - 3] ^ 0xFF);
        files.setContent(stationFile, other);
    }) << true;
}

/// Killed anywhere within a commit; then another program changes the file or another file takes its name. Nothing of
/// that is undone.
void TestStorageCompany::foreignWorkSurvivesOurCrash()
{
    QFETCH(const std::function<void(FaultyFiles&)>, deed);
    QFETCH(const bool, sound);
    int kept = 0;
    for (std::size_t stop = 0;; ++stop) {
        FaultyFiles files = stationFiles();
        if (!crash(files, stop))
            break;
        deed(files);
        const Bytes after = files.content(stationFile);
        const bool torn = slotOf(files, 0) == 0;
        {
            std::unique_ptr<StorageFile> storage;
            static_cast<void>(errorOf([&] { storage = openStorage(files, stationFile, patient()); }));
            QVERIFY(files.content(stationFile) == after);
            // What was left half written is told, and the journal kept for whoever repairs it.
            if (torn && storage) {
                QVERIFY(storage->isReadOnly());
                QVERIFY(QString::fromStdString(storage->warnings().front()).contains(u"parou no meio"));
            }
            QVERIFY(!torn || files.exists(journalFile));
            if (sound && storage)
                QCOMPARE(storage->isReadOnly(), torn);
        }
        QVERIFY(files.content(stationFile) == after);
        kept += torn ? 1 : 0;
    }
    QVERIFY(sound || kept > 5);
}

/// Another program died while it was writing, or met a page that it could not read: ours reads and does not write.
void TestStorageCompany::unfinishedBatchOfAnother()
{
    for (const std::uint16_t state : {CommitTable::writing, CommitTable::damaged}) {
        FaultyFiles files = stationFiles();
        OtherProgram(files, stationFile, 3).setSlot(state);
        const auto storage = openStorage(files, stationFile, patient());
        QCOMPARE(values(*storage).size(), std::size_t{30});
        QCOMPARE(errorOf([&] { transfer(*storage, 0, 1); }), ErrorKind::ReadOnly);
        // Repaired meanwhile.
        OtherProgram(files, stationFile, 3).setSlot(0x0200);
        transfer(*storage, 0, 1);
        QCOMPARE(joined(storage->verify().faults), QString());
    }
}

/// Two of ours with the file open see each other's rows, tables and columns, and neither notices a lock.
void TestStorageCompany::othersAreFollowed()
{
    FaultyFiles files = stationFiles();
    const auto one = openStorage(files, stationFile, {});
    const auto two = openStorage(files, stationFile, {});
    const std::uint64_t seen = two->state();
    transfer(*one, 0, 1);
    QCOMPARE(values(*two)[1], 101);
    QVERIFY(two->state() != seen);
    one->change([&] { one->addColumn("Conta", column("novo", ColumnType::Long)); });
    two->read([&] { QCOMPARE(two->table("Conta")->columnIndex("novo"), 3); });
    two->change([&] { two->dropTable("Conta"); });
    one->read([&] { QVERIFY(one->table("Conta") == nullptr); });
    QCOMPARE(joined(one->verify().faults), QString());
}

/// Somebody who is in and stays: reading goes on, writing waits as long as told and names him, nothing is written, and
/// the next attempt works once he has left.
void TestStorageCompany::holderThatStays()
{
    FaultyFiles files = stationFiles();
    int notices = 0;
    OpenOptions options = patient(2000);
    options.waiting = [&](bool waits) { notices += waits ? 1 : 100; };
    const auto storage = openStorage(files, stationFile, options);
    OtherProgram other(files, stationFile, 7);
    QVERIFY(other.enter("BALCAO"));
    const Bytes before = files.content(stationFile);
    const auto begin = files.now();
    const std::string said = refusalOf([&] { transfer(*storage, 0, 1); }, ErrorKind::Locked);
    QVERIFY2(said.find("no computador 'BALCAO'") != std::string::npos, said.c_str());
    QVERIFY(files.now() - begin < std::chrono::milliseconds(2100));
    QCOMPARE(notices, 101);
    QVERIFY(files.content(stationFile) == before);
    QCOMPARE(values(*storage)[0], 100);
    // A closing's turn is refused likewise, before anything is written.
    QCOMPARE(errorOf([&] { storage->takeTurn(); }), ErrorKind::Locked);
    other.leave();
    storage->takeTurn();
    QVERIFY(!other.enter());
    transfer(*storage, 0, 1);
    transfer(*storage, 0, 1);
    storage->giveTurnBack();
    QCOMPARE(values(*storage)[0], 98);
    QVERIFY(other.enter());
    other.leave();
    // As long as the other works, the wait begins anew, up to a minute; what it writes is there afterwards.
    files.setContent(lockFile, Bytes(64, 'x')); // Replaced, as by a last user who deleted it.
    transfer(*storage, 0, 1);
    QCOMPARE(values(*storage)[0], 97);
}

/// What reading answers is answered beside everybody.
void TestStorageCompany::emptyStatementsTakeNoTurn()
{
    FaultyFiles files = stationFiles();
    const auto storage = openStorage(files, stationFile, patient());
    OtherProgram other(files, stationFile, 1);
    QVERIFY(other.enter());
    const auto begin = files.now();
    storage->change([&] { QVERIFY(storage->table("Conta") != nullptr); });
    const std::vector<RowId> rows = rowIdsOf(*storage->table("Conta"));
    storage->change([&] { storage->table("Conta")->update(rows[0], Changes{{1, 100}}); });
    QCOMPARE(errorOf([&] { storage->change([&] { storage->addColumn("Conta", column("n", ColumnType::Long)); }); }),
             ErrorKind::Duplicate);
    QCOMPARE(errorOf([&] { storage->change([&] {
                               storage->table("Conta")->update(rows[0], Changes{{0, 1}});
                           }); }),
             ErrorKind::DuplicateKey);
    QCOMPARE(files.now(), begin);
}

/// Compacted, or put back from a backup: the file of that name is the one that counts, whole.
void TestStorageCompany::replacedFile()
{
    FaultyFiles files = stationFiles();
    const auto storage = openStorage(files, stationFile, {});
    transfer(*storage, 0, 1);
    files.setContent(stationFile, station());
    for (int i = 0; i < 10; ++i)
        files.pause({});
    QCOMPARE(values(*storage)[0], 100);
    files.setContent(stationFile, station());
    transfer(*storage, 2, 3);
    QCOMPARE(values(*storage)[2], 99);
    QCOMPARE(values(*storage)[0], 100);
    files.setContent(stationFile, [] {
        MemoryStation protectedFile({.password = "outra"});
        return protectedFile.bytes();
    }());
    for (int i = 0; i < 10; ++i)
        files.pause({});
    QCOMPARE(errorOf([&] { static_cast<void>(values(*storage)); }), ErrorKind::WrongPassword);
}

void TestStorageCompany::backupAmongWriters()
{
    for (unsigned seed = 1; seed <= 20; ++seed) {
        FaultyFiles files = stationFiles();
        std::mt19937 random(seed);
        Schedule schedule(files, [&](std::size_t, const std::vector<int>& ready, int) {
            return std::uniform_int_distribution<std::size_t>(0, ready.size() - 1)(random);
        });
        schedule.run({[](FileSystem& system) {
                          const auto storage = openStorage(system, stationFile, {});
                          for (std::size_t i = 0; i < 6; ++i)
                              transfer(*storage, i, i + 1);
                      },
                      [](FileSystem& system) { openStorage(system, stationFile, {})->backup("copia.mdb"); }});
        QCOMPARE(QString::fromStdString(schedule.error()), QString());
        const auto copy = openStorage(files, "copia.mdb", {});
        QVERIFY(!copy->isReadOnly());
        QCOMPARE(joined(copy->verify().faults), QString());
        int sum = 0;
        for (const int value : values(*copy))
            sum += value;
        QCOMPARE(sum, 3000);
        QCOMPARE(errorOf([&] { copy->backup(stationFile); }), ErrorKind::Duplicate);
    }
}

void TestStorageCompany::interleavings_data()
{
    QTest::addColumn<int>("switches"); // At most that many changes of program, at every place; -1: random.
    QTest::addColumn<bool>("deaths");
    QTest::newRow("every place of one switch") << 1 << false;
    QTest::newRow("every place of two switches") << 2 << false;
    QTest::newRow("random") << -1 << false;
    QTest::newRow("random, one is killed") << -1 << true;
}

/// Two of ours change the same rows while a third lists: every call of the system is a place where another goes on.
/// No change is lost or done twice, no list shows half a change, nobody waits for ever.
void TestStorageCompany::interleavings()
{
    QFETCH(const int, switches);
    QFETCH(const bool, deaths);
    const bool all = qgetenv("PLANILHA_ENDURANCE") == "full";
    const std::size_t wanted = switches == 1 ? SIZE_MAX : all ? (switches < 0 ? 50'000 : SIZE_MAX) : 250;
    std::size_t runs = 0;
    std::size_t steps = 0;
    std::mt19937 places(29);
    const auto run = [&](const Schedule::Choice& choice, unsigned seed) {
        FaultyFiles files = stationFiles();
        std::array<int, 2> done{};
        std::vector<int> sums;
        Schedule schedule(files, choice);
        if (deaths)
            schedule.kill(static_cast<int>(seed % 2), seed * 7 % 150);
        const auto writer = [&](std::size_t who) {
            return [&, who](FileSystem& system) {
                const auto storage = openStorage(system, stationFile, {});
                for (std::size_t i = 0; i < 2; ++i) {
                    transfer(*storage, 0, 1 + who);
                    ++done[who];
                }
            };
        };
        const auto reader = [&](FileSystem& system) {
            const auto storage = openStorage(system, stationFile, {});
            for (int i = 0; i < 3; ++i) {
                int sum = 0;
                for (const int value : values(*storage))
                    sum += value;
                sums.push_back(sum);
            }
        };
        schedule.run({writer(0), writer(1), reader});
        ++runs;
        steps = std::max(steps, schedule.steps());
        const std::string told = "seed " + std::to_string(seed) + " " + schedule.error();
        QVERIFY2(schedule.error().empty(), told.c_str());
        const auto storage = openStorage(files, stationFile, {});
        QVERIFY2(!storage->isReadOnly(), told.c_str());
        QVERIFY2(storage->verify().faults.empty(), told.c_str());
        const std::vector<int> found = values(*storage);
        for (std::size_t who = 0; who < 2; ++who) {
            const int moved = found[1 + who] - 100;
            // A statement of one who was killed may be there although nobody was told so.
            const bool right = moved == done[who] || (schedule.died(static_cast<int>(who)) && moved == done[who] + 1);
            QVERIFY2(right, told.c_str());
        }
        QVERIFY2(found[0] == 100 - (found[1] - 100) - (found[2] - 100), told.c_str());
        for (const int sum : sums)
            QVERIFY2(sum == 3000, told.c_str());
        QVERIFY2(slotOf(files, 0) >= CommitTable::first, told.c_str());
    };
    if (switches < 0) {
        for (unsigned seed = 1; runs < wanted && !QTest::currentTestFailed(); ++seed) {
            std::mt19937 random(seed);
            run(
                [&](std::size_t, const std::vector<int>& ready, int current) {
                    const auto mine = std::find(ready.begin(), ready.end(), current);
                    if (mine != ready.end() && random() % 4 != 0)
                        return static_cast<std::size_t>(mine - ready.begin());
                    return static_cast<std::size_t>(random() % ready.size());
                },
                seed);
        }
    } else {
        // At the chosen places the next program goes on; elsewhere whoever works goes on working.
        const auto at = [&](std::size_t first, std::size_t second) {
            run(
                [=](std::size_t step, const std::vector<int>& ready, int current) {
                    const auto mine = std::find(ready.begin(), ready.end(), current);
                    if (mine == ready.end())
                        return std::size_t{0};
                    const auto index = static_cast<std::size_t>(mine - ready.begin());
                    return step == first || step == second ? (index + 1) % ready.size() : index;
                },
                static_cast<unsigned>(first * 10'000 + second));
        };
        at(SIZE_MAX, SIZE_MAX);
        const std::size_t places1 = steps;
        for (std::size_t first = 0; switches == 1 && first < places1; ++first)
            at(first, SIZE_MAX);
        while (switches == 2 && runs < std::min(wanted, places1 * places1 / 2) && !QTest::currentTestFailed()) {
            if (all) {
                for (std::size_t first = 0; first < places1; ++first)
                    for (std::size_t second = first + 1; second < places1 && !QTest::currentTestFailed(); ++second)
                        at(first, second);
                break;
            }
            at(places() % places1, places() % places1);
        }
    }
    qInfo("%zu schedules, up to %zu calls each", runs, steps);
}

QTEST_GUILESS_MAIN(TestStorageCompany)
#include "test_storage_company.moc"
