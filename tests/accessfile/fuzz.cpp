// fuzz KIND COUNT [FIRST]: COUNT cases of a kind, numbered from FIRST. Anything but a result or an Error of the engine
// ends the run with the case's number.
//   data        small data files, damaged, through opening, reading, the self-check and writing
//   journals    data files that a crash left with their journal, either of them damaged
//   statements  the statements of fuzz_statements.sql, mixed and spoilt
//   settings    settings files
#include "accessfile/AccessTestTools.h"
#include "accessfile/Database.h"
#include "platform/ado/AccessConversions.h"
#include "platform/os/PrivateProfile.h"

#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <iostream>

#ifdef __unix__
#include <sys/resource.h>
#endif

using namespace accessfile;
using namespace accesstest;

namespace {

constexpr auto longestCase = std::chrono::seconds(20);
constexpr std::size_t mostMemory = 1500; ///< Megabytes.

Bytes smallStation(unsigned seed)
{
    MemoryStation storage;
    std::vector columns = {column("codigo", ColumnType::Long),   column("nome", ColumnType::Text, 120),
                           column("quando", ColumnType::Date),   column("obs", ColumnType::Memo),
                           column("documento", ColumnType::Ole), column("ligado", ColumnType::Bool)};
    columns[0].autonumber = true;
    columns[2].defaultExpression = "1";
    storage->createTable("Leitura", columns,
                         std::array{index("Chave", {{0, true}}, true), index("Nome", {{1, true}, {2, false}})});
    storage->createTable("Outra", std::array{column("n", ColumnType::Double)}, {});
    ValueMaker maker(seed);
    storage->beginStatement();
    Table& table = *storage->table("Leitura");
    for (int i = 0; i < 90; ++i) {
        Cells row = maker.row(columns);
        if (i % 20 != 0)
            row[3] = row[4] = std::nullopt;
        const RowId id = table.insert(row);
        if (i % 9 == 0)
            table.update(id, Changes{{1, std::string(100 + maker.below(20), 'g')}});
        if (i % 14 == 0)
            table.erase(id);
    }
    storage->commitStatement();
    return storage.bytes();
}

/// A byte of a page; its head, where the structure is, as often as the rest.
std::size_t place(ValueMaker& random, const Bytes& bytes)
{
    const std::size_t page = random.below(bytes.size() / pageSize);
    const std::size_t at = page * pageSize + random.below(random.below(2) == 0 ? 96 : pageSize);
    return std::min(at, bytes.size() - 5);
}

void damageOnce(ValueMaker& random, Bytes& bytes)
{
    if (bytes.size() < 2 * pageSize)
        return;
    const std::size_t pages = bytes.size() / pageSize;
    const std::size_t at = place(random, bytes);
    const auto there = bytes.begin() + static_cast<std::ptrdiff_t>(at);
    switch (random.below(8)) {
    case 0:
        bytes[at] = static_cast<std::uint8_t>(bytes[at] ^ 1U << random.below(8));
        break;
    case 1:
        bytes[at] = static_cast<std::uint8_t>(random.below(256));
        break;
    case 2: // A pointer to somewhere in the file: loops of chains, maps and trees.
        store32(bytes.data() + at, static_cast<std::uint32_t>(random.below(pages + 2)));
        break;
    case 3:
        store32(bytes.data() + at, static_cast<std::uint32_t>(random.below(pages) << 8 | random.below(4)));
        break;
    case 4:
        store16(bytes.data() + at, std::array<std::size_t, 4>{0, 0xFFFF, 0x0FFF, 0x8000}[random.below(4)]);
        break;
    case 5: { // A page over another.
        const std::size_t from = random.below(pages) * pageSize;
        std::memmove(bytes.data() + random.below(pages) * pageSize, bytes.data() + from, pageSize);
        break;
    }
    case 6:
        std::fill_n(there, std::min(1 + random.below(64), bytes.size() - at),
                    static_cast<std::uint8_t>(random.below(2) * 0xFF));
        break;
    default:
        if (random.below(4) == 0)
            bytes.resize(random.below(2) == 0 ? random.below(pages) * pageSize : random.below(bytes.size()));
    }
}

/// Tries an action to its end or to an Error.
void attempt(const std::function<void()>& action)
{
    try {
        action();
    } catch (const Error&) {
    }
}

void use(FaultyFiles& files, ValueMaker& random)
{
    const auto storage = openStorage(files, stationFile, {});
    attempt([&] { static_cast<void>(storage->verify()); });
    for (const std::string& name : storage->tableNames()) {
        attempt([&] {
            Table& table = *storage->table(name);
            std::vector<RowId> rows;
            attempt([&] {
                for (const auto cursor = table.scan(); cursor->next() && rows.size() < 5000;) {
                    rows.push_back(cursor->rowId());
                    for (std::size_t i = 0; i < table.columns().size(); ++i)
                        attempt([&] { static_cast<void>(cursor->value(static_cast<int>(i))); });
                }
            });
            for (std::size_t i = 0; i < table.indexes().size(); ++i) {
                attempt([&] {
                    std::size_t found = 0;
                    for (const auto cursor = table.range(static_cast<int>(i), {}); cursor->next() && found < 5000;)
                        ++found;
                });
            }
            for (int i = 0; i < 6; ++i) {
                const Cells row = random.row(table.columns());
                const std::size_t chosen = rows.empty() ? 0 : random.below(rows.size());
                const std::size_t changed = random.below(row.size());
                attempt([&] { rows.push_back(table.insert(row)); });
                if (rows.empty() || row.empty())
                    continue;
                const Changes change = {{static_cast<int>(changed), row[changed].value_or(Null{})}};
                attempt([&] { table.update(rows.at(chosen), change); });
                attempt([&] { table.erase(rows.at(chosen)); });
            }
        });
        const std::array<std::function<void()>, 6> definitions = {
            [&] { storage->addColumn(name, column("mais", ColumnType::Memo)); },
            [&] {
                storage->createIndex(name, index("Mais", {{0, false}}));
            },
            [&] { storage->dropTable(name); },
            [&] { storage->setPassword("8282"); },
            [] {},
            [] {}};
        attempt(definitions.at(random.below(definitions.size())));
    }
    attempt([&] { storage->createTable("Nova", std::array{column("n", ColumnType::Text, 9)}, {}); });
}

bool memoryIsBounded()
{
#ifdef __unix__
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<std::size_t>(usage.ru_maxrss) / 1024 < mostMemory;
#else
    return true;
#endif
}

/// A case has its number; everything else follows from it.
using Case = std::function<void(ValueMaker& random, std::size_t number)>;

void dataFile(ValueMaker& random, std::size_t number)
{
    static const std::array<Bytes, 3> stations = {smallStation(1), smallStation(2), smallStation(3)};
    Bytes bytes = stations[number % stations.size()];
    for (std::size_t times = 1 + random.below(4); times > 0; --times)
        damageOnce(random, bytes);
    FaultyFiles files;
    files.setContent(stationFile, std::move(bytes));
    use(files, random);
}

void journal(ValueMaker& random, std::size_t /*number*/)
{
    static const Bytes station = smallStation(4);
    MemoryStation storage({}, station);
    FaultyFiles& files = storage.files();
    files.failAfter(random.below(14), FaultyFiles::Fault::Stop);
    try {
        Table& table = *storage->table("Leitura");
        storage->beginStatement();
        for (int i = 0; i < 5; ++i)
            table.insert(random.row(table.columns()));
        storage->commitStatement();
    } catch (const Stopped&) {
    }
    files.heal();
    FaultyFiles left;
    std::filesystem::path name = stationFile;
    for (const char* const ending : {"", "-diario"}) {
        if (!files.exists(name += ending))
            continue;
        Bytes bytes = files.content(name);
        if (random.below(3) > 0)
            damageOnce(random, bytes);
        if (random.below(6) == 0)
            bytes.resize(random.below(bytes.size() + 1));
        left.setContent(name, std::move(bytes));
    }
    use(left, random);
}

/// Words, texts, numbers and signs.
std::vector<std::string> tokensOf(std::string_view statement)
{
    std::vector<std::string> tokens;
    for (std::size_t at = 0; at < statement.size();) {
        std::size_t end = at + 1;
        const char quote = statement[at] == '[' ? ']' : statement[at];
        const bool word = std::isalnum(static_cast<unsigned char>(statement[at])) != 0;
        if (quote == ']' || quote == '\'' || quote == '#')
            end = std::min(statement.find(quote, end), statement.size() - 1) + 1;
        while (word && end < statement.size() && (std::isalnum(static_cast<unsigned char>(statement[end])) != 0))
            ++end;
        tokens.emplace_back(statement.substr(at, end - at));
        at = end;
    }
    return tokens;
}

std::string spoiltStatement(ValueMaker& random, const std::vector<std::vector<std::string>>& corpus)
{
    static const std::vector<std::string> odd = {"1e308",
                                                 "-2147483648",
                                                 "9999999999999999999999999999.5",
                                                 "1e-400",
                                                 "#12/31/9999 23:59:59#",
                                                 "''",
                                                 "Null",
                                                 "'\xC2'",
                                                 "[",
                                                 "'",
                                                 "#",
                                                 std::string(150, '('),
                                                 "\0",
                                                 "*",
                                                 "0.00005"};
    std::vector<std::string> tokens = corpus[random.below(corpus.size())];
    for (std::size_t times = 1 + random.below(5); times > 0; --times) {
        const std::vector<std::string>& other = corpus[random.below(corpus.size())];
        const auto at = tokens.begin() + static_cast<std::ptrdiff_t>(random.below(tokens.size()));
        switch (random.below(tokens.size() > 1 ? 4 : 3)) {
        case 0:
            *at = random.below(3) == 0 ? odd[random.below(odd.size())] : other[random.below(other.size())];
            break;
        case 1:
            tokens.insert(at, other[random.below(other.size())]);
            break;
        case 2:
            tokens.insert(at, other.begin() + static_cast<std::ptrdiff_t>(random.below(other.size())), other.end());
            break;
        default:
            tokens.erase(at);
        }
    }
    std::string statement;
    for (const std::string& token : tokens)
        statement += token;
    return statement;
}

struct NoSink : RowSink
{
    void columns(const std::vector<ResultColumn>& /*columns*/) override {}
    void cell(const Value& /*value*/) override {}
    void textCell(std::string_view /*utf8*/) override {}
    void endRow(std::optional<RowId> /*row*/) override {}
};

void statements(ValueMaker& random, std::size_t number)
{
    static const ado::AccessConversions conversions;
    static std::vector<std::vector<std::string>> corpus;
    static FaultyFiles files;
    static std::unique_ptr<Database> database;
    if (corpus.empty()) {
        QFile file(QStringLiteral(FUZZ_STATEMENTS));
        if (!file.open(QIODevice::ReadOnly))
            throw std::runtime_error("no corpus");
        for (const QByteArray& line : file.readAll().split('\n')) {
            if (!line.isEmpty())
                corpus.push_back(tokensOf(line.toStdString()));
        }
    }
    if (!database || number % 200 == 0) {
        database.reset();
        files.setContent(stationFile, smallStation(5));
        database = std::make_unique<Database>(openStorage(files, stationFile, {}), conversions);
    }
    const std::string statement = spoiltStatement(random, corpus);
    NoSink sink;
    attempt([&] { database->select(statement, sink); });
    attempt([&] { static_cast<void>(database->execute(statement)); });
    if (number % 200 == 199 && !database->storage().verify().faults.empty())
        throw std::runtime_error("the self-check finds faults");
}

void settings(ValueMaker& random, std::size_t /*number*/)
{
    static const QTemporaryDir folder;
    static const std::string whole =
        "[Config]\r\nTipo=1\r\n Host = \"posto\" \r\n;nada\r\n[Impressora]\r\nNome=L\xE9o\r\n";
    const QString path = folder.filePath(QStringLiteral("x.ini"));
    std::string text = whole.substr(random.below(whole.size()));
    for (std::size_t times = random.below(6); times > 0 && !text.empty(); --times) {
        const std::size_t at = random.below(text.size());
        if (random.below(2) == 0)
            text[at] = "[]=\r\n\"\0 \xFF"[random.below(9)];
        else
            text.insert(at, text.substr(random.below(text.size()), random.below(40)));
    }
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(text.data(), static_cast<qint64>(text.size())) < 0)
        throw std::runtime_error("no room for the settings file");
    file.close();
    const QString section = random.below(2) == 0 ? QStringLiteral("config") : QStringLiteral("Nova]");
    const QString key = random.below(2) == 0 ? QStringLiteral("TIPO") : QString();
    const int size = std::array{-1, 0, 1, 2, 5, 255}[random.below(6)];
    static_cast<void>(platform::GetPrivateProfileString(section, key, QStringLiteral("x"), size, path));
    if (!platform::WritePrivateProfileString(section, key, QStringLiteral("valor ="), path))
        throw std::runtime_error("not written");
    static_cast<void>(platform::GetPrivateProfileString(section, key, {}, size, path));
}

} // namespace

