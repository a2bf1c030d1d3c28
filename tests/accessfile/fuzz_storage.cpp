// fuzz_storage COUNT [FIRST]: damages small files in COUNT ways, numbered from FIRST, and takes each through opening,
// reading, the self-check and writing. Anything but a result or an Error of the engine ends the run with the number.
#include "accessfile/AccessTestTools.h"

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

} // namespace

int main(int count, char** values)
{
    const std::size_t cases = count > 1 ? std::strtoul(values[1], nullptr, 10) : 0;
    if (cases == 0) {
        std::cerr << "fuzz_storage COUNT [FIRST]\n";
        return 2;
    }
    const std::size_t first = count > 2 ? std::strtoul(values[2], nullptr, 10) : 1;
    const std::array<Bytes, 3> stations = {smallStation(1), smallStation(2), smallStation(3)};
    std::size_t opened = 0;
    for (std::size_t number = first; number < first + cases; ++number) {
        ValueMaker random(static_cast<unsigned>(number));
        Bytes bytes = stations[number % stations.size()];
        for (std::size_t times = 1 + random.below(4); times > 0; --times)
            damageOnce(random, bytes);
        FaultyFiles files;
        files.setContent(stationFile, std::move(bytes));
        const auto start = std::chrono::steady_clock::now();
        try {
            use(files, random);
            ++opened;
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
    std::cout << cases << " damaged files, " << opened << " of them opened\n";
    return 0;
}
