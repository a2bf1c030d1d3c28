// The Access engine against SQLite: the same statements on the same rows, each commit synced to the medium by both.
// Ends with a table of ratios and the peak of memory.
#include "accessfile/Database.h"
#include "accessfile/Error.h"

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <array>
#include <cstdio>
#include <map>
#include <stdexcept>

#ifdef __unix__
#include <sys/resource.h>
#endif

namespace {

constexpr int scannedRows = 100'000;
constexpr int insertedRows = 10'000;
constexpr int pumps = 10;
constexpr int firstDay = 40'000;

const std::filesystem::path folder = std::filesystem::temp_directory_path() / "accessfile_bench";

/// Days as each of the two keeps them are numbers here, so that both index the same values.
class NoConversions : public accessfile::RegionalConversions
{
public:
    std::optional<double> toNumber(std::string_view) const override { return std::nullopt; }
    std::optional<accessfile::Numeric> toDecimal(std::string_view) const override { return std::nullopt; }
    std::optional<double> toDate(std::string_view) const override { return std::nullopt; }
    std::string numberToText(double) const override { return {}; }
    std::string dateToText(double) const override { return {}; }
    std::string format(const accessfile::Value&, std::string_view) const override { return {}; }
    std::optional<accessfile::CalendarDay> day(const accessfile::Value&) const override { return std::nullopt; }
    double leadingNumber(std::string_view) const override { return 0; }
    std::string upperCase(std::string_view) const override { return {}; }
    std::string lowerCase(std::string_view) const override { return {}; }
};

/// Counts cells without keeping them.
class CountingSink : public accessfile::RowSink
{
public:
    void columns(const std::vector<accessfile::ResultColumn>&) override {}
    void cell(const accessfile::Value& value) override { m_cells += accessfile::isNull(value) ? 0 : 1; }
    void textCell(std::string_view utf8) override { m_cells += utf8.size(); }
    void endRow(std::optional<accessfile::RowId>) override { ++m_rows; }
    [[nodiscard]] std::size_t rows() const { return m_rows; }

private:
    std::size_t m_rows = 0;
    std::size_t m_cells = 0;
};

/// Either of the two, spoken to in the same SQL.
class Store
{
public:
    virtual ~Store() = default;
    virtual void run(const std::string& statement) = 0;
    /// Rows of a SELECT, every cell fetched.
    virtual std::size_t fetch(const std::string& statement) = 0;
    virtual void begin() = 0;
    virtual void commit() = 0;
    /// Adds a reading as a row, without a statement's text.
    virtual void add(int number) = 0;
};

class EngineStore : public Store
{
public:
    static constexpr const char* label = "engine";
    static std::filesystem::path file() { return folder / "bench.mdb"; }
    explicit EngineStore(bool fresh)
    {
        if (fresh) {
            std::filesystem::remove(file());
            accessfile::Storage::create(file());
        }
        m_database.emplace(accessfile::Storage::open(file(), {}), m_conversions);
    }
    void run(const std::string& statement) override { m_database->execute(statement); }
    std::size_t fetch(const std::string& statement) override
    {
        CountingSink sink;
        m_database->select(statement, sink);
        return sink.rows();
    }
    void begin() override { m_database->storage().beginStatement(); }
    void commit() override { m_database->storage().commitStatement(); }
    void add(int number) override
    {
        const std::array<std::optional<accessfile::Value>, 7> row = {
            std::nullopt,
            accessfile::DateTime{static_cast<double>(firstDay + number / pumps)},
            number % pumps + 1,
            std::string("1.234,50"),
            std::string("1.834,75"),
            std::string("600,25"),
            std::string("TANQUE_1")};
        m_database->storage().table("Leitura")->insert(row);
    }

private:
    NoConversions m_conversions;
    std::optional<accessfile::Database> m_database;
};

class SqliteStore : public Store
{
public:
    static constexpr const char* label = "SQLite";
    static std::filesystem::path file() { return folder / "bench.sqlite"; }
    explicit SqliteStore(bool fresh)
    {
        if (fresh)
            std::filesystem::remove(file());
        if (sqlite3_open(file().c_str(), &m_database) != SQLITE_OK)
            throw std::runtime_error("sqlite3_open");
        // A journal that stays, like the engine's, and a sync wherever it is needed.
        run("PRAGMA journal_mode=PERSIST");
        run("PRAGMA synchronous=FULL");
        run("PRAGMA locking_mode=EXCLUSIVE");
    }
    ~SqliteStore() override
    {
        sqlite3_finalize(m_insert);
        sqlite3_close(m_database);
    }
    SqliteStore(const SqliteStore&) = delete;
    SqliteStore& operator=(const SqliteStore&) = delete;
    void run(const std::string& statement) override { static_cast<void>(fetch(statement)); }
    std::size_t fetch(const std::string& statement) override
    {
        sqlite3_stmt* prepared = nullptr;
        if (sqlite3_prepare_v2(m_database, statement.c_str(), -1, &prepared, nullptr) != SQLITE_OK)
            throw std::runtime_error(sqlite3_errmsg(m_database));
        std::size_t rows = 0;
        int state = SQLITE_ROW;
        while ((state = sqlite3_step(prepared)) == SQLITE_ROW) {
            ++rows;
            for (int i = 0; i < sqlite3_column_count(prepared); ++i) {
                if (sqlite3_column_type(prepared, i) == SQLITE_TEXT)
                    benchmark::DoNotOptimize(sqlite3_column_text(prepared, i));
                else
                    benchmark::DoNotOptimize(sqlite3_column_double(prepared, i));
            }
        }
        sqlite3_finalize(prepared);
        if (state != SQLITE_DONE)
            throw std::runtime_error(sqlite3_errmsg(m_database));
        return rows;
    }
    void begin() override { run("BEGIN"); }
    void commit() override { run("COMMIT"); }
    void add(int number) override
    {
        if (m_insert == nullptr)
            sqlite3_prepare_v2(m_database,
                               "INSERT INTO Leitura (DataLT, cdgBomba, LeitAnt, LeitAtu, Saldo, tanq) VALUES "
                               "(?, ?, '1.234,50', '1.834,75', '600,25', 'TANQUE_1')",
                               -1, &m_insert, nullptr);
        sqlite3_bind_double(m_insert, 1, firstDay + number / pumps);
        sqlite3_bind_int(m_insert, 2, number % pumps + 1);
        if (sqlite3_step(m_insert) != SQLITE_DONE)
            throw std::runtime_error(sqlite3_errmsg(m_database));
        sqlite3_reset(m_insert);
    }

private:
    sqlite3* m_database = nullptr;
    sqlite3_stmt* m_insert = nullptr;
};

void makeTable(Store& store, bool isEngine)
{
    store.run(isEngine ? "CREATE TABLE Leitura (CodigoI COUNTER PRIMARY KEY, DataLT DATETIME, cdgBomba LONG, LeitAnt "
                         "TEXT(50), LeitAtu TEXT(50), Saldo TEXT(50), tanq TEXT(20))"
                       : "CREATE TABLE Leitura (CodigoI INTEGER PRIMARY KEY, DataLT REAL, cdgBomba INTEGER, LeitAnt "
                         "TEXT, LeitAtu TEXT, Saldo TEXT, tanq TEXT)");
    store.run("CREATE INDEX LeituraData ON Leitura (DataLT)");
}

template <typename Kind>
std::unique_ptr<Store> freshStore()
{
    auto store = std::make_unique<Kind>(true);
    makeTable(*store, std::is_same_v<Kind, EngineStore>);
    return store;
}

/// With 100,000 readings, made once for each of the two.
template <typename Kind>
std::unique_ptr<Store> filledStore()
{
    static bool made = false;
    if (made)
        return std::make_unique<Kind>(false);
    made = true;
    auto store = freshStore<Kind>();
    store->begin();
    for (int i = 0; i < scannedRows; ++i)
        store->add(i);
    store->commit();
    return store;
}

template <typename Kind>
void insertInOneGo(benchmark::State& state)
{
    for (auto _ : state) {
        state.PauseTiming();
        auto store = freshStore<Kind>();
        state.ResumeTiming();
        store->begin();
        for (int i = 0; i < insertedRows; ++i)
            store->add(i);
        store->commit();
        state.PauseTiming();
        store.reset();
        state.ResumeTiming();
    }
}

template <typename Kind>
void insertCommittedEach(benchmark::State& state)
{
    for (auto _ : state) {
        state.PauseTiming();
        auto store = freshStore<Kind>();
        state.ResumeTiming();
        for (int i = 0; i < insertedRows; ++i) {
            store->begin();
            store->add(i);
            store->commit();
        }
        state.PauseTiming();
        store.reset();
        state.ResumeTiming();
    }
}

template <typename Kind>
void scan(benchmark::State& state)
{
    const auto store = filledStore<Kind>();
    for (auto _ : state) {
        if (store->fetch("SELECT * FROM Leitura") < scannedRows)
            state.SkipWithError("rows are missing");
    }
}

template <typename Kind>
void filterUnindexed(benchmark::State& state)
{
    const auto store = filledStore<Kind>();
    for (auto _ : state)
        benchmark::DoNotOptimize(store->fetch("SELECT CodigoI, Saldo FROM Leitura WHERE cdgBomba = 3"));
}

template <typename Kind>
void filterByDate(benchmark::State& state)
{
    const auto store = filledStore<Kind>();
    int day = 0;
    for (auto _ : state) {
        day = (day + 37) % (scannedRows / pumps - 31);
        const std::string from = std::to_string(firstDay + day);
        const std::string to = std::to_string(firstDay + day + 30);
        if (store->fetch("SELECT * FROM Leitura WHERE DataLT BETWEEN " + from + " AND " + to) != 31 * pumps)
            state.SkipWithError("rows are missing");
    }
}

template <typename Kind>
void lookupByKey(benchmark::State& state)
{
    const auto store = filledStore<Kind>();
    int key = 0;
    for (auto _ : state) {
        key = (key + 7919) % scannedRows;
        if (store->fetch("SELECT * FROM Leitura WHERE CodigoI = " + std::to_string(key + 1)) != 1)
            state.SkipWithError("row is missing");
    }
}

template <typename Kind>
void insertOne(benchmark::State& state)
{
    const auto store = filledStore<Kind>();
    for (auto _ : state)
        store->run("INSERT INTO Leitura (DataLT, cdgBomba, LeitAnt, LeitAtu, Saldo, tanq) VALUES (60000, 11, '1', '2', "
                   "'1', 'TANQUE_2')");
    store->run("DELETE FROM Leitura WHERE DataLT = 60000");
}

template <typename Kind>
void updateOne(benchmark::State& state)
{
    const auto store = filledStore<Kind>();
    int key = 0;
    for (auto _ : state) {
        key = (key + 7919) % scannedRows;
        store->run("UPDATE Leitura SET Saldo = '" + std::to_string(key) +
                   "' WHERE CodigoI = " + std::to_string(key + 1));
    }
}

template <typename Kind>
void openToFirstRow(benchmark::State& state)
{
    filledStore<Kind>().reset();
    for (auto _ : state) {
        Kind store(false);
        if (store.fetch("SELECT * FROM Leitura WHERE CodigoI = 1") != 1)
            state.SkipWithError("row is missing");
    }
}

/// Prints the usual lines, and keeps the times for the ratios.
class RatioReporter : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs) {
            const std::string name = run.benchmark_name();
            const std::size_t slash = name.find('/');
            const std::string subject = name.substr(0, slash);
            const std::string side = name.substr(slash + 1, name.find('/', slash + 1) - slash - 1);
            m_times[subject][side] = {run.GetAdjustedRealTime(), run.GetAdjustedCPUTime()};
        }
        ConsoleReporter::ReportRuns(runs);
    }
    void printRatios() const
    {
        std::printf("\n%-28s %8s %8s\n", "engine/SQLite", "time", "CPU");
        for (const auto& [subject, sides] : m_times) {
            if (sides.size() != 2)
                continue;
            const Times& engine = sides.at(EngineStore::label);
            const Times& sqlite = sides.at(SqliteStore::label);
            std::printf("%-28s %8.2f %8.2f\n", subject.c_str(), engine.real / sqlite.real, engine.cpu / sqlite.cpu);
        }
    }