int main(int count, char** values)
{
    static const std::map<std::string, Case> kinds = {
        {"data", dataFile}, {"journals", journal}, {"settings", settings}, {"statements", statements}};
    const auto kind = kinds.find(count > 1 ? values[1] : "");
    const std::size_t cases = count > 2 ? std::strtoul(values[2], nullptr, 10) : 0;
    if (kind == kinds.end() || cases == 0) {
        std::cerr << "fuzz data|journals|settings|statements COUNT [FIRST]\n";
        return 2;
    }
    const std::size_t first = count > 3 ? std::strtoul(values[3], nullptr, 10) : 1;
    std::size_t results = 0;
    for (std::size_t number = first; number < first + cases; ++number) {
        ValueMaker random(static_cast<unsigned>(number));
        const auto start = std::chrono::steady_clock::now();
        try {
            kind->second(random, number);
            ++results;
        } catch (const Error&) {
        } catch (const std::exception& error) {
            std::cerr << "case " << number << ": " << error.what() << '\n';
            return 1;
        }
        if (std::chrono::steady_clock::now() - start > longestCase || !memoryIsBounded()) {
            std::cerr << "case " << number << " takes too long or too much memory\n";
            return 1;
        }
    }
    std::cout << cases << ' ' << kind->first << ", " << results << " of them without an error at opening\n";
    return 0;
}