private:
    struct Times
    {
        double real = 0;
        double cpu = 0;
    };
    std::map<std::string, std::map<std::string, Times>> m_times;
};

template <typename Body>
benchmark::internal::Benchmark* add(const char* subject, const char* side, Body body)
{
    return benchmark::RegisterBenchmark((std::string(subject) + "/" + side).c_str(), body)
        ->Unit(benchmark::kMicrosecond)
        ->UseRealTime();
}

void addAll()
{
    const auto both = [](const char* subject, auto engine, auto sqlite, int times = 0) {
        for (auto* each : {add(subject, EngineStore::label, engine), add(subject, SqliteStore::label, sqlite)}) {
            if (times > 0)
                each->Iterations(times);
        }
    };
    both("insert10000InOneGo", insertInOneGo<EngineStore>, insertInOneGo<SqliteStore>, 3);
    both("insert10000CommittedEach", insertCommittedEach<EngineStore>, insertCommittedEach<SqliteStore>, 1);
    both("scan100000", scan<EngineStore>, scan<SqliteStore>);
    both("filterUnindexed100000", filterUnindexed<EngineStore>, filterUnindexed<SqliteStore>);
    both("filterByIndexedDate", filterByDate<EngineStore>, filterByDate<SqliteStore>);
    both("lookupByKey", lookupByKey<EngineStore>, lookupByKey<SqliteStore>);
    both("insertOne", insertOne<EngineStore>, insertOne<SqliteStore>);
    both("updateOne", updateOne<EngineStore>, updateOne<SqliteStore>);
    both("openToFirstRow", openToFirstRow<EngineStore>, openToFirstRow<SqliteStore>);
}

} // namespace

int main(int count, char** values)
{
    benchmark::Initialize(&count, values);
    std::filesystem::create_directories(folder);
    addAll();
    RatioReporter reporter;
    const std::size_t measured = benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.printRatios();
#ifdef __unix__
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    std::printf("peak memory of both: %ld MB\n", usage.ru_maxrss / 1024);
#endif
    std::filesystem::remove_all(folder);
    return measured > 0 ? 0 : 1; // Of a name that there is not, the library has said so.
}
